#include "platform/base/file_names.h"

#include "tests/platform/base/TempFolder.h"

#include "platform/base/paths.h"

#include <algorithm>
#include <cerrno>

using namespace kelvo::platform;

namespace {

class FileNames : public TempFolder {
protected:
    // As the file system spells it, without the folder; "-" when there is none.
    std::string Found(const std::string& name) const {
        const auto found = ExistingFileName(Path(name));
        return found ? found->substr(folder_.size() + 1) : "-";
    }
    std::string New(const std::string& name) const {
        const auto found = NewFileName(Path(name));
        return found ? found->substr(folder_.size() + 1) : "-";
    }
};

TEST_F(FileNames, FindTheFileWhateverSeparatesAndWhateverTheCase) {
    Make("Media/Film.kva");
    Make("Media/film.KVA");
    Make("Media/Però.kvf");
    Make("Media/caf\xE9.kaf"); // Latin-1: no UTF-8
    Make("we\\ird/x.dat");
    const struct {
        const char* name;
        const char* found;
    } kCases[] = {
        {"Media/Film.kva", "Media/Film.kva"},
        {"Media\\Film.kva", "Media/Film.kva"},
        {"MEDIA\\film.KVA", "Media/film.KVA"},
        {"media//FILM.kva", "Media/Film.kva"}, // the first in byte order
        {"Media\\PERÒ.KVF", "Media/Però.kvf"},
        {"MEDIA/CAF\xE9.KAF", "Media/caf\xE9.kaf"},
        {"MEDIA/CAF\xC9.KAF", "-"}, // bytes that are no UTF-8 have no case
        {"we\\ird/X.DAT", "we\\ird/x.dat"},
        {"Media/../MEDIA/./Film.kva", "Media/../Media/./Film.kva"},
        {"Media/Film.kv", "-"},
        {"Media/Film.kva/", "-"}, // a file is no folder
        {"Nowhere/Film.kva", "-"},
    };
    for (const auto& row : kCases) {
        EXPECT_EQ(Found(row.name), row.found) << row.name;
    }
}

TEST_F(FileNames, ANameThatExistsAsItStandsWins) {
    Make("a\\b", "one file");
    Make("a/b", "a file in a folder");
    EXPECT_EQ(Found("a\\b"), "a\\b");
    EXPECT_EQ(Found("A\\b"), "a\\b");
    EXPECT_EQ(Found("A/b"), "a/b");
}

TEST_F(FileNames, AFolderThatLeadsNowhereIsNotTheEndOfTheSearch) {
    Make("DIR/other.kva");
    Make("Dir/film.kva");
    EXPECT_EQ(Found("dir/FILM.kva"), "Dir/film.kva");
    EXPECT_EQ(Found("DIR/film.kva"), "Dir/film.kva");
}

TEST_F(FileNames, ALongPathOfBackslashesIsNoLongComponent) {
    std::string path;
    for (int i = 0; i < 5; ++i) {
        path += std::string(100, 'd') + '/';
    }
    Make(path + "film.kva");
    std::string asked = path + "FILM.KVA";
    std::ranges::replace(asked, '/', '\\');
    EXPECT_EQ(Found(asked), path + "film.kva");
}

TEST_F(FileNames, ANewFileTakesItsNameAsItStandsInTheFolderThatIsThere) {
    Make("Media/Film.kva");
    EXPECT_EQ(New("MEDIA\\film.TMP"), "Media/film.TMP");
    EXPECT_EQ(New("media/FILM.KVA"), "Media/FILM.KVA"); // never the other file
    EXPECT_EQ(New("Media/Film.kva"), "Media/Film.kva");
    EXPECT_EQ(New("Nowhere\\film.kva"), "-");
    EXPECT_EQ(New("Media\\"), "-");
    EXPECT_EQ(NewFileName("bare.dat"), "bare.dat");
}

TEST_F(FileNames, HostileNamesAreSimplyNotThere) {
    EXPECT_FALSE(ExistingFileName(""));
    EXPECT_FALSE(ExistingFileName(std::string_view{"/\0x", 3}));
    EXPECT_FALSE(NewFileName(std::string_view{"a\0b", 3}));
    EXPECT_FALSE(ExistingFileName("C:\\media\\film.kva"));
    errno = 0;
    EXPECT_FALSE(ExistingFileName(std::string(100000, 'x')));
    EXPECT_EQ(errno, ENAMETOOLONG);
    EXPECT_EQ(ExistingFileName("\\"), "/");
}

TEST_F(FileNames, CompareWithoutCaseByLetters) {
    EXPECT_TRUE(EqualWithoutCase("ÀÉÎõü Ωж", "àéîÕÜ ωЖ"));
    EXPECT_TRUE(EqualWithoutCase("", ""));
    EXPECT_FALSE(EqualWithoutCase("a", "ab"));
    EXPECT_FALSE(EqualWithoutCase("\xC3", "\xE3"));
    EXPECT_TRUE(EqualWithoutCase("\xC3", "\xC3"));
    EXPECT_FALSE(EqualWithoutCase("é", "e"));
}

// The state folder is chosen by the environment, which each case sets for itself.
class OwnFolders : public TempFolder {
protected:
    OwnFolders() {
        setenv("XDG_STATE_HOME", Path("state").c_str(), 1);
        setenv("HOME", Path("home").c_str(), 1);
    }
    ~OwnFolders() override {
        unsetenv("XDG_STATE_HOME");
        std::filesystem::current_path(began_in_);
    }

private:
    std::filesystem::path began_in_ = std::filesystem::current_path();
};

TEST_F(OwnFolders, AreTheProgramsWhereItMayWriteElseInTheStateFolder) {
    EXPECT_EQ(OwnFilesDirectory(folder_ + '/'), folder_ + '/');
    EXPECT_EQ(OwnFilesDirectory(Path("not there/")), Path("state/kelvo/"));
    EXPECT_TRUE(std::filesystem::is_directory(Path("state/kelvo")));
    setenv("XDG_STATE_HOME", "relative", 1);
    EXPECT_EQ(OwnFilesDirectory(Path("not there/")), Path("home/.local/state/kelvo/"));
}

TEST_F(OwnFolders, StayTheProgramsWhenNothingCanBeWrittenAnywhere) {
    setenv("XDG_STATE_HOME", Make("a file").c_str(), 1);
    EXPECT_EQ(OwnFilesDirectory(Path("not there/")), Path("not there/"));
}

TEST_F(OwnFolders, ThisProgramKnowsItsOwnFile) {
    EXPECT_TRUE(ProgramFile().ends_with("/platform_base_tests"));
    EXPECT_TRUE(std::filesystem::exists(ProgramFile()));
    EXPECT_TRUE(ProgramFile().starts_with(ProgramDirectory())); // a build folder can be written
}

TEST_F(OwnFolders, ACommandLineNameThatIsThereBecomesAbsolute) {
    Make("-film one.kva");
    std::filesystem::current_path(folder_);
    const std::string here = std::filesystem::current_path().string();
    EXPECT_EQ(AbsoluteIfExisting("-film one.kva"), here + "/-film one.kva");
    EXPECT_EQ(AbsoluteIfExisting("-FILM ONE.KVA"), here + "/-film one.kva");
    EXPECT_EQ(AbsoluteIfExisting(Path("-film one.kva")), Path("-film one.kva"));
    EXPECT_EQ(AbsoluteIfExisting("no such.kva"), "no such.kva");
    EXPECT_EQ(AbsoluteIfExisting(""), "");
}

} // namespace
