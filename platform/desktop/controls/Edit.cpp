// EDIT: what the messages mean for the text in the field.

#include "platform/base/resources.h"
#include "platform/desktop/controls/EditField.h"
#include "platform/desktop/controls/StandardControls.h"
#include "platform/desktop/controls/TextPositions.h"
#include "platform/desktop/controls/Typing.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QPointer>

#include <algorithm>
#include <cstring>
#include <optional>

namespace kelvo::desktop {

namespace {

constexpr DWORD kAlignmentMask = ES_CENTER | ES_RIGHT;
constexpr DWORD kFieldStyles = ES_UPPERCASE | ES_LOWERCASE | ES_PASSWORD | ES_READONLY;
constexpr int kNoLimit = 0x7FFFFFFE;
constexpr int kFirstLimit = 30000;

/// A field whose pasted and dropped texts pass the filter.
class FilteredText : public QPlainTextEdit {
public:
    explicit FilteredText(EditFilter filter) : filter_(std::move(filter)) {}

protected:
    void insertFromMimeData(const QMimeData* source) override {
        textCursor().insertText(filter_(source->text()));
    }

private:
    const EditFilter filter_;
};

class Edit final : public Control {
public:
    explicit Edit(const ControlSetup& setup)
        : Control(setup), is_multi_line_((setup.style & ES_MULTILINE) != 0), style_(setup.style) {
        const bool has_frame =
            (setup.style & WS_BORDER) != 0 || (setup.extended_style & WS_EX_CLIENTEDGE) != 0;
        if (is_multi_line_) {
            MakeMultiLine(has_frame);
        } else {
            MakeSingleLine(has_frame);
        }
        if (setup.title != nullptr && !IS_INTRESOURCE(setup.title)) {
            field_->SetText(FromBytes(setup.title));
        }
        field_->SetModified(false);
        ApplyStyle(setup.style);
        NameAfterLabel();
        quiet_ = false;
    }

    void OnStyleChanged(DWORD before, DWORD now) override {
        style_ = now;
        if (((before ^ now) & (kFieldStyles | kAlignmentMask)) != 0) ApplyStyle(now);
    }

protected:
    std::optional<LRESULT> Handle(UINT message, WPARAM wparam, LPARAM lparam) override;
    bool WantsKey(const QKeyEvent& event) override { return !ComesAsCharacter(event); }
    UINT ColourMessage() const override {
        const bool is_still = (style_ & (ES_READONLY | WS_DISABLED)) != 0;
        return is_still ? WM_CTLCOLORSTATIC : WM_CTLCOLOREDIT;
    }

private:
    void MakeSingleLine(bool has_frame);
    void MakeMultiLine(bool has_frame);
    void ApplyStyle(DWORD style);
    std::optional<LRESULT> HandleEdit(UINT message, WPARAM wparam, LPARAM lparam);
    std::optional<LRESULT> HandleLines(UINT message, WPARAM wparam, LPARAM lparam);

    QString FromBytes(const char* bytes) const;
    std::string Bytes() const { return BytesOf(field_->Text(), Lines()); }
    TextLines Lines() const { return is_multi_line_ ? TextLines::Several : TextLines::One; }
    int ByteAt(int position) const;
    int PositionOf(LPARAM byte) const;
    int LineWithCaret() const;

    void OnChanged();
    QString Wanted(const QString& inserted);
    bool MayBecome(QString& whole);
    void InCase(QString& text) const;
    void Type(const QString& text);
    void OnCharacter(unsigned char byte);
    void OnControlCharacter(unsigned char byte);
    void Paste();
    LRESULT SetSelection(LPARAM start, LPARAM end);
    LRESULT GetSelection(WPARAM start, LPARAM end) const;
    LRESULT LineIndex(LPARAM line) const;
    LRESULT LineLength(LPARAM byte) const;
    LRESULT CopyLine(WPARAM line, LPARAM buffer) const;
    LRESULT DialogCode(WPARAM key) const;

    const bool is_multi_line_;
    DWORD style_;
    std::unique_ptr<EditField> field_;
    int limit_ = kFirstLimit;
    char password_letter_ = '*';
    CharacterBytes character_;
    bool quiet_ = true;     ///< what changes the text now is reported to nobody
    bool checking_ = false; ///< what changes the text now was typed
};

void Edit::MakeSingleLine(bool has_frame) {
    auto* const edit = MakeWidget<QLineEdit>();
    edit->setFrame(has_frame);
    // The widget outlives the control, and is asked once more when it loses the keyboard.
    const QPointer<QObject> alive = Connections();
    field_ = SingleLineField(*edit,
                             [this, alive](QString& whole) { return !alive || MayBecome(whole); });
    QObject::connect(edit, &QLineEdit::textChanged, Connections(), [this] { OnChanged(); });
}

void Edit::MakeMultiLine(bool has_frame) {
    const QPointer<QObject> alive = Connections();
    auto* const edit = MakeWidget<FilteredText>(
        [this, alive](const QString& text) { return alive ? Wanted(text) : QString(); });
    if (!has_frame) edit->setFrameShape(QFrame::NoFrame);
    edit->setTabChangesFocus(false);
    const bool wraps = (style_ & (ES_AUTOHSCROLL | WS_HSCROLL)) == 0;
    edit->setLineWrapMode(wraps ? QPlainTextEdit::WidgetWidth : QPlainTextEdit::NoWrap);
    const auto bar = [&](DWORD wanted) {
        return (style_ & wanted) != 0 ? Qt::ScrollBarAsNeeded : Qt::ScrollBarAlwaysOff;
    };
    edit->setVerticalScrollBarPolicy(bar(WS_VSCROLL));
    edit->setHorizontalScrollBarPolicy(bar(WS_HSCROLL));
    field_ = MultiLineField(*edit);
    QObject::connect(edit, &QPlainTextEdit::textChanged, Connections(), [this] { OnChanged(); });
}

void Edit::ApplyStyle(DWORD style) {
    field_->SetReadOnly((style & ES_READONLY) != 0);
    Qt::Alignment alignment = Qt::AlignLeft;
    if ((style & ES_CENTER) != 0) alignment = Qt::AlignHCenter;
    if ((style & ES_RIGHT) != 0) alignment = Qt::AlignRight;
    field_->SetAlignment(alignment);
    if (auto* edit = qobject_cast<QLineEdit*>(Widget())) {
        const bool is_secret = (style & ES_PASSWORD) != 0 && password_letter_ != '\0';
        edit->setEchoMode(is_secret ? QLineEdit::Password : QLineEdit::Normal);
    }
}

// ---- text and positions ----

QString Edit::FromBytes(const char* bytes) const {
    return TextFromBytes(bytes == nullptr ? "" : bytes, Lines());
}

int Edit::ByteAt(int position) const {
    return CountBytes(QStringView(field_->Text()).first(position), Lines());
}

int Edit::PositionOf(LPARAM byte) const {
    return PositionAt(field_->Text(), byte, Lines());
}

int Edit::LineWithCaret() const {
    return LineAt(field_->Text(), field_->Selection().second);
}

LRESULT Edit::SetSelection(LPARAM start, LPARAM end) {
    if (start < 0) { // nothing is selected
        const int caret = field_->Selection().second;
        field_->Select(caret, caret);
        return 0;
    }
    const auto all = static_cast<int>(field_->Text().size());
    field_->Select(PositionOf(start), end < 0 ? all : PositionOf(end));
    return 0;
}

LRESULT Edit::GetSelection(WPARAM start, LPARAM end) const {
    const auto [first, last] = field_->Selection();
    const int first_byte = ByteAt(first);
    const int last_byte = ByteAt(last);
    if (start != 0) *reinterpret_cast<DWORD*>(start) = static_cast<DWORD>(first_byte);
    if (end != 0) *reinterpret_cast<DWORD*>(end) = static_cast<DWORD>(last_byte);
    return MAKELONG(static_cast<DWORD_PTR>(first_byte), static_cast<DWORD_PTR>(last_byte));
}

LRESULT Edit::LineIndex(LPARAM line) const {
    const std::optional<int> begin = BeginOfLine(field_->Text(), line < 0 ? LineWithCaret() : line);
    return begin ? ByteAt(*begin) : -1;
}

LRESULT Edit::LineLength(LPARAM byte) const {
    const QString text = field_->Text();
    const int line = byte < 0 ? LineWithCaret() : LineAt(text, PositionOf(byte));
    return CountBytes(LineOf(text, line), TextLines::One);
}

LRESULT Edit::CopyLine(WPARAM line, LPARAM buffer) const {
    if (buffer == 0) return 0;
    const QString text = field_->Text();
    const QByteArray bytes = LineOf(text, static_cast<LPARAM>(line)).toUtf8();
    WORD capacity = 0;
    std::memcpy(&capacity, reinterpret_cast<const void*>(buffer), sizeof capacity);
    const auto length = std::min<std::size_t>(static_cast<std::size_t>(bytes.size()), capacity);
    std::memcpy(reinterpret_cast<void*>(buffer), bytes.constData(), length);
    return static_cast<LRESULT>(length);
}

// ---- typing ----

void Edit::OnChanged() {
    if (quiet_) return;
    Notify(EN_UPDATE);
    Notify(EN_CHANGE);
}

void Edit::InCase(QString& text) const {
    if ((style_ & ES_UPPERCASE) != 0) {
        text = text.toUpper();
    } else if ((style_ & ES_LOWERCASE) != 0) {
        text = text.toLower();
    }
}

/// What of a text may be inserted in place of what is selected.
QString Edit::Wanted(const QString& inserted) {
    QString text = inserted;
    text.replace(QLatin1String("\r\n"), QLatin1String("\n"));
    if (!is_multi_line_) text = text.section(QLatin1Char('\n'), 0, 0);
    if ((style_ & ES_NUMBER) != 0) {
        text.removeIf([](QChar letter) { return letter < u'0' || letter > u'9'; });
    }
    InCase(text);
    const auto [start, end] = field_->Selection();
    const QString all = field_->Text();
    const int rest =
        CountBytes(all, Lines()) - CountBytes(QStringView(all).sliced(start, end - start), Lines());
    bool is_cut = false;
    while (!text.isEmpty() &&
           rest + std::int64_t{CountBytes(text, Lines())} > std::int64_t{limit_}) {
        text.chop(text.back().isLowSurrogate() ? 2 : 1);
        is_cut = true;
    }
    if (is_cut) Notify(EN_MAXTEXT);
    return text;
}

/// What comes past Wanted: undone and dropped texts, and those of the field's own menu.
bool Edit::MayBecome(QString& whole) {
    InCase(whole);
    return true;
}

void Edit::Type(const QString& text) {
    if ((style_ & ES_READONLY) != 0) return;
    const QString wanted = Wanted(text);
    if (!wanted.isEmpty()) field_->Insert(wanted);
}

void Edit::Paste() {
    Type(QGuiApplication::clipboard()->text());
}

void Edit::OnControlCharacter(unsigned char byte) {
    switch (byte) {
    case kSelectAll:
        SetSelection(0, -1);
        break;
    case kCopy:
        field_->Copy();
        break;
    case kCut:
        ::SendMessageA(Window(), WM_CUT, 0, 0);
        break;
    case kPaste:
        Paste();
        break;
    case kUndo:
        field_->Undo();
        break;
    case kBackspace: {
        QKeyEvent key(QEvent::KeyPress, Qt::Key_Backspace, Qt::NoModifier);
        Give(key);
        break;
    }
    case kReturn:
    case kLineFeed:
        if (is_multi_line_) Type(QStringLiteral("\n"));
        break;
    case kTab:
        if (is_multi_line_) Type(QStringLiteral("\t"));
        break;
    default:
        break;
    }
}

void Edit::OnCharacter(unsigned char byte) {
    if (IsControlCharacter(byte)) {
        character_.Clear();
        OnControlCharacter(byte);
    } else if (const QString letter = character_.Add(byte); !letter.isEmpty()) {
        Type(letter);
    }
}

LRESULT Edit::DialogCode(WPARAM key) const {
    LRESULT code = DLGC_HASSETSEL | DLGC_WANTCHARS | DLGC_WANTARROWS;
    const bool wants_return = is_multi_line_ && (style_ & ES_WANTRETURN) != 0;
    if (wants_return && key == VK_RETURN) code |= DLGC_WANTALLKEYS;
    return code;
}

// ---- messages ----

std::optional<LRESULT> Edit::HandleLines(UINT message, WPARAM wparam, LPARAM lparam) {
    switch (message) {
    case EM_GETLINECOUNT:
        return field_->Text().count(QLatin1Char('\n')) + 1;
    case EM_LINEINDEX:
        return LineIndex(static_cast<std::int32_t>(wparam));
    case EM_LINELENGTH:
        return LineLength(static_cast<std::int32_t>(wparam));
    case EM_GETLINE:
        return CopyLine(wparam, lparam);
    case EM_LINEFROMCHAR: {
        const auto byte = static_cast<std::int32_t>(wparam);
        return LineAt(field_->Text(), byte < 0 ? field_->Selection().first : PositionOf(byte));
    }
    case EM_GETFIRSTVISIBLELINE:
        return field_->FirstVisibleLine();
    default:
        return std::nullopt;
    }
}

std::optional<LRESULT> Edit::HandleEdit(UINT message, WPARAM wparam, LPARAM lparam) {
    switch (message) {
    case EM_GETSEL:
        return GetSelection(wparam, lparam);
    case EM_SETSEL:
        return SetSelection(static_cast<std::int32_t>(wparam), static_cast<std::int32_t>(lparam));
    case EM_REPLACESEL: {
        QString inserted = FromBytes(reinterpret_cast<const char*>(lparam));
        InCase(inserted);
        field_->Insert(inserted);
        return 0;
    }
    case EM_LIMITTEXT:
        limit_ = wparam == 0 ? kNoLimit : static_cast<int>(std::min<WPARAM>(wparam, kNoLimit));
        return 0;
    case EM_GETLIMITTEXT:
        return limit_;
    case EM_SETREADONLY: {
        const DWORD style = wparam != 0 ? Style() | ES_READONLY : Style() & ~ES_READONLY;
        ::SetWindowLongPtrA(Window(), GWL_STYLE, static_cast<LONG_PTR>(style));
        return TRUE;
    }
    case EM_SETPASSWORDCHAR:
        password_letter_ = static_cast<char>(wparam);
        ::SetWindowLongPtrA(
            Window(), GWL_STYLE,
            static_cast<LONG_PTR>(wparam != 0 ? Style() | ES_PASSWORD : Style() & ~ES_PASSWORD));
        return 0;
    case EM_GETPASSWORDCHAR:
        return (style_ & ES_PASSWORD) != 0 ? password_letter_ : 0;
    case EM_GETMODIFY:
        return field_->IsModified() ? TRUE : FALSE;
    case EM_SETMODIFY:
        field_->SetModified(wparam != 0);
        return 0;
    case EM_CANUNDO:
        return field_->CanUndo() ? TRUE : FALSE;
    case EM_UNDO:
    case WM_UNDO:
        field_->Undo();
        return TRUE;
    case EM_EMPTYUNDOBUFFER:
        field_->ForgetUndo();
        return 0;
    case EM_SCROLLCARET:
        field_->ShowCaret();
        return TRUE;
    default:
        return HandleLines(message, wparam, lparam);
    }
}

std::optional<LRESULT> Edit::Handle(UINT message, WPARAM wparam, LPARAM lparam) {
    switch (message) {
    case WM_GETTEXT:
        return CopyBytes(Bytes(), wparam, lparam);
    case WM_GETTEXTLENGTH:
        return CountBytes(field_->Text(), Lines());
    case WM_SETTEXT: {
        // Fields of several lines have always been silent about a text that the program sets.
        const bool before = std::exchange(quiet_, quiet_ || is_multi_line_);
        field_->SetText(FromBytes(reinterpret_cast<const char*>(lparam)));
        quiet_ = before;
        field_->SetModified(false);
        return TRUE;
    }
    case WM_CHAR:
        OnCharacter(static_cast<unsigned char>(wparam));
        return 0;
    case WM_IME_COMPOSITION:
        ShowComposition();
        return 0;
    case WM_CUT:
    case WM_CLEAR:
        if (message == WM_CUT) field_->Copy();
        if ((style_ & ES_READONLY) == 0) field_->Insert(QString());
        return 0;
    case WM_COPY:
        field_->Copy();
        return 0;
    case WM_PASTE:
        Paste();
        return 0;
    case WM_GETDLGCODE:
        return DialogCode(wparam);
    case WM_SETFOCUS:
        Notify(EN_SETFOCUS);
        return std::nullopt;
    case WM_KILLFOCUS:
        character_.Clear();
        Notify(EN_KILLFOCUS);
        return std::nullopt;
    default:
        return HandleEdit(message, wparam, lparam);
    }
}

} // namespace

std::unique_ptr<Control> MakeEdit(const ControlSetup& setup) {
    return std::make_unique<Edit>(setup);
}

} // namespace kelvo::desktop
