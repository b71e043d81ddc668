#include "tests/e2e/VirtualScreen.h"

#include <X11/XWDFile.h>
#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <X11/extensions/XTest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <fcntl.h>
#include <map>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace kelvo::test {
namespace {

// A window may go while it is looked at; that is an answer, no reason to end the test.
int IgnoreError(Display*, XErrorEvent*) {
    return 0;
}

std::uint32_t BigEndian(const std::uint8_t* bytes) {
    return (std::uint32_t{bytes[0]} << 24U) | (std::uint32_t{bytes[1]} << 16U) |
           (std::uint32_t{bytes[2]} << 8U) | bytes[3];
}

} // namespace

struct VirtualScreen::Connection {
    explicit Connection(const std::string& name) : display(XOpenDisplay(name.c_str())) {
        XSetErrorHandler(IgnoreError);
    }
    ~Connection() {
        if (display != nullptr) XCloseDisplay(display);
    }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    Window Root() const { return DefaultRootWindow(display); }
    Atom Named(const char* name) {
        Atom& atom = atoms[name];
        if (atom == 0) atom = XInternAtom(display, name, False);
        return atom;
    }
    /// A property's values of 32 bits (or its bytes, one each).
    std::vector<unsigned long> Values(Window window, const char* property) {
        Atom type = 0;
        int format = 0;
        unsigned long count = 0;
        unsigned long rest = 0;
        unsigned char* data = nullptr;
        std::vector<unsigned long> values;
        if (XGetWindowProperty(display, window, Named(property), 0, 4096, False, AnyPropertyType,
                               &type, &format, &count, &rest, &data) != Success ||
            data == nullptr) {
            return values;
        }
        for (unsigned long i = 0; i < count; ++i) {
            values.push_back(format == 32 ? reinterpret_cast<unsigned long*>(data)[i] : data[i]);
        }
        XFree(data);
        return values;
    }
    bool BelongsTo(Window window, pid_t pid) {
        const auto owner = Values(window, "_NET_WM_PID");
        return owner.size() == 1 && owner[0] == static_cast<unsigned long>(pid);
    }

    Display* display;
    std::map<std::string, Atom> atoms;
};

VirtualScreen::VirtualScreen(const std::string& folder) {
    if (!StartServer(folder) || !MapFrameBuffer(folder)) return;
    connection_ = std::make_unique<Connection>(name_);
    if (connection_->display == nullptr) {
        problem_ = "no connection to the virtual screen";
        return;
    }
    StartManager(folder);
}

VirtualScreen::~VirtualScreen() {
    connection_.reset();
    manager_.reset();
    server_.reset();
    if (frame_buffer_ != nullptr) {
        munmap(const_cast<std::uint8_t*>(frame_buffer_), mapped_bytes_);
    }
}

// The server chooses a free number, writes it to the pipe, and is ready then.
bool VirtualScreen::StartServer(const std::string& folder) {
    std::array<int, 2> ready{};
    if (pipe2(ready.data(), O_CLOEXEC | O_NONBLOCK) != 0) return false;
    const std::string size = std::to_string(kWidth) + "x" + std::to_string(kHeight) + "x24";
    server_ = std::make_unique<ChildProcess>(
        std::vector<std::string>{"Xvfb", "-displayfd", "3", "-screen", "0", size, "-fbdir", folder,
                                 "-nolisten", "tcp", "-noreset", "-dpi", "96"},
        Environment{{"HOME", folder}}, std::string{}, ready[1]);
    close(ready[1]);
    std::string number;
    WaitUntil([&] {
        std::array<char, 16> text{};
        const ssize_t count = read(ready[0], text.data(), text.size());
        if (count > 0) number.append(text.data(), static_cast<std::size_t>(count));
        return number.ends_with('\n') || !server_->IsRunning();
    });
    close(ready[0]);
    if (!number.ends_with('\n')) {
        problem_ = "Xvfb did not start: " + server_->Errors();
        return false;
    }
    name_ = ":" + number.substr(0, number.size() - 1);
    return true;
}

bool VirtualScreen::MapFrameBuffer(const std::string& folder) {
    const int file = open((folder + "/Xvfb_screen0").c_str(), O_RDONLY | O_CLOEXEC);
    struct stat status{};
    if (file < 0 || fstat(file, &status) != 0) {
        problem_ = "the virtual screen has no frame buffer file";
        return false;
    }
    mapped_bytes_ = static_cast<std::size_t>(status.st_size);
    void* mapped = mmap(nullptr, mapped_bytes_, PROT_READ, MAP_SHARED, file, 0);
    close(file);
    if (mapped == MAP_FAILED) {
        problem_ = "the frame buffer cannot be mapped";
        return false;
    }
    frame_buffer_ = static_cast<const std::uint8_t*>(mapped);

    pixels_at_ = BigEndian(frame_buffer_ + offsetof(XWDFileHeader, header_size)) +
                 BigEndian(frame_buffer_ + offsetof(XWDFileHeader, ncolors)) * sz_XWDColor;
    row_bytes_ = BigEndian(frame_buffer_ + offsetof(XWDFileHeader, bytes_per_line));
    return true;
}

bool VirtualScreen::StartManager(const std::string& folder) {
    manager_ = std::make_unique<ChildProcess>(
        std::vector<std::string>{"openbox", "--sm-disable"},
        Environment{{"DISPLAY", name_}, {"HOME", folder}, {"XDG_CONFIG_HOME", folder}});
    const bool ready = WaitUntil([this] {
        return !connection_->Values(connection_->Root(), "_NET_SUPPORTING_WM_CHECK").empty() ||
               !manager_->IsRunning();
    });
    if (!ready || !manager_->IsRunning()) problem_ = "openbox did not start: " + manager_->Errors();
    return problem_.empty();
}

std::vector<VirtualScreen::WindowId> VirtualScreen::WindowsOf(pid_t pid) const {
    auto windows = connection_->Values(connection_->Root(), "_NET_CLIENT_LIST");
    std::erase_if(windows, [&](WindowId one) { return !connection_->BelongsTo(one, pid); });
    return windows;
}

std::vector<VirtualScreen::WindowId> VirtualScreen::PopupsOf(pid_t pid) const {
    Window root = 0;
    Window parent = 0;
    Window* children = nullptr;
    unsigned count = 0;
    std::vector<WindowId> popups;
    if (XQueryTree(connection_->display, connection_->Root(), &root, &parent, &children, &count) ==
        0) {
        return popups;
    }
    for (unsigned i = 0; i < count; ++i) {
        XWindowAttributes attributes{};
        if (XGetWindowAttributes(connection_->display, children[i], &attributes) != 0 &&
            attributes.override_redirect != False && attributes.map_state == IsViewable &&
            attributes.width > 1 && connection_->BelongsTo(children[i], pid)) {
            popups.push_back(children[i]);
        }
    }
    if (children != nullptr) XFree(children);
    return popups;
}

std::string VirtualScreen::Title(WindowId window) const {
    std::string title;
    for (const unsigned long byte : connection_->Values(window, "_NET_WM_NAME")) {
        title += static_cast<char>(byte);
    }
    return title;
}

std::optional<Area> VirtualScreen::Geometry(WindowId window) const {
    XWindowAttributes attributes{};
    Window child = 0;
    Area area;
    if (XGetWindowAttributes(connection_->display, window, &attributes) == 0 ||
        XTranslateCoordinates(connection_->display, window, connection_->Root(), 0, 0, &area.x,
                              &area.y, &child) == 0) {
        return std::nullopt;
    }
    area.width = attributes.width;
    area.height = attributes.height;
    return area;
}

std::optional<Area> VirtualScreen::OuterGeometry(WindowId window) const {
    auto area = Geometry(window);
    const auto frame = connection_->Values(window, "_NET_FRAME_EXTENTS"); // left right top bottom
    if (!area || frame.size() != 4) return std::nullopt;
    area->x -= static_cast<int>(frame[0]);
    area->y -= static_cast<int>(frame[2]);
    area->width += static_cast<int>(frame[0] + frame[1]);
    area->height += static_cast<int>(frame[2] + frame[3]);
    return area;
}

bool VirtualScreen::HasState(WindowId window, const char* state) const {
    const auto states = connection_->Values(window, "_NET_WM_STATE");
    return std::ranges::find(states, connection_->Named(state)) != states.end();
}

VirtualScreen::WindowId VirtualScreen::ActiveWindow() const {
    const auto active = connection_->Values(connection_->Root(), "_NET_ACTIVE_WINDOW");
    return active.empty() ? 0 : active[0];
}

std::uint32_t VirtualScreen::Pixel(int x, int y) const {
    if (x < 0 || y < 0 || x >= kWidth || y >= kHeight) return 0;
    std::uint32_t pixel = 0;
    std::memcpy(&pixel,
                frame_buffer_ + pixels_at_ + static_cast<std::size_t>(y) * row_bytes_ +
                    static_cast<std::size_t>(x) * sizeof pixel,
                sizeof pixel);
    return pixel & 0xFFFFFFU;
}

void VirtualScreen::MoveTo(int x, int y) const {
    XTestFakeMotionEvent(connection_->display, -1, x, y, CurrentTime);
    XSync(connection_->display, False);
}

void VirtualScreen::Click(int x, int y) const {
    MoveTo(x, y);
    XTestFakeButtonEvent(connection_->display, Button1, True, CurrentTime);
    XTestFakeButtonEvent(connection_->display, Button1, False, CurrentTime);
    XSync(connection_->display, False);
}

void VirtualScreen::DoubleClick(int x, int y) const {
    constexpr unsigned long kBetweenClicks_ms = 60; // as quick as a person
    Click(x, y);
    XTestFakeButtonEvent(connection_->display, Button1, True, kBetweenClicks_ms);
    XTestFakeButtonEvent(connection_->display, Button1, False, CurrentTime);
    XSync(connection_->display, False);
}

void VirtualScreen::HoldButton() const {
    XTestFakeButtonEvent(connection_->display, Button1, True, CurrentTime);
    XSync(connection_->display, False);
}

void VirtualScreen::ReleaseButton() const {
    XTestFakeButtonEvent(connection_->display, Button1, False, CurrentTime);
    XSync(connection_->display, False);
}

void VirtualScreen::PressWith(const char* held, const char* key) const {
    const KeyCode code = XKeysymToKeycode(connection_->display, XStringToKeysym(held));
    XTestFakeKeyEvent(connection_->display, code, True, CurrentTime);
    Press(key);
    XTestFakeKeyEvent(connection_->display, code, False, CurrentTime);
    XSync(connection_->display, False);
}

void VirtualScreen::Type(const std::string& text) const {
    for (const char character : text) {
        const std::string key = character == ' ' ? "space" : std::string(1, character);
        if (character >= 'A' && character <= 'Z') {
            PressWith("Shift_L", key.c_str());
        } else {
            Press(key.c_str());
        }
    }
}

void VirtualScreen::Press(const char* key) const {
    const KeyCode code = XKeysymToKeycode(connection_->display, XStringToKeysym(key));
    XTestFakeKeyEvent(connection_->display, code, True, CurrentTime);
    XTestFakeKeyEvent(connection_->display, code, False, CurrentTime);
    XSync(connection_->display, False);
}

void VirtualScreen::AskToClose(WindowId window) const {
    XEvent event{};
    event.xclient.type = ClientMessage;
    event.xclient.window = window;
    event.xclient.message_type = connection_->Named("WM_PROTOCOLS");
    event.xclient.format = 32;
    event.xclient.data.l[0] = static_cast<long>(connection_->Named("WM_DELETE_WINDOW"));
    event.xclient.data.l[1] = CurrentTime;
    XSendEvent(connection_->display, window, False, NoEventMask, &event);
    XSync(connection_->display, False);
}

} // namespace kelvo::test
