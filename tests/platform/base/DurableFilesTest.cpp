// Files of ours beside a user's: taken exclusively, recognised after a kill, put in place at once.

#include "platform/base/durable_files.h"
#include "platform/base/file_calls.h"
#include "tests/platform/base/TempFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <string_view>
#include <vector>

namespace kelvo::platform {
namespace {

constexpr std::array<std::uint8_t, kOwnMarkBytes> kMark = {'m', 'a', 'r', 'k', 1, 2,  3,  4,
                                                           5,   6,   7,   8,   9, 10, 11, 12};

std::vector<std::uint8_t> Bytes(std::string_view text) {
    return {text.begin(), text.end()};
}

class DurableFiles : public TempFolder {
protected:
    /// A temporary that holds `text`, written but not finished.
    void Begin(DurableTemporary& temporary, std::string_view text) {
        ASSERT_EQ(temporary.Make(Path("a.tmp")), Claim::Taken);
        ASSERT_TRUE(temporary.WriteAt(0, Bytes(text)));
    }
    bool Exists(const std::string& name) { return std::filesystem::exists(Path(name)); }
    const std::string text_ = "a text that is longer than the mark";
};

TEST_F(DurableFiles, TemporaryTakesTheOldFilesPlaceAndItsPermissions) {
    const std::string old = Make("a.dat", "old");
    ASSERT_EQ(::chmod(old.c_str(), 0604), 0);
    DurableTemporary temporary;
    Begin(temporary, text_);
    EXPECT_EQ(Content(old), "old");
    ASSERT_TRUE(temporary.WriteAt(2, Bytes("T"))); // in any order, inside the mark, too
    EXPECT_EQ(temporary.Size(), text_.size());
    ASSERT_TRUE(temporary.Finish(old));
    EXPECT_EQ(Content(old), "old");
    ASSERT_TRUE(temporary.PutInPlaceOf(old));
    EXPECT_EQ(Content(old), "a Text that is longer than the mark");
    EXPECT_FALSE(Exists("a.tmp"));
    struct stat status{};
    ASSERT_EQ(::stat(old.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0604U);
}

TEST_F(DurableFiles, TemporaryGoesWithItsObjectUnlessItWasKept) {
    {
        DurableTemporary temporary;
        Begin(temporary, text_);
        EXPECT_TRUE(Exists("a.tmp"));
    }
    EXPECT_FALSE(Exists("a.tmp"));
    {
        DurableTemporary temporary;
        Begin(temporary, text_);
        ASSERT_TRUE(temporary.Finish(""));
    }
    EXPECT_FALSE(Exists("a.tmp"));
    DurableTemporary temporary;
    Begin(temporary, text_);
    ASSERT_TRUE(temporary.Finish(""));
    temporary.Keep();
    EXPECT_EQ(Content(Path("a.tmp")), text_);
}

TEST_F(DurableFiles, FilesShorterThanTheMarkAreFinishedToo) {
    for (const std::string_view text : {"", "abc", "fifteen letters", "sixteen letters!"}) {
        SCOPED_TRACE(text);
        DurableTemporary temporary;
        Begin(temporary, text);
        ASSERT_TRUE(temporary.Finish(""));
        {
            // Until it has its place it is recognised as ours.
            DurableTemporary second;
            EXPECT_EQ(second.Make(Path("a.tmp")), Claim::Busy);
        }
        ASSERT_TRUE(temporary.PutInPlaceOf(Path("short.dat")));
        EXPECT_EQ(Content(Path("short.dat")), text);
    }
}

TEST_F(DurableFiles, NewNameIsTakenOnlyWhereNothingIs) {
    Make("taken.dat", "theirs");
    DurableTemporary temporary;
    Begin(temporary, text_);
    ASSERT_TRUE(temporary.Finish(""));
    EXPECT_FALSE(temporary.PutAt(Path("taken.dat")));
    EXPECT_EQ(Content(Path("taken.dat")), "theirs");
    ASSERT_TRUE(temporary.PutAt(Path("free.dat")));
    EXPECT_EQ(Content(Path("free.dat")), text_);
    struct stat status{};
    ASSERT_EQ(::stat(Path("free.dat").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & S_ISVTX, 0U);
}

TEST_F(DurableFiles, SecondOwnerIsRefusedUntilTheFirstLetsGo) {
    DurableTemporary first;
    Begin(first, text_);
    DurableTemporary second;
    EXPECT_EQ(second.Make(Path("a.tmp")), Claim::Busy);
    ASSERT_TRUE(first.Finish(""));
    EXPECT_EQ(second.Make(Path("a.tmp")), Claim::Busy);
    ASSERT_TRUE(first.PutAt(Path("a.dat")));
    EXPECT_EQ(second.Make(Path("a.tmp")), Claim::Taken);
    EXPECT_EQ(Content(Path("a.dat")), text_);
}

TEST_F(DurableFiles, WhatAUserOwnsIsNeverTouched) {
    for (const std::string& content :
         {std::string(), std::string("short"), std::string(100, 'x'), std::string(100, '\0')}) {
        Make("a.tmp", content);
        DurableTemporary temporary;
        EXPECT_EQ(temporary.Make(Path("a.tmp")), Claim::Foreign);
        EXPECT_EQ(Content(Path("a.tmp")), content);
    }
    std::filesystem::remove(Path("a.tmp"));
    Make("target", "x");
    std::filesystem::create_symlink(Path("target"), Path("a.tmp"));
    DurableTemporary temporary;
    EXPECT_EQ(temporary.Make(Path("a.tmp")), Claim::Foreign);
    EXPECT_EQ(Content(Path("target")), "x");
    std::filesystem::remove(Path("a.tmp"));
    std::filesystem::create_directory(Path("a.tmp"));
    EXPECT_EQ(temporary.Make(Path("a.tmp")), Claim::Foreign);
    EXPECT_EQ(temporary.Make(Path("no folder/a.tmp")), Claim::Failed);
}

TEST_F(DurableFiles, OneThatAKillLeftIsTakenOver) {
    struct Left {
        const char* when;
        mode_t mode;
        std::string content;
    };
    const std::string own_mark = "Kelvo rewriting\n";
    const Left kLeft[] = {
        {"created", 01644, ""},
        {"its mark half written", 01644, own_mark.substr(0, 7)},
        {"marked", 01644, own_mark},
        {"on a disk without such permissions", 0644, own_mark + "half a film"},
        {"finished, its head in place", 0644, "a whole film with its head" + own_mark},
        {"by a power cut that lost the bytes", 01644, std::string(40, '\0')},
    };
    for (const Left& left : kLeft) {
        SCOPED_TRACE(left.when);
        Make("a.tmp", left.content);
        ASSERT_EQ(::chmod(Path("a.tmp").c_str(), left.mode), 0);
        DurableTemporary temporary;
        Begin(temporary, text_);
        ASSERT_TRUE(temporary.Finish(""));
        ASSERT_TRUE(temporary.PutInPlaceOf(Path("a.dat")));
        EXPECT_EQ(Content(Path("a.dat")), text_);
        EXPECT_FALSE(Exists("a.tmp"));
    }
}

TEST_F(DurableFiles, EveryFailingCallOfFinishLeavesNothing) {
    static int until_failure = 0;
    FileCalls calls = SystemFileCalls();
    calls.fsync = [](int file) {
        if (until_failure-- != 0) return SystemFileCalls().fsync(file);
        errno = EIO;
        return -1;
    };
    calls.close = [](int file) {
        const int closed = SystemFileCalls().close(file);
        if (until_failure-- != 0) return closed;
        errno = EDQUOT; // what a network disk says at the last moment
        return -1;
    };
    for (int call = 0; call < 3; ++call) { // two syncs and the close
        Make("a.dat", "old");
        {
            DurableTemporary temporary;
            Begin(temporary, text_);
            const ScopedFileCalls scope(calls);
            until_failure = call;
            EXPECT_FALSE(temporary.Finish(Path("a.dat"))) << call;
            until_failure = -1;
            EXPECT_FALSE(temporary.PutInPlaceOf(Path("a.dat")));
        }
        EXPECT_EQ(Content(Path("a.dat")), "old");
        EXPECT_FALSE(Exists("a.tmp"));
    }
}

TEST_F(DurableFiles, InterruptedCallsAreRepeated) {
    static int interruptions = 0;
    FileCalls calls = SystemFileCalls();
    calls.fsync = [](int file) {
        if (interruptions++ % 2 != 0) return SystemFileCalls().fsync(file);
        errno = EINTR;
        return -1;
    };
    calls.flock = [](int file, int operation) {
        if (interruptions++ % 2 != 0) return SystemFileCalls().flock(file, operation);
        errno = EINTR;
        return -1;
    };
    const ScopedFileCalls scope(calls);
    DurableTemporary temporary;
    Begin(temporary, text_);
    ASSERT_TRUE(temporary.Finish(""));
    EXPECT_TRUE(temporary.PutInPlaceOf(Path("a.dat")));
    EXPECT_GT(interruptions, 4);
}

TEST_F(DurableFiles, OwnFileIsFoundByItsMarkAlone) {
    OwnFile made;
    ASSERT_EQ(made.Make(Path("a.own"), kMark), Claim::Taken);
    ASSERT_TRUE(made.WriteAt(kOwnMarkBytes, Bytes("content")));
    OwnFile found;
    EXPECT_EQ(found.Find(Path("a.own"), kMark), Claim::Busy);
    made.Close();
    ASSERT_EQ(found.Find(Path("a.own"), kMark), Claim::Taken);
    EXPECT_EQ(Content(Path("a.own")).substr(kOwnMarkBytes), "content");
    found.Close();

    auto other = kMark;
    other[15] = 99;
    EXPECT_EQ(found.Find(Path("a.own"), other), Claim::Foreign);
    EXPECT_EQ(found.Find(Path("none.own"), kMark), Claim::Failed);
    ASSERT_EQ(found.Find(Path("a.own"), kMark), Claim::Taken);
    found.Remove();
    EXPECT_FALSE(Exists("a.own"));
}

TEST_F(DurableFiles, RemovingOneWhoseNameMeansAnotherFileNowLeavesThatOne) {
    OwnFile made;
    ASSERT_EQ(made.Make(Path("a.own"), kMark), Claim::Taken);
    std::filesystem::remove(Path("a.own"));
    Make("a.own", "theirs");
    made.Remove();
    EXPECT_EQ(Content(Path("a.own")), "theirs");
}

} // namespace
} // namespace kelvo::platform
