// The button bar: faces read back pixel by pixel, clicks with a mouse, radio groups, named groups,
// tips.

#include "framework/window/tools/GestToolButtonsGroups.h"
#include "tests/framework/window/tools/ToolWindowFixture.h"

#include <QAccessible>

#include <gmock/gmock.h>

namespace kelvo {
namespace {

using platform::MessageBoxRecorder;
using testing::ElementsAre;
using testing::IsEmpty;
using Rows = std::vector<std::string>;

const std::vector<std::pair<COLORREF, char>> kFaceKey = {
    {0xFFFFFF, 'W'}, {0x000000, 'K'}, {0xD7D7D7, 'L'}, {0x5A5A5A, 'S'}, {0x505050, 'D'},
    {0xC0C0C0, 'C'}, {0x999999, 'E'}, {0xC8C8C8, 'g'}, {1, '1'},        {2, '2'},
    {3, '3'},        {4, '4'},        {5, '5'},        {6, '6'},        {7, '7'}};

const Rows kRaised = {"WWWWWWK", //
                      "WLLLLSK", //
                      "WL123SK", //
                      "WL456SK", //
                      "WSSSSSK", //
                      "KKKKKKK"};
const Rows kSunken = {"DDDDDDC", //
                      "DEEEEEW", //
                      "DEEEEEW", //
                      "DEE123W", //
                      "DEE456W", //
                      "CWWWWWW"};
const Rows kDisabled = {"ggggggg", //
                        "gLLLLgg", //
                        "gLggggg", //
                        "gLggggg", //
                        "ggggggg", //
                        "ggggggg"};

using ToolWindow = ToolWindowTest;

TEST_F(ToolWindow, ShowsRaisedSunkenAndGreyFacesAndSizesTheButtonToThem) {
    ASSERT_EQ(bar_.AddButton("Picture", 7, 10, 2, "", ButtonKind::Toggle, 0), 1);
    lum.ProcessMessages();
    BitmapButton& button = *bar_.FindButton(7);
    EXPECT_EQ(Picture(button, kFaceKey), kRaised);
    EXPECT_EQ(button.Left(), 10);
    EXPECT_EQ(button.Top(), 2);
    ClickButton(7);
    EXPECT_EQ(Picture(button, kFaceKey), kSunken);
    ClickButton(7);
    EXPECT_EQ(bar_.DisableButton(7), 1);
    lum.ProcessMessages();
    EXPECT_EQ(Picture(button, kFaceKey), kDisabled);
    EXPECT_EQ(bar_.EnableButton(7), 1);
    lum.ProcessMessages();
    EXPECT_EQ(Picture(button, kFaceKey), kRaised);
}

TEST_F(ToolWindow, ShadesTheSunkenFaceByItsBackground) {
    bar_.SetBackgroundColour(RGB(255, 101, 10));
    ASSERT_EQ(bar_.AddButton("Picture", 7, 0, 0, "", ButtonKind::Toggle, 0), 1);
    ASSERT_EQ(bar_.ToggleButton(7), 1);
    lum.ProcessMessages();
    EXPECT_EQ(PixelOf(*bar_.FindButton(7), 2, 3), RGB(204, 80, 8));
}

TEST_F(ToolWindow, ShowsTwoPicturesAsTheyAreInTheSecondForm) {
    ASSERT_EQ(bar_.AddButton("Picture", "Other", 7, 0, 0, "", ButtonKind::Toggle, 0), 1);
    lum.ProcessMessages();
    EXPECT_EQ(Picture(*bar_.FindButton(7), kFaceKey), (Rows{"777", "777"}));
    ASSERT_EQ(bar_.ToggleButton(7), 1);
    lum.ProcessMessages();
    EXPECT_EQ(Picture(*bar_.FindButton(7), kFaceKey), (Rows{"123", "456"}));
}

TEST_F(ToolWindow, SaysWhichPictureIsMissingAndAddsNothing) {
    MessageBoxRecorder boxes;
    EXPECT_EQ(bar_.AddButton("Nessuna", 1, 0, 0, "", ButtonKind::Push, 0), 0);
    EXPECT_EQ(bar_.AddButton("Nessuna", "Other", 1, 0, 0, "", ButtonKind::Push, 0), 0);
    EXPECT_EQ(bar_.AddButton("Other", "Nessuna", 1, 0, 0, "", ButtonKind::Push, 0), 0);
    EXPECT_THAT(boxes.Texts(), ElementsAre("BITMAP: Nessuna NON CARICATA in CToolWin::AddButton()",
                                           "BITMAP -ON- NON CARICATA in CToolWin::AddButton()",
                                           "BITMAP -OFF- NON CARICATA in CToolWin::AddButton()"));
    EXPECT_EQ(boxes.Boxes().front().caption, "ERRORE");
    EXPECT_EQ(bar_.FindButton(1), nullptr);
}

TEST_F(ToolWindow, DeletesItsOwnImagesAndLeavesThoseOfTheCaller) {
    const HBITMAP mine = LoadBitmapA(lum.ResourceIst(), "Other");
    ASSERT_EQ(bar_.AddButton(mine, mine, 8, 0, 0, "", ButtonKind::Push, 0), 1);
    AddSquare(9, 30);
    const HBITMAP owned = bar_.FindButton(9)->NormalImage();
    const HWND window = bar_.FindButton(9)->Window();
    EXPECT_EQ(bar_.RemoveButton(8), 1);
    EXPECT_EQ(bar_.RemoveButton(9), 1);
    EXPECT_EQ(GetObjectA(owned, 0, nullptr), 0);
    EXPECT_EQ(IsWindow(window), FALSE);
    EXPECT_NE(GetObjectA(mine, 0, nullptr), 0);
    EXPECT_NE(DeleteObject(mine), FALSE);
}

TEST_F(ToolWindow, KnowsNoButtonOfAnotherId) {
    AddSquare(9, 0);
    EXPECT_EQ(bar_.FindButton(10), nullptr);
    EXPECT_EQ(bar_.RemoveButton(10), 0);
    EXPECT_EQ(bar_.EnableButton(10), 0);
    EXPECT_EQ(bar_.DisableButton(10), 0);
    EXPECT_EQ(bar_.ShowButton(10), 0);
    EXPECT_EQ(bar_.HideButton(10), 0);
    EXPECT_EQ(bar_.ToggleButton(10), 0);
}

TEST_F(ToolWindow, HidesAndShowsAButton) {
    AddSquare(9, 0);
    EXPECT_EQ(bar_.HideButton(9), 1);
    EXPECT_EQ(IsWindowVisible(bar_.FindButton(9)->Window()), FALSE);
    EXPECT_EQ(bar_.ShowButton(9), 1);
    EXPECT_NE(IsWindowVisible(bar_.FindButton(9)->Window()), FALSE);
}

TEST_F(ToolWindow, GivesAPushButtonsCommandWhereverItIsLetGo) {
    AddSquare(9, 0);
    QWidget* const widget = desktop::WidgetOf(bar_.FindButton(9)->Window());
    QTest::mousePress(widget, Qt::LeftButton, {}, {3, 3});
    lum.ProcessMessages();
    EXPECT_TRUE(IsDown(9));
    EXPECT_THAT(Commands(), IsEmpty());
    QTest::mouseRelease(widget, Qt::LeftButton, {}, {90, 120});
    lum.ProcessMessages();
    EXPECT_FALSE(IsDown(9));
    ASSERT_FALSE(owner_.noted.empty());
    EXPECT_EQ(owner_.noted.back().lparam, reinterpret_cast<LPARAM>(bar_.FindButton(9)));
    EXPECT_THAT(Commands(), ElementsAre(9));
    // Pressed elsewhere and let go here.
    bar_.FindButton(9)->Send(WM_LBUTTONUP, 0, MAKELPARAM(3, 3));
    lum.ProcessMessages();
    EXPECT_THAT(Commands(), IsEmpty());
}

TEST_F(ToolWindow, LetsOneOfARadioGroupBeDown) {
    AddSquare(1, 0, ButtonKind::Toggle, 3);
    AddSquare(2, 30, ButtonKind::Toggle, 3);
    AddSquare(3, 60, ButtonKind::Toggle, 4);
    ClickButton(1);
    ClickButton(3);
    ClickButton(2);
    EXPECT_THAT(Commands(), ElementsAre(1, 3, 2));
    EXPECT_FALSE(IsDown(1));
    EXPECT_TRUE(IsDown(2));
    EXPECT_TRUE(IsDown(3));
    ClickButton(2);
    EXPECT_TRUE(IsDown(2));
    EXPECT_THAT(Commands(), IsEmpty());
}

TEST_F(ToolWindow, LetsAToggleOfItsOwnGoUpAgain) {
    AddSquare(1, 0, ButtonKind::Toggle);
    AddSquare(2, 30, ButtonKind::Toggle);
    ClickButton(1);
    ClickButton(2);
    EXPECT_TRUE(IsDown(1));
    ClickButton(1);
    EXPECT_FALSE(IsDown(1));
    EXPECT_TRUE(IsDown(2));
    EXPECT_EQ(bar_.ToggleButton(2), 1);
    EXPECT_FALSE(IsDown(2));
    EXPECT_THAT(Commands(), ElementsAre(1, 2, 1, 2));
}

TEST_F(ToolWindow, GivesADisabledButtonsClicksToNobody) {
    AddSquare(1, 0);
    bar_.DisableButton(1);
    ClickButton(1);
    EXPECT_THAT(Commands(), IsEmpty());
}

TEST_F(ToolWindow, TellsItsNotifyTargetInPlaceOfItsParent) {
    NotingWindow target;
    bar_.SetNotifyTarget(&target);
    AddSquare(1, 0);
    ClickButton(1);
    EXPECT_THAT(Commands(), IsEmpty());
    EXPECT_EQ(target.Count(WM_COMMAND), 1);
}

TEST_F(ToolWindow, PassesARightPressOnAs0xBAD) {
    AddSquare(77, 0);
    QTest::mousePress(desktop::WidgetOf(bar_.FindButton(77)->Window()), Qt::RightButton, {},
                      {3, 3});
    lum.ProcessMessages();
    ASSERT_EQ(owner_.Count(0xBAD), 1);
    EXPECT_EQ(owner_.noted.back().wparam, 77U);
}

TEST_F(ToolWindow, ReportsEveryMessageOfAButtonToItsParentFirst) {
    class Reporting : public ToolWinlum {
    public:
        bool ReportButtonMouse(const ButtonMessage& report) override {
            reported.push_back({report.message, report.button->IsPressed()});
            return ToolWinlum::ReportButtonMouse(report);
        }
        std::vector<std::pair<UINT, bool>> reported;
    };
    Reporting bar;
    bar.SetParent(&owner_);
    ASSERT_EQ(bar.Create(), 1);
    ASSERT_EQ(bar.AddButton("Square", 1, 0, 0, "", ButtonKind::Toggle, 0), 1);
    bar.reported.clear();
    bar.FindButton(1)->Send(WM_LBUTTONDOWN, 0, 0);
    const std::pair<UINT, bool> press(WM_LBUTTONDOWN, false);
    EXPECT_THAT(bar.reported, ElementsAre(press));
    bar.FindButton(1)->SetForwarding(false);
    bar.FindButton(1)->Send(WM_LBUTTONDOWN, 0, 0);
    EXPECT_EQ(bar.reported.size(), 1U);
}

TEST_F(ToolWindow, ForgetsTheClickOfAButtonThatIsGone) {
    AddSquare(1, 0, ButtonKind::Toggle);
    bar_.FindButton(1)->Send(WM_LBUTTONDOWN, 0, 0); // its click is posted
    EXPECT_EQ(bar_.RemoveButton(1), 1);
    AddSquare(2, 0, ButtonKind::Toggle);
    lum.ProcessMessages();
    EXPECT_THAT(Commands(), IsEmpty());
    // And a receiver may remove the button that tells it.
    owner_.handler = [this](UINT message, WPARAM wparam, LPARAM) {
        return (message == WM_COMMAND || message == kButtonRightPressed) &&
               bar_.RemoveButton(static_cast<std::int32_t>(wparam)) != 0;
    };
    bar_.FindButton(2)->Send(WM_RBUTTONDOWN, 0, 0);
    EXPECT_EQ(bar_.FindButton(2), nullptr);
    AddSquare(3, 0);
    ClickButton(3);
    EXPECT_EQ(bar_.FindButton(3), nullptr);
}

TEST_F(ToolWindow, MayBeAskedForButtonsWhileOneOfThemGoes) {
    class AskingToolWindow : public CToolWin {
    public:
        bool ReportButtonMouse(const ButtonMessage& report) override {
            if (FindButton(2) != nullptr && report.message == WM_DESTROY) ++found_at_end;
            return CToolWin::ReportButtonMouse(report);
        }
        int found_at_end = 0;
    };
    AskingToolWindow bar;
    bar.SetParent(&owner_);
    ASSERT_EQ(bar.Create(), 1);
    for (const std::int32_t id : {1, 2})
        ASSERT_EQ(bar.AddButton("Square", id, 20 * id, 2, "", ButtonKind::Push, 0), 1);
    EXPECT_EQ(bar.RemoveButton(1), 1);
    EXPECT_EQ(bar.found_at_end, 1);
}

TEST_F(ToolWindow, TakesItsButtonsAlongWhenItIsDestroyed) {
    AddSquare(1, 0);
    const HWND button = bar_.FindButton(1)->Window();
    DestroyWindow(owner_.Window());
    EXPECT_EQ(IsWindow(button), FALSE);
    EXPECT_EQ(bar_.FindButton(1), nullptr);
    EXPECT_FALSE(bar_.HasWindow());
}

TEST_F(ToolWindow, SwapsNamedGroupsOfButtons) {
    GestToolButtonsGroups groups;
    groups.DefineButton("A", "Square", 1, 0, 0, "", ButtonKind::Push, 0);
    groups.DefineButton("A", "Square", 2, 20, 0, "", ButtonKind::Push, 0);
    groups.DefineButton("B", "Square", 3, 0, 0, "Terzo", ButtonKind::Toggle, 5);
    groups.DefineButton("b", "Other", 4, 20, 4, "", ButtonKind::Push, 0);
    EXPECT_EQ(groups.CurrentGroup(), -1);
    EXPECT_EQ(groups.ShowGroup("C", bar_), 0);
    EXPECT_EQ(groups.ShowGroup("A", bar_), 1);
    EXPECT_NE(bar_.FindButton(2), nullptr);
    EXPECT_EQ(groups.ShowGroup("B", bar_), 1);
    EXPECT_EQ(bar_.FindButton(1), nullptr);
    EXPECT_EQ(bar_.FindButton(2), nullptr);
    const BitmapButton* const third = bar_.FindButton(3);
    ASSERT_NE(third, nullptr);
    EXPECT_EQ(third->TipText(), "Terzo");
    EXPECT_EQ(bar_.FindButton(4)->Left(), 20);
    EXPECT_EQ(bar_.FindButton(4)->Top(), 4);
    EXPECT_EQ(groups.ShowGroup("b", bar_), 1);
    EXPECT_EQ(bar_.FindButton(3), third); // shown already: nothing was made anew
    groups.HideCurrentGroup(bar_);
    EXPECT_EQ(bar_.FindButton(3), nullptr);
    EXPECT_EQ(groups.CurrentGroup(), -1);
}

TEST_F(ToolWindow, TellsAssistantsItsButtonsAndLetsThemPress) {
    AddSquare(1, 0, ButtonKind::Push, 0, "Vai alla fine");
    AddSquare(2, 30, ButtonKind::Toggle, 0, "Pausa");
    const auto described = [this](std::int32_t id) {
        return QAccessible::queryAccessibleInterface(
            desktop::WidgetOf(bar_.FindButton(id)->Window()));
    };
    EXPECT_EQ(described(1)->role(), QAccessible::Button);
    EXPECT_EQ(described(1)->text(QAccessible::Name), "Vai alla fine");
    EXPECT_FALSE(described(1)->state().checkable);
    described(1)->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    described(2)->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    lum.ProcessMessages();
    EXPECT_THAT(Commands(), ElementsAre(1, 2));
    EXPECT_FALSE(described(1)->state().pressed);
    EXPECT_TRUE(described(2)->state().checked);
    bar_.DisableButton(2);
    EXPECT_TRUE(described(2)->state().disabled);
    described(2)->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    lum.ProcessMessages();
    EXPECT_THAT(Commands(), IsEmpty());
}

TEST_F(ToolWindow, IsWorkedByTheKeyboard) {
    AddSquare(1, 0, ButtonKind::Push, 0, "Apri");
    AddSquare(2, 30, ButtonKind::Push, 0, "Nascosto");
    AddSquare(3, 60, ButtonKind::Toggle, 0, "Pausa");
    bar_.HideButton(2);
    EXPECT_TRUE(bar_.TakeKeyboard());
    const auto press = [this](Qt::Key key) {
        QTest::keyClick(desktop::WidgetOf(owner_.Window()), key);
        ProcessUntil([] { return GetFocus() != nullptr; });
        lum.ProcessMessages();
    };
    const CLittleWin& tip = CLittleWin::ButtonTips();
    EXPECT_EQ(GetFocus(), bar_.FindButton(1)->Window());
    EXPECT_TRUE(tip.IsShown() && tip.HintText() == "Apri");
    press(Qt::Key_Space);
    EXPECT_FALSE(tip.IsShown());
    press(Qt::Key_Left); // past the hidden one
    EXPECT_EQ(GetFocus(), bar_.FindButton(3)->Window());
    EXPECT_TRUE(tip.IsShown() && tip.HintText() == "Pausa");
    press(Qt::Key_Return);
    EXPECT_TRUE(IsDown(3));
    EXPECT_THAT(Commands(), testing::ElementsAre(1, 3));
    press(Qt::Key_Right); // round to the first
    EXPECT_EQ(GetFocus(), bar_.FindButton(1)->Window());
    press(Qt::Key_A); // none of the bar's
    EXPECT_EQ(owner_.Count(WM_KEYDOWN), 1);
    press(Qt::Key_Escape);
    EXPECT_EQ(GetFocus(), owner_.Window());
    EXPECT_FALSE(tip.IsShown());
}

TEST_F(ToolWindow, ShowsATipWhereThePointerRestsUntilItLeaves) {
    AddSquare(1, 0, ButtonKind::Push, 0, "Vai all'Inizio");
    AddSquare(2, 40);
    CLittleWin& tip = CLittleWin::ButtonTips();
    MovePointer(50, 8); // over the button without a tip
    ASSERT_TRUE(ProcessUntil([this] { return bar_.FindButton(2)->HasWindow(); }));
    MovePointer(8, 8);
    ASSERT_TRUE(ProcessUntil([&tip] { return tip.IsShown(); }));
    EXPECT_EQ(tip.HintText(), "Vai all'Inizio");
    EXPECT_EQ(tip.Anchor().x, 8);
    MovePointer(10, 9);
    for (int tick = 0; tick < 3; ++tick)
        bar_.FindButton(1)->Send(WM_TIMER, 1965, 0);
    EXPECT_TRUE(tip.IsShown());
    MovePointer(600, 600);
    EXPECT_TRUE(ProcessUntil([&tip] { return !tip.IsShown(); }));
}

TEST_F(ToolWindow, CountsElevenTicksWithoutAMoveAndEndsThemWithAPress) {
    AddSquare(1, 0, ButtonKind::Push, 0, "Stop");
    const BitmapButton& button = *bar_.FindButton(1);
    CLittleWin& tip = CLittleWin::ButtonTips();
    MovePointer(8, 8);
    button.Send(WM_MOUSEMOVE, 0, 0);
    for (int tick = 0; tick < 10; ++tick)
        button.Send(WM_TIMER, 1965, 0);
    EXPECT_FALSE(tip.IsShown());
    MovePointer(9, 8);
    button.Send(WM_TIMER, 1965, 0); // it moved: this one does not count
    EXPECT_FALSE(tip.IsShown());
    button.Send(WM_TIMER, 1965, 0);
    EXPECT_TRUE(tip.IsShown());
    button.Send(WM_RBUTTONUP, 0, 0);
    EXPECT_FALSE(tip.IsShown());
    button.Send(WM_TIMER, 1965, 0);
    EXPECT_FALSE(tip.IsShown());
    // The button's end takes its tip along.
    button.Send(WM_MOUSEMOVE, 0, 0);
    for (int tick = 0; tick < 11; ++tick)
        button.Send(WM_TIMER, 1965, 0);
    EXPECT_TRUE(tip.IsShown());
    bar_.RemoveButton(1);
    EXPECT_FALSE(tip.IsShown());
}

} // namespace
} // namespace kelvo
