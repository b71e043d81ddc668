// BUTTON: push buttons, check boxes, radio buttons, group boxes, and buttons drawn by the owner.

#include "platform/base/resources.h"
#include "platform/desktop/WindowTable.h"
#include "platform/desktop/controls/OwnerDraw.h"
#include "platform/desktop/controls/StandardControls.h"

#include <QCheckBox>
#include <QGroupBox>
#include <QKeyEvent>
#include <QPushButton>
#include <QRadioButton>

#include <algorithm>
#include <vector>

namespace kelvo::desktop {

namespace {

/// A button whose marks change when its Control says so, and that is pressed anywhere in it.
template <class Base>
class MarkedFromOutside : public Base {
public:
    using Base::Base;

protected:
    void nextCheckState() override {}
    bool hitButton(const QPoint& position) const override {
        return this->rect().contains(position);
    }
};

bool IsPush(DWORD kind) {
    return kind == BS_PUSHBUTTON || kind == BS_DEFPUSHBUTTON || kind == BS_OWNERDRAW;
}

bool IsRadio(DWORD kind) {
    return kind == BS_RADIOBUTTON || kind == BS_AUTORADIOBUTTON;
}

bool HasThreeStates(DWORD kind) {
    return kind == BS_3STATE || kind == BS_AUTO3STATE;
}

/// The window and its siblings between two that begin a group.
std::vector<HWND> GroupOf(HWND window, HWND parent) {
    LockedWindows windows;
    const WindowData* above = windows.Find(parent);
    if (above == nullptr) return {window};
    const auto& all = above->children;
    const auto begins_group = [&](HWND sibling) {
        const WindowData* data = windows.Find(sibling);
        return data != nullptr && (data->style & WS_GROUP) != 0;
    };
    const auto self = std::ranges::find(all, window);
    if (self == all.end()) return {window};
    auto first = self;
    while (first != all.begin() && !begins_group(*first))
        --first;
    const auto end = std::find_if(self + 1, all.end(), begins_group);
    return {first, end};
}

class Button final : public Control {
public:
    explicit Button(const ControlSetup& setup) : Control(setup), kind_(setup.style & BS_TYPEMASK) {
        MakeIt(setup);
        if (!IS_INTRESOURCE(setup.title)) ShowText(setup.title);
    }

    void OnStyleChanged(DWORD /*before*/, DWORD now) override { SetKind(now); }

protected:
    std::optional<LRESULT> Handle(UINT message, WPARAM wparam, LPARAM lparam) override;
    bool WantsKey(const QKeyEvent& event) override { return event.key() == Qt::Key_Space; }
    void ShowText(const std::string& text) override;
    UINT ColourMessage() const override {
        return IsPush(kind_) ? WM_CTLCOLORBTN : WM_CTLCOLORSTATIC;
    }
    void ShowColours(const ControlColours& colours) override;
    bool DrawItself(HDC dc) override;

private:
    void MakeIt(const ControlSetup& setup);
    template <class W>
    void MakeButtonOf();
    void SetKind(DWORD style);
    void SetMark(UINT mark);
    void OnClicked();
    LRESULT State() const;
    LRESULT DialogCode() const;

    DWORD kind_;
    UINT mark_ = BST_UNCHECKED;
    QPointer<QAbstractButton> button_; ///< none: a group box
    QPointer<QGroupBox> group_box_;
};

template <class W>
void Button::MakeButtonOf() {
    button_ = MakeWidget<MarkedFromOutside<W>>();
    QObject::connect(button_, &QAbstractButton::clicked, Connections(), [this] { OnClicked(); });
}

void Button::MakeIt(const ControlSetup& setup) {
    if (kind_ == BS_GROUPBOX) {
        group_box_ = MakeWidget<QGroupBox>();
        // It lies behind what it surrounds, whatever was made first.
        Host()->setAttribute(Qt::WA_TransparentForMouseEvents);
        Host()->lower();
        SeeThrough();
        return;
    }
    if (IsPush(kind_)) {
        MakeButtonOf<QPushButton>();
        static_cast<QPushButton*>(button_.data())->setAutoDefault(false);
        SetKind(setup.style);
        if (kind_ == BS_OWNERDRAW) {
            Face().ShowSurface();
            QObject::connect(button_, &QAbstractButton::pressed, Connections(),
                             [this] { Repaint(); });
            QObject::connect(button_, &QAbstractButton::released, Connections(),
                             [this] { Repaint(); });
        }
    } else if ((setup.style & BS_PUSHLIKE) != 0) {
        MakeButtonOf<QPushButton>();
        button_->setCheckable(true);
    } else if (IsRadio(kind_)) {
        MakeButtonOf<QRadioButton>();
        button_->setAutoExclusive(false);
    } else {
        MakeButtonOf<QCheckBox>();
        static_cast<QCheckBox*>(button_.data())->setTristate(HasThreeStates(kind_));
    }
    if ((setup.style & BS_LEFTTEXT) != 0) button_->setLayoutDirection(Qt::RightToLeft);
}

void Button::SetKind(DWORD style) {
    const DWORD kind = style & BS_TYPEMASK;
    // One kind of push button may become the other; the rest stays what it was made as.
    const bool may_change = kind_ != BS_OWNERDRAW && IsPush(kind_) && IsPush(kind);
    if (may_change && kind != BS_OWNERDRAW) kind_ = kind;
    if (auto* push = qobject_cast<QPushButton*>(button_.data()); push != nullptr && IsPush(kind_)) {
        push->setDefault(kind_ == BS_DEFPUSHBUTTON);
    }
}

void Button::ShowText(const std::string& text) {
    const QString shown = QString::fromStdString(text);
    if (group_box_) group_box_->setTitle(WithoutPrefix(shown));
    if (!button_) return;
    button_->setText(shown);
    button_->setShortcut({}); // keys come by messages
}

void Button::ShowColours(const ControlColours& colours) {
    if (kind_ == BS_GROUPBOX) {
        // What it surrounds is the parent's.
        Control::ShowColours({.text = colours.text, .background = {}, .transparent = true});
    } else if (!IsPush(kind_)) {
        Control::ShowColours(colours);
    } else {
        // A push button looks as the desktop's do; only what is behind it is the parent's.
        ControlColours behind = colours;
        behind.text.reset();
        Control::ShowColours(behind);
    }
}

bool Button::DrawItself(HDC dc) {
    if (kind_ != BS_OWNERDRAW || !button_) return false;
    UINT state = 0;
    if (button_->isDown()) state |= ODS_SELECTED;
    if (HasFocus()) state |= ODS_FOCUS;
    SendDrawItem(Window(), Parent(), ODT_BUTTON, state, dc);
    return true;
}

void Button::SetMark(UINT mark) {
    if (mark > BST_INDETERMINATE || IsPush(kind_) || !button_) return;
    if (mark == BST_INDETERMINATE && !HasThreeStates(kind_)) mark = BST_CHECKED;
    mark_ = mark;
    if (auto* box = qobject_cast<QCheckBox*>(button_.data())) {
        box->setCheckState(mark == BST_CHECKED     ? Qt::Checked
                           : mark == BST_UNCHECKED ? Qt::Unchecked
                                                   : Qt::PartiallyChecked);
    } else {
        button_->setChecked(mark != BST_UNCHECKED);
    }
    if (!IsRadio(kind_)) return;
    LockedWindows windows; // Tab reaches a group at its chosen button
    if (WindowData* data = windows.Find(Window())) {
        data->style = mark == BST_CHECKED ? data->style | WS_TABSTOP : data->style & ~WS_TABSTOP;
    }
}

void Button::OnClicked() {
    switch (kind_) {
    case BS_AUTOCHECKBOX:
        SetMark(mark_ == BST_UNCHECKED ? BST_CHECKED : BST_UNCHECKED);
        break;
    case BS_AUTO3STATE:
        SetMark((mark_ + 1) % 3);
        break;
    case BS_AUTORADIOBUTTON:
        for (const HWND sibling : GroupOf(Window(), Parent())) {
            const DWORD style = static_cast<DWORD>(::GetWindowLongPtrA(sibling, GWL_STYLE));
            char name[16] = {};
            ::GetClassNameA(sibling, name, sizeof name);
            const bool is_other = sibling != Window() && qstricmp(name, WC_BUTTON) == 0 &&
                                  (style & BS_TYPEMASK) == BS_AUTORADIOBUTTON;
            if (is_other) ::SendMessageA(sibling, BM_SETCHECK, BST_UNCHECKED, 0);
        }
        SetMark(BST_CHECKED);
        break;
    default:
        if (button_ && !IsPush(kind_)) SetMark(mark_); // the toolkit may have drawn another
        break;
    }
    Notify(BN_CLICKED);
}

LRESULT Button::State() const {
    UINT state = mark_;
    if (button_ && button_->isDown()) state |= BST_PUSHED;
    if (HasFocus()) state |= BST_FOCUS;
    return static_cast<LRESULT>(state);
}

LRESULT Button::DialogCode() const {
    if (kind_ == BS_GROUPBOX) return DLGC_STATIC;
    if (kind_ == BS_DEFPUSHBUTTON) return DLGC_BUTTON | DLGC_DEFPUSHBUTTON;
    if (kind_ == BS_PUSHBUTTON) return DLGC_BUTTON | DLGC_UNDEFPUSHBUTTON;
    return IsRadio(kind_) ? DLGC_BUTTON | DLGC_RADIOBUTTON : DLGC_BUTTON;
}

std::optional<LRESULT> Button::Handle(UINT message, WPARAM wparam, LPARAM lparam) {
    const bool reports_all = (Style() & BS_NOTIFY) != 0;
    switch (message) {
    case WM_CREATE:
        if (kind_ == BS_OWNERDRAW) SendMeasureItem(Window(), Parent(), ODT_BUTTON);
        return std::nullopt;
    case WM_GETDLGCODE:
        return DialogCode();
    case BM_GETCHECK:
        return static_cast<LRESULT>(mark_);
    case BM_SETCHECK:
        SetMark(static_cast<UINT>(wparam));
        return 0;
    case BM_GETSTATE:
        return State();
    case BM_SETSTATE:
        if (button_) button_->setDown(wparam != 0);
        if (kind_ == BS_OWNERDRAW) Repaint();
        return 0;
    case BM_SETSTYLE: {
        const DWORD style = (Style() & ~DWORD{0xFFFF}) | LOWORD(wparam);
        ::SetWindowLongPtrA(Window(), GWL_STYLE, static_cast<LONG_PTR>(style));
        if (lparam != 0) Repaint();
        return 0;
    }
    case BM_CLICK:
        if (button_) button_->click();
        return 0;
    case WM_KEYDOWN:
        if (wparam == VK_RETURN && IsPush(kind_) && button_) {
            button_->click();
            return 0;
        }
        return std::nullopt;
    case WM_LBUTTONDBLCLK:
        if (reports_all) Notify(BN_DOUBLECLICKED);
        return std::nullopt;
    case WM_CAPTURECHANGED:
        if (button_) button_->setDown(false); // a press that ends elsewhere is none
        if (kind_ == BS_OWNERDRAW) Repaint();
        return 0;
    case WM_SETFOCUS:
    case WM_KILLFOCUS:
        if (kind_ == BS_OWNERDRAW) Repaint();
        if (reports_all) Notify(message == WM_SETFOCUS ? BN_SETFOCUS : BN_KILLFOCUS);
        return std::nullopt;
    default:
        return std::nullopt;
    }
}

} // namespace

std::unique_ptr<Control> MakeButton(const ControlSetup& setup) {
    return std::make_unique<Button>(setup);
}

} // namespace kelvo::desktop
