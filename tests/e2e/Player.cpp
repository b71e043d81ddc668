#include "tests/e2e/Player.h"

#include <algorithm>

namespace kelvo::test {
namespace {

constexpr char kTitlePrefix[] = "Kelvo";
constexpr int kFileMenuX = 15;
constexpr int kMenuBarY = 10;
constexpr int kInsidePopup = 20;
constexpr int kAboveLowerEdge = 12;

std::vector<std::string> CommandLine(const Stage& stage, Commanded commanded,
                                     const std::vector<std::string>& arguments) {
    std::vector<std::string> all = {stage.HomeFolder().CopyOf(
        commanded == Commanded::Yes ? KELVO_COMMANDED_PLAYER : KELVO_PLAYER)};
    all.insert(all.end(), arguments.begin(), arguments.end());
    return all;
}

Environment Merge(Environment base, const Environment& changes) {
    for (const auto& [name, value] : changes) {
        base[name] = value;
    }
    return base;
}

} // namespace

Stage::Stage() : screen_(home_.Path()), sound_(home_.Path()) {}

std::string Stage::Problem() const {
    return screen_.Problem() + sound_.Problem();
}

Environment Stage::ForPlayers() const {
    Environment environment = sound_.ForClients();
    environment["DISPLAY"] = screen_.Name();
    environment["HOME"] = home_.Path();
    environment["WAYLAND_DISPLAY"] = std::nullopt;
    environment["QT_QPA_PLATFORM"] = std::nullopt;
    environment["DBUS_SESSION_BUS_ADDRESS"] = std::nullopt;
    environment["QT_SCALE_FACTOR"] = std::nullopt;
    return environment;
}

Player::Player(const Stage& stage, const std::vector<std::string>& arguments,
               const Environment& environment, const std::string& folder, Commanded commanded)
    : stage_(stage), process_(CommandLine(stage, commanded, arguments),
                              Merge(stage.ForPlayers(), environment), folder) {}

VirtualScreen::WindowId Player::Window() const {
    for (const auto window : stage_.Screen().WindowsOf(process_.Pid())) {
        if (stage_.Screen().Title(window).starts_with(kTitlePrefix)) return window;
    }
    return 0;
}

bool Player::WaitForWindow() {
    return WaitUntil([this] { return Window() != 0 || !process_.IsRunning(); }) && Window() != 0;
}

bool Player::WaitForTitle(const std::string& title) {
    return WaitUntil([&] { return Title() == title || !process_.IsRunning(); }) && Title() == title;
}

std::string Player::Title() const {
    const auto window = Window();
    return window == 0 ? std::string{} : stage_.Screen().Title(window);
}

Area Player::Geometry() const {
    return stage_.Screen().Geometry(Window()).value_or(Area{});
}

std::optional<Area> Player::WaitForPicture(int width, int height) {
    const auto is_placed = [&] {
        const auto outer = stage_.Screen().OuterGeometry(Window());
        return outer && outer->x == 0 && outer->y == 0 && Geometry().width == width;
    };
    if (!WaitUntil([&] { return is_placed() || !process_.IsRunning(); }) || !is_placed()) {
        return std::nullopt;
    }
    const Area window = Geometry();
    return Area{window.x, window.y + window.height - height, width, height};
}

std::vector<std::string> Player::Boxes() const {
    std::vector<std::string> titles;
    for (const auto window : stage_.Screen().WindowsOf(process_.Pid())) {
        const std::string title = stage_.Screen().Title(window);
        if (!title.starts_with(kTitlePrefix)) titles.push_back(title);
    }
    return titles;
}

bool Player::WaitForBox(const std::string& title) {
    return WaitUntil([&] { return Boxes() == std::vector{title} || !process_.IsRunning(); }) &&
           Boxes() == std::vector{title};
}

bool Player::AnswerBox() {
    const auto windows = stage_.Screen().WindowsOf(process_.Pid());
    const auto box = std::ranges::find_if(windows, [this](const auto window) {
        return !stage_.Screen().Title(window).starts_with(kTitlePrefix);
    });
    if (box == windows.end()) return false;
    const auto window = *box;
    if (!WaitUntil([&] { return stage_.Screen().ActiveWindow() == window; })) return false;
    stage_.Screen().Press("Return");
    return WaitUntil(
        [&] { return std::ranges::count(stage_.Screen().WindowsOf(process_.Pid()), window) == 0; });
}

bool Player::OpenFileMenu() {
    const Area window = Geometry();
    stage_.Screen().Click(window.x + kFileMenuX, window.y + kMenuBarY);
    return WaitUntil([this] { return stage_.Screen().PopupsOf(process_.Pid()).size() == 1; });
}

bool Player::ChooseEntry(int popup, int entry) {
    if (!OpenFileMenu()) return false;
    const auto first = stage_.Screen().PopupsOf(process_.Pid());
    for (int i = 0; i < popup; ++i) {
        stage_.Screen().Press("Right");
    }
    if (popup > 0 && !WaitUntil([&] {
            const auto now = stage_.Screen().PopupsOf(process_.Pid());
            return now.size() == 1 && now != first;
        })) {
        return false;
    }
    // The keyboard chose the second popup's first entry already; the mouse chose none.
    for (int i = popup > 0 ? 1 : 0; i <= entry; ++i) {
        stage_.Screen().Press("Down");
    }
    stage_.Screen().Press("Return");
    return WaitUntil([this] { return stage_.Screen().PopupsOf(process_.Pid()).empty(); });
}

bool Player::ClickLowestFileEntry() {
    if (!OpenFileMenu()) return false;
    const auto popups = stage_.Screen().PopupsOf(process_.Pid());
    const auto area = stage_.Screen().Geometry(popups.back());
    if (!area) return false;
    stage_.Screen().Click(area->x + kInsidePopup, area->y + area->height - kAboveLowerEdge);
    return true;
}

void Player::AskToClose() const {
    stage_.Screen().AskToClose(Window());
}

} // namespace kelvo::test
