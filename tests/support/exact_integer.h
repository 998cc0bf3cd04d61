#pragma once

// Signed integers of any size, and doubles brought onto one integer grid,
// for exact reference values in the tests: every double is m * 2^e with an
// integer m, so points of doubles become points of integers after scaling
// by a common power of two, and any polynomial in them is evaluated without
// a rounding error.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

namespace vek::test {

class ExactInteger {
public:
    ExactInteger() = default;
    ExactInteger(std::int64_t value) : negative_(value < 0)
    {
        std::uint64_t magnitude = value < 0 ? 0 - static_cast<std::uint64_t>(value) : static_cast<std::uint64_t>(value);
        for (; magnitude != 0; magnitude >>= 32) limbs_.push_back(static_cast<std::uint32_t>(magnitude));
    }

    int Sign() const { return limbs_.empty() ? 0 : (negative_ ? -1 : 1); }

    ExactInteger ShiftedLeft(int bits) const
    {
        ExactInteger r;
        r.negative_ = negative_;
        r.limbs_.assign(static_cast<std::size_t>(bits / 32), 0u);
        std::uint32_t carry = 0;
        const int shift = bits % 32;
        for (std::uint32_t limb : limbs_) {
            r.limbs_.push_back(shift == 0 ? limb : (limb << shift) | carry);
            carry = shift == 0 ? 0 : limb >> (32 - shift);
        }
        r.limbs_.push_back(carry);
        r.Trim();
        return r;
    }

    friend ExactInteger operator-(ExactInteger a)
    {
        a.negative_ = !a.negative_;
        a.Trim();
        return a;
    }

    friend ExactInteger operator+(const ExactInteger& a, const ExactInteger& b)
    {
        if (a.negative_ == b.negative_) return WithSign(AddMagnitudes(a.limbs_, b.limbs_), a.negative_);
        // Opposite signs: the larger magnitude wins.
        if (CompareMagnitudes(a.limbs_, b.limbs_) >= 0)
            return WithSign(SubtractMagnitudes(a.limbs_, b.limbs_), a.negative_);
        return WithSign(SubtractMagnitudes(b.limbs_, a.limbs_), b.negative_);
    }

    friend ExactInteger operator-(const ExactInteger& a, const ExactInteger& b) { return a + (-b); }

    friend ExactInteger operator*(const ExactInteger& a, const ExactInteger& b)
    {
        std::vector<std::uint32_t> product(a.limbs_.size() + b.limbs_.size(), 0u);
        for (std::size_t i = 0; i < a.limbs_.size(); ++i) {
            std::uint64_t carry = 0;
            for (std::size_t j = 0; j < b.limbs_.size(); ++j) {
                const std::uint64_t t = std::uint64_t{a.limbs_[i]} * b.limbs_[j] + product[i + j] + carry;
                product[i + j] = static_cast<std::uint32_t>(t);
                carry = t >> 32;
            }
            product[i + b.limbs_.size()] = static_cast<std::uint32_t>(carry);
        }
        return WithSign(std::move(product), a.negative_ != b.negative_);
    }

private:
    using Limbs = std::vector<std::uint32_t>;

    static ExactInteger WithSign(Limbs limbs, bool negative)
    {
        ExactInteger r;
        r.limbs_ = std::move(limbs);
        r.negative_ = negative;
        r.Trim();
        return r;
    }

    void Trim()
    {
        while (!limbs_.empty() && limbs_.back() == 0) limbs_.pop_back();
        if (limbs_.empty()) negative_ = false;
    }

    static int CompareMagnitudes(const Limbs& a, const Limbs& b)
    {
        if (a.size() != b.size()) return a.size() < b.size() ? -1 : 1;
        for (std::size_t i = a.size(); i-- > 0;) {
            if (a[i] != b[i]) return a[i] < b[i] ? -1 : 1;
        }
        return 0;
    }

    static Limbs AddMagnitudes(const Limbs& a, const Limbs& b)
    {
        Limbs sum(std::max(a.size(), b.size()) + 1, 0u);
        std::uint64_t carry = 0;
        for (std::size_t i = 0; i < sum.size(); ++i) {
            const std::uint64_t t = carry + (i < a.size() ? a[i] : 0u) + (i < b.size() ? b[i] : 0u);
            sum[i] = static_cast<std::uint32_t>(t);
            carry = t >> 32;
        }
        return sum;
    }

    // |a| - |b| for |a| >= |b|.
    static Limbs SubtractMagnitudes(const Limbs& a, const Limbs& b)
    {
        Limbs difference(a.size(), 0u);
        std::int64_t borrow = 0;
        for (std::size_t i = 0; i < a.size(); ++i) {
            std::int64_t t = std::int64_t{a[i]} - (i < b.size() ? b[i] : 0u) - borrow;
            borrow = t < 0 ? 1 : 0;
            if (t < 0) t += std::int64_t{1} << 32;
            difference[i] = static_cast<std::uint32_t>(t);
        }
        return difference;
    }

    bool negative_ = false;
    Limbs limbs_; // magnitude, least significant limb first, no leading zero limbs
};

// The values as integers on their finest common grid 2^e: value[i] = result[i] * 2^e.
inline std::vector<ExactInteger> OnCommonGrid(const std::vector<double>& values)
{
    struct Dyadic {
        std::int64_t mantissa;
        int exponent;
    };
    std::vector<Dyadic> dyadic;
    int finest = 0;
    bool any = false;
    for (double v : values) {
        int exponent = 0;
        const double fraction = std::frexp(v, &exponent); // v = fraction * 2^exponent, 0.5 <= |fraction| < 1
        const Dyadic d{static_cast<std::int64_t>(std::ldexp(fraction, 53)), exponent - 53};
        dyadic.push_back(d);
        if (v != 0.0) {
            finest = any ? std::min(finest, d.exponent) : d.exponent;
            any = true;
        }
    }
    std::vector<ExactInteger> integers;
    for (const Dyadic& d : dyadic)
        integers.push_back(ExactInteger(d.mantissa).ShiftedLeft(d.mantissa == 0 ? 0 : d.exponent - finest));
    return integers;
}

// The sign of twice the signed area of the triangle a, b, c: 1 if it
// turns left (counter-clockwise), -1 if right, 0 if the three are collinear.
inline int ExactOrientation(double ax, double ay, double bx, double by, double cx, double cy)
{
    const std::vector<ExactInteger> n = OnCommonGrid({ax, ay, bx, by, cx, cy});
    return ((n[2] - n[0]) * (n[5] - n[1]) - (n[3] - n[1]) * (n[4] - n[0])).Sign();
}

} // namespace vek::test
