#include "vekdll/platform/user_hooks.h"

#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <utility>

namespace vek {
namespace {

std::mutex& HookMutex()
{
    static std::mutex mutex;
    return mutex;
}

MessageHandler& CurrentMessageHandler()
{
    static MessageHandler handler;
    return handler;
}

PathHandler& CurrentPathHandler()
{
    static PathHandler handler;
    return handler;
}

ExitHandler& CurrentExitHandler()
{
    static ExitHandler handler;
    return handler;
}

template <class Handler>
Handler Exchange(Handler& slot, Handler replacement)
{
    std::lock_guard<std::mutex> lock(HookMutex());
    return std::exchange(slot, std::move(replacement));
}

template <class Handler>
Handler Current(const Handler& slot)
{
    std::lock_guard<std::mutex> lock(HookMutex());
    return slot;
}

} // namespace

MessageHandler SetMessageHandler(MessageHandler handler)
{
    return Exchange(CurrentMessageHandler(), std::move(handler));
}

void ShowMessage(const std::string& text)
{
    if (const MessageHandler handler = Current(CurrentMessageHandler())) {
        handler(text);
        return;
    }
    // Without a screen the text becomes one line: line breaks inside the
    // message are shown as spaces.
    std::string line = text;
    for (char& c : line) {
        if (c == '\n' || c == '\r') c = ' ';
    }
    std::fprintf(stderr, "%s\n", line.c_str());
}

PathHandler SetPathHandler(PathHandler handler)
{
    return Exchange(CurrentPathHandler(), std::move(handler));
}

std::optional<std::string> AskPath(const PathRequest& request)
{
    if (const PathHandler handler = Current(CurrentPathHandler())) return handler(request);
    return std::nullopt;
}

ExitHandler SetExitHandler(ExitHandler handler)
{
    return Exchange(CurrentExitHandler(), std::move(handler));
}

void ExitProgram(int code)
{
    if (const ExitHandler handler = Current(CurrentExitHandler())) handler(code);
    std::exit(code);
}

} // namespace vek
