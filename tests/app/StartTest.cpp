// The window as the program runs it: opening and playing the named film, ending with it or staying.

#include "tests/app/StartedPlayer.h"

#include "platform/desktop/menus.h"

namespace kelvo {
namespace {

using namespace test;

class Start : public StartedPlayer {};

TEST_F(Start, PlaysTheNamedFilmAndStaysAtItsEnd) {
    const CString film = MakePair("clip", {.images = 15, .audio_frames = 3});
    DWORD ended_ms = 0;
    // Long after its end the window is still there.
    EXPECT_TRUE(RunUntil(film, kCommandLineStart, [&] {
        if (window_->Endings() > 0 && ended_ms == 0) ended_ms = GetTickCount();
        return ended_ms != 0 && GetTickCount() - ended_ms > 300;
    }));
    EXPECT_FALSE(Result());
    EXPECT_EQ(window_->Video().FrameCount(), 0); // closed with the window
}

TEST_F(Start, MakesTheWindowTopmostAndFrameExactFromTheCommandLine) {
    const CString film = MakePair("clip");
    RECT rect{};
    bool is_checked = false;
    EXPECT_TRUE(RunUntil(film, kCommandLineStart, [&] {
        if (window_->Video().CurrentFrame() < 3) return false;
        rect = WindowRect();
        is_checked = (GetMenuState(window_->MenuHandle(), static_cast<UINT>(Command::Topmost),
                                   MF_BYCOMMAND) &
                      MF_CHECKED) != 0;
        return true;
    }));
    EXPECT_TRUE(is_checked);
    EXPECT_EQ(rect.left, 0);
    EXPECT_EQ(rect.top, 0);
    EXPECT_EQ(rect.right, kImageWidth + 8);
    EXPECT_EQ(rect.bottom, kImageHeight + 46 + 24);
}

TEST_F(Start, EndsWithTheFilmWhereThatIsAskedFor) {
    const CString film = MakePair("clip", {.images = 15, .audio_frames = 3});
    EXPECT_FALSE(RunUntil(film, 0, [] { return false; })); // 0: exit at the end among others
    EXPECT_FALSE(Result());
    EXPECT_EQ(window_->Endings(), 1);
    const CString song = MakeSound("song", 3);
    const DWORD start = GetTickCount();
    EXPECT_FALSE(RunUntil(song, 0, [] { return false; }));
    EXPECT_LT(GetTickCount() - start, kDeadlineMs);
}

TEST_F(Start, SaysTwiceWhatDoesNotOpenAndStays) {
    const CString film = folder_.Name("not there.kva");
    EXPECT_TRUE(RunUntil(film, kCommandLineStart, [&] { return boxes_.Boxes().size() == 2; }));
    EXPECT_EQ(TakeBoxes(), (std::vector<std::string>{
                               "ERRORE: Impossibile Aprire il file VIDEO Specificato",
                               std::string("Impossibile aprire il file!: ") + film.c_str()}));
    EXPECT_FALSE(Result());
}

TEST_F(Start, EndsWithOneForWhatDoesNotOpenOnATerminal) {
    window_ = std::make_unique<WatchedWindow>();
    window_->ShowProgressOnTerminal();
    EXPECT_TRUE(window_->Run(nullptr, folder_.Name("not there.kva"), kCommandLineStart));
}

} // namespace
} // namespace kelvo
