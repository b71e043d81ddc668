// Rewriting a container in other parameters: what is carried over, who is told, what is refused.

#include "container/RewriteTarget.h"
#include "container/ZFilekel.h"
#include "platform/base/durable_files.h"
#include "platform/base/file_calls.h"
#include "tests/container/ContainerFiles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sched.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <functional>

namespace kelvo::test {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr char kCancelled[] = "\r\n\r\nImpossibile procedere - Processo di compressione annullato!";

class Owner : public ProgressOwner {
public:
    explicit Owner(int stop_at = -1) : stop_at_(stop_at) {}
    int ProgressNotify(int code, int done, const RewriteInformation& info) override {
        EXPECT_EQ(code, 0x3937);
        done_.push_back(done);
        counts_.push_back(info.record_count);
        sizes_.push_back(info.temporary_size);
        return done == stop_at_ ? 1 : 0;
    }
    std::vector<int> done_;
    std::vector<std::uint32_t> counts_;
    std::vector<std::uint32_t> sizes_;

private:
    int stop_at_;
};

class Rewriting : public ContainerTest {
protected:
    const std::string name_ = Path("film.kvf");
    ZFilekel file_;
};

TEST_F(Rewriting, ReopensForEditingWhereTheNewTypeAllowsIt) {
    MakeContainer(name_, {.type = 7, .records = 12, .key_interval = 5});
    ASSERT_TRUE(file_.OpenForRead(name_.c_str()));
    ASSERT_TRUE(file_.Recompress({.compression_type = 9}, nullptr));
    EXPECT_EQ(file_.OpenMode(), ZFilekel::Mode::Existing);
    EXPECT_EQ(RecordNumbers(file_), Range(12));
    ASSERT_TRUE(file_.Recompress({.compression_type = 8, .key_interval = 3}, nullptr));
    EXPECT_EQ(file_.OpenMode(), ZFilekel::Mode::ForRead);
    EXPECT_EQ(file_.KeyInterval(), 3U);
    EXPECT_TRUE(file_.Close());
    EXPECT_EQ(RecordNumbersIn(name_), Range(12));
    EXPECT_THAT(Names(), ElementsAre("film.kvf"));
}

TEST_F(Rewriting, IntoItsOwnTypeGivesTheSameBytes) {
    for (const std::uint32_t type : {2U, 7U, 8U, 9U, 17U, 99U}) {
        MakeContainer(name_, {.type = type, .records = 12, .key_interval = 5});
        PutNumber(name_, 1000, 0x12345678); // reserved bytes are carried through
        ASSERT_EQ(::chmod(name_.c_str(), 0640), 0);
        const ByteVector before = FileBytes(name_);
        ASSERT_TRUE(file_.RecompressFile(name_.c_str(), {}, nullptr)) << type;
        EXPECT_EQ(file_.OpenMode(), ZFilekel::Mode::Closed);
        EXPECT_EQ(FileBytes(name_), before) << type;
        struct stat status{};
        ASSERT_EQ(::stat(name_.c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777U, 0640U);
    }
}

TEST_F(Rewriting, TakesANewUserHeaderAndOtherValues) {
    MakeContainer(name_, {.type = 17, .records = 3});
    const ByteVector user_header = {9, 8, 7};
    ASSERT_TRUE(file_.RecompressFile(name_.c_str(),
                                     {.user_header_size = 3,
                                      .compression_type = 99,
                                      .key_interval = 44,
                                      .creator_value = 55,
                                      .user_header = user_header},
                                     nullptr));
    ASSERT_TRUE(file_.OpenForRead(name_.c_str()));
    EXPECT_THAT(file_.UserHeader(), ElementsAre(9, 8, 7));
    EXPECT_EQ(file_.CompressionType(), 99U);
    EXPECT_EQ(file_.KeyInterval(), 44U);
    EXPECT_EQ(file_.CreatorValue(), 55U);
    EXPECT_EQ(RecordNumbers(file_), Range(3));
    EXPECT_TRUE(file_.Close());
    // A size without a buffer: zeros. A buffer without a size: not used.
    ASSERT_TRUE(file_.RecompressFile(name_.c_str(), {.user_header_size = 2}, nullptr));
    ASSERT_TRUE(file_.RecompressFile(name_.c_str(), {.user_header = user_header}, nullptr));
    ASSERT_TRUE(file_.OpenForRead(name_.c_str()));
    EXPECT_THAT(file_.UserHeader(), ElementsAre(0, 0));
}

TEST_F(Rewriting, TellsItsOwnerAtTheStartAndEveryFifthRecord) {
    MakeContainer(name_, {.type = 99, .records = 12});
    Owner owner;
    ASSERT_TRUE(file_.RecompressFile(name_.c_str(), {}, &owner));
    EXPECT_THAT(owner.done_, ElementsAre(0, 5, 10));
    EXPECT_THAT(owner.counts_, ElementsAre(12, 12, 12));
    const std::uint32_t record = 4 + 64 + 8;
    EXPECT_THAT(owner.sizes_, ElementsAre(1057, 1057 + 6 * record, 1057 + 11 * record));
}

TEST_F(Rewriting, StoppedByItsOwnerLeavesTheFileAndNoTemporary) {
    MakeContainer(name_, {.records = 12});
    const ByteVector before = FileBytes(name_);
    for (const int stop_at : {0, 5, 10}) {
        Owner owner(stop_at);
        EXPECT_FALSE(file_.RecompressFile(name_.c_str(), {.compression_type = 99}, &owner));
        EXPECT_EQ(file_.LastError().fault, Fault::Stopped);
        ASSERT_TRUE(file_.OpenForRead(name_.c_str()));
        EXPECT_FALSE(file_.Recompress({.compression_type = 99}, &owner));
        EXPECT_EQ(file_.OpenMode(), ZFilekel::Mode::ForRead);
        EXPECT_EQ(RecordNumbers(file_), Range(12));
        EXPECT_TRUE(file_.Close());
        EXPECT_EQ(FileBytes(name_), before);
        EXPECT_THAT(Names(), ElementsAre("film.kvf"));
    }
    EXPECT_THAT(Texts(), IsEmpty());
}

TEST_F(Rewriting, OfATrackWritesItsWholeFilmAnew) {
    MakeContainer(Path("s.kaf"), {.type = 16, .records = 4});
    MakeContainer(Path("p.kvf"), {.type = 8, .records = 7, .key_interval = 3});
    const std::string film = Path("film.kva");
    MakeFilm(film, Path("s.kaf"), Path("p.kvf"));
    ASSERT_TRUE(file_.RecompressFile(film.c_str(), {.compression_type = 99}, nullptr));
    ASSERT_TRUE(file_.OpenForRead(film.c_str(), 'V'));
    ASSERT_TRUE(file_.Recompress({.compression_type = 2}, nullptr));
    EXPECT_EQ(file_.OpenMode(), ZFilekel::Mode::ForRead);
    EXPECT_EQ(file_.CompressionType(), 2U); // the same track is open
    EXPECT_TRUE(file_.Close());

    // As if both tracks had been rewritten on their own.
    ASSERT_TRUE(file_.RecompressFile(Path("s.kaf").c_str(), {.compression_type = 99}, nullptr));
    ASSERT_TRUE(file_.RecompressFile(Path("p.kvf").c_str(), {.compression_type = 2}, nullptr));
    MakeFilm(Path("expected.kva"), Path("s.kaf"), Path("p.kvf"));
    EXPECT_EQ(FileBytes(film), FileBytes(Path("expected.kva")));
    EXPECT_THAT(Names(), ElementsAre("expected.kva", "film.kva", "p.kvf", "s.kaf"));
}

TEST_F(Rewriting, OfATrackIsRefusedWhenTheOtherOneIsCutOff) {
    MakeContainer(Path("s.kaf"), {.type = 16, .records = 4});
    MakeContainer(Path("p.kvf"), {.type = 8, .records = 7, .key_interval = 3});
    const std::string film = Path("film.kva");
    MakeFilm(film, Path("s.kaf"), Path("p.kvf"));
    ByteVector cut = FileBytes(film);
    cut.resize(cut.size() - 100);
    WriteFileBytes(film, cut);
    EXPECT_FALSE(file_.RecompressFile(film.c_str(), {.compression_type = 99}, nullptr));
    EXPECT_EQ(FileBytes(film), cut);
    EXPECT_THAT(Texts(), ElementsAre("Il file [film.kva] non può essere letto per intero!" +
                                     std::string(kCancelled)));
    EXPECT_THAT(Names(), ElementsAre("film.kva", "p.kvf", "s.kaf"));
}

TEST_F(Rewriting, NeverMakesDamageFinal) {
    MakeContainer(name_, {.type = 17, .records = 6});
    ASSERT_TRUE(file_.OpenForRead(name_.c_str()));
    const std::uint64_t third = file_.RecordFileOffset(2);
    ASSERT_TRUE(file_.Close());
    ByteVector damaged = FileBytes(name_);
    damaged[third + 4] ^= 0xFFU; // a flag byte: the stream now describes another length
    WriteFileBytes(name_, damaged);
    // In another type the damaged record could only be kept in part.
    EXPECT_FALSE(file_.RecompressFile(name_.c_str(), {.compression_type = 99}, nullptr));
    EXPECT_EQ(FileBytes(name_), damaged);
    // In its own type its bytes are carried over.
    EXPECT_TRUE(file_.RecompressFile(name_.c_str(), {.creator_value = 1}, nullptr));
    EXPECT_EQ(FileBytes(name_), damaged);
    EXPECT_THAT(Names(), ElementsAre("film.kvf"));
}

TEST_F(Rewriting, IntoATypeOfWholePixelsIsRefusedForOddRecords) {
    MakeContainer(name_, {.type = 99, .record_length = 65});
    const ByteVector before = FileBytes(name_);
    for (const std::uint32_t type : {2U, 8U, 9U}) {
        EXPECT_FALSE(file_.RecompressFile(name_.c_str(), {.compression_type = type}, nullptr));
        EXPECT_EQ(file_.LastError().fault, Fault::BadValue);
    }
    EXPECT_THAT(Texts(), testing::Each("Il file [film.kvf] ha records di lunghezza dispari!" +
                                       std::string(kCancelled)));
    EXPECT_EQ(Texts().size(), 3U);
    EXPECT_EQ(FileBytes(name_), before);
    EXPECT_TRUE(file_.RecompressFile(name_.c_str(), {.compression_type = 17}, nullptr));
    EXPECT_EQ(RecordNumbersIn(name_), Range(10));
}

TEST_F(Rewriting, RefusesAUsersOwnFileOfTheTemporarysName) {
    MakeContainer(name_, {});
    const ByteVector before = FileBytes(name_);
    const ByteVector own = {'m', 'i', 'n', 'e'};
    for (const ByteVector& content : {own, ByteVector{}, before}) {
        boxes_.Clear();
        WriteFileBytes(Path("film.tmp"), content);
        EXPECT_FALSE(file_.RecompressFile(name_.c_str(), {.compression_type = 99}, nullptr));
        EXPECT_EQ(FileBytes(Path("film.tmp")), content);
        EXPECT_EQ(FileBytes(name_), before);
        EXPECT_THAT(Texts(),
                    ElementsAre("Il file [film.tmp] esiste già!" + std::string(kCancelled)));
    }
}

TEST_F(Rewriting, RefusesWhileTheOtherTrackOfThePairIsRewritten) {
    MakeContainer(name_, {});
    const ByteVector before = FileBytes(name_);
    RewriteTarget other;
    ASSERT_EQ(other.Begin(Path("film.kaf"), RewriteTarget::Kind::Track).fault, Fault::None);
    EXPECT_FALSE(file_.RecompressFile(name_.c_str(), {.compression_type = 99}, nullptr));
    EXPECT_THAT(Texts(), ElementsAre("Il file [film.tmp] è in uso da un'altra operazione!" +
                                     std::string(kCancelled)));
    EXPECT_EQ(FileBytes(name_), before);
    EXPECT_THAT(Names(), ElementsAre("film.kvf", "film.tmp"));
    other.Discard();
    EXPECT_TRUE(file_.RecompressFile(name_.c_str(), {.compression_type = 99}, nullptr));
    EXPECT_THAT(Names(), ElementsAre("film.kvf"));
}

TEST_F(Rewriting, OfAPairByManyProgramsAtOnceKeepsBothTracksWhole) {
    const std::string tracks[] = {Path("film.kaf"), name_};
    for (const std::string& track : tracks)
        MakeContainer(track, {.type = 99});
    std::vector<pid_t> children;
    for (int child = 0; child < 4; ++child) {
        const pid_t id = ::fork();
        ASSERT_GE(id, 0);
        if (id == 0) {
            int rewritten = 0;
            while (rewritten < 20) {
                // By turns in two types; whoever comes second is refused and comes again.
                const RewriteParameters parameters{.compression_type =
                                                       rewritten % 2 == 0 ? 17U : 99U};
                if (file_.RecompressFile(tracks[child % 2].c_str(), parameters, nullptr)) {
                    ++rewritten;
                } else if (file_.LastError().fault != Fault::Busy) {
                    ::_exit(1);
                } else {
                    ::sched_yield();
                }
            }
            ::_exit(0);
        }
        children.push_back(id);
    }
    for (const pid_t id : children) {
        int status = 0;
        ASSERT_EQ(::waitpid(id, &status, 0), id);
        EXPECT_EQ(status, 0);
    }
    for (const std::string& track : tracks)
        EXPECT_EQ(RecordNumbersIn(track), Range(10));
    EXPECT_THAT(Names(), ElementsAre("film.kaf", "film.kvf"));
}

TEST_F(Rewriting, RefusesAFileThatAnotherProgramHasReplaced) {
    MakeContainer(name_, {});
    ASSERT_TRUE(file_.OpenForRead(name_.c_str()));
    ZFilekel other;
    boxes_.AnswerNext({IDYES});
    ASSERT_TRUE(other.OpenExisting(name_.c_str()));
    ASSERT_TRUE(other.DeleteRecords(0, 5));
    ASSERT_TRUE(other.Close());
    EXPECT_FALSE(file_.Recompress({.compression_type = 99}, nullptr)); // of the old records
    EXPECT_EQ(file_.LastError().fault, Fault::Busy);
    EXPECT_TRUE(file_.Close());
    EXPECT_EQ(RecordNumbersIn(name_), (std::vector<int>{5, 6, 7, 8, 9}));
    EXPECT_THAT(Names(), ElementsAre("film.kvf"));
}

TEST_F(Rewriting, OfALinkedFileReplacesTheFileAndNotTheLink) {
    std::filesystem::create_directory(Path("films"));
    MakeContainer(Path("films/real.kvf"), {});
    std::filesystem::create_symlink("films/real.kvf", name_);
    ASSERT_TRUE(file_.RecompressFile(name_.c_str(), {.compression_type = 99}, nullptr));
    EXPECT_TRUE(std::filesystem::is_symlink(name_));
    EXPECT_EQ(NumberIn(Path("films/real.kvf"), 20), 99U);
    EXPECT_EQ(RecordNumbersIn(name_), Range(10));
}

struct PermissionCase {
    const char* name;
    mode_t film;
    mode_t beside_it; ///< whoever wrote it may read and write it, whatever the film says
};
class RewritingPrivately : public Rewriting, public testing::WithParamInterface<PermissionCase> {};
const PermissionCase kPermissionCases[] = {
    {"ForItsOwnerAlone", 0600, 0600},
    {"ForItsGroup", 0640, 0640},
    {"ForReadingOnly", 0400, 0600},
    {"ForAll", 0644, 0644},
};
TEST_P(RewritingPrivately, LetsNobodyReadWhatStandsBesideAFilmWhoMayNotReadTheFilm) {
    const auto permissions = [this](const char* file) {
        struct stat status{};
        EXPECT_EQ(::stat(Path(file).c_str(), &status), 0) << file;
        return status.st_mode & 0777;
    };
    class Watcher : public ProgressOwner {
    public:
        explicit Watcher(std::function<void()> watch) : watch_(std::move(watch)) {}
        int ProgressNotify(int, int, const RewriteInformation&) override {
            watch_();
            return 0;
        }

    private:
        std::function<void()> watch_;
    };
    MakeContainer(name_, {.type = 9});
    ASSERT_EQ(::chmod(name_.c_str(), 0600), 0);
    ASSERT_TRUE(file_.OpenExisting(name_.c_str()));
    ASSERT_EQ(::chmod(name_.c_str(), GetParam().film), 0);
    ASSERT_TRUE(
        file_.InsertRecord(0, ByteVector(file_.RecordLength(), 3), ByteVector(file_.SideLength())));
    EXPECT_EQ(permissions("film.kvf.undo"), GetParam().beside_it);
    int watched = 0;
    Watcher watcher([&] {
        ++watched;
        EXPECT_EQ(permissions("film.tmp"), GetParam().beside_it);
    });
    ASSERT_TRUE(file_.Recompress({.compression_type = 99}, &watcher));
    EXPECT_GT(watched, 1);
    EXPECT_EQ(permissions("film.kvf"), GetParam().film);
    file_.AbandonChanges();
}
INSTANTIATE_TEST_SUITE_P(All, RewritingPrivately, testing::ValuesIn(kPermissionCases),
                         [](const auto& test) { return std::string(test.param.name); });

TEST_F(Rewriting, RefusesAFileThatIsOpenForEditingElsewhere) {
    MakeContainer(name_, {});
    ZFilekel editor;
    ASSERT_TRUE(editor.OpenExisting(name_.c_str()));
    EXPECT_FALSE(file_.OpenExisting(name_.c_str()));
    EXPECT_EQ(file_.LastError().fault, Fault::Busy);
    EXPECT_FALSE(file_.RecompressFile(name_.c_str(), {.compression_type = 99}, nullptr));
    EXPECT_EQ(RecordNumbersIn(name_), Range(10)); // reading is allowed
    EXPECT_TRUE(editor.Close());
    EXPECT_TRUE(file_.RecompressFile(name_.c_str(), {.compression_type = 99}, nullptr));
}

/// A film of a small sound track and of a picture window that no disk needs to hold.
void MakeHugeFilm(const std::string& film, const std::string& sound, std::uint32_t size) {
    MakeFilm(film, sound, "");
    const auto middle = static_cast<std::uint32_t>(FileBytes(film).size());
    PutNumber(film, 8, middle);
    PutNumber(film, 12, size);
    ASSERT_EQ(::truncate(film.c_str(), size), 0);
}

TEST_F(Rewriting, CountsTheIndexAndWhatFollowsAgainstTheLimit) {
    MakeContainer(Path("s.kaf"), {.type = 99, .records = 3});
    const std::string film = Path("film.kva");
    MakeHugeFilm(film, Path("s.kaf"), 0x7FFFFFFF);
    Owner owner;
    // One byte more in the user header is one byte too many, and only the index shows it.
    EXPECT_FALSE(file_.RecompressFile(film.c_str(), {.user_header_size = 6}, &owner));
    EXPECT_THAT(owner.sizes_, ElementsAre(16 + 1058)); // it ended before the picture was copied
    EXPECT_THAT(Texts(), ElementsAre("Il file [film.kva] supera i 2147483648 bytes!" +
                                     std::string(kCancelled)));
    EXPECT_THAT(Names(), ElementsAre("film.kva", "s.kaf"));
    EXPECT_EQ(std::filesystem::file_size(film), 0x7FFFFFFFU);
}

TEST_F(Rewriting, AppendsNothingThatWouldLeaveNoRoomForTheIndex) {
    platform::FileCalls calls = platform::SystemFileCalls();
    calls.write = [](int, const void*, std::size_t count) { return static_cast<ssize_t>(count); };
    const platform::ScopedFileCalls scope(calls); // nothing of two gigabytes is really written
    const std::uint32_t room = 12 + 12;           // a record, and an index of three values
    ASSERT_TRUE(file_.Create(name_.c_str(), 0x7FFFFFFF - 1052 - room, 8, 0, 99, 1, 1));
    EXPECT_TRUE(file_.AppendRecord(ByteVector(8), {}));
    EXPECT_FALSE(file_.AppendRecord(ByteVector(8), {}));
    EXPECT_EQ(file_.LastError().fault, Fault::TooLarge);
    EXPECT_EQ(file_.RecordCount(), 1U);
    file_.AbandonChanges();
    ASSERT_TRUE(file_.Create(name_.c_str(), 0x7FFFFFFF - 1052 - room + 1, 8, 0, 99, 1, 1));
    EXPECT_FALSE(file_.AppendRecord(ByteVector(8), {}));
    file_.AbandonChanges();
}

// The old file's place.

int FailingRename(const char*, const char*) {
    errno = EACCES;
    return -1;
}

TEST_F(Rewriting, ThatCannotTakeTheFilesPlaceSaysSoAndStaysUnderItsOwnName) {
    MakeContainer(name_, {.type = 17});
    const ByteVector before = FileBytes(name_);
    platform::FileCalls calls = platform::SystemFileCalls();
    calls.rename = FailingRename;
    {
        const platform::ScopedFileCalls scope(calls);
        EXPECT_TRUE(file_.RecompressFile(name_.c_str(), {.compression_type = 99}, nullptr));
    }
    EXPECT_THAT(Texts(), ElementsAre("!DeleteFile()", "!MoveFile()"));
    EXPECT_EQ(boxes_.Boxes().at(0).caption, "ERRORE");
    EXPECT_EQ(FileBytes(name_), before);
    EXPECT_THAT(Names(), ElementsAre("film.kvf", "film.tmp"));
    EXPECT_EQ(RecordNumbersIn(Path("film.tmp")), Range(10));
    std::filesystem::remove(name_);
    std::filesystem::rename(Path("film.tmp"), name_);
    MakeContainer(Path("fresh.kvf"), {.type = 99});
    EXPECT_EQ(FileBytes(name_), FileBytes(Path("fresh.kvf"))); // without a trace of the rewrite
}

TEST_F(Rewriting, OfAContainerThatIsOpenGivesTheResultOfReopeningWhenTheMoveFails) {
    MakeContainer(name_, {.type = 17});
    platform::FileCalls calls = platform::SystemFileCalls();
    calls.rename = FailingRename;
    const platform::ScopedFileCalls scope(calls);
    ASSERT_TRUE(file_.OpenForRead(name_.c_str()));
    EXPECT_TRUE(file_.Recompress({.compression_type = 99}, nullptr));
    EXPECT_EQ(file_.CompressionType(), 17U); // the old file, for editing
    EXPECT_EQ(RecordNumbers(file_), Range(10));
    EXPECT_TRUE(file_.Close());
}

} // namespace

} // namespace kelvo::test
