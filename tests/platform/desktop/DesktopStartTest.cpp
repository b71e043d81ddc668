// Starting the desktop, each time in a process of its own.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <memory>
#include <string>
#include <sys/wait.h>

using testing::HasSubstr;

namespace {

struct Outcome {
    std::string output;
    int exit_code = -1;
};

/// @param environment  assignments and options of env(1)
Outcome RunProbe(const std::string& environment) {
    const std::string command = "env " + environment + " '" DESKTOP_PROBE "' 2>&1";
    std::FILE* const pipe = ::popen(command.c_str(), "r");
    if (pipe == nullptr) return {};
    Outcome outcome;
    for (int letter = std::fgetc(pipe); letter != EOF; letter = std::fgetc(pipe)) {
        outcome.output.push_back(static_cast<char>(letter));
    }
    const int status = ::pclose(pipe);
    outcome.exit_code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return outcome;
}

constexpr const char* kNoDisplay = "-u DISPLAY -u WAYLAND_DISPLAY -u XDG_RUNTIME_DIR ";

} // namespace

TEST(DesktopStart, GoesOffScreenWithoutADisplayAndPutsBoxesOnTheTerminal) {
    const Outcome outcome = RunProbe(std::string(kNoDisplay) + "-u QT_QPA_PLATFORM");
    EXPECT_EQ(outcome.exit_code, 0) << outcome.output;
    EXPECT_THAT(outcome.output, HasSubstr("display 0, chosen 0"));
    EXPECT_THAT(outcome.output, HasSubstr("titolo: testo\n"));
    EXPECT_THAT(outcome.output, HasSubstr("titolo: davvero?\n"));
    EXPECT_THAT(outcome.output, HasSubstr("answers 1 7\n")) << "OK, and no";
    EXPECT_THAT(outcome.output, HasSubstr("screen 1"));
}

TEST(DesktopStart, HonoursThePlatformThatThePersonChose) {
    const Outcome outcome = RunProbe(std::string(kNoDisplay) + "QT_QPA_PLATFORM=offscreen");
    EXPECT_EQ(outcome.exit_code, 0) << outcome.output;
    EXPECT_THAT(outcome.output, HasSubstr("display 0, chosen 1"));
}

// The environment's locale is taken by the toolkit; a decimal comma would break every number read.
TEST(DesktopStart, KeepsNumbersAsInTheCLocale) {
    const Outcome outcome = RunProbe("LC_ALL=C.UTF-8 QT_QPA_PLATFORM=offscreen");
    EXPECT_THAT(outcome.output, HasSubstr("numbers as in C\n"));
}
