#pragma once

#include "vekdll/classifier/klassifikator.h"
#include "vekdll/export.h"

// A Gaussian classifier: each class is modelled by the mean and covariance of
// its training elements, and a sample goes to the class with the largest
// quadratic discriminant
//     1 / NumClasses - 0.5 log(det C) - 0.5 (x - m)' C^-1 (x - m),
// or to no class (-1) when even the best score is below -5000.
//
// Both trainings append one model per class, for classes 0 to NumClasses-1
// in order, to Patterns without emptying it first: train once after filling
// the training set, and call ClearAll (or use a new classifier) before
// training anew. Only elements of at least NumFeatures features take part;
// their first NumFeatures features are used. A class without elements gets a
// not-a-number model that never wins.
class VEKDLL_API ZrCBayesKlassifikator : public ZrCKlassifikator {
public:
    ZrCBayesKlassifikator();
    ~ZrCBayesKlassifikator() override;

    // The class of `e`, or -1. Doesn't look at Trained: before a training no
    // model exists, every class scores 0, and class 0 wins (-1 if NumClasses
    // is 0). A model whose matrix can't be inverted, or that was trained for
    // another number of features, scores not-a-number and never wins. An
    // element with fewer than NumFeatures features gives -1.
    int Classify(ZrCKlassenelement* e) override;

    // The base class's slot, which does nothing.
    using ZrCKlassifikator::Training;
    // Models whose variances are held at or above minVariance[i] (an array of
    // NumFeatures values) at every step of the summation. Runs on an empty
    // training set too, giving not-a-number models. A null `minVariance`
    // sets no lower limit.
    void Training(float* minVariance);
    // Models with 0.1 added to each variance once the sums are done, which
    // keeps the covariance invertible. Nothing happens on an empty training
    // set. With `show`, the first nine means of each class are shown in a
    // message box as soon as they are known (when there are nine features).
    void Training(bool show);

private:
    void BuildModels(const float* minVariance, bool loadDiagonal, bool show);
    ZrCKlassenmuster* BuildModel(int classId, const float* minVariance, bool loadDiagonal, bool show);
};
