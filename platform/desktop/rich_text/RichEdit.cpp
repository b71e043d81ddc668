#include "platform/desktop/rich_text/RichEdit.h"

#include "platform/base/resources.h"
#include "platform/desktop/controls/TextPositions.h"
#include "platform/desktop/controls/Typing.h"
#include "platform/desktop/drawing.h"
#include "platform/desktop/messages.h"
#include "platform/desktop/rich_text.h"
#include "platform/desktop/rich_text/EditStream.h"
#include "platform/desktop/rich_text/RichTextField.h"
#include "platform/desktop/rich_text/RtfReader.h"
#include "platform/desktop/rich_text/RtfWriter.h"
#include "platform/desktop/rich_text/TextDocument.h"

#include <QKeyEvent>
#include <QTextBlock>
#include <QTextDocument>

#include <algorithm>
#include <limits>

namespace kelvo::desktop {
namespace {

constexpr int kNoLimit = std::numeric_limits<int>::max() / 2;

QString FromBytes(const char* bytes) {
    return TextFromBytes(bytes == nullptr ? "" : bytes, TextLines::Several);
}

class RichEdit final : public Control {
public:
    explicit RichEdit(const ControlSetup& setup);

    void OnStyleChanged(DWORD before, DWORD now) override {
        if (((before ^ now) & ES_READONLY) != 0) field_->setReadOnly((now & ES_READONLY) != 0);
    }

protected:
    std::optional<LRESULT> Handle(UINT message, WPARAM wparam, LPARAM lparam) override;
    bool WantsKey(const QKeyEvent& event) override { return !ComesAsCharacter(event); }

private:
    std::optional<LRESULT> HandleText(UINT message, WPARAM wparam, LPARAM lparam);
    std::optional<LRESULT> HandleClipboard(UINT message);
    std::optional<LRESULT> HandleEditing(UINT message, WPARAM wparam, LPARAM lparam);
    LRESULT StreamIn(WPARAM format, EDITSTREAM* stream);
    LRESULT StreamOut(WPARAM format, EDITSTREAM* stream);
    LRESULT SetBackground(bool standard, COLORREF colour);
    void SetPlainText(const QString& text);
    std::string Bytes() const { return BytesOf(field_->PlainText(), TextLines::Several); }
    LRESULT Select(LPARAM start, LPARAM end);
    LRESULT GetSelection(WPARAM start, LPARAM end) const;
    int ByteAt(int position) const;
    int PositionOf(LPARAM byte) const;
    void OnCharacter(unsigned char byte);
    void OnControlCharacter(unsigned char byte);
    void Enter(const QString& text);
    bool IsReadOnly() const { return field_->isReadOnly(); }
    LRESULT DialogCode(WPARAM key) const;

    QPointer<RichTextField> field_;
    const bool is_multi_line_;
    CharacterBytes character_;
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

int RichEdit::ByteAt(int position) const {
    return CountBytes(QStringView(field_->PlainText()).first(position), TextLines::Several);
}

int RichEdit::PositionOf(LPARAM byte) const {
    return PositionAt(field_->PlainText(), byte, TextLines::Several);
}

LRESULT RichEdit::Select(LPARAM start, LPARAM end) {
    QTextCursor cursor = field_->textCursor();
    if (start < 0) {
        cursor.clearSelection();
    } else {
        cursor.setPosition(PositionOf(start));
        cursor.setPosition(end < 0 ? field_->document()->characterCount() - 1 : PositionOf(end),
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
    const std::string bytes =
        (format & SF_RTF) != 0 ? WriteRtf(ReadDocument(*field_->document())) : Bytes();
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
    if (IsControlCharacter(byte)) {
        character_.Clear();
        OnControlCharacter(byte);
    } else if (const QString letter = character_.Add(byte); !letter.isEmpty()) {
        Enter(letter);
    }
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
        return CopyBytes(Bytes(), wparam, lparam);
    case WM_GETTEXTLENGTH:
        return CountBytes(field_->PlainText(), TextLines::Several);
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
        ShowComposition();
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
