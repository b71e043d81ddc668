// On a machine without a display the same command plays the film off screen, with its progress on
// the terminal.

#include "tests/e2e/StageForTests.h"

#include <fstream>
#include <regex>

namespace kelvo::test {
namespace {

class WithoutDisplay : public testing::Test {
protected:
    Environment Bare() const {
        return {{"DISPLAY", std::nullopt},
                {"WAYLAND_DISPLAY", std::nullopt},
                {"QT_QPA_PLATFORM", std::nullopt},
                {"SDL_AUDIODRIVER", std::nullopt},
                {"XDG_RUNTIME_DIR", folder_.Path()}};
    }
    TemporaryFolder folder_;
    /// It keeps its recent films in the test's folder.
    const std::string player_ = folder_.CopyOf(KELVO_PLAYER);
};

TEST_F(WithoutDisplay, PlaysToTheEndAndPrintsItsProgress) {
    const std::string film = folder_.File("film.kva");
    ASSERT_EQ(MakeCodedFilm(film, {.seconds = 3}).value_or(""), "");
    const auto start = Clock::now();
    ChildProcess player({player_, film}, Bare());
    EXPECT_EQ(player.WaitForExit(), ExitStatus{.code = 0}) << player.Errors();
    const auto took = Clock::now() - start;
    EXPECT_GE(took, std::chrono::milliseconds(2900)); // in real time
    EXPECT_EQ(player.Errors(), "");
    const std::string output = player.Output();
    for (const char* line : {"00:00 / 00:03\n", "00:01 / 00:03\n", "00:02 / 00:03\n"}) {
        EXPECT_NE(output.find(line), std::string::npos) << line << "in\n" << output;
    }
    EXPECT_TRUE(std::regex_match(output, std::regex("(\\d\\d:\\d\\d / \\d\\d:\\d\\d\n)+")))
        << output;
}

TEST_F(WithoutDisplay, PlaysSoundAlone) {
    ChildProcess player({player_, KELVO_SOURCE_DIR "/tests/samples/screen.kaf"}, Bare());
    EXPECT_EQ(player.WaitForExit(), ExitStatus{.code = 0}) << player.Errors();
    EXPECT_NE(player.Output().find("00:01 / "), std::string::npos) << player.Output();
}

TEST_F(WithoutDisplay, PlaysADamagedFilmAsFarAsItGoes) {
    ChildProcess player({player_, KELVO_SOURCE_DIR "/tests/samples/cut.kva"}, Bare());
    EXPECT_EQ(player.WaitForExit(), ExitStatus{.code = 0}) << player.Errors();
    EXPECT_NE(player.Output().find("00:01 / "), std::string::npos) << player.Output();
    EXPECT_NE(player.Errors().find("ATTENZIONE: Il film [cut.kva]"), std::string::npos);
}

TEST_F(WithoutDisplay, EndsWithOneForWhatDoesNotOpen) {
    std::ofstream(folder_.File("no film.kva")) << "no film";
    for (const char* name : {"no film.kva", "not there.kva"}) {
        ChildProcess player({player_, folder_.File(name)}, Bare());
        EXPECT_EQ(player.WaitForExit(), ExitStatus{.code = 1});
        const std::string errors = player.Errors();
        EXPECT_NE(errors.find("ERRORE: Impossibile Aprire il file VIDEO Specificato\n"),
                  std::string::npos)
            << errors;
        EXPECT_NE(errors.find("Impossibile aprire il file!: " + folder_.File(name) + "\n"),
                  std::string::npos)
            << errors;
    }
    ChildProcess nothing({player_}, Bare());
    EXPECT_EQ(nothing.WaitForExit(), ExitStatus{.code = 1});
    EXPECT_NE(nothing.Errors(), "");
}

TEST_F(WithoutDisplay, KeepsItsBoxesWhereTheUserChoseToPlayOffScreen) {
    Environment chosen = Bare();
    chosen["QT_QPA_PLATFORM"] = "offscreen";
    chosen["SDL_AUDIODRIVER"] = "dummy";
    ChildProcess player({player_, folder_.File("not there.kva")}, chosen);
    // The box waits for an answer that nobody can give; the terminal hears nothing of it.
    EXPECT_FALSE(player.WaitForExit(std::chrono::milliseconds(1500)));
    EXPECT_EQ(player.Errors().find("ERRORE"), std::string::npos) << player.Errors();
}

TEST_F(WithoutDisplay, WritesItsSoundWhereTheUserWantsIt) {
    const std::string film = folder_.File("film.kva");
    ASSERT_EQ(MakeCodedFilm(film, {.seconds = 1}).value_or(""), "");
    Environment chosen = Bare();
    chosen["SDL_AUDIODRIVER"] = "disk";
    chosen["SDL_DISKAUDIOFILE"] = folder_.File("sound.raw");
    ChildProcess player({player_, film}, chosen);
    EXPECT_EQ(player.WaitForExit(), ExitStatus{.code = 0}) << player.Errors();
    std::ifstream sound(folder_.File("sound.raw"), std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(sound), {}};
    EXPECT_GE(bytes.size(), 22050U);
    EXPECT_NE(bytes.find(static_cast<char>(227)), std::string::npos); // a click
}

} // namespace
} // namespace kelvo::test
