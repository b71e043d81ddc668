#pragma once
// Editing a text where it stands: an edit control laid over a list's item or over a label of a
// dialog. Escape drops what was typed; Return, Tab and whatever else takes the keyboard away keep
// it. A dialog has two of these, one for list items and one for labels, and passes them every
// message; only controls that were made editable are touched.

#include "framework/base/CString.h"
#include "platform/desktop/windows.h"

#include <set>

namespace kelvo {

enum class EditsInPlace : bool { ListItems, Labels };

class InPlaceEditing {
public:
    enum class Keep : bool { No, Yes };

    explicit InPlaceEditing(EditsInPlace what) : what_(what) {}
    InPlaceEditing(const InPlaceEditing&) = delete;
    InPlaceEditing& operator=(const InPlaceEditing&) = delete;
    ~InPlaceEditing();

    /// A double click on the control (a list box, a static control that notifies) then begins.
    void MakeEditable(int control_id) { editable_.insert(control_id); }
    /// A message of the dialog; none is consumed.
    void See(HWND dialog, UINT message, WPARAM wparam, LPARAM lparam);

    /// Lays the editor over the label, or over the selected item of the list.
    /// @return false when there is nothing to edit
    bool Begin(HWND dialog, HWND control);
    bool IsEditing() const { return editor_ != nullptr; }
    /// Writes the text back, or not, and gives the keyboard back to where it was.
    void End(Keep keep);

private:
    static LRESULT EditorProcedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam);
    bool Place(HWND dialog, HWND control, const RECT& area, const CString& text);
    void Finish(Keep keep);
    void WriteBack(const CString& text) const;

    EditsInPlace what_;
    std::set<int> editable_;
    HWND editor_ = nullptr;
    HWND control_ = nullptr; ///< whose text is edited
    HWND focus_before_ = nullptr;
    int item_ = -1; ///< of a list
    WNDPROC editor_before_ = nullptr;
};

} // namespace kelvo
