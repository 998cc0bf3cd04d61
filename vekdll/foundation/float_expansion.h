#pragma once

// Exact arithmetic on sums of doubles ("expansions"), for the adaptive stages
// of the exact predicates. An expansion is a short array of doubles whose
// exact sum is the value; its components are non-overlapping and sorted by
// increasing magnitude, so the last one alone carries the sign and almost all
// of the value. Sums, differences and products of expansions are exact as
// long as nothing overflows and no product's rounding error falls below the
// smallest subnormal; the callers scale their inputs so that neither happens.
//
// Every step relies on round-to-nearest-even and on each operation being
// rounded on its own: the library is built without contraction into fused
// multiply-adds and without extended-precision registers.

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

namespace vek::detail {

// hi + lo exactly, where hi is the rounded result and lo its rounding error.
struct ExactPair {
    double hi;
    double lo;
};

// a + b exactly (Knuth's branch-free form, valid for any order of magnitudes).
inline ExactPair TwoSum(double a, double b)
{
    const double sum = a + b;
    const double bPart = sum - a;
    const double aPart = sum - bPart;
    return {sum, (a - aPart) + (b - bPart)};
}

// a - b exactly.
inline ExactPair TwoDiff(double a, double b)
{
    const double difference = a - b;
    const double bPart = a - difference;
    const double aPart = difference + bPart;
    return {difference, (a - aPart) + (bPart - b)};
}

// a as the sum of two halves of at most 26 significant bits each, so that
// the product of two halves is exact. 2^27 + 1 splits a 53-bit significand.
inline ExactPair Split(double a)
{
    constexpr double kSplitter = 134217729.0;
    const double scaled = kSplitter * a;
    const double high = scaled - (scaled - a);
    return {high, a - high};
}

// a * b exactly, b given already split.
inline ExactPair TwoProduct(double a, double b, ExactPair bHalves)
{
    const double product = a * b;
    const ExactPair aHalves = Split(a);
    const double err1 = product - aHalves.hi * bHalves.hi;
    const double err2 = err1 - aHalves.lo * bHalves.hi;
    const double err3 = err2 - aHalves.hi * bHalves.lo;
    return {product, aHalves.lo * bHalves.lo - err3};
}

inline ExactPair TwoProduct(double a, double b)
{
    return TwoProduct(a, b, Split(b));
}

// The core loops, on raw arrays: each returns the number of components
// written to `out`, which must have room for the sizes named. A zero
// component is dropped, except that a zero value keeps one.

// e + f, merged by magnitude and carried up with exact sums: up to en + fn.
inline int SumComponents(const double* e, int en, const double* f, int fn, double* out)
{
    int i = 0;
    int j = 0;
    const auto smaller = [&]() {
        return (j >= fn || (i < en && std::fabs(e[i]) <= std::fabs(f[j]))) ? e[i++] : f[j++];
    };
    int n = 0;
    double carry = smaller();
    while (i < en || j < fn) {
        const ExactPair step = TwoSum(carry, smaller());
        if (step.lo != 0.0) out[n++] = step.lo;
        carry = step.hi;
    }
    if (carry != 0.0 || n == 0) out[n++] = carry;
    return n;
}

// e * b: up to 2 * en.
inline int ScaleComponents(const double* e, int en, double b, double* out)
{
    const ExactPair bHalves = Split(b);
    const ExactPair first = TwoProduct(e[0], b, bHalves);
    int n = 0;
    if (first.lo != 0.0) out[n++] = first.lo;
    double carry = first.hi;
    for (int i = 1; i < en; ++i) {
        const ExactPair product = TwoProduct(e[i], b, bHalves);
        const ExactPair low = TwoSum(carry, product.lo);
        if (low.lo != 0.0) out[n++] = low.lo;
        const ExactPair high = TwoSum(product.hi, low.hi);
        if (high.lo != 0.0) out[n++] = high.lo;
        carry = high.hi;
    }
    if (carry != 0.0 || n == 0) out[n++] = carry;
    return n;
}

// An expansion with room for Capacity components, on the stack.
template <int Capacity>
class Expansion {
public:
    static constexpr int kCapacity = Capacity;

    // A small expansion is copied whole, which the compiler does in a few
    // moves. A large one (the exact stages hold some thousand components)
    // leaves its unused room unset and is copied as far as it is in use.
    Expansion()
    {
        if constexpr (kCopiedWhole) components_.fill(0.0);
    }
    Expansion(const Expansion& other) : Expansion() { *this = other; }
    Expansion& operator=(const Expansion& other)
    {
        size_ = other.size_;
        if constexpr (kCopiedWhole) {
            components_ = other.components_;
        } else {
            std::copy(other.components_.begin(), other.components_.begin() + size_, components_.begin());
        }
        return *this;
    }
    explicit Expansion(double value) : Expansion()
    {
        components_[0] = value;
        size_ = 1;
    }
    explicit Expansion(ExactPair pair) : Expansion()
    {
        // The rounding error is the smaller component; a zero one is dropped.
        if (pair.lo != 0.0) components_[size_++] = pair.lo;
        components_[size_++] = pair.hi;
    }

    int Size() const { return size_; }
    const double* Data() const { return components_.data(); }
    double* Data() { return components_.data(); }
    void Resize(int size) { size_ = size; }

    // The largest component: the exact sign, and the value to within a
    // relative error of about one unit in the last place.
    double MostSignificant() const { return components_[size_ - 1]; }

    // The sum of the components from the smallest up: the value to within
    // a few units in the last place.
    double Estimate() const
    {
        double sum = 0.0;
        for (int i = 0; i < size_; ++i) sum += components_[i];
        return sum;
    }

private:
    static constexpr bool kCopiedWhole = Capacity <= 32;
    std::array<double, Capacity> components_;
    int size_ = 0;
};

template <int A, int B>
Expansion<A + B> operator+(const Expansion<A>& e, const Expansion<B>& f)
{
    Expansion<A + B> sum;
    sum.Resize(SumComponents(e.Data(), e.Size(), f.Data(), f.Size(), sum.Data()));
    return sum;
}

template <int A>
Expansion<A> operator-(Expansion<A> e)
{
    for (int i = 0; i < e.Size(); ++i) e.Data()[i] = -e.Data()[i];
    return e;
}

template <int A, int B>
Expansion<A + B> operator-(const Expansion<A>& e, const Expansion<B>& f)
{
    return e + (-f);
}

// e * f as the sum over the components of f of e scaled by each.
template <int A, int B>
Expansion<2 * A * B> operator*(const Expansion<A>& e, const Expansion<B>& f)
{
    Expansion<2 * A * B> buffers[2];
    Expansion<2 * A* B>* sum = &buffers[0];
    Expansion<2 * A* B>* next = &buffers[1];
    sum->Resize(ScaleComponents(e.Data(), e.Size(), f.Data()[0], sum->Data()));
    Expansion<2 * A> part;
    for (int j = 1; j < f.Size(); ++j) {
        part.Resize(ScaleComponents(e.Data(), e.Size(), f.Data()[j], part.Data()));
        next->Resize(SumComponents(sum->Data(), sum->Size(), part.Data(), part.Size(), next->Data()));
        std::swap(sum, next);
    }
    return *sum;
}

} // namespace vek::detail
