#pragma once
// Named sets of button descriptions, one of which at a time a tool window shows.

#include "framework/base/CArray.h"
#include "framework/base/CObj.h"
#include "framework/base/CString.h"
#include "framework/window/tools/BitmapButton.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace kelvo {

class CToolWin;

class GestToolButtonsGroups : public CObj {
public:
    GestToolButtonsGroups();

    /// Describes a button as CToolWin::AddButton takes it; the first one of a name makes the group.
    /// Case makes no difference in names.
    void DefineButton(const char* group_name, const char* bitmap_name, std::int32_t command_id,
                      LONG left, LONG top, const char* tip_text, ButtonKind kind,
                      std::int32_t group);
    /// Puts the group's buttons in the place of the present group's.
    /// @return 1, also when the group is shown already; 0 when there is no such group
    int ShowGroup(const char* group_name, CToolWin& tool_window);
    /// Removes the present group's buttons.
    void HideCurrentGroup(CToolWin& tool_window);

    static constexpr std::int32_t kNone = -1;
    /// Number of the group that is shown, in the order of their making; kNone at first.
    std::int32_t CurrentGroup() const { return current_; }

    /// One group: a list for each argument of CToolWin::AddButton.
    struct buttonsgroup {
        CString name;
        CArray<CString> bitmap_names;
        CArray<CString> tip_texts;
        CArray<std::int32_t> command_ids;
        CArray<LONG> lefts;
        CArray<LONG> tops;
        CArray<ButtonKind> kinds;
        CArray<std::int32_t> group_numbers;
    };

private:
    std::int32_t Find(const char* group_name) const;

    std::vector<std::unique_ptr<buttonsgroup>> groups_;
    std::int32_t current_ = kNone;
};

} // namespace kelvo
