#pragma once

#include <cstdlib>

namespace vek::bench {

// True in CTest's smoke run of a benchmark (VEKDLL_BENCH_SMOKE=1), which only
// checks that the program works: sizes that merely cost time are left out.
inline bool IsSmokeRun()
{
    const char* smoke = std::getenv("VEKDLL_BENCH_SMOKE");
    return smoke != nullptr && smoke[0] == '1';
}

} // namespace vek::bench
