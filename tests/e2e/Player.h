#pragma once
// The real player on a screen and a loudspeaker of the test's own.

#include "tests/e2e/ChildProcess.h"
#include "tests/e2e/SoundServer.h"
#include "tests/e2e/VirtualScreen.h"

#include <memory>
#include <string>
#include <vector>

namespace kelvo::test {

/// Screen and loudspeaker, started when they are first asked for and stopped at the program's end.
class Stage {
public:
    Stage();
    Stage(const Stage&) = delete;
    Stage& operator=(const Stage&) = delete;

    /// Empty when both are there.
    std::string Problem() const;
    const VirtualScreen& Screen() const { return screen_; }
    const SoundServer& Sound() const { return sound_; }
    const std::string& Home() const { return home_.Path(); }
    const TemporaryFolder& HomeFolder() const { return home_; }
    /// For a program that is to be seen and heard.
    Environment ForPlayers() const;

private:
    TemporaryFolder home_;
    VirtualScreen screen_;
    SoundServer sound_;
};

/// Whether the player also takes commands from the test.
enum class Commanded : bool { No, Yes };

class Player {
public:
    /// Starts a copy of the program in the stage's home, so that it keeps its recent films there.
    /// @param arguments    without the program's name
    /// @param environment  on top of the stage's
    Player(const Stage& stage, const std::vector<std::string>& arguments,
           const Environment& environment = {}, const std::string& folder = {},
           Commanded commanded = Commanded::No);

    ChildProcess& Process() { return process_; }
    /// Posts a command to the main window of a commanded player.
    void Command(int number) const { process_.Tell(std::to_string(number) + "\n"); }
    /// Waits for the main window. @return whether it has come
    bool WaitForWindow();
    bool WaitForTitle(const std::string& title);
    /// The one whose title begins with "Kelvo", 0 while there is none.
    VirtualScreen::WindowId Window() const;
    std::string Title() const;
    Area Geometry() const;
    /// Waits until the window stands at the top left, exactly around a picture of this size.
    /// @return the picture's place on the screen, or nothing when the window never got there
    std::optional<Area> WaitForPicture(int width, int height);
    /// Windows other than the main one, by title.
    std::vector<std::string> Boxes() const;
    bool WaitForBox(const std::string& title);
    /// Answers the box that is open with the return key, and waits until it is gone.
    bool AnswerBox();

    /// Chooses a menu entry with mouse and keys. @param popup  0 for the first; entry counts from 0
    bool ChooseEntry(int popup, int entry);
    /// Opens the first popup and clicks its lowest entry.
    bool ClickLowestFileEntry();
    void AskToClose() const;
    std::optional<ExitStatus> WaitForExit(std::chrono::milliseconds patience = kPatience) {
        return process_.WaitForExit(patience);
    }

private:
    bool OpenFileMenu();

    const Stage& stage_;
    ChildProcess process_;
};

} // namespace kelvo::test
