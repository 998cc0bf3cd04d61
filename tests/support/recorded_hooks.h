#pragma once

// The library's message boxes and path requests, recorded for a test.

#include <optional>
#include <string>
#include <vector>

#include "vekdll/platform/user_hooks.h"

namespace vek::test {

// Records every message box and answers every path request with `reply`
// while it lives; the previous handlers come back afterwards.
class RecordedHooks {
public:
    explicit RecordedHooks(std::optional<std::string> reply = std::nullopt)
        : previousMessage_(SetMessageHandler([this](const std::string& text) { messages.push_back(text); })),
          previousPath_(SetPathHandler([this, reply](const PathRequest& request) {
              requests.push_back(request);
              return reply;
          }))
    {
    }
    ~RecordedHooks()
    {
        SetMessageHandler(previousMessage_);
        SetPathHandler(previousPath_);
    }
    RecordedHooks(const RecordedHooks&) = delete;
    RecordedHooks& operator=(const RecordedHooks&) = delete;

    std::vector<std::string> messages;
    std::vector<PathRequest> requests;

private:
    MessageHandler previousMessage_;
    PathHandler previousPath_;
};

} // namespace vek::test
