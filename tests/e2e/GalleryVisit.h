#pragma once
// One exhibit of the gallery on the stage, operated as by a person; what it reports is read back.

#include "tests/e2e/Player.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kelvo::test {

class GalleryVisit {
public:
    /// @param environment  on top of the stage's
    GalleryVisit(const Stage& stage, const std::string& exhibit,
                 const Environment& environment = {}, const std::string& argument = {});

    ChildProcess& Process() { return process_; }
    /// Waits until the window with this title is there, active and painted. @return whether it is
    bool WaitFor(const std::string& title);
    /// The window that was last waited for.
    VirtualScreen::WindowId WindowId() const { return window_; }
    /// Its client area.
    Area Window() const;
    /// Tells the size of the window's template, in dialog units, for the places below.
    void UseUnits(int width, int height) { units_ = {0, 0, width, height}; }
    /// A place in dialog units, on the screen.
    Area At(int x, int y) const;
    /// Until nothing has changed on the window for a moment: what came before has had its effect.
    void WaitUntilStill() const;
    // As a person does who looks first: each of these waits until the window is still.
    void Click(int x, int y) const;
    void DoubleClick(int x, int y) const;
    void MoveTo(int x, int y) const;
    void Press(const char* key) const;
    void Type(const std::string& text) const;
    std::uint32_t Pixel(int x, int y) const;
    /// Whether a place of the window shows this colour, now or soon.
    bool WaitForColour(int x, int y, std::uint32_t colour) const;
    /// Hint windows and menus that are shown.
    std::size_t Popups() const { return stage_.Screen().PopupsOf(process_.Pid()).size(); }
    bool WaitForPopups(std::size_t count) const;

    /// The lines reported so far.
    std::vector<std::string> Lines() const;
    bool WaitForLine(const std::string& line);
    /// Waits for the end. @return the lines, or what went wrong
    std::vector<std::string> End();

private:
    const Stage& stage_;
    ChildProcess process_;
    VirtualScreen::WindowId window_ = 0;
    Area units_{0, 0, 1, 1};
};

} // namespace kelvo::test
