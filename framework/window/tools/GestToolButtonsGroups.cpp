#include "framework/window/tools/GestToolButtonsGroups.h"

#include "framework/window/tools/CToolWin.h"

namespace kelvo {

GestToolButtonsGroups::GestToolButtonsGroups() : CObj(BitmapButton::kClassId) {}

std::int32_t GestToolButtonsGroups::Find(const char* group_name) const {
    const CString name(group_name);
    for (std::size_t number = 0; number < groups_.size(); ++number) {
        if (groups_[number]->name.CompareWithoutCase(name) == 0) {
            return static_cast<std::int32_t>(number);
        }
    }
    return kNone;
}

void GestToolButtonsGroups::DefineButton(const char* group_name, const char* bitmap_name,
                                         std::int32_t command_id, LONG left, LONG top,
                                         const char* tip_text, ButtonKind kind,
                                         std::int32_t group) {
    std::int32_t number = Find(group_name);
    if (number == kNone) {
        number = static_cast<std::int32_t>(groups_.size());
        groups_.push_back(std::make_unique<buttonsgroup>());
        groups_.back()->name = group_name;
    }
    buttonsgroup& buttons = *groups_[static_cast<std::size_t>(number)];
    buttons.bitmap_names.Add(bitmap_name);
    buttons.tip_texts.Add(tip_text);
    buttons.command_ids.Add(command_id);
    buttons.lefts.Add(left);
    buttons.tops.Add(top);
    buttons.kinds.Add(kind);
    buttons.group_numbers.Add(group);
}

int GestToolButtonsGroups::ShowGroup(const char* group_name, CToolWin& tool_window) {
    const std::int32_t number = Find(group_name);
    if (number == kNone) return 0;
    if (number == current_) return 1;
    HideCurrentGroup(tool_window);
    const buttonsgroup& buttons = *groups_[static_cast<std::size_t>(number)];
    for (std::int32_t i = 0; i < buttons.group_numbers.Count(); ++i) {
        tool_window.AddButton(buttons.bitmap_names[i].Text(), buttons.command_ids[i],
                              buttons.lefts[i], buttons.tops[i], buttons.tip_texts[i].Text(),
                              buttons.kinds[i], buttons.group_numbers[i]);
    }
    current_ = number;
    return 1;
}

void GestToolButtonsGroups::HideCurrentGroup(CToolWin& tool_window) {
    if (current_ == kNone) return;
    for (const std::int32_t id : groups_[static_cast<std::size_t>(current_)]->command_ids) {
        tool_window.RemoveButton(id);
    }
    current_ = kNone;
}

} // namespace kelvo
