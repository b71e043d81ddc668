// What the main window does with commands that come while another one shows a box: the box's loop
// dispatches them, and the film must neither be played nor closed beneath the command.

#include "app/KelvoWinkel.h"
#include "framework/window/LUM.h"
#include "media/VideoFilekel.h"
#include "platform/base/clock.h"
#include "platform/base/message_boxes.h"
#include "platform/base/threads.h"
#include "platform/desktop/messages.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

namespace kelvo {
namespace {

constexpr int kWidth = 32;
constexpr int kHeight = 24;
constexpr int kImages = 20;

std::vector<std::uint8_t> PixelsOf(int image) {
    std::vector<std::uint8_t> pixels(std::size_t{kWidth} * kHeight * 2, 0x11);
    for (std::size_t i = 0; i < pixels.size(); i += 2) {
        pixels[i] = static_cast<std::uint8_t>(0xA0 + image);
    }
    return pixels;
}

/// A film of images that stand alone, one a second; the last one lacks a pixel.
void MakeDamagedFilm(const std::string& name) {
    VideoFilekel track;
    const std::uint32_t length = kWidth * kHeight * 2;
    ASSERT_TRUE(track.Create(CString(name.c_str()), kBitmapHeadersSize, length, 1, 1, 1, false));
    ASSERT_TRUE(track.WriteVideoHeader(BuildBitmapHeaders(kWidth, kHeight, 16)));
    for (int image = 0; image < kImages; ++image) {
        ASSERT_TRUE(track.AppendFrame(PixelsOf(image), kNeverLinked, 0));
    }
    ASSERT_TRUE(track.Close());
    std::fstream file(name, std::ios::in | std::ios::out | std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(file), {}};
    // Its first run: a pixel, repeated 255 times.
    const auto run = bytes.find({static_cast<char>(0xA0 + kImages - 1), 0x11, '\xFF'});
    ASSERT_NE(run, std::string::npos);
    file.clear();
    file.seekp(static_cast<std::streamoff>(run) + 2);
    file.put('\xFE');
}

class WaitingCommands : public testing::Test {
protected:
    void SetUp() override {
        std::string pattern =
            (std::filesystem::temp_directory_path() / "kelvo-app-XXXXXX").string();
        folder_ = mkdtemp(pattern.data());
        const std::string film = folder_ + "/film.kvf";
        MakeDamagedFilm(film);
        // In place of the desktop's box: its loop dispatches what is queued.
        former_ = platform::SetMessageBoxHandler([this](const platform::MessageBoxRequest&) {
            ++boxes_;
            if (on_box_) on_box_();
            lum.ProcessMessages();
            return IDOK;
        });
        ASSERT_EQ(window_.Create(), 1);
        ASSERT_TRUE(window_.Open(CString(film.c_str())));
        lum.ProcessMessages();
    }
    void TearDown() override {
        platform::SetMessageBoxHandler(std::move(former_));
        std::filesystem::remove_all(folder_);
    }
    void Post(Command command) { window_.Post(WM_COMMAND, static_cast<WPARAM>(command), 0); }
    static bool PumpUntil(const std::function<bool()>& condition) {
        const DWORD start = GetTickCount();
        while (!condition()) {
            if (GetTickCount() - start > 10000) return false;
            lum.ProcessMessages();
            Sleep(1);
        }
        return true;
    }

    std::string folder_;
    platform::MessageBoxHandler former_;
    std::function<void()> on_box_;
    int boxes_ = 0;
    KelvoWinkel window_;
};

TEST_F(WaitingCommands, AreCarriedOutOnceTheOneWithTheBoxIsDone) {
    on_box_ = [this] {
        Post(Command::Play);
        lum.ProcessMessages();
        EXPECT_FALSE(window_.Video().IsRunning());
    };
    Post(Command::ToEnd); // reads the damaged image
    lum.ProcessMessages();
    EXPECT_EQ(boxes_, 1);
    EXPECT_TRUE(PumpUntil([this] { return window_.Video().IsRunning(); }));
}

TEST_F(WaitingCommands, CloseNoFilmThatIsBeingRead) {
    on_box_ = [this] {
        Post(Command::CloseFilm);
        lum.ProcessMessages();
        window_.HandleNotification(kPositionClicked, 0, 0); // a click on an inert window
        EXPECT_TRUE(window_.Video().IsTrackOpen());
        EXPECT_FALSE(window_.Video().IsRunning());
    };
    Post(Command::ToEnd);
    lum.ProcessMessages();
    EXPECT_EQ(boxes_, 1);
    EXPECT_TRUE(PumpUntil([this] { return !window_.Video().IsTrackOpen(); }));
}

TEST_F(WaitingCommands, LetTheWindowGoOnceTheOneWithTheBoxIsDone) {
    on_box_ = [this] {
        window_.Post(WM_CLOSE, 0, 0);
        lum.ProcessMessages();
        EXPECT_TRUE(window_.HasWindow());
        EXPECT_TRUE(window_.Video().IsTrackOpen());
    };
    Post(Command::ToEnd);
    EXPECT_EQ(window_.ModalRun(nullptr), 0);
    EXPECT_EQ(boxes_, 1);
    EXPECT_FALSE(window_.HasWindow());
    EXPECT_FALSE(window_.Video().IsTrackOpen());
}

} // namespace
} // namespace kelvo
