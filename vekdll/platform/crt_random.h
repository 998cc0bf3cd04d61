#pragma once

#include <cstdint>

namespace vek {

// The C runtime's classic 15-bit linear congruential generator, as a private
// object: the same seed gives the same sequence on every platform, and no
// process-wide state is touched. A fresh generator behaves as after srand(1).
class CrtRandom {
public:
    static constexpr int Max = 0x7FFF;

    explicit CrtRandom(std::uint32_t seed = 1) : state_(seed) {}

    void Seed(std::uint32_t seed) { state_ = seed; }
    // The next value in 0 ... Max.
    int Next()
    {
        state_ = state_ * 214013u + 2531011u;
        return static_cast<int>((state_ >> 16) & 0x7FFFu);
    }

private:
    std::uint32_t state_;
};

} // namespace vek
