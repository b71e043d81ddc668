// COMBOBOX: a list that opens below a field, in which one can type or not.

#include "platform/desktop/Input.h"
#include "platform/desktop/NextMessage.h"
#include "platform/desktop/controls/ItemTexts.h"
#include "platform/desktop/controls/StandardControls.h"
#include "platform/desktop/controls/TextPositions.h"

#include <QAbstractItemView>
#include <QComboBox>
#include <QLineEdit>
#include <QPointer>

#include <algorithm>
#include <functional>

namespace kelvo::desktop {

namespace {

constexpr DWORD kKindMask = 0x0003;

/// Tells when its list opens and closes.
class DropBox : public QComboBox {
public:
    explicit DropBox(std::function<void(bool)> on_list) : on_list_(std::move(on_list)) {}

    void showPopup() override {
        on_list_(true);
        QComboBox::showPopup();
    }
    void hidePopup() override {
        const bool was_open = view()->isVisible();
        QComboBox::hidePopup();
        if (was_open) on_list_(false);
    }

private:
    const std::function<void(bool)> on_list_;
};

std::string TextFrom(LPARAM text) {
    return text == 0 ? std::string() : reinterpret_cast<const char*>(text);
}

class ComboBox final : public Control {
public:
    explicit ComboBox(const ControlSetup& setup)
        : Control(setup), has_field_((setup.style & kKindMask) != CBS_DROPDOWNLIST) {
        const QPointer<QObject> alive = Connections();
        box_ = MakeWidget<DropBox>([this, alive](bool opens) {
            if (alive) OnList(opens);
        });
        box_->setEditable(has_field_);
        box_->setInsertPolicy(QComboBox::NoInsert);
        if (has_field_) box_->setCompleter(nullptr);
        WatchControl(box_, setup.window); // the field has come since
        NameAfterLabel();
        QObject::connect(box_, &QComboBox::activated, Connections(), [this] {
            Notify(CBN_SELENDOK);
            Notify(CBN_SELCHANGE);
        });
        QObject::connect(box_, &QComboBox::editTextChanged, Connections(), [this] {
            if (!quiet_) Notify(CBN_EDITCHANGE);
        });
    }

protected:
    std::optional<LRESULT> Handle(UINT message, WPARAM wparam, LPARAM lparam) override;
    UINT ColourMessage() const override {
        return has_field_ ? WM_CTLCOLOREDIT : WM_CTLCOLORLISTBOX;
    }
    void ShowFont(const QFont& font) override {
        Control::ShowFont(font);
        FitHeight();
    }

private:
    void OnList(bool opens);
    void FitHeight();
    LRESULT Add(LPARAM text);
    LRESULT Insert(LPARAM index, LPARAM text);
    LRESULT Delete(LPARAM index);
    LRESULT SetCurrent(LPARAM index);
    std::string Text() const;
    LRESULT SetText(LPARAM text);
    std::optional<LRESULT> HandleItems(UINT message, WPARAM wparam, LPARAM lparam);
    std::optional<LRESULT> HandleSelection(UINT message, WPARAM wparam, LPARAM lparam);

    const bool has_field_;
    QPointer<DropBox> box_;
    ItemTexts texts_;
    int asked_height_ = 0;
    bool quiet_ = false;   ///< the program changes the field
    bool fitting_ = false; ///< sizes itself
};

void ComboBox::OnList(bool opens) {
    // The list gets what the mouse does from now on.
    if (opens) EndPress();
    Notify(opens ? CBN_DROPDOWN : CBN_CLOSEUP);
}

void ComboBox::FitHeight() {
    RECT area{};
    if (fitting_ || !box_ || ::GetClientRect(Window(), &area) == FALSE) return;
    const int height = box_->sizeHint().height();
    const int row = std::max(1, QFontMetrics(box_->font()).height() + 2);
    if (asked_height_ > height)
        box_->setMaxVisibleItems(std::max(1, (asked_height_ - height) / row));
    fitting_ = true;
    ::SetWindowPos(Window(), nullptr, 0, 0, area.right, height, SWP_NOMOVE | SWP_NOZORDER);
    fitting_ = false;
}

LRESULT ComboBox::Add(LPARAM text) {
    const bool is_sorted = (Style() & CBS_SORT) != 0;
    return Insert(is_sorted ? texts_.SortedPlace(TextFrom(text)) : texts_.Count(), text);
}

LRESULT ComboBox::Insert(LPARAM index, LPARAM text) {
    if (index == -1) index = texts_.Count();
    if (index < 0 || index > texts_.Count()) return CB_ERR;
    const auto place = static_cast<int>(index);
    const int current = box_->currentIndex();
    const QString field = has_field_ ? box_->currentText() : QString();
    texts_.Insert(place, TextFrom(text));
    box_->insertItem(place, texts_.Shown(place));
    // The toolkit chooses the first item by itself.
    if (current < 0) box_->setCurrentIndex(-1);
    if (has_field_) box_->setEditText(field);
    return index;
}

LRESULT ComboBox::Delete(LPARAM index) {
    if (!texts_.Has(index)) return CB_ERR;
    const auto place = static_cast<int>(index);
    const bool was_current = box_->currentIndex() == place;
    texts_.Remove(place);
    box_->removeItem(place);
    if (was_current) box_->setCurrentIndex(-1);
    return texts_.Count();
}

LRESULT ComboBox::SetCurrent(LPARAM index) {
    if (!texts_.Has(index)) {
        box_->setCurrentIndex(-1);
        if (has_field_) box_->clearEditText();
        return CB_ERR;
    }
    box_->setCurrentIndex(static_cast<int>(index));
    if (has_field_) box_->setEditText(texts_.Shown(index));
    return index;
}

std::string ComboBox::Text() const {
    const int current = box_->currentIndex();
    const bool is_item = texts_.Has(current) && box_->currentText() == texts_.Shown(current);
    return is_item ? texts_.At(current).text : box_->currentText().toStdString();
}

LRESULT ComboBox::SetText(LPARAM text) {
    if (!has_field_) return CB_ERR;
    box_->setEditText(QString::fromStdString(TextFrom(text)));
    return TRUE;
}

std::optional<LRESULT> ComboBox::HandleItems(UINT message, WPARAM wparam, LPARAM lparam) {
    const LPARAM index = static_cast<std::int32_t>(wparam);
    switch (message) {
    case CB_ADDSTRING:
        return Add(lparam);
    case CB_INSERTSTRING:
        return Insert(index, lparam);
    case CB_DELETESTRING:
        return Delete(index);
    case CB_RESETCONTENT:
        box_->clear();
        texts_.Clear();
        return CB_OKAY;
    case CB_GETCOUNT:
        return texts_.Count();
    case CB_GETLBTEXT:
        return texts_.Copy(index, lparam);
    case CB_GETLBTEXTLEN:
        return texts_.Has(index) ? static_cast<LRESULT>(texts_.At(index).text.size()) : CB_ERR;
    case CB_GETITEMDATA:
        return texts_.Has(index) ? texts_.At(index).data : CB_ERR;
    case CB_SETITEMDATA:
        if (!texts_.Has(index)) return CB_ERR;
        texts_.At(index).data = lparam;
        return CB_OKAY;
    case CB_FINDSTRING:
        return texts_.Find(index, TextFrom(lparam), false);
    case CB_FINDSTRINGEXACT:
        return texts_.Find(index, TextFrom(lparam), true);
    default:
        return HandleSelection(message, wparam, lparam);
    }
}

std::optional<LRESULT> ComboBox::HandleSelection(UINT message, WPARAM wparam, LPARAM lparam) {
    const LPARAM index = static_cast<std::int32_t>(wparam);
    switch (message) {
    case CB_SETCURSEL:
        return SetCurrent(index);
    case CB_GETCURSEL:
        return box_->currentIndex();
    case CB_SELECTSTRING: {
        const int found = texts_.Find(index, TextFrom(lparam), false);
        return found < 0 ? CB_ERR : SetCurrent(found);
    }
    case CB_SHOWDROPDOWN:
        if (wparam != 0) {
            box_->showPopup();
        } else {
            box_->hidePopup();
        }
        return TRUE;
    case CB_GETDROPPEDSTATE:
        return box_->view()->isVisible() ? TRUE : FALSE;
    case CB_LIMITTEXT:
        if (!has_field_) return TRUE;
        box_->lineEdit()->setMaxLength(
            wparam == 0 ? 32767 : static_cast<int>(std::min<WPARAM>(wparam, 32767)));
        return TRUE;
    case CB_GETEDITSEL:
        if (!has_field_) return CB_ERR;
        return MAKELONG(static_cast<DWORD_PTR>(std::max(0, box_->lineEdit()->selectionStart())),
                        static_cast<DWORD_PTR>(std::max(0, box_->lineEdit()->selectionEnd())));
    case CB_SETEDITSEL: {
        if (!has_field_) return CB_ERR;
        const int start = static_cast<std::int16_t>(LOWORD(static_cast<DWORD_PTR>(lparam)));
        const int end = static_cast<std::int16_t>(HIWORD(static_cast<DWORD_PTR>(lparam)));
        const auto all = static_cast<int>(box_->currentText().size());
        box_->lineEdit()->setSelection(std::max(0, start), (end < 0 ? all : end) - start);
        return TRUE;
    }
    default:
        return std::nullopt;
    }
}

std::optional<LRESULT> ComboBox::Handle(UINT message, WPARAM wparam, LPARAM lparam) {
    if (!box_) return std::nullopt;
    switch (message) {
    case WM_SIZE:
        if (!fitting_) {
            asked_height_ = HIWORD(static_cast<DWORD_PTR>(lparam));
            FitHeight();
        }
        return std::nullopt;
    case WM_GETTEXT:
        return CopyBytes(Text(), wparam, lparam);
    case WM_GETTEXTLENGTH:
        return static_cast<LRESULT>(Text().size());
    case WM_IME_COMPOSITION:
        if (const auto input = InputBehindMessage(Window(), message)) {
            const std::unique_ptr<QEvent> composed(input->clone());
            Give(*composed);
        }
        return 0;
    case WM_GETDLGCODE:
        return DLGC_WANTARROWS | DLGC_WANTCHARS | (has_field_ ? DLGC_HASSETSEL : 0);
    case WM_SETFOCUS:
        Notify(CBN_SETFOCUS);
        return std::nullopt;
    case WM_KILLFOCUS:
        Notify(CBN_KILLFOCUS);
        return std::nullopt;
    default:
        break;
    }
    // What the program sets is reported to nobody.
    const bool before = std::exchange(quiet_, true);
    const auto answer = message == WM_SETTEXT ? std::optional(SetText(lparam))
                                              : HandleItems(message, wparam, lparam);
    quiet_ = before;
    return answer;
}

} // namespace

std::unique_ptr<Control> MakeComboBox(const ControlSetup& setup) {
    return std::make_unique<ComboBox>(setup);
}

} // namespace kelvo::desktop
