#include "tests/e2e/GalleryVisit.h"

#include <algorithm>
#include <sstream>

namespace kelvo::test {
namespace {

/// Shorter than a caret blinks.
constexpr std::chrono::milliseconds kStill{150};

Environment WithChanges(Environment base, const Environment& changes) {
    for (const auto& [name, value] : changes) {
        base[name] = value;
    }
    return base;
}

} // namespace

GalleryVisit::GalleryVisit(const Stage& stage, const std::string& exhibit,
                           const Environment& environment, const std::string& argument)
    : stage_(stage), process_({KELVO_GALLERY, exhibit, argument},
                              WithChanges(stage.ForPlayers(), environment), stage.Home()) {}

bool GalleryVisit::WaitFor(const std::string& title) {
    const VirtualScreen& screen = stage_.Screen();
    const auto is_there = [&] {
        for (const auto window : screen.WindowsOf(process_.Pid())) {
            if (screen.Title(window) != title || screen.ActiveWindow() != window) continue;
            window_ = window;
            return true;
        }
        return false;
    };
    return WaitUntil([&] { return is_there() || !process_.IsRunning(); }) && is_there();
}

Area GalleryVisit::Window() const {
    return stage_.Screen().Geometry(window_).value_or(Area{});
}

Area GalleryVisit::At(int x, int y) const {
    const Area window = Window();
    return {window.x + x * window.width / units_.width,
            window.y + y * window.height / units_.height, 1, 1};
}

void GalleryVisit::WaitUntilStill() const {
    const Area window = Window();
    const auto read = [&] {
        std::vector<std::uint32_t> pixels;
        for (int y = window.y; y < window.y + window.height; ++y) {
            for (int x = window.x; x < window.x + window.width; ++x) {
                pixels.push_back(stage_.Screen().Pixel(x, y));
            }
        }
        return pixels;
    };
    auto pixels = read();
    auto since = Clock::now();
    WaitUntil([&] {
        auto next = read();
        if (next != pixels) since = Clock::now();
        pixels = std::move(next);
        return Clock::now() - since >= kStill;
    });
}

void GalleryVisit::Press(const char* key) const {
    WaitUntilStill();
    stage_.Screen().Press(key);
}

void GalleryVisit::Type(const std::string& text) const {
    WaitUntilStill();
    stage_.Screen().Type(text);
}

void GalleryVisit::Click(int x, int y) const {
    WaitUntilStill();
    const Area place = At(x, y);
    stage_.Screen().Click(place.x, place.y);
}

void GalleryVisit::DoubleClick(int x, int y) const {
    WaitUntilStill();
    const Area place = At(x, y);
    stage_.Screen().DoubleClick(place.x, place.y);
}

void GalleryVisit::MoveTo(int x, int y) const {
    WaitUntilStill();
    const Area place = At(x, y);
    stage_.Screen().MoveTo(place.x, place.y);
}

std::uint32_t GalleryVisit::Pixel(int x, int y) const {
    const Area place = At(x, y);
    return stage_.Screen().Pixel(place.x, place.y);
}

bool GalleryVisit::WaitForColour(int x, int y, std::uint32_t colour) const {
    return WaitUntil([&] { return Pixel(x, y) == colour; });
}

bool GalleryVisit::WaitForPopups(std::size_t count) const {
    return WaitUntil([&] { return Popups() == count; });
}

std::vector<std::string> GalleryVisit::Lines() const {
    std::istringstream output(process_.Output());
    std::vector<std::string> lines;
    for (std::string line; std::getline(output, line);) {
        lines.push_back(line);
    }
    return lines;
}

bool GalleryVisit::WaitForLine(const std::string& line) {
    const auto has_come = [&] { return std::ranges::count(Lines(), line) != 0; };
    return WaitUntil([&] { return has_come() || !process_.IsRunning(); }) && has_come();
}

std::vector<std::string> GalleryVisit::End() {
    if (process_.WaitForExit() != ExitStatus{.code = 0}) return {"it did not end well"};
    if (!process_.Errors().empty()) return {process_.Errors()};
    return Lines();
}

} // namespace kelvo::test
