#pragma once

#include "vekdll/export.h"

// The trained Gaussian model of one class: the mean vector and the
// covariance matrix of its training elements.
class VEKDLL_API ZrCKlassenmuster {
public:
    // A zero mean of `n` values and a zero n x n covariance (CFMatrix);
    // a negative `n` counts as 0.
    explicit ZrCKlassenmuster(int n);
    ~ZrCKlassenmuster();

    // Shallow, as for ZrCKlassenelement: both objects then share the arrays
    // and one of them must give them up (set them to null) before both are
    // destroyed. There is no copy constructor for this reason.
    ZrCKlassenmuster(const ZrCKlassenmuster&) = delete;
    ZrCKlassenmuster& operator=(const ZrCKlassenmuster& other);

    float** Covariance;
    float* Mean;
};
