#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <ostream>
#include <string>
#include <thread>

namespace vek::tools {

// Tells a person at a terminal which stage a long run is in: nothing during
// the first second, then a line on `err` for the stage under way and for
// each stage after. When `err` is not a terminal (a log, a pipe, a test) it
// says nothing at all, so that the report stays what it was.
class Progress {
public:
    Progress(std::ostream& err, bool terminal, std::chrono::milliseconds quiet = std::chrono::seconds(1));
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void Stage(const std::string& name);

private:
    void Watch(std::chrono::milliseconds quiet);
    void Say(const std::string& name);

    std::ostream& err_;
    std::mutex mutex_;
    std::condition_variable wake_;
    std::string stage_;
    bool speaking_ = false;
    bool stopping_ = false;
    // Runs only at a terminal: waits out the quiet second, then tells the
    // stage under way.
    std::thread watcher_;
};

} // namespace vek::tools
