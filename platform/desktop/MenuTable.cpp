#include "platform/desktop/MenuTable.h"

#include "platform/desktop/Window.h"
#include "platform/desktop/WindowMenus.h"
#include "platform/desktop/WindowPlacement.h"
#include "platform/desktop/WindowTable.h"
#include "platform/desktop/WindowViews.h"
#include "platform/desktop/messages.h"

#include <algorithm>
#include <map>
#include <utility>

namespace kelvo::desktop {

namespace {

struct Menus {
    UINT_PTR next_handle = 0x20000;
    std::map<HMENU, std::unique_ptr<Menu>> menus;
};

Menus& TheMenus() {
    static auto* const menus = new Menus; // handles may be asked about until the very end
    return *menus;
}

} // namespace

QAction* MenuItem::Action() const {
    if (own_action) return own_action.get();
    const Menu* menu = FindMenu(submenu);
    return menu == nullptr ? nullptr : menu->Popup()->menuAction();
}

Menu::Menu(HMENU handle) : handle_(handle), popup_(new QMenu) {}

Menu::~Menu() {
    if (window_ != nullptr) ShowOn(nullptr);
    while (!items_.empty())
        Take(items_.size() - 1);
}

QMenuBar* Menu::Bar() const {
    FrameWidget* const frame = window_ == nullptr ? nullptr : FrameOf(window_);
    return frame == nullptr ? nullptr : &frame->MenuBar();
}

QAction* Menu::ActionAt(std::size_t position) const {
    return position < items_.size() ? items_[position].Action() : nullptr;
}

void Menu::Insert(std::size_t position, MenuItem item) {
    position = std::min(position, items_.size());
    if (Menu* submenu = FindMenu(item.submenu)) {
        submenu->parent_ = handle_;
        submenu->popup_->setTitle(QString::fromStdString(item.text));
    } else {
        item.own_action.reset(new QAction(QString::fromStdString(item.text)));
        item.own_action->setSeparator((item.flags & MF_SEPARATOR) != 0);
        QObject::connect(item.own_action.get(), &QAction::triggered, item.own_action.get(),
                         [this, id = item.id] { OnTriggered(id); });
    }
    QAction* const before = ActionAt(position);
    QAction* const action = item.Action();
    popup_->insertAction(before, action);
    if (QMenuBar* bar = Bar()) bar->insertAction(before, action);
    const UINT flags = item.flags;
    items_.insert(items_.begin() + static_cast<std::ptrdiff_t>(position), std::move(item));
    SetChecked(position, (flags & MF_CHECKED) != 0);
    SetGrayed(position, (flags & MF_GRAYED) != 0);
    if (window_ != nullptr) AdaptClient(window_);
}

MenuItem Menu::Take(std::size_t position) {
    const auto found = items_.begin() + static_cast<std::ptrdiff_t>(position);
    MenuItem item = std::move(*found);
    items_.erase(found);
    if (QAction* action = item.Action()) {
        popup_->removeAction(action);
        if (QMenuBar* bar = Bar()) bar->removeAction(action);
    }
    if (Menu* submenu = FindMenu(item.submenu)) submenu->parent_ = nullptr;
    if (item.own_action) item.own_action->disconnect();
    if (window_ != nullptr) AdaptClient(window_);
    return item;
}

void Menu::SetChecked(std::size_t position, bool checked) {
    MenuItem& item = items_[position];
    item.flags = checked ? item.flags | MF_CHECKED : item.flags & ~MF_CHECKED;
    if (!item.own_action) return;
    if (checked) item.own_action->setCheckable(true);
    item.own_action->setChecked(checked);
}

void Menu::SetGrayed(std::size_t position, bool grayed) {
    MenuItem& item = items_[position];
    item.flags = grayed ? item.flags | MF_GRAYED : item.flags & ~MF_GRAYED;
    item.Action()->setEnabled(!grayed);
}

void Menu::OnTriggered(UINT id) const {
    const auto chosen = std::ranges::find_if(
        items_, [&](const MenuItem& item) { return item.own_action && item.id == id; });
    if (chosen == items_.end()) return;
    // Choosing changes no mark by itself; the toolkit has just turned it over.
    chosen->own_action->setChecked((chosen->flags & MF_CHECKED) != 0);
    const Menu* root = this;
    while (const Menu* above = FindMenu(root->parent_))
        root = above;
    if (root->window_ != nullptr) ::PostMessageA(root->window_, WM_COMMAND, MAKEWPARAM(id, 0), 0);
}

void Menu::ShowOn(HWND window) {
    if (QMenuBar* bar = Bar()) {
        for (const MenuItem& item : items_)
            bar->removeAction(item.Action());
    }
    window_ = window;
    QMenuBar* const bar = Bar();
    if (bar == nullptr) return;
    for (const MenuItem& item : items_)
        bar->addAction(item.Action());
}

Menu* FindMenu(HMENU menu) {
    const auto found = TheMenus().menus.find(menu);
    return found == TheMenus().menus.end() ? nullptr : found->second.get();
}

HMENU AddMenu() {
    const auto handle = reinterpret_cast<HMENU>(TheMenus().next_handle += 2);
    TheMenus().menus.emplace(handle, std::make_unique<Menu>(handle));
    return handle;
}

bool ForgetMenu(HMENU menu) {
    Menu* const found = FindMenu(menu);
    if (found == nullptr) return false;
    if (found->Window() != nullptr) ::SetMenu(found->Window(), nullptr);
    if (Menu* above = FindMenu(found->Parent())) {
        const auto& items = above->Items();
        const auto shown = std::ranges::find(items, menu, &MenuItem::submenu);
        if (shown != items.end()) above->Take(static_cast<std::size_t>(shown - items.begin()));
    }
    std::vector<HMENU> submenus;
    for (const MenuItem& item : found->Items()) {
        if (item.submenu != nullptr) submenus.push_back(item.submenu);
    }
    for (const HMENU submenu : submenus)
        ForgetMenu(submenu);
    TheMenus().menus.erase(menu);
    return true;
}

int CountMenus() {
    return static_cast<int>(TheMenus().menus.size());
}

void DestroyAllMenus() {
    while (!TheMenus().menus.empty())
        ForgetMenu(TheMenus().menus.begin()->first);
}

} // namespace kelvo::desktop
