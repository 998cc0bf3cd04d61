#pragma once

// VEKDLL_API marks what the shared library exports. Everything else keeps the
// hidden default visibility, so the exported surface is exactly the classes
// and free functions that carry this mark.
#if defined(_WIN32)
#  if defined(VEKDLL_BUILDING_LIBRARY)
#    define VEKDLL_API __declspec(dllexport)
#  else
#    define VEKDLL_API __declspec(dllimport)
#  endif
#else
#  define VEKDLL_API __attribute__((visibility("default")))
#endif
