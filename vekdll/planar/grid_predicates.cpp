#include "vekdll/planar/grid_predicates.h"

#include <cstdint>

namespace vek::detail {
namespace {

__extension__ typedef unsigned __int128 Unsigned128;

// A 64-bit integer that remembers whether any step on the way overflowed.
struct Checked {
    long long value;
    bool overflow;
};

Checked operator-(Checked a, Checked b)
{
    Checked r{0, a.overflow || b.overflow};
    r.overflow |= __builtin_sub_overflow(a.value, b.value, &r.value);
    return r;
}

Checked operator+(Checked a, Checked b)
{
    Checked r{0, a.overflow || b.overflow};
    r.overflow |= __builtin_add_overflow(a.value, b.value, &r.value);
    return r;
}

Checked operator*(Checked a, Checked b)
{
    Checked r{0, a.overflow || b.overflow};
    r.overflow |= __builtin_mul_overflow(a.value, b.value, &r.value);
    return r;
}

template <class Number>
Number FromGrid(long long v);

template <>
Checked FromGrid<Checked>(long long v)
{
    return Checked{v, false};
}

// Two's complement modulo 2^256, little-endian limbs. Differences of grid
// coordinates take 65 bits and products of three of them 195, so every
// intermediate of the formulas below is exact.
struct Wide {
    std::uint64_t limb[4];
};

Wide operator+(const Wide& a, const Wide& b)
{
    Wide r{};
    Unsigned128 carry = 0;
    for (int i = 0; i < 4; ++i) {
        const Unsigned128 sum = static_cast<Unsigned128>(a.limb[i]) + b.limb[i] + carry;
        r.limb[i] = static_cast<std::uint64_t>(sum);
        carry = sum >> 64;
    }
    return r;
}

Wide operator-(const Wide& a, const Wide& b)
{
    Wide negated{};
    for (int i = 0; i < 4; ++i) negated.limb[i] = ~b.limb[i];
    return a + negated + Wide{{1, 0, 0, 0}};
}

Wide operator*(const Wide& a, const Wide& b)
{
    Wide r{};
    for (int i = 0; i < 4; ++i) {
        Unsigned128 carry = 0;
        for (int j = 0; i + j < 4; ++j) {
            const Unsigned128 t = static_cast<Unsigned128>(a.limb[i]) * b.limb[j] + r.limb[i + j] + carry;
            r.limb[i + j] = static_cast<std::uint64_t>(t);
            carry = t >> 64;
        }
    }
    return r;
}

template <>
Wide FromGrid<Wide>(long long v)
{
    const std::uint64_t extension = v < 0 ? ~std::uint64_t{0} : 0;
    return Wide{{static_cast<std::uint64_t>(v), extension, extension, extension}};
}

int SignOf(const Checked& n)
{
    return n.value > 0 ? 1 : (n.value < 0 ? -1 : 0);
}

int SignOf(const Wide& n)
{
    if (static_cast<std::int64_t>(n.limb[3]) < 0) return -1;
    return (n.limb[0] | n.limb[1] | n.limb[2] | n.limb[3]) != 0 ? 1 : 0;
}

template <class Number>
void Difference(const long long a[3], const long long b[3], Number out[3])
{
    for (int i = 0; i < 3; ++i) out[i] = FromGrid<Number>(a[i]) - FromGrid<Number>(b[i]);
}

// u x v, component by component.
template <class Number>
void CrossProduct(const Number u[3], const Number v[3], Number out[3])
{
    out[0] = u[1] * v[2] - u[2] * v[1];
    out[1] = u[2] * v[0] - u[0] * v[2];
    out[2] = u[0] * v[1] - u[1] * v[0];
}

template <class Number>
Number Volume(const long long a[3], const long long b[3], const long long c[3], const long long p[3])
{
    Number pa[3];
    Number pb[3];
    Number pc[3];
    Difference(a, p, pa);
    Difference(b, p, pb);
    Difference(c, p, pc);
    Number minors[3];
    CrossProduct(pb, pc, minors);
    return pa[0] * minors[0] + pa[1] * minors[1] + pa[2] * minors[2];
}

template <class Number>
void Normal(const long long a[3], const long long b[3], const long long c[3], Number out[3])
{
    Number ab[3];
    Number ac[3];
    Difference(b, a, ab);
    Difference(c, a, ac);
    CrossProduct(ab, ac, out);
}

} // namespace

int GridVolumeSign(const long long a[3], const long long b[3], const long long c[3], const long long p[3])
{
    const Checked fast = Volume<Checked>(a, b, c, p);
    if (!fast.overflow) return SignOf(fast);
    return SignOf(Volume<Wide>(a, b, c, p));
}

bool GridCollinear(const long long a[3], const long long b[3], const long long c[3])
{
    Checked fast[3];
    Normal(a, b, c, fast);
    if (!fast[0].overflow && !fast[1].overflow && !fast[2].overflow) {
        return fast[0].value == 0 && fast[1].value == 0 && fast[2].value == 0;
    }
    Wide exact[3];
    Normal(a, b, c, exact);
    return SignOf(exact[0]) == 0 && SignOf(exact[1]) == 0 && SignOf(exact[2]) == 0;
}

} // namespace vek::detail
