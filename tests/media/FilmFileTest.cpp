#include "media/FilmFile.h"

#include "container/AVDirectory.h"
#include "platform/base/file_calls.h"
#include "tests/media/MediaFiles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>

namespace kelvo::test {

namespace {

using testing::ElementsAre;

Bytes Pattern(std::size_t length, std::uint8_t seed) {
    Bytes bytes(length);
    for (std::size_t i = 0; i < length; ++i) {
        bytes[i] = static_cast<std::uint8_t>(seed + i * 7);
    }
    return bytes;
}

TEST(FilmFiles, HoldBothTracksBehindTheirDirectory) {
    const TemporaryFolder folder;
    const CString sound = folder.Write("a.kaf", Pattern(1000, 1));
    const CString picture = folder.Write("a.kvf", Pattern(5000, 2));
    const CString film = folder.Name("a.kva");
    ASSERT_EQ(WriteFilmFile(film, sound, picture), Error{});
    const Bytes directory{16, 0, 0, 0, 0xF8, 3, 0, 0, 0xF8, 3, 0, 0, 0x80, 0x17, 0, 0};
    EXPECT_EQ(ReadFile(film), Joined({directory, Pattern(1000, 1), Pattern(5000, 2)}));
    EXPECT_THAT(folder.Files(), ElementsAre("a.kaf", "a.kva", "a.kvf"));
}

TEST(FilmFiles, MarkATrackThatTheyDoNotHaveByZeros) {
    const TemporaryFolder folder;
    const CString track = folder.Write("a.trk", Pattern(5000, 2));
    ASSERT_EQ(WriteFilmFile(folder.Name("mute.kva"), "", track), Error{});
    ASSERT_EQ(WriteFilmFile(folder.Name("blind.kva"), track, ""), Error{});
    EXPECT_EQ(ParseAVDirectory(ReadFile(folder.Name("mute.kva"))).Value(),
              (AVDirectory{{0, 0}, {16, 5016}}));
    EXPECT_EQ(ParseAVDirectory(ReadFile(folder.Name("blind.kva"))).Value(),
              (AVDirectory{{16, 5016}, {0, 0}}));
    EXPECT_EQ(ReadFile(folder.Name("mute.kva")).size(), 5016U);
}

TEST(FilmFiles, AreNotWrittenOverAnotherFileUnasked) {
    const TemporaryFolder folder;
    const CString track = folder.Write("b.kaf", Pattern(100, 2));
    const CString film = folder.Write("a.kva", Pattern(10, 3));
    EXPECT_EQ(WriteFilmFile(film, track, "").fault, Fault::Busy);
    EXPECT_EQ(ReadFile(film), Pattern(10, 3));
    EXPECT_EQ(WriteFilmFile(film, track, "", Existing::Replace), Error{});
    EXPECT_EQ(ReadFile(film).size(), 116U);
    // A file of the temporary's name is a user's own.
    folder.Write("c.tmp", Pattern(10, 4));
    EXPECT_EQ(WriteFilmFile(folder.Name("c.kva"), track, "").fault, Fault::Busy);
    EXPECT_EQ(ReadFile(folder.Name("c.tmp")), Pattern(10, 4));
    EXPECT_THAT(folder.Files(), ElementsAre("a.kva", "b.kaf", "c.tmp"));
}

TEST(FilmFiles, SayWhyTheyCannotBe) {
    const TemporaryFolder folder;
    const CString track = folder.Write("a.kaf", Pattern(100, 2));
    EXPECT_EQ(WriteFilmFile(folder.Name("b.kva"), "", "").fault, Fault::Missing);
    EXPECT_EQ(WriteFilmFile(folder.Name("b.kva"), track, folder.Name("none.kvf")).fault,
              Fault::Missing);
    EXPECT_EQ(WriteFilmFile(folder.Name("none/b.kva"), track, "").fault, Fault::Missing);
    EXPECT_EQ(WriteFilmFile(track, track, "", Existing::Replace).fault, Fault::Mismatch);
    const CString huge = folder.Write("huge.kvf", {});
    std::filesystem::resize_file(std::string{huge.View()}, 0x7FFFFFFFU - 16U - 99U); // a hole
    EXPECT_EQ(WriteFilmFile(folder.Name("b.kva"), track, huge).fault, Fault::TooLarge);
    EXPECT_THAT(folder.Files(), ElementsAre("a.kaf", "huge.kvf"));
    EXPECT_EQ(ReadFile(track), Pattern(100, 2));
}

TEST(FilmFiles, LeaveTheOldFilmWhateverCallFails) {
    const TemporaryFolder folder;
    const CString sound = folder.Write("s.kaf", Pattern(600000, 1));
    const CString film = folder.Write("a.kva", Pattern(10, 3));
    const auto failing = [](auto& call, auto failure) {
        platform::FileCalls calls = platform::SystemFileCalls();
        call(calls) = failure;
        return calls;
    };
    const auto no_space = [](int, const void*, std::size_t, off_t) -> ssize_t {
        errno = ENOSPC;
        return -1;
    };
    const auto broken = [](int) {
        errno = EIO;
        return -1;
    };
    const auto no_rename = [](const char*, const char*) {
        errno = EACCES;
        return -1;
    };
    const auto no_read = [](int, void*, std::size_t) -> ssize_t {
        errno = EIO;
        return -1;
    };
    auto pwrite = [](platform::FileCalls& c) -> auto& { return c.pwrite; };
    auto fsync = [](platform::FileCalls& c) -> auto& { return c.fsync; };
    auto rename = [](platform::FileCalls& c) -> auto& { return c.rename; };
    auto read = [](platform::FileCalls& c) -> auto& { return c.read; };
    for (const platform::FileCalls& calls : {failing(pwrite, no_space), failing(fsync, broken),
                                             failing(rename, no_rename), failing(read, no_read)}) {
        const platform::ScopedFileCalls scope{calls};
        EXPECT_NE(WriteFilmFile(film, sound, "", Existing::Replace), Error{});
    }
    EXPECT_EQ(ReadFile(film), Pattern(10, 3));
    EXPECT_THAT(folder.Files(), ElementsAre("a.kva", "s.kaf"));
}

} // namespace

} // namespace kelvo::test
