// The sizes that the window takes from a film, by its options and by the zoom commands. The screen
// is the one of the toolkit off screen, 800 x 800.

#include "tests/app/StartedPlayer.h"

#include <algorithm>
#include <cstdio>

namespace kelvo {
namespace {

using namespace test;

struct Sizes {
    RECT window;
    LONG display_width;
    LONG display_height;
    int zoom;
};

class WindowSizing : public StartedPlayer {
protected:
    Sizes SizesWith(std::uint32_t options, const CString& film) {
        Sizes sizes{};
        EXPECT_TRUE(RunUntil(film, options | kStartOpenAndPlay, [&] {
            if (!window_->Video().IsRunning()) return false;
            sizes = {WindowRect(), window_->Video().DisplayWidth(),
                     window_->Video().DisplayHeight(), window_->Video().ZoomMode()};
            return true;
        }));
        return sizes;
    }
    static void MakeLargeFilm(const CString& name, int width, int height) {
        const int row = (width * 2 + 3) / 4 * 4;
        const auto length = static_cast<std::uint32_t>(row * height);
        VideoFilekel track;
        ASSERT_TRUE(track.Create(name, kBitmapHeadersSize, length, 2, 1, 1, false));
        ASSERT_TRUE(track.WriteVideoHeader(BuildBitmapHeaders(width, height, 16)));
        for (int image = 0; image < 3; ++image) {
            ASSERT_TRUE(track.AppendFrame(std::vector<std::uint8_t>(length), kNeverLinked, 0));
        }
        ASSERT_TRUE(track.Close());
    }
};

TEST_F(WindowSizing, FitsTheFilmExactlyInNaturalSize) {
    const Sizes sizes = SizesWith(kStartNaturalSize, MakePair("clip"));
    EXPECT_EQ(sizes.zoom, static_cast<int>(Zoom::Natural));
    EXPECT_EQ(sizes.window.left, 0);
    EXPECT_EQ(sizes.window.top, 0);
    EXPECT_EQ(sizes.window.right, kImageWidth + 8);
    EXPECT_EQ(sizes.window.bottom, kImageHeight + 46 + 24);
}

TEST_F(WindowSizing, FitsTheFilmIntoTheWindowByOption) {
    const CString film = MakePair("clip"); // 4 : 3
    for (const std::uint32_t options :
         {std::uint32_t{kStartFitWindow}, std::uint32_t{kStartFitWindow | kStartByScreen}}) {
        const Sizes sizes = SizesWith(options, film);
        EXPECT_EQ(sizes.zoom, static_cast<int>(Zoom::Fit));
        EXPECT_GT(sizes.display_width, 10 * kImageWidth);
        EXPECT_NEAR(sizes.display_height * 4.0 / 3, sizes.display_width, 2);
        EXPECT_EQ(sizes.window.right - sizes.window.left, sizes.display_width + 10);
        EXPECT_EQ(sizes.window.bottom - sizes.window.top, sizes.display_height + 72);
    }
}

TEST_F(WindowSizing, TakesTheWholeScreenWhereItIsTooSmallForTheFilm) {
    struct Case {
        int width;
        int height;
        bool fills;
    };
    // 800 x 800 has room for 790 x 700.
    for (const Case& one : {Case{790, 700, false}, Case{792, 700, true}, Case{790, 701, true}}) {
        const CString film = folder_.Name("large.kvf");
        MakeLargeFilm(film, one.width, one.height);
        const Sizes sizes = SizesWith(kStartByScreen, film);
        EXPECT_EQ(sizes.window.left, 0);
        EXPECT_EQ(sizes.window.top, 0);
        if (one.fills) {
            EXPECT_EQ(sizes.window.right, 800) << one.width << " x " << one.height;
            EXPECT_EQ(sizes.window.bottom, 800) << one.width << " x " << one.height;
            EXPECT_EQ(sizes.zoom, static_cast<int>(Zoom::Fit));
            EXPECT_EQ(sizes.display_height,
                      std::min(800 - 46 - 22, (800 - 8) * one.height / one.width));
        } else {
            EXPECT_EQ(sizes.window.right, one.width + 8);
            EXPECT_EQ(sizes.display_width, one.width);
        }
        std::remove(film.c_str());
    }
}

struct ZoomCase {
    Command command;
    LONG width;
    LONG height;
};

TEST_F(WindowSizing, FollowsTheZoomCommands) {
    Create();
    const RECT before = WindowRect();
    for (int id = 1001; id <= 1007; ++id) {
        Do(static_cast<Command>(id)); // nothing is open: nothing happens
    }
    EXPECT_EQ(WindowRect().right, before.right);
    EXPECT_EQ(WindowRect().bottom, before.bottom);
    const CString film = folder_.Name("odd.kvf");
    MakeLargeFilm(film, 333, 251);
    ASSERT_TRUE(Open(film));
    for (const ZoomCase& one :
         {ZoomCase{Command::NaturalSize, 333, 251}, ZoomCase{Command::Quarter, 83, 62},
          ZoomCase{Command::Half, 166, 125}, ZoomCase{Command::ThreeQuarters, 249, 188},
          ZoomCase{Command::OneAndAHalf, 499, 376}, ZoomCase{Command::Twice, 666, 502}}) {
        Do(one.command);
        const RECT rect = WindowRect();
        EXPECT_EQ(window_->Video().DisplayWidth(), one.width);
        EXPECT_EQ(window_->Video().DisplayHeight(), one.height);
        EXPECT_EQ(rect.right - rect.left, one.width + 10);
        EXPECT_EQ(rect.bottom - rect.top, one.height + 72);
    }
    Do(Command::FitToWindow); // the window keeps its size
    EXPECT_EQ(window_->Video().ZoomMode(), static_cast<int>(Zoom::Fit));
    EXPECT_EQ(WindowRect().right - WindowRect().left, 676);
    // The view is the client area without the strip; 22 pixels of it stay free.
    EXPECT_EQ(window_->Video().DisplayHeight(), std::min(502 + 72 - 46 - 24 - 22, 668 * 251 / 333));
}

} // namespace
} // namespace kelvo
