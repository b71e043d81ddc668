#include "platform/base/message_boxes.h"
#include "platform/base/resources.h"
#include "platform/desktop/Window.h"
#include "platform/desktop/accelerators.h"
#include "platform/desktop/dialog_units.h"
#include "platform/desktop/dialogs.h"
#include "platform/desktop/drawing.h"
#include "tests/platform/desktop/CompiledResources.h"
#include "tests/platform/desktop/RecordingWindow.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QAccessible>
#include <QApplication>
#include <QTest>
#include <QWindow>

#include <algorithm>
#include <functional>
#include <optional>
#include <set>

namespace kelvo::desktop {
namespace {

using testing::ElementsAre;

/// What the dialog procedure got, and what it answers.
struct Asked {
    HWND dialog;
    UINT message;
    WPARAM wparam;
    LPARAM lparam;
};
std::vector<Asked> asked;
std::function<std::optional<INT_PTR>(HWND, UINT, WPARAM, LPARAM)> reply;

INT_PTR Procedure(HWND dialog, UINT message, WPARAM wparam, LPARAM lparam) {
    asked.push_back({dialog, message, wparam, lparam});
    if (reply) {
        if (const auto result = reply(dialog, message, wparam, lparam)) return *result;
    }
    return message == WM_INITDIALOG ? TRUE : FALSE;
}

std::vector<int> Commands() {
    std::vector<int> commands;
    for (const Asked& each : asked) {
        if (each.message == WM_COMMAND && HIWORD(each.wparam) == BN_CLICKED) {
            commands.push_back(LOWORD(each.wparam));
        }
    }
    return commands;
}

const DLGTEMPLATE* TemplateOf(HMODULE module, LPCSTR name) {
    return static_cast<const DLGTEMPLATE*>(
        ::LockResource(::LoadResource(module, ::FindResourceA(module, name, RT_DIALOG))));
}

std::vector<std::uint8_t> BytesOf(LPCSTR name) {
    const auto bytes = platform::ResourceBytesAt(TemplateOf(::GetModuleHandleA(nullptr), name));
    return {bytes.begin(), bytes.end()};
}

HWND Create(LPCSTR name, HWND owner = nullptr, LPARAM parameter = 0) {
    const HMODULE module = ::GetModuleHandleA(nullptr);
    return ::CreateDialogIndirectParamA(module, TemplateOf(module, name), owner, &Procedure,
                                        parameter);
}

class Dialogs : public testing::Test {
protected:
    void SetUp() override {
        RegisterTestClass();
        asked.clear();
        seen.clear();
        reply = nullptr;
        answer = nullptr;
    }
    void TearDown() override {
        if (dialog_ != nullptr) ::DestroyWindow(dialog_);
        reply = nullptr;
        Pump();
    }
    /// The dialog as a person has it before them: the active window, its keyboard in place.
    void Show(LPCSTR name) {
        dialog_ = Create(name);
        ASSERT_NE(dialog_, nullptr);
        ASSERT_TRUE(PumpUntil([&] { return WidgetOf(dialog_)->isActiveWindow(); }));
        PumpDialog();
    }
    void PumpDialog() const {
        MSG message{};
        while (::PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE) != FALSE) {
            if (::IsDialogMessageA(dialog_, &message) != FALSE) continue;
            ::TranslateMessage(&message);
            ::DispatchMessageA(&message);
        }
    }
    /// Presses a key of the keyboard, for whatever has it.
    void Press(Qt::Key key, Qt::KeyboardModifiers held = Qt::NoModifier) const {
        QTest::keyClick(QApplication::focusWidget(), key, held);
        PumpDialog();
    }
    int FocusedId() const { return ::GetDlgCtrlID(::GetFocus()); }
    RECT PlaceOf(int id) const {
        RECT rect{};
        ::GetWindowRect(::GetDlgItem(dialog_, id), &rect);
        POINT corner{rect.left, rect.top};
        ::ScreenToClient(dialog_, &corner);
        return {corner.x, corner.y, rect.right - rect.left, rect.bottom - rect.top};
    }

    HWND dialog_ = nullptr;
};

TEST_F(Dialogs, AreMadeFromTheirTemplateInTheUnitsOfItsFont) {
    dialog_ = Create("PLAIN", nullptr, 4711);
    ASSERT_NE(dialog_, nullptr);
    const platform::DialogUnits units("MS Sans Serif", 8);
    EXPECT_EQ(ClientSizeOf(dialog_).cx, units.Horizontal(200));
    EXPECT_EQ(ClientSizeOf(dialog_).cy, units.Vertical(100));
    const RECT edit = PlaceOf(101);
    EXPECT_EQ(edit.left, units.Horizontal(50));
    EXPECT_EQ(edit.top, units.Vertical(5));
    EXPECT_EQ(edit.right, units.Horizontal(60));
    EXPECT_EQ(edit.bottom, units.Vertical(12));
    RECT mapped{4, 8, 40, 80};
    ASSERT_TRUE(::MapDialogRect(dialog_, &mapped));
    EXPECT_EQ(mapped.left, units.Horizontal(4));
    EXPECT_EQ(mapped.bottom, units.Vertical(80));

    char text[64];
    ::GetWindowTextA(dialog_, text, sizeof text);
    EXPECT_STREQ(text, "Domanda è qui");
    EXPECT_EQ(::GetDlgItemTextA(dialog_, 102, text, sizeof text), 7U);
    EXPECT_STREQ(text, "&Ancora");
    EXPECT_NE(::SendMessageA(dialog_, WM_GETFONT, 0, 0), 0);
    EXPECT_EQ(::SendDlgItemMessageA(dialog_, 101, WM_GETFONT, 0, 0),
              ::SendMessageA(dialog_, WM_GETFONT, 0, 0));
    const auto begun = std::ranges::find(asked, UINT{WM_INITDIALOG}, &Asked::message);
    ASSERT_NE(begun, asked.end());
    EXPECT_EQ(begun->wparam, reinterpret_cast<WPARAM>(::GetDlgItem(dialog_, 101)));
    EXPECT_EQ(begun->lparam, 4711);
    EXPECT_NE(::GetDlgItem(dialog_, -1), nullptr);
    EXPECT_EQ(::GetDlgItem(dialog_, 999), nullptr);
}

TEST_F(Dialogs, OfExtendedTemplatesKeepTheirLongNumbers) {
    const HWND owner = MakeTopLevel();
    ::ShowWindow(owner, SW_SHOW);
    dialog_ = Create("EXTENDED", owner);
    ASSERT_NE(dialog_, nullptr);
    EXPECT_NE(::GetDlgItem(dialog_, 70000), nullptr);
    EXPECT_NE(::GetWindowLongPtrA(dialog_, GWL_EXSTYLE) & LONG_PTR{WS_EX_TOPMOST}, 0);
    LOGFONTA font{};
    ::GetObjectA(reinterpret_cast<HGDIOBJ>(::SendMessageA(dialog_, WM_GETFONT, 0, 0)), sizeof font,
                 &font);
    EXPECT_EQ(font.lfWeight, 700);
    EXPECT_NE(font.lfItalic, 0);
    ::DestroyWindow(owner);
    EXPECT_EQ(::IsWindow(dialog_), FALSE); // goes with its owner
    dialog_ = nullptr;
}

TEST_F(Dialogs, LieOverTheMiddleOfTheirOwnerAndBelongToIt) {
    const HWND owner = MakeTopLevel(WS_OVERLAPPEDWINDOW, 560, 400);
    ::ShowWindow(owner, SW_SHOW);
    ASSERT_TRUE(PumpUntil([&] { return WidgetOf(owner)->isActiveWindow(); })); // and in its place
    dialog_ = Create("EXTENDED", owner);
    ASSERT_NE(dialog_, nullptr);
    RECT outer{};
    RECT inner{};
    ::GetWindowRect(owner, &outer);
    ::GetWindowRect(dialog_, &inner);
    EXPECT_NEAR(inner.left + inner.right, outer.left + outer.right, 2);
    EXPECT_NEAR(inner.top + inner.bottom, outer.top + outer.bottom, 2);
    EXPECT_EQ(::GetParent(dialog_), owner);
    QWindow* const frame = WidgetOf(dialog_)->window()->windowHandle();
    EXPECT_EQ(frame->transientParent(), WidgetOf(owner)->window()->windowHandle());
    EXPECT_EQ(frame->type(), Qt::Dialog);
    EXPECT_EQ(frame->title(), "Estesa");
    QAccessibleInterface* const described =
        QAccessible::queryAccessibleInterface(WidgetOf(dialog_)->window());
    ASSERT_NE(described, nullptr);
    EXPECT_EQ(described->role(), QAccessible::Dialog);
    EXPECT_EQ(described->text(QAccessible::Name), "Estesa");
    ::DestroyWindow(owner);
    dialog_ = nullptr;
}

TEST_F(Dialogs, WithUnknownClassesAreNotMadeAndLeaveNothing) {
    const LiveCounts before = CountLiveObjects();
    EXPECT_EQ(Create("UNKNOWNCONTROL"), nullptr);
    EXPECT_EQ(Create("UNKNOWNCLASS"), nullptr);
    Pump();
    EXPECT_EQ(CountLiveObjects(), before);
    dialog_ = Create("TOLERANT");
    ASSERT_NE(dialog_, nullptr);
    EXPECT_EQ(::GetDlgItem(dialog_, 1), nullptr);
    EXPECT_NE(::GetDlgItem(dialog_, 2), nullptr);
}

TEST_F(Dialogs, DestroyedWhileTheyBeginAreGone) {
    reply = [](HWND dialog, UINT message, WPARAM, LPARAM) -> std::optional<INT_PTR> {
        if (message == WM_INITDIALOG) ::DestroyWindow(dialog);
        return std::nullopt;
    };
    EXPECT_EQ(Create("PLAIN"), nullptr);
}

TEST_F(Dialogs, OfDamagedTemplatesAreNotMade) {
    const LiveCounts before = CountLiveObjects();
    for (const char* const name : {"PLAIN", "EXTENDED"}) {
        const std::vector<std::uint8_t> whole = BytesOf(name);
        std::vector<ResourceForTest> cut;
        for (std::size_t length = 1; length < whole.size() - 2; ++length) {
            const auto end = whole.begin() + static_cast<std::ptrdiff_t>(length);
            cut.push_back({5, "", static_cast<WORD>(length), {whole.begin(), end}});
        }
        const HMODULE module = ModuleWith(cut);
        for (const ResourceForTest& each : cut) {
            const HWND made = ::CreateDialogIndirectParamA(
                nullptr, TemplateOf(module, MAKEINTRESOURCEA(each.number)), nullptr, &Procedure, 0);
            EXPECT_EQ(made, nullptr) << name << " of " << each.number << " bytes";
        }
    }
    EXPECT_EQ(::CreateDialogIndirectParamA(nullptr, nullptr, nullptr, &Procedure, 0), nullptr);
    const DLGTEMPLATE outside_of_resources{};
    EXPECT_EQ(::CreateDialogIndirectParamA(nullptr, &outside_of_resources, nullptr, &Procedure, 0),
              nullptr);
    Pump();
    EXPECT_EQ(CountLiveObjects(), before);
}

TEST_F(Dialogs, OfTemplatesWithOneWrongByteDoNoHarm) {
    const std::vector<std::uint8_t> whole = BytesOf("PLAIN");
    std::vector<ResourceForTest> damaged;
    for (std::size_t at = 8; at < whole.size(); ++at) { // behind the styles
        ResourceForTest one{5, "", static_cast<WORD>(at), whole};
        one.data[at] ^= 0xFFU;
        // None of them need come on the screen.
        one.data[3] &= 0xEFU;
        damaged.push_back(std::move(one));
    }
    const HMODULE module = ModuleWith(damaged);
    for (const ResourceForTest& each : damaged) {
        const HWND made = ::CreateDialogIndirectParamA(
            nullptr, TemplateOf(module, MAKEINTRESOURCEA(each.number)), nullptr, &Procedure, 0);
        if (made == nullptr) continue;
        EXPECT_LE(ClientSizeOf(made).cx, 8192);
        ::DestroyWindow(made);
        Pump();
    }
}

TEST_F(Dialogs, TabGoesRoundTheControlsThatStopIt) {
    Show("PLAIN");
    std::vector<int> visited{FocusedId()};
    for (int i = 0; i < 5; ++i) {
        Press(Qt::Key_Tab);
        visited.push_back(FocusedId());
    }
    EXPECT_THAT(visited, ElementsAre(101, 102, 110, 1, 2, 101)); // 3 is disabled
    Press(Qt::Key_Backtab, Qt::ShiftModifier);
    EXPECT_EQ(FocusedId(), 2);
}

TEST_F(Dialogs, ArrowsStayInTheGroupAndChoose) {
    Show("PLAIN");
    ::SetFocus(::GetDlgItem(dialog_, 110));
    Press(Qt::Key_Down);
    EXPECT_EQ(FocusedId(), 111);
    EXPECT_EQ(::IsDlgButtonChecked(dialog_, 111), BST_CHECKED);
    Press(Qt::Key_Up);
    Press(Qt::Key_Up);
    EXPECT_EQ(FocusedId(), 112);
    EXPECT_EQ(::IsDlgButtonChecked(dialog_, 112), BST_CHECKED);
    EXPECT_EQ(::IsDlgButtonChecked(dialog_, 111), BST_UNCHECKED);
}

TEST_F(Dialogs, EnterPressesTheDefaultButtonOrTheOneWithTheKeyboard) {
    Show("PLAIN");
    asked.clear();
    Press(Qt::Key_Return);
    EXPECT_THAT(Commands(), ElementsAre(1));
    ::SetFocus(::GetDlgItem(dialog_, 2));
    Press(Qt::Key_Return);
    EXPECT_THAT(Commands(), ElementsAre(1, 2));
    ::SetFocus(::GetDlgItem(dialog_, 101));
    ::SendMessageA(dialog_, DM_SETDEFID, 3, 0);
    Press(Qt::Key_Return); // disabled
    EXPECT_THAT(Commands(), ElementsAre(1, 2));
}

TEST_F(Dialogs, EscapeAndTheCloseButtonMeanCancel) {
    Show("PLAIN");
    asked.clear();
    Press(Qt::Key_Escape);
    EXPECT_THAT(Commands(), ElementsAre(2));
    WidgetOf(dialog_)->window()->close();
    PumpDialog();
    EXPECT_THAT(Commands(), ElementsAre(2, 2));
    EXPECT_NE(::IsWindow(dialog_), FALSE); // who runs the dialog decides
}

TEST_F(Dialogs, AnUnderlinedLetterReachesItsControl) {
    Show("PLAIN");
    ::SetDlgItemTextA(dialog_, 112, "Tutto &u");
    ::SetFocus(::GetDlgItem(dialog_, 2));
    Press(Qt::Key_N, Qt::AltModifier); // of the label before the field
    EXPECT_EQ(FocusedId(), 101);
    Press(Qt::Key_A, Qt::AltModifier);
    EXPECT_EQ(FocusedId(), 102);
    EXPECT_EQ(::IsDlgButtonChecked(dialog_, 102), BST_CHECKED);
    Press(Qt::Key_F6, Qt::AltModifier); // a key of no letter: its number is that of a small u
    EXPECT_EQ(FocusedId(), 102);
    Press(Qt::Key_A); // without Alt where no text is typed
    EXPECT_EQ(::IsDlgButtonChecked(dialog_, 102), BST_UNCHECKED);
    asked.clear();
    Press(Qt::Key_C, Qt::AltModifier); // disabled
    EXPECT_TRUE(Commands().empty());
    ::SetFocus(::GetDlgItem(dialog_, 101));
    ::SetDlgItemTextA(dialog_, 101, "");
    Press(Qt::Key_A); // is typed
    char text[8];
    ::GetDlgItemTextA(dialog_, 101, text, sizeof text);
    EXPECT_STREQ(text, "a");
}

TEST_F(Dialogs, AreErasedInTheColourThatTheirProcedureNames) {
    static const HBRUSH brush = ::CreateSolidBrush(RGB(10, 200, 30));
    reply = [](HWND, UINT message, WPARAM, LPARAM) -> std::optional<INT_PTR> {
        if (message == WM_CTLCOLORDLG) return reinterpret_cast<INT_PTR>(brush);
        return std::nullopt;
    };
    Show("PLAIN");
    const HDC context = ::GetDC(dialog_);
    EXPECT_EQ(::GetPixel(context, 1, 1), RGB(10, 200, 30));
    reply = nullptr;
    ::InvalidateRect(dialog_, nullptr, TRUE);
    ::UpdateWindow(dialog_);
    EXPECT_EQ(::GetPixel(context, 1, 1), ::GetSysColor(COLOR_BTNFACE));
    ::ReleaseDC(dialog_, context);
}

TEST_F(Dialogs, AnswerWithWhatTheirProcedureLeftInTheWindow) {
    reply = [](HWND dialog, UINT message, WPARAM, LPARAM) -> std::optional<INT_PTR> {
        if (message != WM_USER + 50) return std::nullopt;
        ::SetWindowLongPtrA(dialog, DWLP_MSGRESULT, 99);
        return TRUE;
    };
    dialog_ = Create("PLAIN");
    EXPECT_EQ(::SendMessageA(dialog_, WM_USER + 50, 0, 0), 99);
    EXPECT_EQ(::SendMessageA(dialog_, WM_USER + 51, 0, 0), 0);
    ::SetWindowLongPtrA(dialog_, DWLP_USER, 0x123456789ABCLL);
    EXPECT_EQ(::GetWindowLongPtrA(dialog_, DWLP_USER), 0x123456789ABCLL);
}

TEST_F(Dialogs, PagesLieInTheirDialogAndTabGoesThroughThem) {
    Show("PLAIN");
    const HWND page = Create("PAGE", dialog_);
    ASSERT_NE(page, nullptr);
    EXPECT_NE(::IsChild(dialog_, page), FALSE);
    EXPECT_EQ(FocusedId(), 101); // a page does not take the keyboard
    ::SetFocus(::GetDlgItem(dialog_, 2));
    Press(Qt::Key_Tab);
    EXPECT_EQ(FocusedId(), 201);
    asked.clear();
    Press(Qt::Key_Return);
    ASSERT_THAT(Commands(), ElementsAre(201));
    const auto command = std::ranges::find(asked, UINT{WM_COMMAND}, &Asked::message);
    EXPECT_EQ(command->dialog, page);
    Press(Qt::Key_Tab);
    EXPECT_EQ(FocusedId(), 202);
    Press(Qt::Key_Tab);
    EXPECT_EQ(FocusedId(), 101);
}

TEST_F(Dialogs, LeaveMessagesOfOtherWindowsAlone) {
    Show("PLAIN");
    const HWND other = MakeTopLevel();
    MSG message{};
    message.hwnd = other;
    message.message = WM_USER + 1;
    EXPECT_EQ(::IsDialogMessageA(dialog_, &message), FALSE);
    EXPECT_TRUE(SeenOf(other, WM_USER + 1).empty());
    message.hwnd = dialog_;
    EXPECT_NE(::IsDialogMessageA(dialog_, &message), FALSE);
    EXPECT_NE(std::ranges::find(asked, UINT{WM_USER + 1}, &Asked::message), asked.end());
    ::DestroyWindow(other);
}

TEST_F(Dialogs, F1AsksForHelpWithTheControl) {
    static HELPINFO help;
    reply = [](HWND, UINT message, WPARAM, LPARAM lparam) -> std::optional<INT_PTR> {
        if (message == WM_HELP) help = *reinterpret_cast<const HELPINFO*>(lparam);
        return std::nullopt;
    };
    Show("PLAIN");
    Press(Qt::Key_F1);
    EXPECT_EQ(help.iCtrlId, 101);
    EXPECT_EQ(help.hItemHandle, ::GetDlgItem(dialog_, 101));
}

TEST_F(Dialogs, AcceleratorsBecomeCommands) {
    const HACCEL table = ::LoadAcceleratorsA(nullptr, "KEYS");
    ASSERT_NE(table, nullptr);
    EXPECT_EQ(::LoadAcceleratorsA(nullptr, "KEYS"), table);
    EXPECT_EQ(::LoadAcceleratorsA(nullptr, "NOKEYS"), nullptr);
    const HWND window = MakeTopLevel(WS_OVERLAPPEDWINDOW | WS_VISIBLE);
    ASSERT_TRUE(PumpUntil([&] { return WidgetOf(window)->isActiveWindow(); }));
    seen.clear();
    const auto press = [&](Qt::Key key, Qt::KeyboardModifiers held) {
        QTest::keyClick(WidgetOf(window)->window(), key, held);
        MSG message{};
        while (::PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE) != FALSE) {
            if (::TranslateAcceleratorA(window, table, &message) != 0) continue;
            ::TranslateMessage(&message);
            ::DispatchMessageA(&message);
        }
    };
    press(Qt::Key_S, Qt::ControlModifier);
    press(Qt::Key_S, Qt::NoModifier); // not without Control
    press(Qt::Key_F5, Qt::NoModifier);
    press(Qt::Key_F5, Qt::ShiftModifier);
    press(Qt::Key_X, Qt::NoModifier);
    press(Qt::Key_Left, Qt::AltModifier);
    std::vector<WPARAM> commands;
    for (const Seen& each : SeenOf(window, WM_COMMAND))
        commands.push_back(each.wparam);
    EXPECT_THAT(commands, ElementsAre(MAKEWPARAM(501, 1), MAKEWPARAM(502, 1), MAKEWPARAM(503, 1),
                                      MAKEWPARAM(504, 1), MAKEWPARAM(505, 1)));
    EXPECT_EQ(SeenOf(window, WM_CHAR).size(), 1U); // the s
    MSG message{};
    EXPECT_EQ(::TranslateAcceleratorA(window, nullptr, &message), 0);
    ::DestroyWindow(window);
}

} // namespace
} // namespace kelvo::desktop
