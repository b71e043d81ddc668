// EDIT: what the messages mean for the text in the field. What is typed arrives as WM_CHAR, byte by
// byte, so that who filters that message filters the typing; all other keys go to the field.

#include "platform/base/resources.h"
#include "platform/desktop/Input.h"
#include "platform/desktop/NextMessage.h"
#include "platform/desktop/controls/EditField.h"
#include "platform/desktop/controls/StandardControls.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QPointer>

#include <algorithm>
#include <cstring>

namespace kelvo::desktop {

namespace {

constexpr DWORD kAlignmentMask = ES_CENTER | ES_RIGHT;
constexpr DWORD kFieldStyles = ES_UPPERCASE | ES_LOWERCASE | ES_PASSWORD | ES_READONLY;
constexpr int kNoLimit = 0x7FFFFFFE;
constexpr int kFirstLimit = 30000;

// Characters that Ctrl and a letter give.
constexpr unsigned char kSelectAll = 1;
constexpr unsigned char kCopy = 3;
constexpr unsigned char kBackspace = 8;
constexpr unsigned char kTab = 9;
constexpr unsigned char kLineFeed = 10;
constexpr unsigned char kReturn = 13;
constexpr unsigned char kPaste = 22;
constexpr unsigned char kCut = 24;
constexpr unsigned char kUndo = 26;
constexpr unsigned char kFirstLetter = 32;
constexpr unsigned char kDelete = 127;

/// How many bytes the character takes that begins with this one.
std::size_t BytesOfCharacter(unsigned char first) {
    if (first >= 0xF0) return 4;
    if (first >= 0xE0) return 3;
    return first >= 0xC0 ? 2 : 1;
}

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
    bool WantsKey(const QKeyEvent& event) override;
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

    QString FromBytes(const std::string& bytes) const;
    std::string ToBytes(const QString& text) const;
    int ByteAt(int position) const;
    int PositionAt(LPARAM byte) const;

    void OnChanged();
    QString Wanted(const QString& inserted);
    bool MayBecome(QString& whole);
    void InCase(QString& text) const;
    void Type(const QString& text);
    void OnCharacter(unsigned char byte);
    void OnControlCharacter(unsigned char byte);
    void OnComposition();
    void Paste();
    LRESULT SetSelection(LPARAM start, LPARAM end);
    LRESULT GetSelection(WPARAM start, LPARAM end) const;
    LRESULT LineIndex(LPARAM line) const;
    LRESULT LineLength(LPARAM byte) const;
    LRESULT CopyLine(WPARAM line, LPARAM buffer) const;
    LRESULT CopyText(WPARAM capacity, LPARAM buffer) const;
    LRESULT DialogCode(WPARAM key) const;

    const bool is_multi_line_;
    DWORD style_;
    std::unique_ptr<EditField> field_;
    int limit_ = kFirstLimit;
    char password_letter_ = '*';
    std::string character_; ///< its bytes that have arrived so far
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

QString Edit::FromBytes(const std::string& bytes) const {
    QString text = QString::fromStdString(bytes);
    if (is_multi_line_) {
        text.replace(QLatin1String("\r\n"), QLatin1String("\n"));
        text.replace(QLatin1Char('\r'), QLatin1Char('\n'));
    }
    return text;
}

std::string Edit::ToBytes(const QString& text) const {
    QString lines = text;
    if (is_multi_line_) lines.replace(QLatin1Char('\n'), QLatin1String("\r\n"));
    return lines.toStdString();
}

int Edit::ByteAt(int position) const {
    return static_cast<int>(ToBytes(field_->Text().left(position)).size());
}

int Edit::PositionAt(LPARAM byte) const {
    const QString text = field_->Text();
    LPARAM seen = 0;
    int position = 0;
    while (position < text.size() && seen < byte) {
        const int units = text[position].isHighSurrogate() && position + 1 < text.size() ? 2 : 1;
        seen += static_cast<LPARAM>(ToBytes(text.mid(position, units)).size());
        position += units;
    }
    return position;
}

LRESULT Edit::CopyText(WPARAM capacity, LPARAM buffer) const {
    if (capacity == 0 || buffer == 0) return 0;
    const std::string text = ToBytes(field_->Text());
    const std::size_t length = std::min<std::size_t>(text.size(), capacity - 1);
    auto* const target = reinterpret_cast<char*>(buffer);
    std::memcpy(target, text.data(), length);
    target[length] = '\0';
    return static_cast<LRESULT>(length);
}

LRESULT Edit::SetSelection(LPARAM start, LPARAM end) {
    if (start < 0) { // nothing is selected
        const int caret = field_->Selection().second;
        field_->Select(caret, caret);
        return 0;
    }
    const auto all = static_cast<int>(field_->Text().size());
    field_->Select(PositionAt(start), end < 0 ? all : PositionAt(end));
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
    const QString text = field_->Text();
    if (line < 0) line = text.left(field_->Selection().second).count(QLatin1Char('\n'));
    qsizetype begin = 0;
    for (; line > 0; --line) {
        begin = text.indexOf(QLatin1Char('\n'), begin) + 1;
        if (begin == 0) return -1;
    }
    return ByteAt(static_cast<int>(begin));
}

LRESULT Edit::LineLength(LPARAM byte) const {
    const QString text = field_->Text();
    const int position = byte < 0 ? field_->Selection().second : PositionAt(byte);
    const int line = static_cast<int>(text.left(position).count(QLatin1Char('\n')));
    return text.section(QLatin1Char('\n'), line, line).toUtf8().size();
}

LRESULT Edit::CopyLine(WPARAM line, LPARAM buffer) const {
    const QString text = field_->Text();
    if (buffer == 0 || static_cast<qsizetype>(line) > text.count(QLatin1Char('\n'))) return 0;
    const auto number = static_cast<int>(line);
    const QByteArray bytes = text.section(QLatin1Char('\n'), number, number).toUtf8();
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
    const int rest =
        static_cast<int>(ToBytes(field_->Text()).size()) - (ByteAt(end) - ByteAt(start));
    bool is_cut = false;
    while (!text.isEmpty() &&
           rest + static_cast<std::int64_t>(ToBytes(text).size()) > std::int64_t{limit_}) {
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
    if (byte < kFirstLetter || byte == kDelete) {
        character_.clear();
        OnControlCharacter(byte);
        return;
    }
    const bool continues = (byte & 0xC0U) == 0x80U;
    if (!continues) character_.clear();
    if (continues && character_.empty()) return; // the rest of nothing
    character_ += static_cast<char>(byte);
    if (character_.size() < BytesOfCharacter(static_cast<unsigned char>(character_[0]))) return;
    const QString letter = QString::fromStdString(std::exchange(character_, {}));
    Type(letter);
}

bool Edit::WantsKey(const QKeyEvent& event) {
    switch (event.key()) {
    case Qt::Key_Backspace:
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Tab:
    case Qt::Key_Backtab:
    case Qt::Key_Escape:
        return false;
    default:
        break;
    }
    const QString text = event.text();
    if (text.isEmpty()) return true;
    const ushort letter = text[0].unicode();
    if (letter >= kFirstLetter) return letter == kDelete;
    return letter != kSelectAll && letter != kCopy && letter != kPaste && letter != kCut &&
           letter != kUndo;
}

/// The unfinished text is shown in the field, the finished one comes as WM_CHAR.
void Edit::OnComposition() {
    const auto input = InputBehindMessage(Window(), WM_IME_COMPOSITION);
    if (!input || input->type() != QEvent::InputMethod) return;
    const auto& composed = static_cast<const QInputMethodEvent&>(*input);
    QInputMethodEvent unfinished(composed.preeditString(), composed.attributes());
    Give(unfinished);
    PostComposedText(Window());
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
        const int position = byte < 0 ? field_->Selection().first : PositionAt(byte);
        return field_->Text().left(position).count(QLatin1Char('\n'));
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
        const auto* text = reinterpret_cast<const char*>(lparam);
        QString inserted = FromBytes(text == nullptr ? "" : text);
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
        return CopyText(wparam, lparam);
    case WM_GETTEXTLENGTH:
        return static_cast<LRESULT>(ToBytes(field_->Text()).size());
    case WM_SETTEXT: {
        const auto* text = reinterpret_cast<const char*>(lparam);
        // Fields of several lines have always been silent about a text that the program sets.
        const bool before = std::exchange(quiet_, quiet_ || is_multi_line_);
        field_->SetText(FromBytes(text == nullptr ? "" : text));
        quiet_ = before;
        field_->SetModified(false);
        return TRUE;
    }
    case WM_CHAR:
        OnCharacter(static_cast<unsigned char>(wparam));
        return 0;
    case WM_IME_COMPOSITION:
        OnComposition();
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
        character_.clear();
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
