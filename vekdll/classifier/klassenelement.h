#pragma once

#include "vekdll/export.h"

// One labelled feature vector of a training set or one sample to classify.
// `Features` is owned and comes from the C heap (calloc), so a caller may
// hand in or take out the array with malloc/free.
class VEKDLL_API ZrCKlassenelement {
public:
    // `n` zeros labelled `classId`; a negative `n` gives an empty vector.
    ZrCKlassenelement(int n, int classId);
    // A deep copy of `other` (an empty vector when `other` is null).
    explicit ZrCKlassenelement(ZrCKlassenelement* other);
    ZrCKlassenelement(const ZrCKlassenelement& other);
    ~ZrCKlassenelement();

    // Copies the members as they stand, the `Features` pointer included, so
    // that afterwards both objects share one array. Existing callers rely on
    // this shallow assignment; before both objects are destroyed one of them
    // must give up the array (set `Features` to null). The copy constructor
    // is the deep copy.
    ZrCKlassenelement& operator=(const ZrCKlassenelement& other);

    // Index of the first largest / smallest feature; -1 for an empty vector.
    int ArgMax();
    int ArgMin();

    // Divide every feature by the largest / smallest feature, or scale them
    // to a sum of 1000. A divisor of 0 yields infinities or not-a-number, as
    // plain float division does; an empty vector stays as it is.
    void NormalizeMAX();
    void NormalizeMIN();
    void NormalizeSUM();

    // Euclidean norm.
    float d220();
    // Squared Euclidean distance to `o`, without the root.
    float d22(ZrCKlassenelement* o);
    // Squared distance to `o` after fitting this vector to `o` by a gain and
    // an offset, so that brightness and contrast changes of a feature curve
    // don't count. Trained thresholds depend on its exact value.
    float d22A(ZrCKlassenelement* o);

    int NumFeatures;
    int ClassId;
    float* Features;
};
