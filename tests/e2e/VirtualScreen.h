#pragma once
// A screen of the test's own: a virtual X server with a window manager, whose windows can be found,
// read and operated as by a person. Pixels come straight from the server's frame buffer, so that
// looking at them costs the server nothing.

#include "tests/e2e/ChildProcess.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kelvo::test {

struct Area {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
    friend bool operator==(const Area&, const Area&) = default;
};

class VirtualScreen {
public:
    using WindowId = unsigned long;

    static constexpr int kWidth = 1280;
    static constexpr int kHeight = 1024;

    /// Starts both programs and waits until they are ready; Problem() tells when they are not.
    /// @param folder  for the frame buffer and as their home
    explicit VirtualScreen(const std::string& folder);
    ~VirtualScreen();
    VirtualScreen(const VirtualScreen&) = delete;
    VirtualScreen& operator=(const VirtualScreen&) = delete;

    const std::string& Problem() const { return problem_; }
    /// What DISPLAY must be.
    const std::string& Name() const { return name_; }

    /// Managed windows of a process, in the order in which they appeared.
    std::vector<WindowId> WindowsOf(pid_t pid) const;
    /// Windows that no manager places, such as menus: the ones that are shown, topmost last.
    std::vector<WindowId> PopupsOf(pid_t pid) const;
    std::string Title(WindowId window) const;
    /// Without the manager's frame, in pixels of the screen; empty when it is gone.
    std::optional<Area> Geometry(WindowId window) const;
    /// The same with the manager's frame.
    std::optional<Area> OuterGeometry(WindowId window) const;
    /// Whether the window has a state such as "_NET_WM_STATE_ABOVE".
    bool HasState(WindowId window, const char* state) const;
    WindowId ActiveWindow() const;

    /// 0xRRGGBB.
    std::uint32_t Pixel(int x, int y) const;

    void Click(int x, int y) const;
    void DoubleClick(int x, int y) const;
    void MoveTo(int x, int y) const;
    /// The left button where the pointer is.
    void HoldButton() const;
    void ReleaseButton() const;
    /// A key by its name: "Return", "Down", "Escape".
    void Press(const char* key) const;
    /// The same while another key is held: "Shift_L", "Alt_L", "Control_L".
    void PressWith(const char* held, const char* key) const;
    /// Letters, digits and spaces, key by key.
    void Type(const std::string& text) const;
    /// What the window's own close button does.
    void AskToClose(WindowId window) const;

private:
    struct Connection;
    bool StartServer(const std::string& folder);
    bool StartManager(const std::string& folder);
    bool MapFrameBuffer(const std::string& folder);

    std::string problem_;
    std::string name_;
    std::unique_ptr<ChildProcess> server_;
    std::unique_ptr<ChildProcess> manager_;
    std::unique_ptr<Connection> connection_;
    const std::uint8_t* frame_buffer_ = nullptr; ///< the mapped file
    std::size_t mapped_bytes_ = 0;
    std::size_t pixels_at_ = 0; ///< offset of the first pixel
    std::size_t row_bytes_ = 0;
};

} // namespace kelvo::test
