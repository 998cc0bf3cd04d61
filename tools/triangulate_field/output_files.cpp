#include "output_files.h"

#include <filesystem>
#include <system_error>

namespace vek::tools {

namespace {

namespace fs = std::filesystem;

constexpr const char* kSideFile = ".aux.xml";

void RemoveQuietly(const std::string& path)
{
    std::error_code ignored;
    fs::remove(path, ignored);
    fs::remove(path + kSideFile, ignored);
}

} // namespace

void WriteAtomically(const std::string& path, const std::function<void(const std::string& temporary)>& write)
{
    const std::string temporary = path + ".partial";
    RemoveQuietly(temporary);
    try {
        write(temporary);
        std::error_code ec;
        fs::rename(temporary, path, ec);
        if (ec) throw ToolError("cannot write " + path + ": " + ec.message());
        if (fs::exists(temporary + kSideFile, ec)) {
            fs::rename(temporary + kSideFile, path + kSideFile, ec);
            if (ec) throw ToolError("cannot write " + path + kSideFile + ": " + ec.message());
        } else {
            // A side file of an earlier run would contradict the new file.
            fs::remove(path + kSideFile, ec);
        }
    } catch (...) {
        RemoveQuietly(temporary);
        throw;
    }
}

} // namespace vek::tools
