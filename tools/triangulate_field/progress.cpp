#include "progress.h"

namespace vek::tools {

Progress::Progress(std::ostream& err, bool terminal, std::chrono::milliseconds quiet) : err_(err)
{
    if (!terminal) return;
    if (quiet > std::chrono::milliseconds::zero()) {
        watcher_ = std::thread([this, quiet] { Watch(quiet); });
    } else {
        speaking_ = true;
    }
}

Progress::~Progress()
{
    {
        const std::lock_guard lock(mutex_);
        stopping_ = true;
    }
    wake_.notify_all();
    if (watcher_.joinable()) watcher_.join();
}

void Progress::Stage(const std::string& name)
{
    const std::lock_guard lock(mutex_);
    stage_ = name;
    if (speaking_) Say(name);
}

void Progress::Watch(std::chrono::milliseconds quiet)
{
    std::unique_lock lock(mutex_);
    if (wake_.wait_for(lock, quiet, [this] { return stopping_; })) return;
    speaking_ = true;
    if (!stage_.empty()) Say(stage_);
}

void Progress::Say(const std::string& name)
{
    err_ << "triangulate_field: " << name << " ..." << std::endl;
}

} // namespace vek::tools
