#include "platform/desktop/rich_text/RichEdit.h"

#include "platform/base/resources.h"
#include "platform/desktop/Input.h"
#include "platform/desktop/NextMessage.h"
#include "platform/desktop/drawing.h"
#include "platform/desktop/messages.h"
#include "platform/desktop/rich_text.h"
#include "platform/desktop/rich_text/EditStream.h"
#include "platform/desktop/rich_text/RichTextField.h"
#include "platform/desktop/rich_text/RtfReader.h"
#include "platform/desktop/rich_text/RtfWriter.h"
#include "platform/desktop/rich_text/TextDocument.h"

#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QTextBlock>
#include <QTextDocument>

#include <algorithm>
#include <cstring>
#include <limits>
#include <utility>

namespace kelvo::desktop {
namespace {

constexpr int kNoLimit = std::numeric_limits<int>::max() / 2;

// Characters that Ctrl and a letter give, and their neighbours.
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

QString FromBytes(const char* bytes) {
    QString text = QString::fromUtf8(bytes == nullptr ? "" : bytes);
    text.replace(QLatin1String("\r\n"), QLatin1String("\n"));
    text.replace(QLatin1Char('\r'), QLatin1Char('\n'));
    return text;
}

std::string ToBytes(QString text) {
    text.replace(QLatin1Char('\n'), QLatin1String("\r\n"));
    return text.toStdString();
}

class RichEdit final : public Control {
public:
    explicit RichEdit(const ControlSetup& setup);

    void OnStyleChanged(DWORD before, DWORD now) override {
        if (((before ^ now) & ES_READONLY) != 0) field_->setReadOnly((now & ES_READONLY) != 0);
    }

protected:
    std::optional<LRESULT> Handle(UINT message, WPARAM wparam, LPARAM lparam) override;
    bool WantsKey(const QKeyEvent& event) override;

private:
    std::optional<LRESULT> HandleText(UINT message, WPARAM wparam, LPARAM lparam);
    std::optional<LRESULT> HandleClipboard(UINT message);
    std::optional<LRESULT> HandleEditing(UINT message, WPARAM wparam, LPARAM lparam);
    LRESULT StreamIn(WPARAM format, EDITSTREAM* stream);
    LRESULT StreamOut(WPARAM format, EDITSTREAM* stream);
    LRESULT SetBackground(bool standard, COLORREF colour);
    void SetPlainText(const QString& text);
    LRESULT CopyText(WPARAM capacity, LPARAM buffer) const;
    LRESULT Select(LPARAM start, LPARAM end);
    LRESULT GetSelection(WPARAM start, LPARAM end) const;
    int ByteAt(int position) const;
    int PositionAt(LPARAM byte) const;
    void OnCharacter(unsigned char byte);
    void OnControlCharacter(unsigned char byte);
    void OnComposition();
    void Enter(const QString& text);
    bool IsReadOnly() const { return field_->isReadOnly(); }
    LRESULT DialogCode(WPARAM key) const;

    QPointer<RichTextField> field_;
    const bool is_multi_line_;
    std::string character_; ///< its bytes that have arrived so far
    COLORREF background_ = ::GetSysColor(COLOR_WINDOW);
};

RichEdit::RichEdit(const ControlSetup& setup)
    : Control(setup), is_multi_line_((setup.style & ES_MULTILINE) != 0) {
    field_ = MakeWidget<RichTextField>();
    const bool has_frame =
        (setup.style & WS_BORDER) != 0 || (setup.extended_style & WS_EX_CLIENTEDGE) != 0;
    if (!has_frame) field_->setFrameShape(QFrame::NoFrame);
    const auto bar = [&setup](DWORD wanted) {
        return (setup.style & wanted) != 0 ? Qt::ScrollBarAsNeeded : Qt::ScrollBarAlwaysOff;
    };
    field_->setVerticalScrollBarPolicy(bar(WS_VSCROLL));
    field_->setHorizontalScrollBarPolicy(bar(WS_HSCROLL));
    field_->setReadOnly((setup.style & ES_READONLY) != 0);
    if (setup.title != nullptr && !IS_INTRESOURCE(setup.title)) {
        SetPlainText(FromBytes(setup.title));
    }
    NameAfterLabel();
}

// ---- text and positions: bytes of what WM_GETTEXT gives ----

void RichEdit::SetPlainText(const QString& text) {
    field_->document()->clear();
    field_->setCurrentCharFormat({});
    field_->setPlainText(text);
    field_->document()->setModified(false);
}

LRESULT RichEdit::CopyText(WPARAM capacity, LPARAM buffer) const {
    if (capacity == 0 || buffer == 0) return 0;
    const std::string text = ToBytes(field_->PlainText());
    const std::size_t length = std::min<std::size_t>(text.size(), capacity - 1);
    auto* const target = reinterpret_cast<char*>(buffer);
    std::memcpy(target, text.data(), length);
    target[length] = '\0';
    return static_cast<LRESULT>(length);
}

int RichEdit::ByteAt(int position) const {
    return static_cast<int>(ToBytes(field_->PlainText().left(position)).size());
}

int RichEdit::PositionAt(LPARAM byte) const {
    const QString text = field_->PlainText();
    LPARAM seen = 0;
    int position = 0;
    while (position < text.size() && seen < byte) {
        const int units = text[position].isHighSurrogate() && position + 1 < text.size() ? 2 : 1;
        seen += static_cast<LPARAM>(ToBytes(text.mid(position, units)).size());
        position += units;
    }
    return position;
}

LRESULT RichEdit::Select(LPARAM start, LPARAM end) {
    QTextCursor cursor = field_->textCursor();
    if (start < 0) {
        cursor.clearSelection();
    } else {
        cursor.setPosition(PositionAt(start));
        cursor.setPosition(end < 0 ? field_->document()->characterCount() - 1 : PositionAt(end),
                           QTextCursor::KeepAnchor);
    }
    field_->setTextCursor(cursor);
    return 0;
}

LRESULT RichEdit::GetSelection(WPARAM start, LPARAM end) const {
    const QTextCursor cursor = field_->textCursor();
    const auto first = static_cast<DWORD>(ByteAt(cursor.selectionStart()));
    const auto last = static_cast<DWORD>(ByteAt(cursor.selectionEnd()));
    if (start != 0) *reinterpret_cast<DWORD*>(start) = first;
    if (end != 0) *reinterpret_cast<DWORD*>(end) = last;
    return MAKELONG(first, last);
}

// ---- streams ----

LRESULT RichEdit::StreamIn(WPARAM format, EDITSTREAM* stream) {
    if (stream == nullptr) return 0;
    const std::optional<std::string> bytes = PullStream(*stream);
    if (!bytes || !field_ || ::IsWindow(Window()) == FALSE) return 0; // the callback destroyed it
    if ((format & SF_RTF) == 0) {
        SetPlainText(FromBytes(bytes->c_str()));
    } else {
        const auto text =
            ReadRtf(std::span(reinterpret_cast<const std::uint8_t*>(bytes->data()), bytes->size()));
        if (!text) {
            stream->dwError = kEditStreamBadFormat;
            return 0;
        }
        FillDocument(*field_->document(), *text);
    }
    field_->moveCursor(QTextCursor::Start);
    Repaint();
    return field_->document()->characterCount() - 1;
}

LRESULT RichEdit::StreamOut(WPARAM format, EDITSTREAM* stream) {
    if (stream == nullptr) return 0;
    const int count = field_->document()->characterCount() - 1;
    const std::string bytes = (format & SF_RTF) != 0 ? WriteRtf(ReadDocument(*field_->document()))
                                                     : ToBytes(field_->PlainText());
    return PushStream(*stream, bytes) ? count : 0;
}

LRESULT RichEdit::SetBackground(bool standard, COLORREF colour) {
    const COLORREF before = background_;
    background_ = standard ? ::GetSysColor(COLOR_WINDOW) : colour;
    ControlColours colours;
    if (!standard) {
        colours.background = QColor(GetRValue(colour), GetGValue(colour), GetBValue(colour));
    }
    ShowColours(colours);
    Repaint();
    return static_cast<LRESULT>(before);
}

// ---- typing ----

void RichEdit::Enter(const QString& text) {
    if (!IsReadOnly()) field_->Enter(text);
}

void RichEdit::OnControlCharacter(unsigned char byte) {
    switch (byte) {
    case kSelectAll:
        field_->selectAll();
        break;
    case kCopy:
        ::SendMessageA(Window(), WM_COPY, 0, 0);
        break;
    case kCut:
        ::SendMessageA(Window(), WM_CUT, 0, 0);
        break;
    case kPaste:
        ::SendMessageA(Window(), WM_PASTE, 0, 0);
        break;
    case kUndo:
        ::SendMessageA(Window(), WM_UNDO, 0, 0);
        break;
    case kBackspace: {
        QKeyEvent key(QEvent::KeyPress, Qt::Key_Backspace, Qt::NoModifier);
        Give(key);
        break;
    }
    case kReturn:
    case kLineFeed:
        if (is_multi_line_) Enter(QStringLiteral("\n"));
        break;
    case kTab:
        Enter(QStringLiteral("\t"));
        break;
    default:
        break;
    }
}

void RichEdit::OnCharacter(unsigned char byte) {
    if (byte < kFirstLetter || byte == kDelete) {
        character_.clear();
        return OnControlCharacter(byte);
    }
    const bool continues = (byte & 0xC0U) == 0x80U;
    if (!continues) character_.clear();
    if (continues && character_.empty()) return; // the rest of nothing
    character_ += static_cast<char>(byte);
    const auto first = static_cast<unsigned char>(character_.front());
    const std::size_t bytes = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : first >= 0xC0 ? 2 : 1;
    if (character_.size() >= bytes) Enter(QString::fromStdString(std::exchange(character_, {})));
}

/// What becomes WM_CHAR is typed by that message alone.
bool RichEdit::WantsKey(const QKeyEvent& event) {
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
void RichEdit::OnComposition() {
    const auto input = InputBehindMessage(Window(), WM_IME_COMPOSITION);
    if (!input || input->type() != QEvent::InputMethod) return;
    const auto& composed = static_cast<const QInputMethodEvent&>(*input);
    QInputMethodEvent unfinished(composed.preeditString(), composed.attributes());
    Give(unfinished);
    PostComposedText(Window());
}

LRESULT RichEdit::DialogCode(WPARAM key) const {
    // No DLGC_HASSETSEL: a document that is selected as a whole is gone with the next key.
    LRESULT code = DLGC_WANTCHARS | DLGC_WANTARROWS;
    if (is_multi_line_ && (Style() & ES_WANTRETURN) != 0 && key == VK_RETURN) {
        code |= DLGC_WANTALLKEYS;
    }
    return code;
}

// ---- messages ----

std::optional<LRESULT> RichEdit::HandleText(UINT message, WPARAM wparam, LPARAM lparam) {
    switch (message) {
    case WM_SETTEXT:
        SetPlainText(FromBytes(reinterpret_cast<const char*>(lparam)));
        Repaint();
        return TRUE;
    case WM_GETTEXT:
        return CopyText(wparam, lparam);
    case WM_GETTEXTLENGTH:
        return static_cast<LRESULT>(ToBytes(field_->PlainText()).size());
    case EM_STREAMIN:
        return StreamIn(wparam, reinterpret_cast<EDITSTREAM*>(lparam));
    case EM_STREAMOUT:
        return StreamOut(wparam, reinterpret_cast<EDITSTREAM*>(lparam));
    case EM_SETBKGNDCOLOR:
        return SetBackground(wparam != 0, static_cast<COLORREF>(lparam));
    case EM_GETSEL:
        return GetSelection(wparam, lparam);
    case EM_SETSEL:
        return Select(static_cast<std::int32_t>(wparam), static_cast<std::int32_t>(lparam));
    case EM_REPLACESEL:
        field_->textCursor().insertText(FromBytes(reinterpret_cast<const char*>(lparam)));
        return 0;
    case EM_GETLINECOUNT:
        return field_->PlainText().count(QLatin1Char('\n')) + 1;
    default:
        return std::nullopt;
    }
}

std::optional<LRESULT> RichEdit::HandleClipboard(UINT message) {
    switch (message) {
    case WM_COPY:
        field_->copy();
        return 0;
    case WM_PASTE:
        field_->paste();
        return 0;
    case WM_CUT:
    case WM_CLEAR:
        if (message == WM_CUT) field_->copy();
        if (!IsReadOnly()) field_->textCursor().removeSelectedText();
        return 0;
    case EM_UNDO:
    case WM_UNDO:
        field_->undo();
        return TRUE;
    case EM_CANUNDO:
        return field_->document()->isUndoAvailable() ? TRUE : FALSE;
    case EM_EMPTYUNDOBUFFER:
        field_->document()->clearUndoRedoStacks();
        return 0;
    default:
        return std::nullopt;
    }
}

std::optional<LRESULT> RichEdit::HandleEditing(UINT message, WPARAM wparam, LPARAM /*lparam*/) {
    switch (message) {
    case WM_CHAR:
        OnCharacter(static_cast<unsigned char>(wparam));
        return 0;
    case WM_IME_COMPOSITION:
        OnComposition();
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
    case EM_EXLIMITTEXT:
        field_->SetLimit(wparam == 0 ? kNoLimit
                                     : static_cast<int>(std::min<WPARAM>(wparam, kNoLimit)));
        return 0;
    case EM_GETLIMITTEXT:
        return field_->Limit();
    case EM_SETREADONLY: {
        const DWORD style = wparam != 0 ? Style() | ES_READONLY : Style() & ~ES_READONLY;
        ::SetWindowLongPtrA(Window(), GWL_STYLE, static_cast<LONG_PTR>(style));
        return TRUE;
    }
    case EM_GETMODIFY:
        return field_->document()->isModified() ? TRUE : FALSE;
    case EM_SETMODIFY:
        field_->document()->setModified(wparam != 0);
        return 0;
    case EM_SCROLLCARET:
        field_->ensureCursorVisible();
        return TRUE;
    default:
        return std::nullopt;
    }
}

std::optional<LRESULT> RichEdit::Handle(UINT message, WPARAM wparam, LPARAM lparam) {
    if (!field_) return std::nullopt;
    if (const auto answer = HandleText(message, wparam, lparam)) return answer;
    if (const auto answer = HandleClipboard(message)) return answer;
    return HandleEditing(message, wparam, lparam);
}

} // namespace

std::unique_ptr<Control> MakeRichEdit(const ControlSetup& setup) {
    return std::make_unique<RichEdit>(setup);
}

} // namespace kelvo::desktop
