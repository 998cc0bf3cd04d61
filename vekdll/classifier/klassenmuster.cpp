#include "vekdll/classifier/klassenmuster.h"

#include "vekdll/classifier/f_matrix.h"
#include "vekdll/foundation/safe_alloc.h"

ZrCKlassenmuster::ZrCKlassenmuster(int n)
{
    if (n < 0) n = 0;
    Covariance = CFMatrix::fmat_creat(n, n, nullptr);
    try {
        Mean = static_cast<float*>(SafeCalloc(static_cast<std::uint64_t>(n), sizeof(float)));
    } catch (...) {
        CFMatrix::fmat_free(Covariance);
        throw;
    }
}

ZrCKlassenmuster::~ZrCKlassenmuster()
{
    if (Covariance != nullptr) CFMatrix::fmat_free(Covariance);
    if (Mean != nullptr) SafeFree(Mean);
}

ZrCKlassenmuster& ZrCKlassenmuster::operator=(const ZrCKlassenmuster& other)
{
    Covariance = other.Covariance;
    Mean = other.Mean;
    return *this;
}
