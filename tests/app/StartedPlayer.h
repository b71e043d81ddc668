#pragma once
// A main window off screen with films to open; boxes are recorded instead of shown.

#include "tests/playback/Films.h"
#include "tests/playback/PlayerWindow.h"

#include "app/KelvoWinkel.h"
#include "platform/base/message_boxes.h"
#include "platform/desktop/messages.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace kelvo::test {

/// Picture and sound of the same name, 10 audio frames and 50 images a second.
struct Pair {
    int images = 50;
    int audio_frames = 10;
};

/// Looks at a condition every few milliseconds while it runs, and notes what its players report.
class WatchedWindow : public KelvoWinkel {
public:
    using KelvoWinkel::KelvoWinkel;
    bool HandleMessage(UINT message, WPARAM wparam, LPARAM lparam) override;
    INT_PTR HandleNotification(int code, INT_PTR a, INT_PTR b) override;
    /// How often the picture has ended. Any thread.
    int Endings() const { return endings_; }

    std::function<bool()> condition; ///< null: the window is left to itself
    bool came_true = false;

private:
    const DWORD start_ms_ = GetTickCount();
    std::atomic<int> endings_ = 0;
};

class StartedPlayer : public testing::Test {
protected:
    void SetUp() override { setenv("SDL_AUDIODRIVER", "dummy", 1); }
    /// The window without options; nothing is opened by itself.
    void Create();
    /// Runs the window with its options until a condition holds, then chooses "Esci".
    /// @return whether it came to hold before the loop ended; Result() is what Run gave
    bool RunUntil(const CString& file, std::uint32_t options,
                  const std::function<bool()>& condition);
    bool Result() const { return result_; }
    CString MakePair(const char* name, const Pair& pair = {}) const;
    CString MakeSound(const char* name, int audio_frames) const;
    bool Open(const CString& name) { return window_->Open(name); }
    /// Carries a command out, with everything that it has queued.
    void Do(Command command);
    std::string Title() const;
    std::vector<std::string> TakeBoxes();
    RECT WindowRect() const;

    FilmFolder folder_;
    platform::MessageBoxRecorder boxes_;
    std::unique_ptr<WatchedWindow> window_;

private:
    bool result_ = false;
};

} // namespace kelvo::test
