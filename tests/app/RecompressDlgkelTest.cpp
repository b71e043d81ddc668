// The dialog of a rewrite, run as a person sees it; time is turned by hand where figures count.

#include "tests/playback/Films.h"
#include "tests/playback/PlayerWindow.h"

#include "app/RecompressDlgkel.h"
#include "platform/base/clock.h"
#include "platform/base/message_boxes.h"
#include "platform/desktop/controls.h"
#include "platform/desktop/dialogs.h"
#include "platform/desktop/messages.h"
#include "playback/AudioPlayerkel.h"

#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <unistd.h>

namespace kelvo {
namespace {

using namespace test;
using namespace std::chrono_literals;

std::string BytesOf(const CString& name) {
    std::ifstream file(name.c_str(), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// Does what a test tells it before each notification is answered, and sees the answer.
class WatchedRewrite : public RecompressDlgkel {
public:
    using RecompressDlgkel::Background;
    using RecompressDlgkel::RecompressDlgkel;
    int ProgressNotify(int code, int done, const RewriteInformation& info) override {
        if (before) before(done);
        const int answer = RecompressDlgkel::ProgressNotify(code, done, info);
        if (after) after(done, info);
        answers.push_back(answer);
        return answer;
    }
    std::string Text(int id) const { return ControlText(id).c_str(); }

    std::function<void(int done)> before;
    std::function<void(int done, const RewriteInformation& info)> after;
    std::vector<int> answers;
};

class PaintedWindow : public PlayerWindow {
public:
    bool HandleMessage(UINT message, WPARAM wparam, LPARAM lparam) override {
        if (message == WM_PAINT) ++paints;
        return PlayerWindow::HandleMessage(message, wparam, lparam);
    }
    int paints = 0;
};

class Rewrite : public testing::Test {
protected:
    void SetUp() override {
        MakeAudio(name_, {.frames = 31, .byte = [](std::size_t offset) {
                              return static_cast<std::uint8_t>(offset / 13 * 7);
                          }});
        before_ = BytesOf(name_);
        owner_.SetPlacement(0, 0, 600, 300);
        ASSERT_EQ(owner_.Create(), 1);
    }
    void ExpectUntouched() const {
        EXPECT_EQ(BytesOf(name_), before_);
        EXPECT_FALSE(std::filesystem::exists(folder_.Name("sound.tmp").c_str()));
    }

    FilmFolder folder_;
    const CString name_ = folder_.Name("sound.kaf");
    std::string before_;
    PaintedWindow owner_;
    platform::MessageBoxRecorder boxes_;
};

TEST_F(Rewrite, ShowsHowFarItIsAndHowLongItWillTake) {
    platform::ManualClock clock(5s);
    WatchedRewrite dialog(name_, {.compression_type = 17});
    dialog.before = [&](int done) { clock.Advance(done == 0 ? 0ms : 450ms); };
    dialog.after = [&](int done, const RewriteInformation& info) {
        EXPECT_EQ(info.record_count, 31U);
        char title[40]{};
        GetWindowTextA(dialog.Window(), title, sizeof title);
        EXPECT_STREQ(title, "Ricompressione");
        if (done < 15) { // 900 ms: no figures yet
            EXPECT_EQ(dialog.Text(101) + dialog.Text(102) + dialog.Text(103), "00:0000:0000:00");
            EXPECT_EQ(dialog.Text(104), "0");
        } else if (done == 15) { // 1350 ms, 90 a record
            EXPECT_EQ(dialog.Text(101), "00:01 ");
            EXPECT_EQ(dialog.Text(102), "00:02 ");
            EXPECT_EQ(dialog.Text(103), "00:01 ");
            char size[40];
            std::snprintf(size, sizeof size, "%.3f KB", info.temporary_size * (31.0 / 15) / 1024);
            EXPECT_EQ(dialog.Text(104), size);
        }
    };
    EXPECT_TRUE(dialog.Run(&owner_));
    EXPECT_FALSE(dialog.HasWindow());
    EXPECT_EQ(dialog.answers.size(), 7U); // 0, 5 ... 30
    AudioFilekel track;
    ASSERT_TRUE(track.OpenForRead(name_));
    EXPECT_EQ(track.CompressionType(), 17U);
    EXPECT_EQ(track.FrameCount(), 31);
    EXPECT_FALSE(std::filesystem::exists(folder_.Name("sound.tmp").c_str()));
    EXPECT_TRUE(boxes_.Boxes().empty());
}

TEST_F(Rewrite, WritesBigSizesInMegabytesAndGigabytes) {
    platform::ManualClock clock(5s);
    WatchedRewrite dialog(name_, {.compression_type = 17});
    std::vector<std::string> sizes;
    dialog.after = [&](int done, const RewriteInformation&) {
        if (done != 5) return;
        for (const std::uint32_t size : {1048576U, 1048577U, 1073741824U, 2000000000U}) {
            clock.Advance(1s);
            EXPECT_EQ(dialog.RecompressDlgkel::ProgressNotify(0x3937, 10, {10, size}), 0);
            sizes.push_back(dialog.Text(104));
        }
        EXPECT_EQ(dialog.RecompressDlgkel::ProgressNotify(0x3938, 10, {10, 1}), 0);
        EXPECT_EQ(sizes.back(), dialog.Text(104));
    };
    EXPECT_TRUE(dialog.Run(&owner_));
    EXPECT_EQ(sizes,
              (std::vector<std::string>{"1024.000 KB", "1.000 MB", "1024.000 MB", "1.863 GB"}));
}

struct StopCase {
    const char* name;
    void (*stop)(const CDialog& dialog);
};
class StoppedRewrite : public Rewrite, public testing::WithParamInterface<StopCase> {};
const StopCase kStopCases[] = {
    {"ByItsButton", [](const CDialog& dialog) { PostMessageA(dialog.Control(2), BM_CLICK, 0, 0); }},
    {"ByEscape",
     [](const CDialog& dialog) { PostMessageA(dialog.Control(2), WM_KEYDOWN, VK_ESCAPE, 0); }},
    {"ByItsCloseButton", [](const CDialog& dialog) { dialog.Post(WM_CLOSE, 0, 0); }},
    {"ByTheEndOfItsWindow", [](const CDialog& dialog) { DestroyWindow(dialog.Window()); }},
};
TEST_P(StoppedRewrite, LeavesTheFileAsItWas) {
    platform::ManualClock clock(5s);
    WatchedRewrite dialog(name_, {.compression_type = 17});
    dialog.before = [&](int done) {
        clock.Advance(20ms);
        if (done == 10) GetParam().stop(dialog);
    };
    EXPECT_FALSE(dialog.Run(&owner_));
    EXPECT_FALSE(dialog.HasWindow());
    EXPECT_EQ(dialog.answers, (std::vector<int>{0, 0, 1})); // at the very next notification
    ExpectUntouched();
    EXPECT_TRUE(boxes_.Boxes().empty());
    dialog.before = nullptr;
    EXPECT_TRUE(dialog.Run(&owner_)); // and it can be run again
    EXPECT_NE(BytesOf(name_), before_);
}
INSTANTIATE_TEST_SUITE_P(All, StoppedRewrite, testing::ValuesIn(kStopCases),
                         [](const auto& test) { return std::string(test.param.name); });

TEST_F(Rewrite, OpensAnOpenContainerAgain) {
    ZFilekel container;
    ASSERT_TRUE(container.OpenForRead(name_));
    WatchedRewrite dialog(container, {.compression_type = 18});
    EXPECT_TRUE(dialog.Run(&owner_));
    EXPECT_EQ(container.OpenMode(), ZFilekel::Mode::Existing);
    EXPECT_EQ(container.CompressionType(), 18U);
    EXPECT_TRUE(container.Close());
}

TEST_F(Rewrite, SaysThatAFileWouldBecomeTooLongAndLeavesIt) {
    // A film of a small sound track and of a picture window that no disk needs to hold.
    const CString film = folder_.Name("film.kva");
    const auto put = [](std::string& bytes, std::uint32_t number) {
        for (int shift = 0; shift < 32; shift += 8) {
            bytes.push_back(static_cast<char>(number >> shift));
        }
    };
    constexpr std::uint32_t kEnd = 0x7FFFFFFF;
    const auto middle = static_cast<std::uint32_t>(16 + before_.size());
    std::string start;
    for (const std::uint32_t number : {16U, middle, middle, kEnd}) {
        put(start, number);
    }
    std::ofstream(film.c_str(), std::ios::binary) << start << before_;
    ASSERT_EQ(::truncate(film.c_str(), kEnd), 0);
    WatchedRewrite dialog(film, {.user_header_size = 4000});
    EXPECT_FALSE(dialog.Run(&owner_));
    ASSERT_EQ(boxes_.Boxes().size(), 1U);
    EXPECT_EQ(boxes_.Boxes()[0].text,
              "Il file [film.kva] supera i 2147483648 bytes!\r\n\r\nImpossibile procedere - "
              "Processo di compressione annullato!");
    EXPECT_EQ(boxes_.Boxes()[0].caption, "ERRORE");
    EXPECT_EQ(std::filesystem::file_size(film.c_str()), kEnd);
    EXPECT_FALSE(std::filesystem::exists(folder_.Name("film.tmp").c_str()));
}

TEST_F(Rewrite, LetsSoundGoOnAndWindowsPaintButTheOwnerDoNothing) {
    setenv("SDL_AUDIODRIVER", "dummy", 1);
    MakeAudio(folder_.Name("music.kaf"), {.frames = 100});
    AudioPlayerkel player;
    player.SetParent(&owner_);
    ASSERT_TRUE(player.OpenAudio(folder_.Name("music.kaf")));
    ASSERT_TRUE(player.Play(nullptr));
    ASSERT_TRUE(PumpUntil([&] { return player.PlayedFrameCounter() >= 1; }));
    owner_.Forget();
    CProgressBar click_target; // tells its parent of every click
    click_target.SetParent(&owner_);
    click_target.SetStyle(WS_CHILD | WS_VISIBLE);
    ASSERT_EQ(click_target.Create(), 1);
    WatchedRewrite dialog(name_, {.compression_type = 17});
    owner_.paints = 0;
    dialog.before = [&](int) {
        PostMessageA(click_target.Window(), WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(5, 5));
        InvalidateRect(owner_.Window(), nullptr, TRUE);
        Sleep(90); // slow records: seven batches
    };
    EXPECT_TRUE(dialog.Run(&owner_));
    EXPECT_GE(player.PlayedFrameCounter(), 4); // 630 ms of sound
    EXPECT_GE(owner_.Count(NotifyAudioBuffer), 4);
    EXPECT_EQ(owner_.Count(kPositionClicked), 0);
    EXPECT_GE(owner_.paints, 5);
    player.CloseAudio();
}

TEST_F(Rewrite, StaysWhileWorkOfItsOwnRunsBesideIt) {
    class WithWork : public WatchedRewrite {
    public:
        using WatchedRewrite::WatchedRewrite;
        INT_PTR Work(INT_PTR, INT_PTR, INT_PTR) {
            Sleep(60);
            worked = true;
            return 0;
        }
        void StartWork() {
            Background().Start(
                static_cast<BKOperation<RecompressDlgkel>::Operation>(&WithWork::Work));
        }
        std::atomic<bool> worked = false;
    };
    WithWork dialog(folder_.Name("missing.kaf"), {});
    dialog.StartWork();
    EXPECT_FALSE(dialog.Run(&owner_)); // the file is not there: the dialog stops itself
    EXPECT_TRUE(dialog.worked);
}

} // namespace
} // namespace kelvo
