// Nothing is lost: every call of every operation that writes is made to fail, to come short and to
// be the last one before a kill, and each time the file is the old one or the new one, whole.

#include "container/ZFilekel.h"
#include "platform/base/file_calls.h"
#include "tests/container/ContainerFiles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>

namespace kelvo::test {

namespace {

using platform::FileCalls;
using platform::ScopedFileCalls;
using platform::SystemFileCalls;
using testing::ElementsAre;
using testing::UnorderedElementsAreArray;

/// What happens at the call whose turn it is.
enum class Trouble : std::uint8_t { Fail, ComeShort, FailFromNowOn, Kill, KillHalfWritten };

// The table of calls holds plain functions, so what they share is here.
Trouble trouble = Trouble::Fail;
int calls_until_trouble = 0;
bool had_trouble = false;
constexpr int kKilled = 42;

/// Counts one call. @return true when it is to fail
bool ItsTurn() {
    if (had_trouble && trouble == Trouble::FailFromNowOn) return true;
    if (had_trouble && trouble == Trouble::ComeShort) return true;
    if (calls_until_trouble-- != 0) return false;
    had_trouble = true;
    if (trouble == Trouble::Kill) ::_exit(kKilled);
    return true;
}

template <class Result>
Result Failed() {
    errno = ENOSPC;
    return -1;
}

template <class Write>
ssize_t TroubledWrite(std::size_t count, Write write) {
    const bool before = had_trouble;
    if (!ItsTurn()) return write(count);
    if (before || trouble == Trouble::Fail || trouble == Trouble::FailFromNowOn) {
        return Failed<ssize_t>();
    }
    const ssize_t written = write(count / 2);
    if (trouble == Trouble::KillHalfWritten) ::_exit(kKilled);
    return written > 0 ? written : Failed<ssize_t>();
}

int CountedCall(int (*call)(int), int file) {
    return ItsTurn() ? Failed<int>() : call(file);
}

FileCalls TroubledCalls() {
    FileCalls calls = SystemFileCalls();
    calls.write = [](int file, const void* bytes, std::size_t count) {
        return TroubledWrite(
            count, [=](std::size_t part) { return SystemFileCalls().write(file, bytes, part); });
    };
    calls.pwrite = [](int file, const void* bytes, std::size_t count, off_t offset) {
        return TroubledWrite(count, [=](std::size_t part) {
            return SystemFileCalls().pwrite(file, bytes, part, offset);
        });
    };
    calls.fsync = [](int file) { return CountedCall(SystemFileCalls().fsync, file); };
    calls.ftruncate = [](int file, off_t size) {
        return ItsTurn() ? Failed<int>() : SystemFileCalls().ftruncate(file, size);
    };
    calls.close = [](int file) {
        const bool fails = ItsTurn();
        const int closed = SystemFileCalls().close(file); // a failed close closes, too
        return fails ? Failed<int>() : closed;
    };
    if (trouble == Trouble::Kill || trouble == Trouble::KillHalfWritten) {
        // A kill may come at these, too; their failing has meanings of its own.
        calls.open = [](const char* name, int flags, mode_t mode) {
            return ItsTurn() ? Failed<int>() : SystemFileCalls().open(name, flags, mode);
        };
        calls.rename = [](const char* from, const char* to) {
            return ItsTurn() ? Failed<int>() : SystemFileCalls().rename(from, to);
        };
        calls.unlink = [](const char* name) {
            return ItsTurn() ? Failed<int>() : SystemFileCalls().unlink(name);
        };
        calls.flock = [](int file, int operation) {
            return ItsTurn() ? Failed<int>() : SystemFileCalls().flock(file, operation);
        };
    }
    return calls;
}

struct Operation {
    const char* name;
    void (*prepare)(const std::string& folder);
    bool (*run)(const std::string& file);
    const char* file;
};

bool Rewrite(const std::string& name) {
    ZFilekel file;
    return file.RecompressFile(name.c_str(), {.compression_type = 17}, nullptr);
}

bool EditAndRewrite(const std::string& name) {
    ZFilekel file;
    if (!file.OpenExisting(name.c_str())) return false;
    const bool edited = file.ReplaceRecord(3, Payload(77, 64), Side(77, 8)) &&
                        file.InsertRecord(0, Payload(78, 64), Side(78, 8)) &&
                        file.DeleteRecords(5, 8);
    if (!edited) {
        file.AbandonChanges();
        return false;
    }
    // The answer to the question is Yes. Close itself is true even where the rewrite failed.
    return file.Close() && file.LastError().fault == Fault::None;
}

bool AppendTwo(const std::string& name) {
    ZFilekel file;
    if (!file.OpenExisting(name.c_str())) return false;
    const bool appended = file.AppendRecord(Payload(10, 64), Side(10, 8)) &&
                          file.AppendRecord(Payload(11, 64), Side(11, 8));
    if (!appended) file.AbandonChanges();
    return appended && file.Close();
}

bool ChangeUserHeader(const std::string& name) {
    ZFilekel file;
    if (!file.OpenExisting(name.c_str())) return false;
    const bool changed = file.WriteUserHeader(ByteVector{9, 8, 7, 6, 5});
    if (!changed) file.AbandonChanges();
    return changed && file.Close();
}

bool AppendAndChangeUserHeader(const std::string& name) {
    ZFilekel file;
    if (!file.OpenExisting(name.c_str())) return false;
    const bool changed = file.AppendRecord(Payload(10, 64), Side(10, 8)) &&
                         file.WriteUserHeader(ByteVector{9, 8, 7, 6, 5});
    if (!changed) file.AbandonChanges();
    return changed && file.Close();
}

bool RebuildOwnIndex(const std::string& name) {
    ZFilekel file;
    return file.OpenInMode(name.c_str(), ZFilekel::Mode::IndexRebuild);
}

const Operation kOperations[] = {
    {"RewritingATrack",
     [](const std::string& folder) { MakeContainer(folder + "a.kvf", {.type = 99}); }, Rewrite,
     "a.kvf"},
    {"RewritingATrackOfAFilm",
     [](const std::string& folder) {
         MakeContainer(folder + "s.kaf", {.type = 99});
         MakeContainer(folder + "p.kvf", {.type = 9});
         MakeFilm(folder + "a.kva", folder + "s.kaf", folder + "p.kvf");
         std::filesystem::remove(folder + "s.kaf");
         std::filesystem::remove(folder + "p.kvf");
     },
     Rewrite, "a.kva"},
    {"EditingAndRewriting", [](const std::string& folder) { MakeContainer(folder + "a.kvf", {}); },
     EditAndRewrite, "a.kvf"},
    {"Appending", [](const std::string& folder) { MakeContainer(folder + "a.kvf", {}); }, AppendTwo,
     "a.kvf"},
    {"AppendingRaw",
     [](const std::string& folder) { MakeContainer(folder + "a.kvf", {.type = 99}); }, AppendTwo,
     "a.kvf"},
    {"ChangingTheUserHeader",
     [](const std::string& folder) { MakeContainer(folder + "a.kvf", {}); }, ChangeUserHeader,
     "a.kvf"},
    {"AppendingAndChangingTheUserHeader",
     [](const std::string& folder) { MakeContainer(folder + "a.kvf", {}); },
     AppendAndChangeUserHeader, "a.kvf"},
    {"RebuildingTheIndex",
     [](const std::string& folder) {
         MakeContainer(folder + "a.kvf", {});
         PutNumber(folder + "a.kvf", NumberIn(folder + "a.kvf", 28) + 8, 0);
     },
     RebuildOwnIndex, "a.kvf"},
};

class Interrupted : public ContainerTest, public testing::WithParamInterface<Operation> {
protected:
    Interrupted() { boxes_.AnswerQuestions(IDYES); }

    void Prepare() {
        for (const std::string& name : Names())
            std::filesystem::remove(Path(name));
        GetParam().prepare(Path(""));
    }
    void LearnBothFiles() {
        Prepare();
        old_ = FileBytes(file_);
        ASSERT_TRUE(GetParam().run(file_));
        new_ = FileBytes(file_);
        ASSERT_NE(old_, new_);
    }
    static bool BeginsWith(const ByteVector& bytes, const ByteVector& expected) {
        return bytes.size() >= expected.size() &&
               std::equal(expected.begin(), expected.end(), bytes.begin());
    }
    /// Runs the operation with trouble at call `number`. @return its result
    bool Run(Trouble kind, int number) {
        trouble = kind;
        calls_until_trouble = number;
        had_trouble = false;
        const FileCalls calls = TroubledCalls();
        const ScopedFileCalls scope(calls);
        return GetParam().run(file_);
    }

    const std::string file_ = Path(GetParam().file);
    ByteVector old_;
    ByteVector new_;
};

TEST_P(Interrupted, ByAFailingCallKeepsTheOldFileAndLeavesNothingBeside) {
    LearnBothFiles();
    for (const Trouble kind : {Trouble::Fail, Trouble::ComeShort, Trouble::FailFromNowOn}) {
        int number = 0;
        do {
            SCOPED_TRACE("call " + std::to_string(number) + " of trouble " +
                         std::to_string(static_cast<int>(kind)));
            Prepare();
            const bool done = Run(kind, number);
            {
                // Where the old index could not be put back at once, this finds it.
                ZFilekel opened;
                static_cast<void>(opened.OpenForRead(file_.c_str()));
            }
            const ByteVector bytes = FileBytes(file_);
            if (done) {
                EXPECT_TRUE(BeginsWith(bytes, new_));
            } else if (kind == Trouble::Fail) {
                EXPECT_TRUE(BeginsWith(bytes, old_));
            } else {
                // A header that was written but could not be synced counts when the disk kept it.
                EXPECT_TRUE(BeginsWith(bytes, old_) || BeginsWith(bytes, new_));
            }
            EXPECT_THAT(Names(), ElementsAre(GetParam().file));
            ++number;
        } while (had_trouble && number < 500);
        EXPECT_GT(number, 5);
        EXPECT_LT(number, 500);
    }
}

TEST_P(Interrupted, ByAKillKeepsOneOfTheTwoFilesAndTheNextRunClearsUp) {
    LearnBothFiles();
    for (const Trouble kind : {Trouble::Kill, Trouble::KillHalfWritten}) {
        int number = 0;
        bool killed = true;
        for (; killed && number < 500; ++number) {
            SCOPED_TRACE("call " + std::to_string(number) + " of trouble " +
                         std::to_string(static_cast<int>(kind)));
            Prepare();
            const pid_t child = ::fork();
            if (child == 0) {
                static_cast<void>(Run(kind, number));
                ::_exit(had_trouble ? kKilled : 0);
            }
            int status = 0;
            ASSERT_EQ(::waitpid(child, &status, 0), child);
            ASSERT_TRUE(WIFEXITED(status));
            killed = WEXITSTATUS(status) == kKilled;
            {
                ZFilekel opened;
                static_cast<void>(opened.OpenForRead(file_.c_str()));
            }
            const ByteVector bytes = FileBytes(file_);
            const bool is_new = BeginsWith(bytes, new_);
            EXPECT_TRUE(is_new || BeginsWith(bytes, old_));
            if (is_new) {
                EXPECT_LE(bytes.size(), new_.size() + 16);
            }
            // One left by the kill is in nobody's way.
            EXPECT_TRUE(GetParam().run(file_));
            EXPECT_THAT(Names(), ElementsAre(GetParam().file));
        }
        EXPECT_GT(number, 5);
        EXPECT_LT(number, 500);
    }
}

INSTANTIATE_TEST_SUITE_P(All, Interrupted, testing::ValuesIn(kOperations),
                         [](const auto& row) { return row.param.name; });

using UndoneEdit = ContainerTest;

TEST_F(UndoneEdit, IsNotUndoneWhileItsEditorLives) {
    const std::string name = Path("a.kvf");
    MakeContainer(name, {});
    ZFilekel editor;
    ASSERT_TRUE(editor.OpenExisting(name.c_str()));
    ASSERT_TRUE(editor.AppendRecord(Payload(10, 64), Side(10, 8)));
    EXPECT_THAT(Names(), ElementsAre("a.kvf", "a.kvf.undo"));
    ZFilekel reader;
    EXPECT_FALSE(reader.OpenForRead(name.c_str())); // there is no whole index at the moment
    EXPECT_EQ(reader.LastError().fault, Fault::Busy);
    ASSERT_TRUE(editor.Close());
    EXPECT_EQ(RecordNumbersIn(name), Range(11));
}

/// Leaves the file as a kill in the middle of an append does.
void KillWhileAppending(const std::string& name) {
    const pid_t child = ::fork();
    if (child == 0) {
        ZFilekel file;
        const bool appended =
            file.OpenExisting(name.c_str()) && file.AppendRecord(Payload(10, 64), Side(10, 8));
        ::_exit(appended ? kKilled : 0);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ASSERT_EQ(WEXITSTATUS(status), kKilled);
}

TEST_F(UndoneEdit, GivesTheVeryFileBack) {
    const std::string name = Path("a.kvf");
    MakeContainer(name, {});
    const ByteVector before = FileBytes(name);
    KillWhileAppending(name);
    EXPECT_NE(FileBytes(name), before);
    EXPECT_EQ(RecordNumbersIn(name), Range(10));
    EXPECT_EQ(FileBytes(name), before);
    EXPECT_THAT(Names(), ElementsAre("a.kvf"));
}

TEST_F(UndoneEdit, TakesTheUserHeaderBack) {
    const std::string name = Path("a.kvf");
    MakeContainer(name, {});
    const ByteVector before = FileBytes(name);
    ZFilekel file;
    ASSERT_TRUE(file.OpenExisting(name.c_str()));
    ASSERT_TRUE(file.WriteUserHeader(ByteVector{9, 8, 7, 6, 5}));
    EXPECT_NE(FileBytes(name), before);
    file.AbandonChanges();
    EXPECT_EQ(FileBytes(name), before);
    EXPECT_THAT(Names(), ElementsAre("a.kvf"));
}

TEST_F(UndoneEdit, LeavesAnotherFileOfTheSameNameAlone) {
    const std::string name = Path("a.kvf");
    MakeContainer(name, {});
    KillWhileAppending(name);
    MakeContainer(name, {.records = 30}); // the user has put another film there
    const ByteVector other = FileBytes(name);
    EXPECT_EQ(RecordNumbersIn(name), Range(30));
    EXPECT_EQ(FileBytes(name), other);
    // And edits of that one work as ever.
    ZFilekel file;
    ASSERT_TRUE(file.OpenExisting(name.c_str()));
    ASSERT_TRUE(file.AppendRecord(Payload(30, 64), Side(30, 8)));
    ASSERT_TRUE(file.Close());
    EXPECT_EQ(RecordNumbersIn(name), Range(31));
    EXPECT_THAT(Names(), ElementsAre("a.kvf"));
}

TEST_F(UndoneEdit, NeverTouchesAUsersOwnFileOfItsName) {
    const std::string name = Path("a.kvf");
    MakeContainer(name, {});
    const ByteVector before = FileBytes(name);
    const ByteVector own = {'m', 'i', 'n', 'e'};
    WriteFileBytes(name + ".undo", own);
    ZFilekel file;
    ASSERT_TRUE(file.OpenExisting(name.c_str()));
    EXPECT_FALSE(file.AppendRecord(Payload(10, 64), Side(10, 8)));
    EXPECT_EQ(file.LastError().fault, Fault::Mismatch);
    EXPECT_TRUE(file.Close());
    EXPECT_EQ(FileBytes(name), before);
    EXPECT_EQ(FileBytes(name + ".undo"), own);
}

} // namespace

} // namespace kelvo::test
