#include "platform/desktop/WindowTable.h"

#include "platform/desktop/Window.h"

#include <algorithm>

namespace kelvo::desktop {

namespace {

constexpr int kSizingFrame = 4;
constexpr int kFixedFrame = 3;
constexpr int kBorder = 1;
constexpr int kCaption = 19;
constexpr int kMenu = 19;
static_assert(kCaption + kMenu == 38, "the program's sizes count on it");

struct Table {
    std::mutex mutex;
    UINT_PTR next_handle = 0x10000;
    ATOM next_atom = 0xC000;
    std::map<HWND, std::unique_ptr<WindowData>> windows;
    std::map<std::string, std::shared_ptr<const WindowClass>> classes;
    HWND desktop = nullptr;

    HWND NextHandle() {
        next_handle += 2;
        return reinterpret_cast<HWND>(next_handle);
    }
};

// Never destroyed: objects of the program that live longer than main still ask about windows.
Table& TheTable() {
    static Table* const table = [] {
        auto* made = new Table;
        auto desktop = std::make_unique<WindowData>();
        desktop->kind = WindowKind::Desktop;
        desktop->handle = made->NextHandle();
        desktop->style = WS_VISIBLE;
        made->desktop = desktop->handle;
        made->windows[made->desktop] = std::move(desktop);
        return made;
    }();
    return *table;
}

std::string ClassKey(LPCSTR name) {
    std::string key = name;
    for (char& letter : key) {
        if (letter >= 'A' && letter <= 'Z') letter = static_cast<char>(letter - 'A' + 'a');
    }
    return key;
}

} // namespace

FrameMargins FrameMarginsOf(DWORD style, bool has_menu) {
    int frame = 0;
    if ((style & WS_THICKFRAME) != 0) {
        frame = kSizingFrame;
    } else if ((style & WS_DLGFRAME) != 0) {
        frame = kFixedFrame;
    } else if ((style & WS_BORDER) != 0) {
        frame = kBorder;
    }
    const bool has_caption = (style & WS_CAPTION) == WS_CAPTION;
    const int top = frame + (has_caption ? kCaption : 0) + (has_menu ? kMenu : 0);
    return {.left = frame, .top = top, .right = frame, .bottom = frame};
}

FrameMargins WindowData::Margins() const {
    if (kind == WindowKind::TopLevel) return FrameMarginsOf(style, has_menu);
    const bool framed = kind == WindowKind::Child && (style & WS_THICKFRAME) != 0;
    return framed ? FrameMarginsOf(WS_THICKFRAME, false) : FrameMargins{};
}

SIZE WindowData::ClientSize() const {
    const FrameMargins margins = Margins();
    return {std::max(0, rect.right - rect.left - margins.left - margins.right),
            std::max(0, rect.bottom - rect.top - margins.top - margins.bottom)};
}

LockedWindows::LockedWindows() : lock_(TheTable().mutex) {}

WindowData* LockedWindows::Find(HWND window) {
    const auto found = TheTable().windows.find(window);
    return found == TheTable().windows.end() ? nullptr : found->second.get();
}

HWND LockedWindows::Add(std::unique_ptr<WindowData> window) {
    const HWND handle = TheTable().NextHandle();
    window->handle = handle;
    if (WindowData* parent = Find(window->parent)) parent->children.push_back(handle);
    TheTable().windows[handle] = std::move(window);
    return handle;
}

void LockedWindows::Remove(HWND window) {
    WindowData* data = Find(window);
    if (data == nullptr) return;
    if (WindowData* parent = Find(data->parent)) std::erase(parent->children, window);
    TheTable().windows.erase(window);
}

std::vector<HWND> LockedWindows::All() const {
    std::vector<HWND> all;
    for (const auto& [handle, data] : TheTable().windows) {
        if (data->kind != WindowKind::Desktop) all.push_back(handle);
    }
    return all;
}

HWND LockedWindows::Desktop() const {
    return TheTable().desktop;
}

bool LockedWindows::IsVisible(HWND window) {
    const WindowData* data = Find(window);
    while (data != nullptr && (data->style & WS_VISIBLE) != 0) {
        if (data->kind != WindowKind::Child) return true;
        data = Find(data->parent);
    }
    return false;
}

POINT LockedWindows::ClientOrigin(HWND window) {
    POINT origin{};
    const WindowData* data = Find(window);
    for (; data != nullptr && data->kind == WindowKind::Child; data = Find(data->parent)) {
        const FrameMargins margins = data->Margins();
        origin.x += data->rect.left + margins.left;
        origin.y += data->rect.top + margins.top;
    }
    if (data != nullptr && data->kind == WindowKind::TopLevel) {
        origin.x += data->client_origin.x;
        origin.y += data->client_origin.y;
    }
    return origin;
}

bool LockedWindows::AddClass(std::shared_ptr<WindowClass> window_class) {
    const std::string key = ClassKey(window_class->name.c_str());
    if (TheTable().classes.contains(key)) return false;
    window_class->atom = TheTable().next_atom++;
    TheTable().classes[key] = std::move(window_class);
    return true;
}

std::shared_ptr<const WindowClass> LockedWindows::FindClass(LPCSTR name) {
    const auto found = TheTable().classes.find(ClassKey(name));
    return found == TheTable().classes.end() ? nullptr : found->second;
}

bool LockedWindows::RemoveClass(LPCSTR name) {
    const auto found = TheTable().classes.find(ClassKey(name));
    if (found == TheTable().classes.end()) return false;
    for (const auto& [handle, data] : TheTable().windows) {
        if (data->window_class == found->second) return false;
    }
    TheTable().classes.erase(found);
    return true;
}

HBRUSH ClassBrushOf(HWND window) {
    LockedWindows windows;
    const WindowData* data = windows.Find(window);
    if (data == nullptr || data->window_class == nullptr) return nullptr;
    return data->window_class->values.hbrBackground;
}

} // namespace kelvo::desktop
