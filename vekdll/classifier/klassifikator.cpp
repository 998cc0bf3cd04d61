#include "vekdll/classifier/klassifikator.h"

#include "vekdll/platform/framework_exceptions.h"

ZrCKlassifikator::ZrCKlassifikator() : NumClasses(0), NumFeatures(0), TrainingSet(10), Patterns(10), Trained(false)
{
}

ZrCKlassifikator::~ZrCKlassifikator()
{
    DeleteElementsAndModels();
}

void ZrCKlassifikator::DeleteElementsAndModels()
{
    for (POSITION pos = TrainingSet.GetHeadPosition(); pos != nullptr;) delete TrainingSet.GetNext(pos);
    TrainingSet.RemoveAll();
    for (POSITION pos = Patterns.GetHeadPosition(); pos != nullptr;) delete Patterns.GetNext(pos);
    Patterns.RemoveAll();
}

void ZrCKlassifikator::AddEntryTrainingset(ZrCKlassenelement* e)
{
    if (e == nullptr) return;
    TrainingSet.AddTail(e);
    NumFeatures = e->NumFeatures;
    Trained = false;
}

void ZrCKlassifikator::AddEntriesTrainingset(CTypedPtrList<CPtrList, ZrCKlassenelement*>* list)
{
    if (list == nullptr || list->IsEmpty()) return;
    bool first = true;
    for (POSITION pos = list->GetHeadPosition(); pos != nullptr;) {
        ZrCKlassenelement* e = list->GetNext(pos);
        if (e == nullptr) continue;
        if (first) NumFeatures = e->NumFeatures;
        first = false;
        TrainingSet.AddTail(e);
    }
    Trained = false;
}

int ZrCKlassifikator::Classify(ZrCKlassenelement*)
{
    return -1;
}

void ZrCKlassifikator::Training()
{
}

void ZrCKlassifikator::setNumClasses(int n)
{
    if (n == NumClasses) return;
    NumClasses = n;
    Trained = false;
}

void ZrCKlassifikator::ClearAll()
{
    NumClasses = 0;
    Trained = false;
    DeleteElementsAndModels();
}

void ZrCKlassifikator::CopyFrom(ZrCKlassifikator* src)
{
    if (src == nullptr) AfxThrowInvalidArgException();
    Trained = false;
    if (src == this) return;
    ClearAll();
    NumClasses = src->NumClasses;
    NumFeatures = src->NumFeatures;
    for (POSITION pos = src->TrainingSet.GetHeadPosition(); pos != nullptr;) {
        AddEntryTrainingset(new ZrCKlassenelement(src->TrainingSet.GetNext(pos)));
    }
    Trained = false;
}
