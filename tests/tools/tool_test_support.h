#pragma once

// Helpers shared by the tests of triangulate_field: a scratch folder per
// test, files from bytes, and the program run in-process.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include "tools/triangulate_field/run.h"

namespace vek::test {

namespace fs = std::filesystem;
using Bytes = std::vector<unsigned char>;

// A folder of its own for each test, removed afterwards.
class ScratchFolder {
public:
    ScratchFolder()
    {
        fs::remove_all(path_);
        fs::create_directories(path_);
    }
    ~ScratchFolder() { fs::remove_all(path_); }
    std::string File(const std::string& name) const { return (path_ / name).string(); }

private:
    fs::path path_ = fs::temp_directory_path() /
                     ("triangulate_field_test_" + std::string(testing::UnitTest::GetInstance()->current_test_info()->name()));
};

inline void WriteBytes(const std::string& path, const Bytes& bytes)
{
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

inline Bytes ReadBytes(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    return Bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
}

inline Bytes Text(const std::string& s) { return Bytes(s.begin(), s.end()); }

inline Bytes operator+(Bytes a, const Bytes& b)
{
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

inline Bytes FloatBytes(const std::vector<float>& values, bool littleEndian)
{
    Bytes bytes;
    for (float v : values) {
        std::uint32_t bits;
        std::memcpy(&bits, &v, sizeof bits);
        for (int k = 0; k < 4; ++k) bytes.push_back(static_cast<unsigned char>(bits >> (8 * (littleEndian ? k : 3 - k))));
    }
    return bytes;
}

// The "v" and "f" lines of a Wavefront OBJ, face indices from 1 as written.
struct ObjMesh {
    std::vector<std::array<double, 3>> vertices;
    std::vector<std::array<int, 3>> faces;
};

inline ObjMesh ReadObj(const std::string& path)
{
    ObjMesh mesh;
    std::ifstream in(path);
    for (std::string line; std::getline(in, line);) {
        std::istringstream words(line);
        std::string tag;
        words >> tag;
        if (tag == "v") {
            std::array<double, 3> v{};
            words >> v[0] >> v[1] >> v[2];
            mesh.vertices.push_back(v);
        } else if (tag == "f") {
            std::array<int, 3> f{};
            words >> f[0] >> f[1] >> f[2];
            mesh.faces.push_back(f);
        }
    }
    return mesh;
}

// The names of the files in a folder, sorted.
inline std::vector<std::string> FilesIn(const std::string& folder)
{
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder)) names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

struct Outcome {
    int code;
    std::string out, err;
};

inline Outcome RunProgram(const std::vector<std::string>& args)
{
    std::ostringstream out, err;
    const int code = vek::tools::RunTriangulateField(args, out, err);
    return {code, out.str(), err.str()};
}

// The program refused with exit code 2 and one line on stderr.
inline void ExpectOneLineRefusal(const Outcome& o)
{
    EXPECT_EQ(o.code, 2);
    ASSERT_FALSE(o.err.empty());
    EXPECT_EQ(o.err.find('\n'), o.err.size() - 1) << o.err;
    EXPECT_EQ(o.err.rfind("triangulate_field: ", 0), 0u) << o.err;
}

} // namespace vek::test
