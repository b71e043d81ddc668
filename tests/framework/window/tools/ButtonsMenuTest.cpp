// Button menus, run in their own loop by a mouse that clicks, leaves and presses elsewhere.

#include "framework/window/tools/ButtonsMenu.h"
#include "tests/framework/window/tools/ToolWindowFixture.h"

#include <gmock/gmock.h>

namespace kelvo {
namespace {

constexpr LONG kSize = 20;

RECT PlaceOf(HWND window) {
    RECT place{};
    GetWindowRect(window, &place);
    return place;
}

class ButtonMenu : public ToolWindowTest {
protected:
    void SetUp() override {
        ToolWindowTest::SetUp();
        AddSquare(1, 100, ButtonKind::Push, 0, "Scelta");
        anchor_ = bar_.FindButton(1);
        menu_.AddItem("Square", 11, "", false);
        menu_.AddItem("Square", 12, "", true);
        menu_.AddItem("Picture", 13, "Other", false);
        MovePointer(105, 10); // on the anchor, whose place is (100, 2) to (120, 22)
        lum.ProcessMessages();
    }
    void TearDown() override { acting_.stop(); }
    /// Does one thing after the other once the menu is open, a turn of the loop apart.
    void WhileOpen(std::vector<std::function<void()>> steps) {
        QObject::connect(
            &acting_, &QTimer::timeout, [this, steps, next = std::size_t{0}]() mutable {
                if (!menu_.HasWindow() || IsWindowVisible(menu_.Strip().Window()) == FALSE) return;
                if (next < steps.size()) steps[next++]();
            });
        acting_.start(20);
    }
    int OpenBelow(std::int32_t* chosen, ButtonsMenu::Post post = ButtonsMenu::Post::No) {
        return menu_.Open(100, 22, anchor_, MenuSide::Below, kSize, chosen, post);
    }
    HWND ItemWindow(std::int32_t id) const { return menu_.Strip().FindButton(id)->Window(); }

    ButtonsMenu menu_;
    BitmapButton* anchor_ = nullptr;
    QTimer acting_;
};

TEST_F(ButtonMenu, GivesTheCommandThatIsClicked) {
    std::int32_t chosen = 0;
    bool pressed[2] = {};
    WhileOpen({[&] {
                   pressed[0] = menu_.Strip().FindButton(11)->IsPressed();
                   pressed[1] = menu_.Strip().FindButton(12)->IsPressed();
               },
               [&] { Click(ItemWindow(11)); }});
    EXPECT_EQ(OpenBelow(&chosen, ButtonsMenu::Post::Yes), 1);
    EXPECT_EQ(chosen, 11);
    EXPECT_FALSE(pressed[0]);
    EXPECT_TRUE(pressed[1]);
    EXPECT_FALSE(menu_.HasWindow());
    EXPECT_EQ(menu_.Strip().FindButton(11), nullptr);
}

TEST_F(ButtonMenu, PostsTheChoiceToItsAnchorUnlessToldNot) {
    NotingWindow anchor;
    anchor.SetParent(&owner_);
    anchor.SetStyle(WS_CHILD | WS_VISIBLE);
    anchor.SetPlacement(100, 2, 20, 20);
    ASSERT_EQ(anchor.Create(), 1);
    const auto choose = [&](std::int32_t id, ButtonsMenu::Post post) {
        acting_.disconnect();
        WhileOpen({[this, id] { Click(ItemWindow(id), {1, 1}); }});
        MovePointer(105, 10);
        lum.ProcessMessages();
        EXPECT_EQ(menu_.Open(100, 22, &anchor, MenuSide::Below, kSize, nullptr, post), 1);
        lum.ProcessMessages();
    };
    choose(11, ButtonsMenu::Post::Yes);
    choose(12, ButtonsMenu::Post::Yes);
    choose(13, ButtonsMenu::Post::No);
    std::vector<std::pair<WPARAM, LPARAM>> posted;
    for (const NotingWindow::Noted& one : anchor.noted) {
        if (one.message == WM_COMMAND) posted.emplace_back(one.wparam, one.lparam);
    }
    EXPECT_THAT(posted, testing::ElementsAre(std::pair<WPARAM, LPARAM>(11, 1),
                                             std::pair<WPARAM, LPARAM>(12, 0)));
}

TEST_F(ButtonMenu, LiesOnTheSideThatItIsAskedFor) {
    struct Side {
        MenuSide side;
        RECT place;
    };
    for (const Side& row :
         {Side{MenuSide::Below, {300, 300, 320, 360}}, Side{MenuSide::Above, {300, 240, 320, 300}},
          Side{MenuSide::Left, {240, 300, 300, 320}},
          Side{MenuSide::Right, {300, 300, 360, 320}}}) {
        acting_.disconnect();
        RECT menu{};
        RECT third{};
        WhileOpen({[&] {
            menu = PlaceOf(menu_.Window());
            third = PlaceOf(ItemWindow(13));
            menu_.EndModal(0);
        }});
        EXPECT_EQ(menu_.Open(300, 300, anchor_, row.side, kSize, nullptr, ButtonsMenu::Post::No),
                  0);
        EXPECT_EQ(menu.left, row.place.left);
        EXPECT_EQ(menu.top, row.place.top);
        EXPECT_EQ(menu.right, row.place.right);
        EXPECT_EQ(menu.bottom, row.place.bottom);
        const bool vertical = row.side == MenuSide::Below || row.side == MenuSide::Above;
        EXPECT_EQ(third.left, menu.left + 1 + (vertical ? 0 : 2 * kSize));
        EXPECT_EQ(third.top, menu.top + 1 + (vertical ? 2 * kSize : 0));
    }
}

TEST_F(ButtonMenu, ClosesWhenThePointerGoesFurtherThanAButton) {
    bool still_open = false;
    WhileOpen({[] { MovePointer(105, 30); }, // into the menu
               [] { MovePointer(105, 22 + 3 * kSize + kSize - 1); },
               [&] {
                   still_open = menu_.HasWindow();
                   MovePointer(105, 22 + 3 * kSize + kSize);
               }});
    EXPECT_EQ(OpenBelow(nullptr), 0);
    EXPECT_TRUE(still_open);
}

TEST_F(ButtonMenu, ClosesOnAPressElsewhereAndOnEscape) {
    WhileOpen({[&] {
        QTest::mousePress(desktop::WidgetOf(owner_.Window()), Qt::RightButton, {}, {250, 150});
    }});
    EXPECT_EQ(OpenBelow(nullptr), 0);
    acting_.disconnect();
    MovePointer(105, 10);
    lum.ProcessMessages();
    WhileOpen({[&] { QTest::keyClick(desktop::WidgetOf(owner_.Window()), Qt::Key_Escape); }});
    EXPECT_EQ(OpenBelow(nullptr), 0);
}

TEST_F(ButtonMenu, PassesAPressOnItsAnchorOn) {
    WhileOpen({[&] {
        QTest::mousePress(desktop::WidgetOf(anchor_->Window()), Qt::LeftButton, {}, {5, 5});
    }});
    EXPECT_EQ(OpenBelow(nullptr), 0);
    EXPECT_TRUE(anchor_->IsPressed());
    QTest::mouseRelease(desktop::WidgetOf(anchor_->Window()), Qt::LeftButton, {}, {5, 5});
    lum.ProcessMessages();
    EXPECT_THAT(Commands(), testing::ElementsAre(1));
}

TEST_F(ButtonMenu, KeepsItsOwnersSideInertAndOthersLive) {
    NotingWindow other;
    other.SetStyle(WS_POPUP | WS_VISIBLE);
    other.SetPlacement(0, 400, 100, 100);
    ASSERT_EQ(other.Create(), 1);
    WhileOpen({[&] {
                   owner_.Post(WM_USER, 1, 0);
                   other.Post(WM_USER, 1, 0);
               },
               [&] { menu_.EndModal(0); }});
    menu_.SetTracking(false);
    EXPECT_EQ(menu_.Open(100, 22, &owner_, MenuSide::Below, kSize, nullptr, ButtonsMenu::Post::No),
              0);
    EXPECT_EQ(owner_.Count(WM_USER), 0);
    EXPECT_EQ(other.Count(WM_USER), 1);
}

TEST_F(ButtonMenu, ShowsItsAnchorsTipWhileThePointerRestsOnIt) {
    CLittleWin& tip = CLittleWin::MenuTips();
    bool shown = false;
    bool hidden = false;
    WhileOpen({[] { MovePointer(106, 10); }});
    QTimer looking;
    QObject::connect(&looking, &QTimer::timeout, [&] {
        if (!shown && tip.IsShown()) {
            shown = tip.HintText() == "Scelta";
            MovePointer(106, 30);
        } else if (shown && !hidden && !tip.IsShown()) {
            hidden = true;
            menu_.EndModal(0);
        }
    });
    looking.start(20);
    EXPECT_EQ(OpenBelow(nullptr), 0);
    EXPECT_TRUE(shown);
    EXPECT_TRUE(hidden);
}

TEST_F(ButtonMenu, EndsWhenItsWindowGoesAndLeavesARequestToQuitToTheProgram) {
    WhileOpen({[&] { DestroyWindow(menu_.Window()); }});
    EXPECT_EQ(OpenBelow(nullptr), 0);
    acting_.disconnect();
    WhileOpen({[] { PostQuitMessage(9); }});
    EXPECT_EQ(OpenBelow(nullptr), 0);
    EXPECT_EQ(lum.MessageLoop(), 9U);
}

TEST(ButtonMenuClass, IsReportedWhenItCannotBeRegistered) {
    ASSERT_EQ(Early().menu_class.size(), 1U);
    EXPECT_EQ(Early().menu_class[0].text, "IMPOSSIBILE REGISTRARE CLASSE");
    EXPECT_EQ(Early().menu_class[0].caption, "ButtonsMenu::newModalRun()");
}

} // namespace
} // namespace kelvo
