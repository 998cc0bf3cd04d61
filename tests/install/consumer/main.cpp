// Links against an installed vekdll and uses a little of it.
#include <vekdll/vekdll.h>

#include <cstdio>

int main()
{
    SSEPoint a;
    a.sse = _mm_setr_ps(3.0f, 4.0f, 0.0f, 0.0f);
    const float length = CSSEFns::vectorlen(a.sse);
    void* block = SafeAlignedAlloc(64, 16);
    SafeAlignedFree(block);
    std::printf("vectorlen = %g\n", length);
    return length == 5.0f ? 0 : 1;
}
