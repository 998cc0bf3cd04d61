#include "vekdll/platform/c_event.h"

CEvent::CEvent(bool initiallySet) : set_(initiallySet)
{
}

bool CEvent::SetEvent()
{
    {
        std::lock_guard<std::mutex> lock(mutex_);
        set_ = true;
    }
    changed_.notify_all();
    return true;
}

bool CEvent::ResetEvent()
{
    std::lock_guard<std::mutex> lock(mutex_);
    set_ = false;
    return true;
}

void CEvent::Wait()
{
    std::unique_lock<std::mutex> lock(mutex_);
    changed_.wait(lock, [this] { return set_; });
}

bool CEvent::IsSet() const
{
    std::lock_guard<std::mutex> lock(mutex_);
    return set_;
}
