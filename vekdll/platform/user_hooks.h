#pragma once

#include <functional>
#include <optional>
#include <string>

#include "vekdll/export.h"

// The few places where the library speaks to a user or ends the process go
// through replaceable handlers, so that an application decides how a message
// is shown, how a path is asked for, and whether a fatal condition really
// ends the process. Handlers may be replaced from any thread.
namespace vek {

// ---- messages: default is one line on stderr
using MessageHandler = std::function<void(const std::string& text)>;
// Installs `handler` (an empty one restores the default) and returns the previous one.
VEKDLL_API MessageHandler SetMessageHandler(MessageHandler handler);
VEKDLL_API void ShowMessage(const std::string& text);

// ---- paths: default is a cancelled dialog
struct PathRequest {
    bool forOpening = true;        // false: the path is for saving
    bool promptOverwrite = false;  // saving: ask before replacing a file
    std::string defaultExtension;  // without the dot, e.g. "cls"
    std::string filter;            // the dialog's filter text, e.g. "Files (*.x)|*.x||"
};
using PathHandler = std::function<std::optional<std::string>(const PathRequest& request)>;
VEKDLL_API PathHandler SetPathHandler(PathHandler handler);
// The chosen path, or nothing if the user cancelled.
VEKDLL_API std::optional<std::string> AskPath(const PathRequest& request);

// ---- ending the process: default is std::exit(code)
// A replacement may throw instead, which unwinds out of the library call.
using ExitHandler = std::function<void(int code)>;
VEKDLL_API ExitHandler SetExitHandler(ExitHandler handler);
// Calls the handler; should it return, the process ends with std::exit(code).
[[noreturn]] VEKDLL_API void ExitProgram(int code);

} // namespace vek
