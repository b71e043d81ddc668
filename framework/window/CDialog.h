#pragma once
// A dialog and its object: made from a template of the kernel's resource module, run with a loop of
// its own or beside the program's, its controls reached by their numbers and coloured one by one or
// together. Parts of a dialog that stand for themselves (bitmap buttons, help, editing in place)
// have classes in framework/window/dialogs/; this class holds them and hands them their messages.

#include "framework/base/CArray.h"
#include "framework/base/CObjArray.h"
#include "framework/base/CString.h"
#include "framework/window/CWin.h"
#include "framework/window/dialogs/COwnerDrawButton.h"
#include "framework/window/dialogs/ContextHelp.h"
#include "framework/window/dialogs/InPlaceEditing.h"
#include "framework/window/dialogs/StaticBitmaps.h"
#include "framework/window/dialogs/ToolTipTracking.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace kelvo {

/// Message that ends a dialog's modal loop; lParam carries the result. Any thread may post it.
inline constexpr UINT kEndDialogMessage = 0x1402;

/// Whether a control's text colour counts, too, when its background is set.
enum class MarkTextColour : bool { No, Yes };

class CDialog : public CWin {
public:
    static constexpr std::uint32_t kClassId = 26030100;

    /// One block of rich text on its way into or out of a control.
    struct RTFEditInfoStruct {
        char* data = nullptr; ///< owned, from the heap
        std::uint32_t size = 0;
        std::uint32_t position = 0;
        BYTE streams_in = 0; ///< 1: into the control
        CString* target = nullptr;
    };

    using staticctrlbitmap = StaticControlBitmap;

    explicit CDialog(std::uint32_t class_id = kClassId);
    ~CDialog() override;

    // The virtual slots 3 and 8 to 22, in their order.
    bool HandleMessage(UINT message, WPARAM wparam, LPARAM lparam) override;
    /// Creates the dialog from its stored template name and runs it until EndDialog. The owner and
    /// its ancestors are inert meanwhile.
    /// @return the result given to EndDialog; 0 when the dialog could not be made or was destroyed
    LPARAM ModalRun(CWin* owner) override;
    /// Messages as the dialog's window class gets them, before the dialog manager.
    /// @return true when handled; the message result is then the answer
    virtual bool HandleClassMessage(UINT message, WPARAM wparam, LPARAM lparam);
    /// The selection of a list box or combo box has changed. @return true when handled, as with the
    /// following five
    virtual bool OnSelectionChanged(HWND control, int id, int index);
    virtual bool OnDropDown(HWND control, int id);
    virtual bool OnCloseUp(HWND control, int id);
    /// Notification 4: a list box has the focus, a combo box has lost it.
    virtual bool OnNotification4(HWND control, int id);
    /// Notification 3: a list box has lost its selection, a combo box has the focus.
    virtual bool OnNotification3(HWND control, int id);
    virtual bool OnDoubleClick(HWND control, int id, int index);
    /// Sees every message of the modal loop first. @return true to take it away
    virtual bool PreTranslate(MSG* message);
    /// Ends the modal loop with the result, or destroys a modeless dialog.
    virtual void EndDialog(LPARAM result);
    /// Creates the dialog beside the program's loop. A null name means the stored one.
    /// @return 0 when there is a window already or it could not be made
    virtual int CreateModeless(CWin* owner, LPCSTR resource_name = nullptr);
    virtual void FirstHook() {}
    virtual void SecondHook() {}
    virtual void ThirdHook() {}
    /// Draws an owner-drawn frame: 10001 sunken, 10002 raised. @return false for other numbers
    virtual bool DrawFrame(HWND control, HDC context, int id);

    // Creating and running.

    /// Stores the template's name.
    void ResourceName(LPCSTR name) { resource_name_ = name; }
    const CString& ResourceName() const { return resource_name_; }
    /// Makes the window without a loop. A null name means the stored one. @return 1, or 0 after a
    /// box that says why not
    int CreateDlg(LPCSTR name = nullptr);
    /// Stores the name and runs.
    LPARAM ModalRun(CWin* owner, LPCSTR resource_name);
    /// Bit 0: the owner's side is not painted while the modal loop runs.
    void SetOptions(std::uint32_t options) { options_ = options; }
    std::uint32_t Options() const { return options_; }
    bool RunsModally() const { return modal_running_; }
    /// Dispatches what waits, for long work in a handler of the dialog: its keys work meanwhile.
    /// @param inert_owner  with its ancestors inert, as in the modal loop; null for none
    void ProcessMessages(const CWin* inert_owner = nullptr);

    // Controls, by their numbers.

    HWND Control(int id) const;
    void SetControlText(int id, const CString& text) const;
    void SetControlText(int id, LPCSTR text) const;
    void SetControlInteger(int id, std::int32_t value) const;
    void SetControlUnsigned(int id, std::uint32_t value) const;
    /// @param digits  significant ones, 1 to 17
    void SetControlDouble(int id, double value, int digits) const;
    /// In the fixed form of 15 characters.
    void SetControlFixed(int id, double value) const;
    /// The same, but "0.0" while the absolute value lies below the threshold.
    void SetControlDoubleFrom(int id, double value, int digits, double threshold) const;
    CString ControlText(int id) const;
    /// Of at most 40 characters; 0 for a text that is no number.
    double ControlDouble(int id) const;
    /// Decimal; 0 for a text that is no number.
    long ControlLong(int id) const;
    int ControlInt(int id) const;
    /// Bit i is the state of check box first + i; at most 32 boxes.
    std::uint32_t CheckedBoxes(int first, int last) const;
    void SetCheckedBoxes(int first, int last, std::uint32_t bits) const;
    /// Pixels of so many dialog units.
    int HorizontalPixels(int units) const;
    int VerticalPixels(int units) const;

    // Colours of one control.

    /// @param mark  Yes makes the text colour last given count, too
    void SetControlBackground(int id, COLORREF colour, MarkTextColour mark = MarkTextColour::No);
    void SetControlColours(int id, COLORREF text, COLORREF background);
    /// @return 1 and the colour, or 0 when none was set
    int ControlBackground(int id, COLORREF& colour) const;
    /// @return 0 when none was set
    int RemoveControlBackground(int id);
    void SwitchControlTextColour(int id, bool on);

    // Colours of the whole dialog; the index is one of the kernel's sixteen colours.

    void SetDialogBackground(COLORREF colour);
    void SetDialogBackgroundIndex(int index);
    void SetControlsBackground(COLORREF colour);
    void SetControlsBackgroundIndex(int index);
    /// Also sets the text mask to dialog and static controls.
    void SetTextColour(COLORREF colour);
    /// 0 when no such colour is active.
    COLORREF DialogBackground() const;
    COLORREF ControlsBackground() const;
    COLORREF TextColour() const;
    /// Bits: 1 dialog, 4 static, 8 owner-drawn, 16 list box, 32 scroll bar.
    void SetTextMask(std::uint32_t mask) { text_mask_ = mask; }
    void SetBackgroundMask(std::uint32_t mask) { background_mask_ = mask; }

    // Help.

    /// The text that is shown when the mouse rests on the control, and by the help key.
    void SetControlHelp(int id, LPCSTR text);
    /// Lets the mouse show what it points at, until a button or modifier key goes down.
    void BeginToolTips();
    /// A double click on the list's item or the label then edits its text where it stands.
    void MakeItemsEditable(int id) { list_editing_.MakeEditable(id); }
    void MakeLabelEditable(int id) { label_editing_.MakeEditable(id); }

    // Owner-drawn buttons and pictures (CDialogBitmaps.cpp). Empty names leave a bitmap out; the
    // control is an owner-drawn one in the template.

    void AddOwnerDrawBtn(int id, LPCSTR pressed_bitmap, LPCSTR normal_bitmap);
    /// The bitmap's background is replaced by the colour.
    void AddOwnerDrawBtn(int id, LPCSTR pressed_bitmap, LPCSTR normal_bitmap, COLORREF replacement);
    /// One bitmap only, fitted to the control.
    void AddBitmap(int id, LPCSTR bitmap);
    /// A bitmap on an owner-drawn static control.
    void AddStaticBitmap(const staticctrlbitmap& bitmap);

    // Rich text (CDialogRichText.cpp).

    /// Once before a dialog with a rich-text control is created.
    static void LoadRichEditSupport();
    /// Fills a control with a whole rich-text document. @return 0 when it cannot be read
    int LoadRichText(int id, LPCSTR file_name);
    /// The control's content as rich text. @return 1
    int ReadRichText(int id, CString& text);
    /// What moves the bytes of a rich-text control. @return nonzero exactly when no byte was moved
    static DWORD EditStreamCallback(DWORD_PTR cookie, BYTE* buffer, LONG count, LONG* moved);

private:
    friend INT_PTR LumDlgProc(HWND window, UINT message, WPARAM wparam, LPARAM lparam);
    friend LRESULT CDialogWndProc(HWND window, UINT message, WPARAM wparam, LPARAM lparam);

    class ControlColours;

    // What of the scheme is active.
    static constexpr std::uint32_t kBackgroundActive = 4;
    static constexpr std::uint32_t kTextActive = 8;

    bool HasInstance();
    const void* LoadTemplate() const;
    void ShowNotCreated() const;
    void LoopUntilEnd(const CWin* owner);
    void HandleModalMessage(MSG& message, const CWin* owner, const std::vector<HWND>& owner_side);
    void HandleOwnerMessage(const MSG& message);
    void FocusBack() const;
    void OnEndMessage(LPARAM result);
    std::optional<bool> OnCommand(UINT code, int id, HWND control);
    std::optional<bool> OnSelection(UINT code, int id, HWND control);
    bool OnDrawItem(LPARAM lparam);
    bool ColourControl(UINT message, HDC context, HWND control);
    bool ApplyColourScheme(UINT message, HDC context, HWND control);
    COLORREF SchemeControlsBackground() const;
    void MakeSchemeBrushes();
    void DeleteSchemeBrushes();
    void OnSchemeChanged();
    ControlColours* FindColours(int id) const;
    ControlColours& ColoursOf(int id);
    void Repaint(HWND window) const;

    COwnerDrawButtonArray owner_draw_buttons_;
    CObjArray control_colours_{CObjArray::kOwnsElements};
    CString resource_name_;
    COLORREF text_colour_ = 0;
    COLORREF dialog_background_;
    COLORREF controls_background_ = 0;
    HBRUSH dialog_brush_ = nullptr;
    HBRUSH controls_brush_ = nullptr;
    std::uint32_t colour_flags_ = 0;
    std::uint32_t text_mask_ = 0xFFF;
    std::uint32_t background_mask_;
    std::uint32_t controls_background_set_ = 0;
    bool modal_running_ = false;
    bool end_requested_ = false; ///< the end came through another loop than ours
    LPARAM end_result_ = 0;
    std::vector<HWND> unpainted_; ///< of the owner's side, to be painted once the loop has ended
    bool has_context_help_ = false;
    std::uint32_t options_ = 0;
    CArray<RTFEditInfoStruct> rich_texts_;
    CArray<staticctrlbitmap> static_bitmaps_;
    ContextHelp context_help_;
    ToolTipTracking tool_tips_{context_help_};
    InPlaceEditing list_editing_{EditsInPlace::ListItems};
    InPlaceEditing label_editing_{EditsInPlace::Labels};
};

} // namespace kelvo
