#pragma once

#include "vekdll/classifier/klassenelement.h"
#include "vekdll/classifier/klassenmuster.h"
#include "vekdll/export.h"
#include "vekdll/platform/c_archive.h"
#include "vekdll/platform/c_list.h"
#include "vekdll/platform/c_string.h"

// A training set of labelled feature vectors, the models trained from it and
// the training files (".cls"). This base class trains nothing and classifies
// nothing; ZrCBayesKlassifikator does both.
//
// The virtual functions keep their order (destructor, AddEntryTrainingset,
// AddEntriesTrainingset, Classify, Training, setNumClasses, ClearAll), since
// derived classes built against the library depend on the table's layout.
class VEKDLL_API ZrCKlassifikator {
public:
    ZrCKlassifikator();
    virtual ~ZrCKlassifikator();

    ZrCKlassifikator(const ZrCKlassifikator&) = delete;
    ZrCKlassifikator& operator=(const ZrCKlassifikator&) = delete;

    // Appends `e` and takes it over; NumFeatures becomes its length. A null
    // element is ignored.
    virtual void AddEntryTrainingset(ZrCKlassenelement* e);
    // Appends every element of `list` and takes them over (the list keeps
    // its pointers, which the caller must no longer delete); NumFeatures
    // becomes the length of the first. Nothing for an empty or null list;
    // null entries are skipped.
    virtual void AddEntriesTrainingset(CTypedPtrList<CPtrList, ZrCKlassenelement*>* list);
    // The base class knows no decision: -1.
    virtual int Classify(ZrCKlassenelement* e);
    // The base class has no training.
    virtual void Training();
    virtual void setNumClasses(int n);
    // Deletes all elements and models; NumClasses 0, untrained. NumFeatures stays.
    virtual void ClearAll();

    // Replaces this training set by deep copies of `src`'s elements and takes
    // its NumClasses and NumFeatures; models are not copied. Each copy goes in
    // through AddEntryTrainingset, which sets NumFeatures to the element's
    // length, so a set of mixed lengths leaves that of its last element. A
    // null `src` throws CInvalidArgException; copying from itself only clears
    // Trained.
    void CopyFrom(ZrCKlassifikator* src);

    // The training set in the ".cls" layout (little-endian):
    //     int count, int NumClasses,
    //     count x { int NumFeatures, int ClassId, NumFeatures x float }.
    // Models are not stored: a loaded classifier must be trained again.
    // Loading replaces the training set; each element gets the length it was
    // stored with, and NumFeatures is that of the last one. A stream that is
    // truncated, holds a negative count, NumClasses or length, or more
    // elements or features than it has bytes for throws CArchiveException;
    // the classifier is then left empty.
    void Serialize(CArchive& ar);

    // Loading a file that doesn't exist or can't be opened changes nothing.
    void LoadTrainingsData(CString path);
    // A file that can't be created is reported by a message box.
    void SaveTrainingsData(CString path);
    // The same with a path asked of the user (vek::AskPath); nothing happens
    // when the user cancels or gives an empty path.
    void LoadTrainingsData();
    void SaveTrainingsData();

    int NumClasses;
    int NumFeatures;
    CTypedPtrList<CPtrList, ZrCKlassenelement*> TrainingSet;
    CTypedPtrList<CPtrList, ZrCKlassenmuster*> Patterns;
    bool Trained;

private:
    void DeleteElementsAndModels();
    void LoadElements(CArchive& ar);
    void StoreElements(CArchive& ar);
};
