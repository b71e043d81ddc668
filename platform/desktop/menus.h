#pragma once
// Menus: built from resources or item by item, attached to top-level windows, shown as the
// desktop's own menus. Choosing an item posts WM_COMMAND (LOWORD: the item's number, HIWORD and
// lParam 0) to the window. UI thread only. Positions count from 0, separators included.

#include "platform/base/types.h"

inline constexpr UINT MF_BYCOMMAND =
    0x0000; ///< the position argument is an item's number; found in submenus, too
inline constexpr UINT MF_BYPOSITION = 0x0400;
inline constexpr UINT MF_STRING = 0x0000;
inline constexpr UINT MF_ENABLED = 0x0000;
inline constexpr UINT MF_GRAYED = 0x0001;
inline constexpr UINT MF_UNCHECKED = 0x0000;
inline constexpr UINT MF_CHECKED = 0x0008;
inline constexpr UINT MF_POPUP = 0x0010;
inline constexpr UINT MF_SEPARATOR = 0x0800;

/// @return 0 when there is no such resource or it is damaged.
HMENU LoadMenuA(HINSTANCE instance, LPCSTR name);
HMENU CreateMenu();
HMENU CreatePopupMenu();
/// Destroys a menu and the submenus in it. A menu that a window shows is taken off that window.
BOOL DestroyMenu(HMENU menu);

/// @param id    the item's number; with MF_POPUP the submenu's handle
/// @param text  '&' before the letter that chooses it; a tab separates the shortcut's name
BOOL AppendMenuA(HMENU menu, UINT flags, UINT_PTR id, LPCSTR text);
/// Inserts before the given item; at the end when by position there is none, refused by command.
BOOL InsertMenuA(HMENU menu, UINT before, UINT flags, UINT_PTR id, LPCSTR text);
/// Removes an item and destroys its submenu.
BOOL DeleteMenu(HMENU menu, UINT item, UINT flags);
/// Removes an item and leaves its submenu alone.
BOOL RemoveMenu(HMENU menu, UINT item, UINT flags);

/// @return the previous mark, MF_CHECKED or MF_UNCHECKED; 0xFFFFFFFF when there is no such item.
DWORD CheckMenuItem(HMENU menu, UINT item, UINT flags);
/// MF_GRAYED or MF_ENABLED. @return the previous state; -1 when there is no such item.
BOOL EnableMenuItem(HMENU menu, UINT item, UINT flags);

int GetMenuItemCount(HMENU menu);             ///< -1 for no menu
UINT GetMenuItemID(HMENU menu, int position); ///< 0xFFFFFFFF for a submenu or no item
HMENU GetSubMenu(HMENU menu, int position);   ///< 0 for an item without one
/// @return the MF_ flags; of a submenu also its number of items in the high byte of the low word;
///         0xFFFFFFFF when there is no such item.
UINT GetMenuState(HMENU menu, UINT item, UINT flags);
/// Copies an item's text, cut to `capacity` with its 0; with no buffer it only tells the length.
/// @return the length in bytes, without the 0.
int GetMenuStringA(HMENU menu, UINT item, LPSTR text, int capacity, UINT flags);

HMENU GetMenu(HWND window);
/// Attaches a menu to a top-level window, 0 takes it off; the old one is not destroyed. The client
/// area keeps the size that the whole window gives it.
BOOL SetMenu(HWND window, HMENU menu);
/// Menus show their changes at once. @return whether the window has a menu.
BOOL DrawMenuBar(HWND window);

namespace kelvo::platform {

enum class MenuBarUse : bool { Held, Released };

/// Holds a window's menu bar: it opens nothing, a press on it is only told by WM_NCLBUTTONDOWN.
/// Each hold is released once. UI thread only.
void HoldMenuBar(HWND window, MenuBarUse use);

} // namespace kelvo::platform
