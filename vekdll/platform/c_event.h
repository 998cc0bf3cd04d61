#pragma once

#include <condition_variable>
#include <mutex>

#include "vekdll/export.h"

// A manual-reset event: once set it stays set, releasing every waiter, until
// it is reset. Workers of the threaded operations each signal one.
class VEKDLL_API CEvent {
public:
    explicit CEvent(bool initiallySet = false);

    CEvent(const CEvent&) = delete;
    CEvent& operator=(const CEvent&) = delete;

    bool SetEvent();
    bool ResetEvent();
    // Blocks, with no time-out, until the event is set.
    void Wait();
    bool IsSet() const;

private:
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    bool set_;
};
