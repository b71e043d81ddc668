#include "app/LastFileslum.h"

#include "framework/base/FilePaths.h"
#include "platform/desktop/messages.h"

#include <algorithm>
#include <utility>

namespace kelvo {
namespace {

constexpr int kMostPositions = 100;

// As the menu shows it: there "&" marks a letter and a tab begins a shortcut's name.
CString MenuText(const char* prefix, const CString& title) {
    CString text = prefix;
    for (const char letter : title.View()) {
        if (letter == '&') text += '&';
        text += letter == '\t' ? ' ' : letter;
    }
    return text;
}

} // namespace

LastFileslum::LastFileslum(UINT first_command, int popup, UINT anchor, std::int32_t maximum)
    : popup_(popup), maximum_(maximum), first_command_(first_command), anchor_(anchor) {}

void LastFileslum::Load(const CString& file) {
    entries_.Clear();
    added_.Clear();
    if (Result<RecentFiles> files = LoadRecentFiles(file)) entries_ = std::move(files.Value());
}

void LastFileslum::Save(const CString& file) {
    if (SaveRecentFiles(file, entries_, added_, maximum_)) added_.Clear();
}

void LastFileslum::AddFile(HMENU menu, const CString& path, std::uint32_t value) {
    if (entries_.IsEmpty()) {
        InsertMenuA(GetSubMenu(menu, popup_), anchor_, MF_BYCOMMAND | MF_SEPARATOR, 0, nullptr);
    }
    const xxdta entry{path, value};
    PutInFront(entries_, entry, maximum_);
    PutInFront(added_, entry, maximum_);
    RebuildMenu(menu, nullptr);
}

void LastFileslum::RemoveFromMenu(HMENU popup) {
    const auto most = static_cast<UINT>(std::max(maximum_, shown_));
    for (UINT i = 0; i < most; ++i) {
        DeleteMenu(popup, first_command_ + i, MF_BYCOMMAND);
    }
    shown_ = 0;
    for (int position = 1; position < kMostPositions; ++position) {
        if (GetMenuItemID(popup, position) != anchor_) continue;
        const auto above = static_cast<UINT>(position - 1);
        const bool is_item = GetSubMenu(popup, position - 1) == nullptr;
        if (is_item && (GetMenuState(popup, above, MF_BYPOSITION) & MF_SEPARATOR) != 0) {
            DeleteMenu(popup, above, MF_BYPOSITION);
        }
        return;
    }
}

void LastFileslum::RebuildMenu(HMENU menu, const char* prefix) {
    const HMENU popup = GetSubMenu(menu, popup_);
    RemoveFromMenu(popup);
    if (entries_.IsEmpty()) return;
    for (const xxdta& entry : entries_) {
        const CString text = MenuText(prefix, PathTitle(entry.path));
        InsertMenuA(popup, anchor_, MF_BYCOMMAND | MF_STRING,
                    first_command_ + static_cast<UINT>(shown_++), text.Text());
    }
    InsertMenuA(popup, anchor_, MF_BYCOMMAND | MF_SEPARATOR, 0, nullptr);
}

bool LastFileslum::IsRecentCommand(UINT message, WPARAM wparam) const {
    return message == WM_COMMAND && wparam >= first_command_ &&
           wparam - first_command_ < static_cast<WPARAM>(entries_.Count());
}

CString LastFileslum::PathOf(UINT command) const {
    if (!IsRecentCommand(WM_COMMAND, command)) return {};
    return entries_[static_cast<std::int32_t>(command - first_command_)].path;
}

} // namespace kelvo
