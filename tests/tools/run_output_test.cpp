// How triangulate_field hands its results over: whole files only, under
// their names, and progress lines only for a person at a terminal.

#include <gtest/gtest.h>

#include <chrono>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>

#include "tools/tool_test_support.h"
#include "tools/triangulate_field/output_files.h"
#include "tools/triangulate_field/progress.h"

namespace {

using namespace vek::test;
using vek::tools::Progress;
using vek::tools::WriteAtomically;

std::string Contents(const std::string& path)
{
    const Bytes bytes = ReadBytes(path);
    return std::string(bytes.begin(), bytes.end());
}

TEST(ResultFiles, AFileAppearsUnderItsNameOnlyWhenWhole)
{
    ScratchFolder folder;
    const std::string path = folder.File("surface.tif");
    std::string usedName;
    WriteAtomically(path, [&](const std::string& temporary) {
        usedName = temporary;
        std::ofstream(temporary) << "first";
        // While it is written, the real name holds nothing.
        EXPECT_FALSE(fs::exists(path));
    });
    EXPECT_NE(usedName, path);
    EXPECT_EQ(fs::path(usedName).parent_path(), fs::path(path).parent_path());
    EXPECT_EQ(Contents(path), "first");
    EXPECT_EQ(FilesIn(folder.File("")), std::vector<std::string>{"surface.tif"});

    // A write that fails half way leaves the earlier file as it was and no
    // trace of itself.
    EXPECT_THROW(WriteAtomically(path,
                                 [](const std::string& temporary) {
                                     std::ofstream(temporary) << "half";
                                     std::ofstream(temporary + ".aux.xml") << "<half/>";
                                     throw vek::tools::ToolError("disk full");
                                 }),
                 vek::tools::ToolError);
    EXPECT_EQ(Contents(path), "first");
    EXPECT_EQ(FilesIn(folder.File("")), std::vector<std::string>{"surface.tif"});

    // A side file written beside the temporary goes along under the new
    // name, and a later write without one removes the stale one.
    WriteAtomically(path, [](const std::string& temporary) {
        std::ofstream(temporary) << "second";
        std::ofstream(temporary + ".aux.xml") << "<side/>";
    });
    EXPECT_EQ(FilesIn(folder.File("")), (std::vector<std::string>{"surface.tif", "surface.tif.aux.xml"}));
    EXPECT_EQ(Contents(path + ".aux.xml"), "<side/>");
    WriteAtomically(path, [](const std::string& temporary) { std::ofstream(temporary) << "third"; });
    EXPECT_EQ(FilesIn(folder.File("")), std::vector<std::string>{"surface.tif"});
}

TEST(RunProgress, StagesAreToldOnlyAtATerminalAndOnlyAfterTheQuietTime)
{
    std::ostringstream log;
    {
        // Not a terminal: not a word, however long the run.
        Progress progress(log, false, std::chrono::milliseconds(0));
        progress.Stage("reading");
        progress.Stage("triangulating");
    }
    EXPECT_EQ(log.str(), "");
    {
        // A terminal, but the run ends within the quiet time.
        Progress progress(log, true, std::chrono::seconds(10));
        progress.Stage("reading");
    }
    EXPECT_EQ(log.str(), "");
    {
        // A terminal and past the quiet time: a line per stage.
        Progress progress(log, true, std::chrono::milliseconds(0));
        progress.Stage("reading");
        progress.Stage("triangulating");
    }
    EXPECT_EQ(log.str(), "triangulate_field: reading ...\ntriangulate_field: triangulating ...\n");
    log.str("");
    {
        // The stage under way when the quiet time runs out is told then.
        Progress progress(log, true, std::chrono::milliseconds(20));
        progress.Stage("triangulating");
        std::this_thread::sleep_for(std::chrono::milliseconds(400));
    }
    EXPECT_EQ(log.str(), "triangulate_field: triangulating ...\n");
}

TEST(RunProgress, TheProgramInTestsIsSilentOnItsErrorStream)
{
    // RunTriangulateField takes its error stream for no terminal unless told.
    ScratchFolder folder;
    const vek::tools::HeightRaster flat{8, 8, std::vector<float>(64, 5.0f)};
    WriteBytes(folder.File("flat.pfm"), Text("Pf 8 8 -1.0\n") + FloatBytes(flat.heights, true));
    const Outcome o = RunProgram({folder.File("flat.pfm"), "-o", folder.File("out")});
    EXPECT_EQ(o.code, 0);
    EXPECT_EQ(o.err, "");
}

} // namespace
