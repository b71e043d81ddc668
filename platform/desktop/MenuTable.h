#pragma once
// The menus behind their handles: their items, and the toolkit's menus that show them. UI thread
// only.

#include "platform/desktop/menus.h"

#include <QAction>
#include <QMenu>
#include <QMenuBar>

#include <memory>
#include <string>
#include <vector>

namespace kelvo::desktop {

/// The toolkit may be handling an event of what is deleted.
struct DeleteLater {
    void operator()(QObject* object) const { object->deleteLater(); }
};

struct MenuItem {
    UINT id = 0;
    UINT flags = 0; ///< MF_ of kind and state
    std::string text;
    HMENU submenu = nullptr;
    std::unique_ptr<QAction, DeleteLater> own_action; ///< of an item that is no submenu

    QAction* Action() const;
};

/// A menu. Its items are the actions of one toolkit menu, which is itself the submenu; a window's
/// menu bar shows the same actions.
class Menu {
public:
    explicit Menu(HMENU handle);
    ~Menu();
    Menu(const Menu&) = delete;
    Menu& operator=(const Menu&) = delete;

    const std::vector<MenuItem>& Items() const { return items_; }
    /// @param position  beyond the end: at the end
    void Insert(std::size_t position, MenuItem item);
    /// Takes an item out; its submenu, if any, stays alive.
    MenuItem Take(std::size_t position);
    void SetChecked(std::size_t position, bool checked);
    void SetGrayed(std::size_t position, bool grayed);

    /// Shows the items in the menu bar of the window's frame, or with 0 takes them off.
    void ShowOn(HWND window);
    HWND Window() const { return window_; }
    HMENU Parent() const { return parent_; } ///< the menu that it is a submenu of
    QMenu* Popup() const { return popup_.get(); }

private:
    void OnTriggered(UINT id) const;
    QMenuBar* Bar() const;
    QAction* ActionAt(std::size_t position) const;

    const HMENU handle_;
    HMENU parent_ = nullptr;
    HWND window_ = nullptr; ///< whose bar shows it
    std::vector<MenuItem> items_;
    std::unique_ptr<QMenu, DeleteLater> popup_;
};

Menu* FindMenu(HMENU menu);
HMENU AddMenu();
/// Takes the menu and the submenus in it out of the table and off their window. @return whether
/// there was one.
bool ForgetMenu(HMENU menu);

} // namespace kelvo::desktop
