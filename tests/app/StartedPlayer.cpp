#include "tests/app/StartedPlayer.h"

#include <array>

namespace kelvo::test {
namespace {

const auto* const kEnvironment = testing::AddGlobalTestEnvironment(new StartedFramework);

constexpr UINT_PTR kLookTimer = 7700;
constexpr UINT kLookMs = 5;

} // namespace

bool WatchedWindow::HandleMessage(UINT message, WPARAM wparam, LPARAM lparam) {
    if (message == WM_CREATE && condition) SetTimer(Window(), kLookTimer, kLookMs, nullptr);
    if (message == WM_TIMER && wparam == kLookTimer) {
        came_true = condition();
        if (came_true || GetTickCount() - start_ms_ > kDeadlineMs) {
            KillTimer(Window(), kLookTimer);
            Post(WM_COMMAND, static_cast<WPARAM>(Command::Exit), 0);
        }
        return true;
    }
    return KelvoWinkel::HandleMessage(message, wparam, lparam);
}

INT_PTR WatchedWindow::HandleNotification(int code, INT_PTR a, INT_PTR b) {
    if (code == NotifyEnded) ++endings_;
    return KelvoWinkel::HandleNotification(code, a, b);
}

void StartedPlayer::Create() {
    window_ = std::make_unique<WatchedWindow>(folder_.Name("lstfls.dat"));
    ASSERT_EQ(window_->CWin::Create(HWND{}), 1);
    lum.ProcessMessages();
}

bool StartedPlayer::RunUntil(const CString& file, std::uint32_t options,
                             const std::function<bool()>& condition) {
    window_ = std::make_unique<WatchedWindow>(folder_.Name("lstfls.dat"));
    window_->condition = condition;
    result_ = window_->Run(nullptr, file, options);
    return window_->came_true;
}

CString StartedPlayer::MakePair(const char* name, const Pair& pair) const {
    const std::string base = name;
    MakeVideo(folder_.Name((base + ".kvf").c_str()),
              {.images = pair.images, .images_per_second = 50, .sync = [](int image) {
                   return static_cast<std::uint32_t>(image / 5);
               }});
    MakeAudio(folder_.Name((base + ".kaf").c_str()), {.frames = pair.audio_frames});
    return folder_.Name((base + ".kvf").c_str());
}

CString StartedPlayer::MakeSound(const char* name, int audio_frames) const {
    const CString file = folder_.Name((std::string(name) + ".kaf").c_str());
    MakeAudio(file, {.frames = audio_frames});
    return file;
}

void StartedPlayer::Do(Command command) {
    window_->Send(WM_COMMAND, static_cast<WPARAM>(command), 0);
    lum.ProcessMessages();
}

std::string StartedPlayer::Title() const {
    std::array<char, 300> title{};
    GetWindowTextA(window_->Window(), title.data(), static_cast<int>(title.size()));
    return title.data();
}

std::vector<std::string> StartedPlayer::TakeBoxes() {
    std::vector<std::string> texts;
    for (const auto& box : boxes_.Boxes()) {
        texts.push_back(box.caption + ": " + box.text);
    }
    boxes_.Clear();
    return texts;
}

RECT StartedPlayer::WindowRect() const {
    RECT rect{};
    GetWindowRect(window_->Window(), &rect);
    return rect;
}

} // namespace kelvo::test
