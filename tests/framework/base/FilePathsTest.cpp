#include "framework/base/FilePaths.h"

#include "framework/base/ChFile.h"
#include "tests/framework/base/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>

namespace kelvo {
namespace {

struct PathCase {
    const char* path;
    const char* directory;
    const char* title;
    const char* extension;
};

const PathCase kPathCases[] = {
    {"", "", "", ""},
    {"C:\\a.b\\file", "C:\\a.b\\", "file", ""},
    {"C:\\a.b\\file.kvf", "C:\\a.b\\", "file", "kvf"},
    {"/films/a.b/file.kvf", "/films/a.b/", "file", "kvf"},
    {"a\\b/c.d.kaf", "a\\b/", "c.d", "kaf"},
    {"file.kvf", "", "file", "kvf"},
    {".profile", "", ".profile", ""},
    {"C:\\x\\", "C:\\x\\", "", ""},
    {"file.", "", "file", ""},
    {"/home/.profile", "/home/", ".profile", "profile"},
};

TEST(PathParts, AreCutAtTheLastSeparatorAndTheLastDot) {
    for (const PathCase& each : kPathCases) {
        EXPECT_EQ(PathDirectory(each.path), each.directory) << each.path;
        EXPECT_EQ(PathTitle(each.path), each.title) << each.path;
        EXPECT_EQ(PathExtension(each.path), each.extension) << each.path;
    }
    EXPECT_EQ(PathFileName("C:\\a.b\\file.kvf"), "file.kvf");
}

TEST(PathResolution, PutsABareNameBehindTheDirectoryOrTheProgramFile) {
    const CString program = ProgramDirectory();
    const char last = program[program.Length() - 1];
    EXPECT_TRUE(last == '/' || last == '\\');
    EXPECT_TRUE(std::filesystem::is_directory(program.c_str()));

    EXPECT_EQ(ResolvePath(nullptr, "clip.kvf", nullptr), program + "clip.kvf");
    EXPECT_EQ(ResolvePath(nullptr, "clip.kvf", ""), program + "clip.kvf");
    EXPECT_EQ(ResolvePath(nullptr, "clip.kvf", "D:\\films\\"), "D:\\films\\clip.kvf");
    EXPECT_EQ(ResolvePath(nullptr, "\\clip.kvf", "D:\\films"), "D:\\films\\clip.kvf");
    EXPECT_EQ(ResolvePath(nullptr, "C:\\clip.kvf", "D:\\films\\"), "C:\\clip.kvf");
    EXPECT_EQ(ResolvePath(nullptr, "a/clip.kvf", "D:\\films\\"), "a/clip.kvf");
    EXPECT_EQ(ResolvePath(nullptr, "/clip.kvf", "D:\\films\\"), "/clip.kvf");
}

TEST(PathResolution, IsWhatOpenAndCreateUse) {
    const TemporaryFolder folder;
    const CString directory = folder.Directory();
    ChFile file;
    ASSERT_TRUE(file.CreateFresh("clip.kvf", directory.c_str()));
    EXPECT_EQ(file.FileName(), directory + "clip.kvf");
    EXPECT_TRUE(file.CloseFile());
    EXPECT_TRUE(file.OpenReadOnly("clip.kvf", directory.c_str()));
    EXPECT_TRUE(file.CloseFile());
    EXPECT_FALSE(file.OpenReadOnly("no such film.kvf"));
    EXPECT_EQ(file.FileName(), ProgramDirectory() + "no such film.kvf");
}

} // namespace
} // namespace kelvo
