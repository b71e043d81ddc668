// Buttons and statics: what clicks and keys do to them, and what the owner draws.

#include "tests/platform/desktop/ControlWindow.h"

#include <QAbstractButton>
#include <QAccessible>

using namespace kelvo::desktop;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::Pair;

namespace {

using Buttons = ControlWindow;
using OwnerDrawnControls = ControlWindow;
using Statics = ControlWindow;

/// Swallows the message on its way to the control.
UINT swallowed = WM_NULL;
WNDPROC procedure_before = nullptr;
std::vector<UINT> passed;
LRESULT Swallowing(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    passed.push_back(message);
    if (message == swallowed) return 0;
    return ::CallWindowProcA(procedure_before, window, message, wparam, lparam);
}

void Subclass(HWND control, UINT message) {
    swallowed = message;
    passed.clear();
    procedure_before = reinterpret_cast<WNDPROC>(
        ::SetWindowLongPtrA(control, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&Swallowing)));
}

std::vector<LRESULT> Marks(const std::vector<HWND>& buttons) {
    std::vector<LRESULT> marks;
    for (const HWND button : buttons)
        marks.push_back(::SendMessageA(button, BM_GETCHECK, 0, 0));
    return marks;
}

} // namespace

TEST_F(Buttons, ReportClicksOfTheMouseTheKeysAndTheProgram) {
    const HWND button = Make("button", BS_PUSHBUTTON, 7, "&Apri");
    Click(button);
    EXPECT_THAT(Commands(), ElementsAre(Pair(7, BN_CLICKED)));
    EXPECT_EQ(::GetFocus(), button);
    Press(button, Qt::Key_Space);
    EXPECT_THAT(Commands(), ElementsAre(Pair(7, BN_CLICKED)));
    Press(button, Qt::Key_Return);
    EXPECT_THAT(Commands(), ElementsAre(Pair(7, BN_CLICKED)));
    Press(button, Qt::Key_Right);
    EXPECT_THAT(Commands(), IsEmpty());
    ::SendMessageA(button, BM_CLICK, 0, 0);
    EXPECT_THAT(Commands(), ElementsAre(Pair(7, BN_CLICKED))); // without a turn of the loop
    char name[32] = {};
    EXPECT_EQ(::GetClassNameA(button, name, sizeof name), 6);
    EXPECT_STREQ(name, "BUTTON");
    EXPECT_EQ(TextOf(button), "&Apri");
    EXPECT_EQ(QAccessible::queryAccessibleInterface(Inner(button))->text(QAccessible::Name),
              "Apri");
}

TEST_F(Buttons, AreNotClickedWhenThePressEndsElsewhere) {
    const HWND button = Make("BUTTON", BS_PUSHBUTTON, 7);
    QWidget* const widget = Inner(button);
    QTest::mousePress(widget, Qt::LeftButton, {}, QPoint(5, 5));
    Pump();
    EXPECT_EQ(::GetCapture(), button);
    EXPECT_TRUE(::SendMessageA(button, BM_GETSTATE, 0, 0) & BST_PUSHED);
    QTest::mouseRelease(widget, Qt::LeftButton, {}, QPoint(300, 200));
    Pump();
    EXPECT_EQ(::GetCapture(), nullptr);
    EXPECT_THAT(Commands(), Not(Contains(Pair(7, BN_CLICKED))));
}

TEST_F(Buttons, CountEveryFastClick) {
    const HWND button = Make("BUTTON", BS_PUSHBUTTON, 7);
    QTest::mouseClick(Inner(button), Qt::LeftButton);
    QTest::mouseDClick(Inner(button), Qt::LeftButton); // comes in place of the second press
    QTest::mouseRelease(Inner(button), Qt::LeftButton);
    Pump();
    EXPECT_THAT(Commands(), ElementsAre(Pair(7, BN_CLICKED), Pair(7, BN_CLICKED)));
}

TEST_F(Buttons, MayBeDestroyedByWhomTheyReportTo) {
    const HWND button = Make("BUTTON", BS_PUSHBUTTON, 7);
    answer = [&](HWND, UINT message, WPARAM, LPARAM) -> std::optional<LRESULT> {
        if (message == WM_COMMAND) ::DestroyWindow(button);
        return std::nullopt;
    };
    Click(button);
    EXPECT_FALSE(::IsWindow(button));
    EXPECT_THAT(Commands(), ElementsAre(Pair(7, BN_CLICKED)));
}

TEST_F(Buttons, ObeyAProcedureThatStandsBeforeTheirOwn) {
    const HWND button = Make("BUTTON", BS_PUSHBUTTON, 7);
    Subclass(button, WM_LBUTTONDOWN);
    Click(button);
    EXPECT_THAT(passed, Contains(WM_LBUTTONDOWN));
    EXPECT_THAT(passed, Contains(WM_LBUTTONUP));
    EXPECT_THAT(Commands(), IsEmpty());
    swallowed = WM_NULL;
    Click(button);
    EXPECT_THAT(Commands(), ElementsAre(Pair(7, BN_CLICKED)));
}

TEST_F(Buttons, MarkThemselvesOnlyWhenTheyAreAutomatic) {
    const HWND plain = Make("BUTTON", BS_CHECKBOX, 1);
    const HWND automatic = Make("BUTTON", BS_AUTOCHECKBOX, 2);
    const HWND three = Make("BUTTON", BS_AUTO3STATE, 3);
    const std::vector<HWND> all{plain, automatic, three};
    for (const HWND each : all)
        Click(each);
    EXPECT_THAT(Marks(all), ElementsAre(0, 1, 1));
    for (const HWND each : all)
        Click(each);
    EXPECT_THAT(Marks(all), ElementsAre(0, 0, 2));
    EXPECT_EQ(Commands().size(), 6U);
    ::SendMessageA(plain, BM_SETCHECK, BST_CHECKED, 0);
    EXPECT_TRUE(Inner<QAbstractButton>(plain)->isChecked());
    EXPECT_THAT(Commands(), IsEmpty());
}

TEST_F(Buttons, OfOneGroupShareOneMark) {
    const HWND a = Make("BUTTON", BS_AUTORADIOBUTTON | WS_GROUP, 1);
    const HWND b = Make("BUTTON", BS_AUTORADIOBUTTON, 2);
    const HWND c = Make("BUTTON", BS_AUTORADIOBUTTON | WS_GROUP, 3);
    Click(a);
    Click(c);
    EXPECT_THAT(Marks({a, b, c}), ElementsAre(1, 0, 1));
    Click(b);
    EXPECT_THAT(Marks({a, b, c}), ElementsAre(0, 1, 1));
    EXPECT_TRUE(::GetWindowLongPtrA(b, GWL_STYLE) & LONG_PTR{WS_TABSTOP});
    EXPECT_FALSE(::GetWindowLongPtrA(a, GWL_STYLE) & LONG_PTR{WS_TABSTOP});
}

TEST_F(Buttons, GetNothingWhileTheyAreDisabled) {
    const HWND button = Make("BUTTON", BS_PUSHBUTTON, 7);
    EXPECT_FALSE(::EnableWindow(button, FALSE));
    EXPECT_FALSE(::IsWindowEnabled(button));
    seen.clear();
    Click(button);
    EXPECT_EQ(SeenOf(parent_, WM_LBUTTONDOWN).size(), 1U); // the press is the parent's
    Press(button, Qt::Key_Space);
    ::SendMessageA(button, BM_CLICK, 0, 0);
    EXPECT_THAT(Commands(), IsEmpty());
    EXPECT_TRUE(::EnableWindow(button, TRUE));
    ::EnableWindow(parent_, FALSE);
    Click(button);
    EXPECT_THAT(Commands(), IsEmpty());
    ::EnableWindow(parent_, TRUE);
    Click(button);
    EXPECT_THAT(Commands(), ElementsAre(Pair(7, BN_CLICKED)));
}

TEST_F(Buttons, LieInFrontOfTheGroupBoxAroundThem) {
    const HWND button = Make("BUTTON", BS_PUSHBUTTON, 7);
    const HWND box = Make("BUTTON", BS_GROUPBOX, 8, "Durata", {0, 0, 200, 100});
    EXPECT_EQ(::SendMessageA(box, WM_GETDLGCODE, 0, 0), DLGC_STATIC);
    EXPECT_EQ(WidgetOf(parent_)->childAt(60, 25), Inner(button));
    EXPECT_EQ(WidgetOf(parent_)->childAt(5, 60), nullptr); // the mouse is the parent's
}

TEST_F(OwnerDrawnControls, AreDrawnInTheirStatesWhereTheUserSeesThem) {
    std::vector<UINT> states;
    const HBRUSH red = ::CreateSolidBrush(RGB(250, 0, 0));
    const HBRUSH green = ::CreateSolidBrush(RGB(0, 250, 0));
    answer = [&](HWND, UINT message, WPARAM wparam, LPARAM lparam) -> std::optional<LRESULT> {
        if (message != WM_DRAWITEM) return std::nullopt;
        const auto& item = *reinterpret_cast<const DRAWITEMSTRUCT*>(lparam);
        EXPECT_EQ(wparam, 9U);
        EXPECT_EQ(item.rcItem.right, 120);
        states.push_back(item.itemState);
        ::FillRect(item.hDC, &item.rcItem, (item.itemState & ODS_SELECTED) != 0 ? green : red);
        return TRUE;
    };
    const HWND button = Make("BUTTON", BS_OWNERDRAW, 9, "Opzioni");
    EXPECT_THAT(MessagesOf(parent_), Contains(WM_MEASUREITEM));
    ASSERT_TRUE(PumpUntil([&] { return Pixel(button, 50, 15) == 0xFA0000; }));
    EXPECT_TRUE(PumpUntil(
        [&] { return (Inner(button)->grab().toImage().pixel(50, 15) & 0xFFFFFFU) == 0xFA0000; }));

    QTest::mousePress(Inner(button), Qt::LeftButton);
    EXPECT_TRUE(PumpUntil([&] { return Pixel(button, 50, 15) == 0x00FA00; }));
    QTest::mouseRelease(Inner(button), Qt::LeftButton);
    EXPECT_TRUE(PumpUntil([&] { return Pixel(button, 50, 15) == 0xFA0000; }));
    EXPECT_TRUE(PumpUntil([&] { return (states.back() & ODS_FOCUS) != 0; }));
    EXPECT_THAT(Commands(), Contains(Pair(9, BN_CLICKED)));
    Press(button, Qt::Key_Space);
    EXPECT_THAT(Commands(), Contains(Pair(9, BN_CLICKED)));
    ::EnableWindow(button, FALSE);
    EXPECT_TRUE(PumpUntil([&] { return (states.back() & ODS_DISABLED) != 0; }));
    EXPECT_EQ(QAccessible::queryAccessibleInterface(Inner(button))->text(QAccessible::Name),
              "Opzioni");
    ::DestroyWindow(button);
    ::DeleteObject(red);
    ::DeleteObject(green);
}

TEST_F(Statics, LeaveTheMouseToTheParentUnlessTheyAreToNotify) {
    Make("STATIC", SS_LEFT, 5, "00:00");
    EXPECT_EQ(WidgetOf(parent_)->childAt(60, 25), nullptr);
    const HWND notifying = Make("STATIC", SS_LEFT | SS_NOTIFY, 6, "01:00");
    EXPECT_EQ(WidgetOf(parent_)->childAt(60, 25), Inner(notifying));
    Click(notifying);
    EXPECT_THAT(Commands(), ElementsAre(Pair(6, STN_CLICKED)));
    EXPECT_NE(::GetFocus(), notifying);
}

TEST_F(Statics, ShowThePictureTheyAreGiven) {
    const HWND label = Make("STATIC", SS_BITMAP, 6, nullptr);
    const HDC screen = ::GetDC(nullptr);
    const HBITMAP bitmap = ::CreateCompatibleBitmap(screen, 33, 21);
    ::ReleaseDC(nullptr, screen);
    EXPECT_EQ(::SendMessageA(label, STM_SETIMAGE, IMAGE_BITMAP, reinterpret_cast<LPARAM>(bitmap)),
              0);
    EXPECT_EQ(ClientSizeOf(label).cx, 33);
    EXPECT_EQ(ClientSizeOf(label).cy, 21);
    EXPECT_TRUE(PumpUntil([&] { return Pixel(label, 10, 10) == 0; }));
    EXPECT_EQ(::SendMessageA(label, STM_GETIMAGE, IMAGE_BITMAP, 0),
              reinterpret_cast<LRESULT>(bitmap));
    ::DeleteObject(bitmap);
}
