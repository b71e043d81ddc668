// The colours of a dialog: of its controls one by one, and of the whole.

#include "framework/window/CDialog.h"
#include "framework/window/LUM.h"
#include "platform/desktop/controls.h"
#include "platform/desktop/dialogs.h"
#include "platform/desktop/drawing.h"

#include <memory>

namespace kelvo {
namespace {

constexpr std::uint32_t kDialogBit = 1;
constexpr std::uint32_t kStaticBit = 4;
constexpr std::uint32_t kDrawnByOwnerBit = 8;
constexpr std::uint32_t kListBoxBit = 16;
constexpr std::uint32_t kScrollBarBit = 32;

/// @return 0 for what keeps the system's colours
std::uint32_t MaskBitOf(UINT message) {
    switch (message) {
    case WM_CTLCOLORDLG:
        return kDialogBit;
    case WM_CTLCOLORSTATIC:
        return kStaticBit;
    case WM_DRAWITEM:
        return kDrawnByOwnerBit;
    case WM_CTLCOLORLISTBOX:
        return kListBoxBit;
    case WM_CTLCOLORSCROLLBAR:
        return kScrollBarBit;
    default:
        return 0;
    }
}

} // namespace

/// The colours of one control.
class CDialog::ControlColours : public CObj {
public:
    static constexpr std::uint32_t kRecordClassId = 26030101;

    explicit ControlColours(int control_id) : CObj(kRecordClassId), id_(control_id) {}
    ControlColours(const ControlColours&) = delete;
    ControlColours& operator=(const ControlColours&) = delete;
    ~ControlColours() override { RemoveBackground(); }

    int Id() const { return id_; }
    bool HasBackground() const { return (flags_ & kBackgroundSet) != 0; }
    bool HasText() const { return (flags_ & kTextSet) != 0; }
    COLORREF Background() const { return background_; }
    COLORREF Text() const { return text_; }
    HBRUSH Brush() const { return brush_; }

    void SetBackground(COLORREF colour) {
        RemoveBackground();
        background_ = colour;
        brush_ = CreateSolidBrush(colour);
        flags_ |= kBackgroundSet | kOwnsBrush;
    }
    void RemoveBackground() {
        if ((flags_ & kOwnsBrush) != 0) DeleteObject(brush_);
        brush_ = nullptr;
        flags_ &= ~(kBackgroundSet | kOwnsBrush);
    }
    void SetText(COLORREF colour) {
        text_ = colour;
        SwitchText(true);
    }
    void SwitchText(bool on) { flags_ = on ? flags_ | kTextSet : flags_ & ~kTextSet; }

private:
    static constexpr std::uint32_t kBackgroundSet = 1;
    static constexpr std::uint32_t kTextSet = 2;
    static constexpr std::uint32_t kOwnsBrush = 4;

    int id_;
    std::uint32_t flags_ = 0;
    COLORREF background_ = 0;
    COLORREF text_ = 0;
    HBRUSH brush_ = nullptr;
};

CDialog::ControlColours* CDialog::FindColours(int id) const {
    for (std::int32_t i = 0; i < control_colours_.Count(); ++i) {
        auto* const colours = static_cast<ControlColours*>(control_colours_.At(i));
        if (colours->Id() == id) return colours;
    }
    return nullptr;
}

CDialog::ControlColours& CDialog::ColoursOf(int id) {
    if (ControlColours* const known = FindColours(id)) return *known;
    auto made = std::make_unique<ControlColours>(id);
    ControlColours& colours = *made;
    if (control_colours_.Add(&colours) != 0) std::ignore = made.release();
    return colours;
}

void CDialog::SetControlBackground(int id, COLORREF colour, MarkTextColour mark) {
    ControlColours& colours = ColoursOf(id);
    colours.SetBackground(colour);
    if (mark == MarkTextColour::Yes) colours.SwitchText(true);
    Repaint(Control(id));
}

void CDialog::SetControlColours(int id, COLORREF text, COLORREF background) {
    ControlColours& colours = ColoursOf(id);
    colours.SetText(text);
    colours.SetBackground(background);
    Repaint(Control(id));
}

int CDialog::ControlBackground(int id, COLORREF& colour) const {
    const ControlColours* const colours = FindColours(id);
    if (colours == nullptr || !colours->HasBackground()) return 0;
    colour = colours->Background();
    return 1;
}

int CDialog::RemoveControlBackground(int id) {
    ControlColours* const colours = FindColours(id);
    if (colours == nullptr || !colours->HasBackground()) return 0;
    colours->RemoveBackground();
    Repaint(Control(id));
    return 1;
}

void CDialog::SwitchControlTextColour(int id, bool on) {
    ColoursOf(id).SwitchText(on);
    Repaint(Control(id));
}

/// @return whether the control's own background answers the message
bool CDialog::ColourControl(UINT message, HDC context, HWND control) {
    if (message == WM_CTLCOLORDLG) return false;
    const ControlColours* const colours = FindColours(GetDlgCtrlID(control));
    if (colours == nullptr) return false;
    if (colours->HasText()) SetTextColor(context, colours->Text());
    if (!colours->HasBackground()) return false;
    SetBkColor(context, colours->Background());
    SetMessageResult(reinterpret_cast<LRESULT>(colours->Brush()));
    return true;
}

bool CDialog::ApplyColourScheme(UINT message, HDC context, HWND control) {
    const std::uint32_t bit = MaskBitOf(message);
    if (bit == 0) return false;
    const bool has_background = (colour_flags_ & kBackgroundActive) != 0;
    const bool may_fill = has_background && (background_mask_ & bit) != 0;
    if (message == WM_CTLCOLORDLG) {
        if (may_fill) SetMessageResult(reinterpret_cast<LRESULT>(dialog_brush_));
        return may_fill;
    }
    const ControlColours* const own = FindColours(GetDlgCtrlID(control));
    const bool has_own_text = own != nullptr && own->HasText();
    if ((colour_flags_ & kTextActive) != 0 && (text_mask_ & bit) != 0 && !has_own_text) {
        SetTextColor(context, text_colour_);
    }
    if (!may_fill) return false;
    SetBkColor(context, SchemeControlsBackground());
    SetMessageResult(reinterpret_cast<LRESULT>(controls_brush_));
    return true;
}

COLORREF CDialog::SchemeControlsBackground() const {
    return controls_background_set_ != 0 ? controls_background_ : dialog_background_;
}

void CDialog::MakeSchemeBrushes() {
    DeleteSchemeBrushes();
    if ((colour_flags_ & kBackgroundActive) == 0) return;
    dialog_brush_ = CreateSolidBrush(dialog_background_);
    controls_brush_ = CreateSolidBrush(SchemeControlsBackground());
}

void CDialog::DeleteSchemeBrushes() {
    for (HBRUSH* brush : {&dialog_brush_, &controls_brush_}) {
        if (*brush != nullptr) DeleteObject(*brush);
        *brush = nullptr;
    }
}

void CDialog::OnSchemeChanged() {
    if (!HasWindow()) return; // the brushes are made when it begins
    MakeSchemeBrushes();
    Repaint(Window());
}

void CDialog::SetDialogBackground(COLORREF colour) {
    dialog_background_ = colour;
    colour_flags_ |= kBackgroundActive;
    OnSchemeChanged();
}

void CDialog::SetDialogBackgroundIndex(int index) {
    SetDialogBackground(LUM::IndexColor(index));
}

void CDialog::SetControlsBackground(COLORREF colour) {
    controls_background_ = colour;
    controls_background_set_ = 1;
    colour_flags_ |= kBackgroundActive;
    OnSchemeChanged();
}

void CDialog::SetControlsBackgroundIndex(int index) {
    SetControlsBackground(LUM::IndexColor(index));
}

void CDialog::SetTextColour(COLORREF colour) {
    text_colour_ = colour;
    text_mask_ = kDialogBit | kStaticBit;
    colour_flags_ |= kTextActive;
    OnSchemeChanged();
}

COLORREF CDialog::DialogBackground() const {
    return (colour_flags_ & kBackgroundActive) != 0 ? dialog_background_ : 0;
}

COLORREF CDialog::ControlsBackground() const {
    return (colour_flags_ & kBackgroundActive) != 0 ? SchemeControlsBackground() : 0;
}

COLORREF CDialog::TextColour() const {
    return (colour_flags_ & kTextActive) != 0 ? text_colour_ : 0;
}

void CDialog::Repaint(HWND window) const {
    if (window != nullptr) InvalidateRect(window, nullptr, TRUE);
}

} // namespace kelvo
