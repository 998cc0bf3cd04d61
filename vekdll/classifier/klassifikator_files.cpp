#include <memory>
#include <optional>
#include <string>

#include "vekdll/classifier/klassifikator.h"
#include "vekdll/platform/c_file.h"
#include "vekdll/platform/framework_exceptions.h"
#include "vekdll/platform/user_hooks.h"

namespace {

constexpr const char* kFileFilter = "Classifier Files (*.cls)|*.cls||";
constexpr const char* kFileExtension = "cls";
constexpr int kArchiveBuffer = 4096;

// The smallest element record: its length and its class, without features.
constexpr ULONGLONG kElementHeaderBytes = 2 * sizeof(int);

// Both dialogs get the default extension, so that a name typed without one
// finds the training file on opening as well as on saving.
std::optional<std::string> AskTrainingFilePath(bool forOpening)
{
    vek::PathRequest request;
    request.forOpening = forOpening;
    request.promptOverwrite = !forOpening;
    request.defaultExtension = kFileExtension;
    request.filter = kFileFilter;
    std::optional<std::string> path = vek::AskPath(request);
    if (path && path->empty()) path.reset();
    return path;
}

} // namespace

void ZrCKlassifikator::Serialize(CArchive& ar)
{
    if (ar.IsStoring()) {
        StoreElements(ar);
    } else {
        LoadElements(ar);
    }
}

void ZrCKlassifikator::StoreElements(CArchive& ar)
{
    ar << static_cast<int>(TrainingSet.GetCount()) << NumClasses;
    for (POSITION pos = TrainingSet.GetHeadPosition(); pos != nullptr;) {
        const ZrCKlassenelement* e = TrainingSet.GetNext(pos);
        ar << e->NumFeatures << e->ClassId;
        for (int i = 0; i < e->NumFeatures; ++i) ar << e->Features[i];
    }
}

void ZrCKlassifikator::LoadElements(CArchive& ar)
{
    ClearAll();
    try {
        int count = 0;
        int numClasses = 0;
        ar >> count >> numClasses;
        if (numClasses < 0) AfxThrowArchiveException(CArchiveException::badIndex);
        ar.RequireReadable(count, kElementHeaderBytes);
        NumClasses = numClasses;

        for (int i = 0; i < count; ++i) {
            int numFeatures = 0;
            int classId = 0;
            ar >> numFeatures >> classId;
            // Each element keeps the length it was stored with: a set may mix
            // lengths, and the last element gives NumFeatures, as when the
            // elements were added one by one.
            ar.RequireReadable(numFeatures, sizeof(float));
            auto e = std::make_unique<ZrCKlassenelement>(numFeatures, classId);
            for (int f = 0; f < numFeatures; ++f) ar >> e->Features[f];
            AddEntryTrainingset(e.release());
        }
    } catch (...) {
        // Half a training set would train wrong models without warning.
        ClearAll();
        throw;
    }
}

void ZrCKlassifikator::LoadTrainingsData(CString path)
{
    CFileStatus status;
    if (!CFile::GetStatus(path, status)) return;
    CFile file;
    if (!file.Open(path, CFile::modeRead | CFile::typeBinary)) return;
    CArchive ar(&file, CArchive::load, kArchiveBuffer);
    Serialize(ar);
    ar.Close();
    file.Close();
}

void ZrCKlassifikator::SaveTrainingsData(CString path)
{
    CFile file;
    if (!file.Open(path, CFile::modeCreate | CFile::modeWrite | CFile::typeBinary)) {
        // The placeholder has always been shown as it stands.
        vek::ShowMessage("ZrCKlassifikator::SaveTrainingsData: File could not be opened %s\n");
        return;
    }
    CArchive ar(&file, CArchive::store, kArchiveBuffer);
    Serialize(ar);
    ar.Close();
    file.Close();
}

void ZrCKlassifikator::LoadTrainingsData()
{
    if (const std::optional<std::string> path = AskTrainingFilePath(true)) LoadTrainingsData(*path);
}

void ZrCKlassifikator::SaveTrainingsData()
{
    if (const std::optional<std::string> path = AskTrainingFilePath(false)) SaveTrainingsData(*path);
}
