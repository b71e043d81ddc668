#include "platform/desktop/menus.h"

#include "platform/base/resources.h"
#include "platform/desktop/Input.h"
#include "platform/desktop/MenuTable.h"
#include "platform/desktop/Window.h"
#include "platform/desktop/WindowMenus.h"
#include "platform/desktop/WindowPlacement.h"
#include "platform/desktop/WindowTable.h"
#include "platform/desktop/WindowViews.h"

#include <QString>
#include <QtEndian>

#include <algorithm>
#include <cstring>
#include <optional>
#include <span>

using namespace kelvo::desktop;

namespace {

constexpr UINT kNone = 0xFFFFFFFF;
constexpr UINT kLastItem = 0x0080; ///< in a menu resource
constexpr int kDeepest = 16;       ///< submenus within submenus, of a resource
constexpr std::size_t kMostItems = 1000;

/// Reads a menu resource: two words of version and size, then items, each its flags, its number
/// (submenus have none) and its text in UTF-16 with a 0; a submenu's items follow it at once.
/// Sticky: after the end it gives zeros and is no longer Ok.
class MenuReader {
public:
    explicit MenuReader(std::span<const std::uint8_t> bytes) : rest_(bytes) {}

    bool Ok() const { return ok_; }
    UINT ReadWord() {
        if (rest_.size() < 2) {
            ok_ = false;
            return 0;
        }
        const auto value = qFromLittleEndian<quint16>(rest_.data());
        rest_ = rest_.subspan(2);
        return value;
    }
    void Skip(std::size_t length) {
        ok_ = ok_ && length <= rest_.size();
        if (ok_) rest_ = rest_.subspan(length);
    }
    std::string ReadText() {
        QString text;
        for (UINT letter = ReadWord(); letter != 0 && ok_; letter = ReadWord()) {
            text.append(QChar(static_cast<char16_t>(letter)));
        }
        return text.toStdString();
    }

private:
    std::span<const std::uint8_t> rest_;
    bool ok_ = true;
};

bool ReadItems(MenuReader& reader, Menu& menu, int depth) {
    for (;;) {
        const UINT flags = reader.ReadWord();
        MenuItem item;
        item.flags = flags & (MF_GRAYED | MF_CHECKED | MF_POPUP);
        if ((flags & MF_POPUP) == 0) item.id = reader.ReadWord();
        item.text = reader.ReadText();
        if (!reader.Ok() || depth > kDeepest || menu.Items().size() >= kMostItems) return false;
        if ((flags & MF_POPUP) != 0) {
            item.submenu = AddMenu();
            Menu& submenu = *FindMenu(item.submenu);
            menu.Insert(menu.Items().size(), std::move(item)); // destroyed with it if reading fails
            if (!ReadItems(reader, submenu, depth + 1)) return false;
        } else {
            const bool separates = item.id == 0 && item.text.empty();
            if (separates || (flags & MF_SEPARATOR) != 0) item.flags |= MF_SEPARATOR;
            menu.Insert(menu.Items().size(), std::move(item));
        }
        if ((flags & kLastItem) != 0) return true;
    }
}

struct Place {
    Menu* menu = nullptr;
    std::size_t position = 0;
    const MenuItem& Item() const { return menu->Items()[position]; }
};

std::optional<Place> FindByCommand(Menu& menu, UINT id) {
    for (std::size_t i = 0; i < menu.Items().size(); ++i) {
        const MenuItem& item = menu.Items()[i];
        if (item.submenu == nullptr && item.id == id && (item.flags & MF_SEPARATOR) == 0) {
            return Place{&menu, i};
        }
        if (Menu* submenu = FindMenu(item.submenu)) {
            if (const auto found = FindByCommand(*submenu, id)) return found;
        }
    }
    return std::nullopt;
}

Menu* OnThisThread(HMENU menu) {
    return OnUiThread() ? FindMenu(menu) : nullptr;
}

std::optional<Place> Find(HMENU menu, UINT item, UINT flags) {
    Menu* const found = OnThisThread(menu);
    if (found == nullptr) return std::nullopt;
    if ((flags & MF_BYPOSITION) == 0) return FindByCommand(*found, item);
    if (item >= found->Items().size()) return std::nullopt;
    return Place{found, item};
}

/// Whether `menu` is `below` or lies in it.
bool LiesIn(HMENU menu, HMENU below) {
    while (menu != nullptr && menu != below) {
        const Menu* found = FindMenu(menu);
        menu = found == nullptr ? nullptr : found->Parent();
    }
    return menu != nullptr;
}

bool InsertAt(Menu& menu, HMENU handle, std::size_t position, UINT flags, UINT_PTR id,
              LPCSTR text) {
    MenuItem item;
    item.flags = flags & (MF_GRAYED | MF_CHECKED | MF_POPUP | MF_SEPARATOR);
    if (text != nullptr) item.text = text;
    if ((flags & MF_POPUP) != 0) {
        item.submenu = reinterpret_cast<HMENU>(id);
        const Menu* submenu = FindMenu(item.submenu);
        // One menu is in one place, and never within itself.
        if (submenu == nullptr || submenu->Parent() != nullptr || submenu->Window() != nullptr)
            return false;
        if (LiesIn(handle, item.submenu)) return false;
    } else {
        item.id = static_cast<UINT>(id);
    }
    menu.Insert(position, std::move(item));
    return true;
}

} // namespace

HMENU LoadMenuA(HINSTANCE instance, LPCSTR name) {
    if (!OnUiThread()) return nullptr;
    const HRSRC found = ::FindResourceA(instance, name, RT_MENU);
    if (found == nullptr) return nullptr;
    const void* bytes = ::LockResource(::LoadResource(instance, found));
    if (bytes == nullptr) return nullptr;
    MenuReader reader({static_cast<const std::uint8_t*>(bytes), ::SizeofResource(instance, found)});
    const UINT version = reader.ReadWord();
    reader.Skip(reader.ReadWord());
    if (!reader.Ok() || version != 0) return nullptr;
    const HMENU menu = AddMenu();
    if (ReadItems(reader, *FindMenu(menu), 0)) return menu;
    ForgetMenu(menu);
    return nullptr;
}

HMENU CreateMenu() {
    return OnUiThread() ? AddMenu() : nullptr;
}

HMENU CreatePopupMenu() {
    return CreateMenu();
}

BOOL DestroyMenu(HMENU menu) {
    return OnUiThread() && ForgetMenu(menu) ? TRUE : FALSE;
}

BOOL AppendMenuA(HMENU menu, UINT flags, UINT_PTR id, LPCSTR text) {
    Menu* const found = OnThisThread(menu);
    return found != nullptr && InsertAt(*found, menu, found->Items().size(), flags, id, text)
               ? TRUE
               : FALSE;
}

BOOL InsertMenuA(HMENU menu, UINT before, UINT flags, UINT_PTR id, LPCSTR text) {
    Menu* const found = OnThisThread(menu);
    if (found == nullptr) return FALSE;
    if ((flags & MF_BYPOSITION) != 0) {
        return InsertAt(*found, menu, before, flags, id, text) ? TRUE : FALSE;
    }
    const auto place = FindByCommand(*found, before);
    return place && InsertAt(*place->menu, menu, place->position, flags, id, text) ? TRUE : FALSE;
}

BOOL RemoveMenu(HMENU menu, UINT item, UINT flags) {
    const auto place = Find(menu, item, flags);
    if (!place) return FALSE;
    place->menu->Take(place->position);
    return TRUE;
}

BOOL DeleteMenu(HMENU menu, UINT item, UINT flags) {
    const auto place = Find(menu, item, flags);
    if (!place) return FALSE;
    const MenuItem taken = place->menu->Take(place->position);
    if (taken.submenu != nullptr) ForgetMenu(taken.submenu);
    return TRUE;
}

DWORD CheckMenuItem(HMENU menu, UINT item, UINT flags) {
    const auto place = Find(menu, item, flags);
    if (!place) return kNone;
    const UINT before = place->Item().flags & MF_CHECKED;
    place->menu->SetChecked(place->position, (flags & MF_CHECKED) != 0);
    return before;
}

BOOL EnableMenuItem(HMENU menu, UINT item, UINT flags) {
    const auto place = Find(menu, item, flags);
    if (!place) return -1;
    const UINT before = place->Item().flags & MF_GRAYED;
    place->menu->SetGrayed(place->position, (flags & MF_GRAYED) != 0);
    return static_cast<BOOL>(before);
}

int GetMenuItemCount(HMENU menu) {
    const Menu* found = OnThisThread(menu);
    return found == nullptr ? -1 : static_cast<int>(found->Items().size());
}

UINT GetMenuItemID(HMENU menu, int position) {
    const auto place = Find(menu, static_cast<UINT>(position), MF_BYPOSITION);
    return place && place->Item().submenu == nullptr ? place->Item().id : kNone;
}

HMENU GetSubMenu(HMENU menu, int position) {
    const auto place = Find(menu, static_cast<UINT>(position), MF_BYPOSITION);
    return place ? place->Item().submenu : nullptr;
}

UINT GetMenuState(HMENU menu, UINT item, UINT flags) {
    const auto place = Find(menu, item, flags);
    if (!place) return kNone;
    const Menu* submenu = FindMenu(place->Item().submenu);
    const UINT count = submenu == nullptr ? 0 : static_cast<UINT>(submenu->Items().size());
    return place->Item().flags | (std::min(count, 0xFFU) << 8U);
}

int GetMenuStringA(HMENU menu, UINT item, LPSTR text, int capacity, UINT flags) {
    const auto place = Find(menu, item, flags);
    if (!place) return 0;
    const std::string& found = place->Item().text;
    if (text == nullptr || capacity <= 0) return static_cast<int>(found.size());
    const std::size_t length = std::min(found.size(), static_cast<std::size_t>(capacity) - 1);
    std::memcpy(text, found.data(), length);
    text[length] = '\0';
    return static_cast<int>(length);
}

HMENU GetMenu(HWND window) {
    if (!OnUiThread()) return nullptr;
    const WindowView* view = ViewOf(window);
    return view == nullptr ? nullptr : view->menu;
}

BOOL SetMenu(HWND window, HMENU menu) {
    if (!OnUiThread()) return FALSE;
    WindowView* const view = ViewOf(window);
    if (view == nullptr || !view->frame) return FALSE;
    Menu* const shown = FindMenu(menu);
    if (menu != nullptr && (shown == nullptr || shown->Parent() != nullptr)) return FALSE;
    if (view->menu == menu) return TRUE;
    if (shown != nullptr && shown->Window() != nullptr) ::SetMenu(shown->Window(), nullptr);
    if (Menu* before = FindMenu(view->menu)) before->ShowOn(nullptr);
    view->menu = menu;
    if (shown != nullptr) shown->ShowOn(window);
    view->frame->ShowMenuBar(shown != nullptr);
    if (shown != nullptr) WatchMenuBar(&view->frame->MenuBar(), window);
    {
        LockedWindows windows;
        windows.Find(window)->has_menu = shown != nullptr;
    }
    AdaptClient(window);
    return TRUE;
}

BOOL DrawMenuBar(HWND window) {
    if (::GetMenu(window) == nullptr) return FALSE;
    FrameOf(window)->MenuBar().update();
    return TRUE;
}

namespace kelvo::platform {

void HoldMenuBar(HWND window, MenuBarUse use) {
    const auto holds = reinterpret_cast<INT_PTR>(::GetPropA(window, kMenuHolds));
    const INT_PTR now = use == MenuBarUse::Held ? holds + 1 : std::max<INT_PTR>(holds - 1, 0);
    ::SetPropA(window, kMenuHolds, reinterpret_cast<HANDLE>(now));
}

} // namespace kelvo::platform
