// Edit controls: typing, styles, limits, positions in bytes.

#include "tests/platform/desktop/ControlWindow.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QInputMethodEvent>
#include <QLineEdit>

using namespace kelvo::desktop;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

namespace {

using EditControls = ControlWindow;

void SendCharacters(HWND edit, const std::string& text) {
    for (const char letter : text)
        ::SendMessageA(edit, WM_CHAR, static_cast<unsigned char>(letter), 1);
}

std::pair<DWORD, DWORD> SelectionOf(HWND edit) {
    DWORD start = 0;
    DWORD end = 0;
    ::SendMessageA(edit, EM_GETSEL, reinterpret_cast<WPARAM>(&start),
                   reinterpret_cast<LPARAM>(&end));
    return {start, end};
}

WNDPROC digits_before = nullptr;
/// Lets digits pass and nothing else.
LRESULT DigitsOnly(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    if (message == WM_CHAR && (wparam < '0' || wparam > '9')) return 0;
    return ::CallWindowProcA(digits_before, window, message, wparam, lparam);
}

} // namespace

TEST_F(EditControls, TakeWhatIsTypedAsCharactersAndReportIt) {
    const HWND edit = Make("EDIT", WS_BORDER, 3);
    Type(edit, "perché");
    EXPECT_EQ(TextOf(edit), "perché");
    EXPECT_THAT(Commands(), Contains(Pair(3, EN_CHANGE)).Times(6));
    SendCharacters(edit, " sì");
    EXPECT_EQ(TextOf(edit), "perché sì");
    Press(edit, Qt::Key_Backspace);
    Press(edit, Qt::Key_Home);
    Press(edit, Qt::Key_Delete);
    EXPECT_EQ(TextOf(edit), "erché s");
    Press(edit, Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(SelectionOf(edit), std::pair(DWORD{0}, DWORD{8})); // é is two bytes
    Type(edit, "x");
    EXPECT_EQ(TextOf(edit), "x");
}

TEST_F(EditControls, LetAProcedureBeforeTheirOwnFilterTheTyping) {
    const HWND edit = Make("EDIT", 0, 3);
    digits_before = reinterpret_cast<WNDPROC>(
        ::SetWindowLongPtrA(edit, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&DigitsOnly)));
    Type(edit, "1a2è3");
    EXPECT_EQ(TextOf(edit), "123");
}

TEST_F(EditControls, KeepTheirStylesAlsoWhenTheseComeLater) {
    struct Row {
        DWORD style;
        const char* typed;
        const char* text;
    };
    const HWND edit = Make("EDIT", 0, 3);
    for (const Row& row : {Row{ES_UPPERCASE, "aBè1", "ABÈ1"}, Row{ES_LOWERCASE, "aBÈ1", "abè1"},
                           Row{ES_NUMBER, "a1-2", "12"}, Row{ES_READONLY, "abc", ""},
                           Row{ES_PASSWORD, "abc", "abc"}}) {
        ::SetWindowTextA(edit, "");
        ::SetWindowLongPtrA(edit, GWL_STYLE,
                            static_cast<LONG_PTR>(WS_CHILD | WS_VISIBLE | row.style));
        Type(edit, row.typed);
        EXPECT_EQ(TextOf(edit), row.text);
        EXPECT_EQ(Inner<QLineEdit>(edit)->echoMode() == QLineEdit::Password,
                  row.style == ES_PASSWORD);
    }
    ::SendMessageA(edit, EM_SETREADONLY, TRUE, 0);
    EXPECT_TRUE(::GetWindowLongPtrA(edit, GWL_STYLE) & LONG_PTR{ES_READONLY});
}

TEST_F(EditControls, LimitWhatIsTypedAndPastedButNotWhatTheProgramSets) {
    const HWND edit = Make("EDIT", 0, 3);
    ::SendMessageA(edit, EM_LIMITTEXT, 4, 0);
    Type(edit, "abcèe"); // è does not fit any more, e does
    EXPECT_EQ(TextOf(edit), "abce");
    EXPECT_THAT(Commands(), Contains(Pair(3, EN_MAXTEXT)));
    ::SetWindowTextA(edit, "longer text");
    EXPECT_EQ(TextOf(edit), "longer text");
    ::SetWindowTextA(edit, "");
    QGuiApplication::clipboard()->setText("123456");
    ::SendMessageA(edit, WM_PASTE, 0, 0);
    EXPECT_EQ(TextOf(edit), "1234");
}

TEST_F(EditControls, ReportATextThatIsSetAndKnowWhetherItWasChanged) {
    const HWND edit = Make("EDIT", 0, 3, "at first");
    EXPECT_EQ(TextOf(edit), "at first");
    EXPECT_THAT(Commands(), IsEmpty());
    ::SetWindowTextA(edit, "then");
    EXPECT_THAT(Commands(), ElementsAre(Pair(3, EN_UPDATE), Pair(3, EN_CHANGE)));
    EXPECT_EQ(::SendMessageA(edit, EM_GETMODIFY, 0, 0), FALSE);
    ::SendMessageA(edit, EM_SETSEL, 0, -1);
    ::SendMessageA(edit, EM_REPLACESEL, TRUE, reinterpret_cast<LPARAM>("now"));
    EXPECT_EQ(TextOf(edit), "now");
    EXPECT_EQ(::SendMessageA(edit, EM_GETMODIFY, 0, 0), TRUE);
    ::SendMessageA(edit, EM_UNDO, 0, 0);
    EXPECT_EQ(TextOf(edit), "then");
}

TEST_F(EditControls, OfSeveralLinesCountBytesWithTheirLineEnds) {
    const HWND edit = Make("EDIT", ES_MULTILINE | ES_WANTRETURN, 3, "più\r\ndue");
    EXPECT_EQ(TextOf(edit), "più\r\ndue");
    EXPECT_EQ(::SendMessageA(edit, WM_GETTEXTLENGTH, 0, 0), 9);
    EXPECT_EQ(::SendMessageA(edit, EM_GETLINECOUNT, 0, 0), 2);
    EXPECT_EQ(::SendMessageA(edit, EM_LINEINDEX, 1, 0), 6);
    EXPECT_EQ(::SendMessageA(edit, EM_LINEINDEX, 2, 0), -1);
    EXPECT_EQ(::SendMessageA(edit, EM_LINELENGTH, 0, 0), 4);
    EXPECT_EQ(::SendMessageA(edit, EM_LINEFROMCHAR, 7, 0), 1);
    ::SendMessageA(edit, EM_SETSEL, 6, 9);
    EXPECT_EQ(SelectionOf(edit), std::pair(DWORD{6}, DWORD{9}));
    Press(edit, Qt::Key_Return);
    EXPECT_EQ(TextOf(edit), "più\r\n\r\n");
    EXPECT_TRUE(::SendMessageA(edit, WM_GETDLGCODE, VK_RETURN, 0) & DLGC_WANTALLKEYS);
    char line[8] = {6, 0};
    EXPECT_EQ(::SendMessageA(edit, EM_GETLINE, 0, reinterpret_cast<LPARAM>(line)), 4);
    EXPECT_EQ(std::string(line, 4), "più");
}

TEST_F(EditControls, MayBeWindowsOfTheirOwn) {
    const HWND edit = ::CreateWindowExA(WS_EX_TOPMOST, "EDIT", "una riga", WS_VISIBLE | WS_DLGFRAME,
                                        50, 50, 300, 100, nullptr, nullptr, nullptr, nullptr);
    ASSERT_NE(edit, nullptr);
    EXPECT_EQ(TextOf(edit), "una riga");
    EXPECT_EQ(Inner(edit)->size(), WidgetOf(edit)->size());
    ::SetWindowTextA(edit, "");
    Type(edit, "altra");
    EXPECT_EQ(TextOf(edit), "altra");
    ::DestroyWindow(edit);
}

TEST_F(EditControls, TakeWhatAnInputMethodComposes) {
    const HWND edit = Make("EDIT", 0, 3);
    ::SetFocus(edit);
    QInputMethodEvent unfinished("`e", {});
    QCoreApplication::sendEvent(Inner(edit), &unfinished);
    Pump();
    EXPECT_EQ(TextOf(edit), "");
    QInputMethodEvent finished;
    finished.setCommitString("è");
    QCoreApplication::sendEvent(Inner(edit), &finished);
    Pump();
    EXPECT_EQ(TextOf(edit), "è");
}

TEST_F(EditControls, SayNothingMoreOnceTheirParentHasDestroyedThem) {
    const HWND edit = Make("EDIT", 0, 3);
    answer = [](HWND, UINT message, WPARAM wparam, LPARAM lparam) -> std::optional<LRESULT> {
        if (message == WM_COMMAND && HIWORD(wparam) == EN_UPDATE) {
            ::DestroyWindow(reinterpret_cast<HWND>(lparam));
        }
        return std::nullopt;
    };
    ::SendMessageA(edit, WM_SETTEXT, 0, reinterpret_cast<LPARAM>("a"));
    EXPECT_EQ(::IsWindow(edit), FALSE);
    EXPECT_THAT(Commands(), ElementsAre(Pair(3, EN_UPDATE)));
}

TEST_F(EditControls, CountTheBytesOfEveryKindOfCharacter) {
    const HWND edit = Make("EDIT", ES_MULTILINE, 3, "aé€\xF0\x9F\x8E\xAC\r\nz"); // 1, 2, 3, 4, 2, 1
    for (const DWORD place : {0U, 1U, 3U, 6U, 10U, 12U, 13U}) {
        ::SendMessageA(edit, EM_SETSEL, place, static_cast<LPARAM>(place));
        EXPECT_EQ(SelectionOf(edit), std::pair(place, place));
    }
    ::SendMessageA(edit, EM_SETSEL, 2, 7); // inside of characters: behind them
    EXPECT_EQ(SelectionOf(edit), std::pair(DWORD{3}, DWORD{10}));
}
