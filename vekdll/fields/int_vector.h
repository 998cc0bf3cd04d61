#pragma once

// A counted run of ints handed to the caller, who owns `Data` and releases it
// with delete[].
struct t_intvector {
    int Length = 0;
    int* Data = nullptr;
};
