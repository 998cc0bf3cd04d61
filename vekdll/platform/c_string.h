#pragma once

#include <string>

// The framework's string classes. Narrow strings carry UTF-8 text and paths;
// the wide form exists only where an interface takes a wide string.
using CString = std::string;
using CStringA = std::string;
using CStringW = std::wstring;
