// The button bar, the volume slider and the time labels of the main window, and what a film's end
// means for the program.

#include "tests/app/StartedPlayer.h"

#include "framework/window/tools/BitmapButton.h"
#include "platform/desktop/controls.h"
#include "platform/desktop/dialogs.h"
#include "platform/desktop/menus.h"

#include <cstdio>
#include <set>
#include <thread>

namespace kelvo {
namespace {

using namespace test;
using Shown = std::set<int>;

const Shown kAll = {101, 401, 402, 403, 404, 405, 406, 407};
const Shown kPlaying = {101, 403, 404};
const Shown kFast = {101, 403};

class Bar : public StartedPlayer {
protected:
    void SetUp() override {
        StartedPlayer::SetUp();
        Create();
    }
    BitmapButton& Button(Command command) const {
        return *window_->Buttons().FindButton(static_cast<int>(command));
    }
    /// What can be seen and pressed.
    Shown ShownButtons() const {
        Shown shown;
        for (const int id : kAll) {
            const HWND button = window_->Buttons().FindButton(id)->Window();
            const bool visible = IsWindowVisible(button) != FALSE;
            EXPECT_EQ(visible, IsWindowEnabled(button) != FALSE) << id;
            if (visible) shown.insert(id);
        }
        return shown;
    }
    void Click(Command command) const {
        const BitmapButton& button = Button(command);
        button.Send(WM_LBUTTONDOWN, MK_LBUTTON, MAKELONG(5, 5));
        button.Send(WM_LBUTTONUP, 0, MAKELONG(5, 5));
        lum.ProcessMessages();
    }
    bool IsDown(Command command) const { return Button(command).IsPressed(); }
    bool Plays() const { return window_->Video().IsRunning() || window_->Audio().IsPlaying(); }
    bool WaitUntilQuiet() const {
        return PumpUntil([&] { return !Plays(); });
    }
    std::string Label(int id) const { return window_->ToolDialog().ControlText(id).Text(); }
    HWND Slider() const { return window_->ToolDialog().Control(101); }
};

TEST_F(Bar, IsReachedByTheKeyboard) {
    ASSERT_TRUE(Open(MakePair("clip")));
    const auto press_tab = [] {
        SendMessageA(GetFocus(), WM_KEYDOWN, VK_TAB, 0);
        lum.ProcessMessages();
    };
    SetFocus(window_->Window());
    press_tab();
    ASSERT_EQ(GetFocus(), Button(Command::Open).Window());
    press_tab();
    ASSERT_EQ(GetFocus(), Slider());
    press_tab();
    ASSERT_EQ(GetFocus(), Button(Command::Open).Window());
    while (GetFocus() != Button(Command::Play).Window()) {
        const HWND before = GetFocus();
        SendMessageA(before, WM_KEYDOWN, VK_RIGHT, 0);
        lum.ProcessMessages();
        ASSERT_NE(GetFocus(), before);
    }
    SendMessageA(GetFocus(), WM_KEYDOWN, VK_SPACE, 0);
    lum.ProcessMessages();
    EXPECT_TRUE(Plays());
    Click(Command::Stop);
    EXPECT_TRUE(WaitUntilQuiet());
}

TEST_F(Bar, ShowsTheButtonsThatMakeSense) {
    EXPECT_EQ(ShownButtons(), kAll);
    ASSERT_TRUE(Open(MakePair("clip", {.images = 400, .audio_frames = 80})));
    Click(Command::Play);
    EXPECT_TRUE(PumpUntil([&] { return Plays(); }));
    EXPECT_EQ(ShownButtons(), kPlaying);
    Click(Command::Stop);
    EXPECT_TRUE(WaitUntilQuiet());
    EXPECT_EQ(ShownButtons(), kAll);
    EXPECT_TRUE(IsDown(Command::Stop));
    EXPECT_FALSE(IsDown(Command::Play));
    for (const Command fast : {Command::FastForward, Command::FastBackward}) {
        Click(fast);
        EXPECT_EQ(ShownButtons(), kFast);
        EXPECT_TRUE(WaitUntilQuiet());
        EXPECT_EQ(ShownButtons(), kFast) << "an end by itself restores nothing";
        Click(Command::Stop);
        EXPECT_EQ(ShownButtons(), kAll);
    }
    Click(Command::Play);
    Do(Command::CloseFilm);
    EXPECT_EQ(ShownButtons(), kAll);
    EXPECT_FALSE(IsDown(Command::Play));
}

struct Place {
    Command command;
    LONG left;
    const char* tip;
};

TEST_F(Bar, HasItsButtonsInTheirPlacesWithTheirTips) {
    RECT bar{};
    GetWindowRect(window_->Buttons().Window(), &bar);
    for (const Place& place : {
             Place{Command::Open, 2, "Apre un filmato"},
             Place{Command::ToStart, 26, "Vai all'Inizio"},
             Place{Command::FastBackward, 46, "Indietro veloce"},
             Place{Command::Stop, 66, "Stop"},
             Place{Command::Pause, 86, "Pausa"},
             Place{Command::Play, 106, "Play"},
             Place{Command::FastForward, 126, "Avanti veloce"},
             Place{Command::ToEnd, 146, "Vai alla fine"},
         }) {
        RECT button{};
        GetWindowRect(Button(place.command).Window(), &button);
        EXPECT_EQ(button.left - bar.left, place.left) << place.tip;
        EXPECT_EQ(button.top - bar.top, 2) << place.tip;
        EXPECT_EQ(Button(place.command).TipText(), place.tip);
    }
}

TEST_F(Bar, ShowsOnlyOpenAndStopWhileSoundAloneGoesFast) {
    ASSERT_TRUE(Open(MakeSound("song", 100)));
    Click(Command::FastForward);
    EXPECT_EQ(ShownButtons(), kFast);
    Click(Command::Stop);
    EXPECT_TRUE(WaitUntilQuiet());
    EXPECT_EQ(ShownButtons(), kAll);
}

TEST_F(Bar, RaisesAButtonWhoseCommandCannotBeCarriedOut) {
    for (const Command command : {Command::ToStart, Command::FastBackward, Command::Stop,
                                  Command::Pause, Command::FastForward, Command::ToEnd}) {
        Click(command);
        EXPECT_FALSE(IsDown(command)) << static_cast<int>(command);
        EXPECT_EQ(ShownButtons(), kAll);
    }
    EXPECT_EQ(TakeBoxes().size(), 4U); // Stop and Pausa say nothing
}

TEST_F(Bar, HoldsWhileThePauseButtonIsDown) {
    ASSERT_TRUE(Open(MakePair("clip", {.images = 400, .audio_frames = 80})));
    Click(Command::Play);
    ASSERT_TRUE(PumpUntil([&] { return window_->Video().CurrentFrame() > 3; }));
    Click(Command::Pause);
    EXPECT_TRUE(window_->Video().IsPictureHeld());
    EXPECT_TRUE(window_->Audio().IsPaused());
    Click(Command::Pause);
    EXPECT_FALSE(window_->Video().IsPictureHeld());
    EXPECT_FALSE(window_->Audio().IsPaused());
    Click(Command::Pause);
    window_->HandleNotification(kPositionClicked, 100, 0); // a click on the bar lets it go on
    EXPECT_FALSE(IsDown(Command::Pause));
    EXPECT_TRUE(PumpUntil([&] { return window_->Video().CurrentFrame() > 105; }));
    Click(Command::Stop);
    Click(Command::Stop); // down already: no command, and no harm
    EXPECT_TRUE(WaitUntilQuiet());
}

TEST_F(Bar, CanStopWhatBeganWithoutAClick) {
    ASSERT_TRUE(Open(MakePair("clip", {.images = 400, .audio_frames = 80})));
    Click(Command::Stop);
    EXPECT_TRUE(IsDown(Command::Stop)); // a press on it would now be none
    window_->HandleNotification(kPositionClicked, 40, 0);
    ASSERT_TRUE(PumpUntil([&] { return Plays(); }));
    EXPECT_FALSE(IsDown(Command::Stop));
    EXPECT_EQ(ShownButtons(), kPlaying);
    Click(Command::Stop);
    EXPECT_TRUE(WaitUntilQuiet());
    Do(Command::Play);
    ASSERT_TRUE(PumpUntil([&] { return Plays(); }));
    Click(Command::Stop);
    EXPECT_TRUE(WaitUntilQuiet());
}

// --- times and volume --------------------------------------------------------------------------

TEST_F(Bar, ShowsTimesInMinutesAndSeconds) {
    EXPECT_EQ(Label(106), "00:00");
    EXPECT_EQ(Label(107), "00:00");
    ASSERT_TRUE(Open(MakePair("clip", {.images = 500, .audio_frames = 100})));
    EXPECT_EQ(Label(107), "00:10");
    window_->HandleNotification(NotifyStarted, 0, 3700 * 50);
    EXPECT_EQ(Label(107), "61:40");
    window_->HandleNotification(NotifyProgress, 199, 500);
    EXPECT_EQ(Label(106), "00:03");
    EXPECT_EQ(window_->PositionBar().Values().value, 199);
    EXPECT_EQ(window_->PositionBar().Values().marker_end, -1);
    Do(Command::ToEnd);
    EXPECT_EQ(Label(106), "00:09");
    EXPECT_EQ(window_->PositionBar().Values().value, 499);
    Do(Command::ToStart);
    EXPECT_EQ(Label(106), "00:00");
    Do(Command::Play); // now another thread reports
    EXPECT_TRUE(PumpUntil([&] { return Label(106) == "00:01"; }));
    Do(Command::CloseFilm);
    EXPECT_EQ(Label(106), "00:00");
    EXPECT_EQ(Label(107), "00:00");
    ASSERT_TRUE(Open(MakeSound("song", 6000)));
    EXPECT_EQ(Label(107), "10:00");
}

TEST_F(Bar, TakesTimesFromTwoThreadsAtOnce) {
    ASSERT_TRUE(Open(MakePair("clip")));
    std::thread picture([&] {
        for (int image = 0; image < 5000; ++image) {
            window_->HandleNotification(NotifyProgress, image, 5000);
        }
    });
    for (int image = 0; image < 500; ++image) {
        window_->HandleNotification(NotifyStarted, 0, image);
        lum.ProcessMessages();
    }
    picture.join();
    EXPECT_TRUE(PumpUntil([&] { return Label(106) == "01:39"; }));
    EXPECT_EQ(Label(107), "00:09");
}

TEST_F(Bar, KeepsTheVolumeOfTheSlider) {
    EXPECT_EQ(SendMessageA(Slider(), TBM_GETPOS, 0, 0), 255);
    EXPECT_EQ(SendMessageA(Slider(), TBM_GETRANGEMAX, 0, 0), 255);
    const auto move = [&](int position) {
        SendMessageA(Slider(), TBM_SETPOS, TRUE, position);
        window_->ToolDialog().Send(WM_HSCROLL, MAKELONG(TB_THUMBTRACK, position),
                                   reinterpret_cast<LPARAM>(Slider()));
    };
    ASSERT_TRUE(Open(MakePair("clip", {.images = 400, .audio_frames = 80})));
    move(10); // before there is a device
    Do(Command::Play);
    ASSERT_TRUE(PumpUntil([&] { return window_->Audio().IsPlaying(); }));
    EXPECT_EQ(window_->Audio().GetVolume(), 2550);
    EXPECT_EQ(SendMessageA(Slider(), TBM_GETPOS, 0, 0), 10);
    move(128);
    EXPECT_EQ(window_->Audio().GetVolume(), 32640);
    window_->HandleNotification(kPositionClicked, 100, 0);
    EXPECT_EQ(window_->Audio().GetVolume(), 32640);
}

// --- recent films and the end ------------------------------------------------------------------

TEST_F(Bar, OpensARecentFilmAndSaysWhenItHasVanished) {
    const CString one = MakePair("one");
    const CString two = MakePair("two");
    ASSERT_TRUE(Open(one));
    ASSERT_TRUE(Open(two));
    window_->Send(WM_COMMAND, 20001, 0);
    EXPECT_EQ(Title(), "Kelvo - one");
    EXPECT_EQ(window_->RecentFiles().PathOf(20000), one);
    std::remove(two.Text());
    std::remove(folder_.Name("two.kaf").Text());
    window_->Send(WM_COMMAND, 20001, 0);
    EXPECT_EQ(TakeBoxes(),
              (std::vector<std::string>{"ERRORE: Impossibile Aprire il file VIDEO Specificato"}));
    EXPECT_EQ(Title(), "Kelvo");
    EXPECT_EQ(window_->RecentFiles().Entries().Count(), 2);
    window_->Send(WM_COMMAND, 20000, 0);
    EXPECT_EQ(Title(), "Kelvo - one");
    Create(); // the next run knows them, too
    EXPECT_EQ(window_->RecentFiles().PathOf(20000), one);
    EXPECT_EQ(GetMenuItemCount(GetSubMenu(GetMenu(window_->Window()), 0)), 7);
}

TEST_F(Bar, RemembersSoundAloneUnderItsOwnName) {
    const CString song = MakeSound("song", 5);
    ASSERT_TRUE(Open(song));
    EXPECT_EQ(window_->RecentFiles().PathOf(20000), song);
}

TEST_F(StartedPlayer, GoesOnAfterStopInSoundAloneAndEndsWithIt) {
    const CString song = MakeSound("song", 12); // 1.2 s
    int step = 0;
    const DWORD start = GetTickCount();
    DWORD stopped_at = 0;
    const bool came = RunUntil(song, kStartOpenAndPlay | kStartExitAtEnd, [&] {
        if (step == 0 && window_->Audio().PlayedFrameCounter() >= 3) {
            window_->Post(WM_COMMAND, static_cast<WPARAM>(Command::Stop), 0);
            step = 1;
        } else if (step == 1 && !window_->Audio().IsDeviceActive()) {
            stopped_at = GetTickCount();
            step = 2;
        } else if (step == 2 && GetTickCount() - stopped_at > 300) {
            window_->Post(WM_COMMAND, static_cast<WPARAM>(Command::Play), 0);
            step = 3;
        }
        return false; // the program must end by itself
    });
    EXPECT_FALSE(came);
    EXPECT_EQ(step, 3);
    EXPECT_LT(GetTickCount() - start, kDeadlineMs); // when the test would have ended it
}

} // namespace
} // namespace kelvo
