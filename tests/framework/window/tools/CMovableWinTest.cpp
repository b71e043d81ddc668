// Tool windows that a mouse drags about and sizes.

#include "framework/window/tools/CMovableWin.h"
#include "tests/framework/window/tools/ToolWindowFixture.h"

namespace kelvo {
namespace {

class MovableWindow : public testing::Test {
protected:
    void SetUp() override {
        owner_.SetStyle(WS_POPUP | WS_VISIBLE);
        owner_.SetPlacement(20, 30, 400, 300);
        ASSERT_EQ(owner_.Create(), 1);
        window_.SetParent(&owner_);
    }
    void CreateAt(LONG left, LONG top, LONG width, LONG height) {
        window_.SetPlacement(left, top, width, height);
        ASSERT_EQ(window_.Create(), 1);
        lum.ProcessMessages();
    }
    /// Of the owner's client area: a window manager need not put it where it was asked to.
    POINT Origin() const {
        POINT origin{};
        ClientToScreen(owner_.Window(), &origin);
        return origin;
    }
    /// To a point of the owner's client area.
    void MovePointerTo(LONG x, LONG y) const { MovePointer(Origin().x + x, Origin().y + y); }
    /// In the owner's client area.
    RECT Place() const {
        RECT place{};
        GetWindowRect(window_.Window(), &place);
        const POINT origin = Origin();
        return {place.left - origin.x, place.top - origin.y, place.right - origin.x,
                place.bottom - origin.y};
    }
    void ExpectPlace(LONG left, LONG top, LONG right, LONG bottom) const {
        const RECT place = Place();
        EXPECT_EQ(place.left, left);
        EXPECT_EQ(place.top, top);
        EXPECT_EQ(place.right, right);
        EXPECT_EQ(place.bottom, bottom);
    }

    NotingWindow owner_;
    CMovableWin window_;
};

TEST_F(MovableWindow, IsAGreyChildOf500By300UnlessToldOtherwise) {
    EXPECT_EQ(window_.Width(), 500);
    EXPECT_EQ(window_.Height(), 300);
    EXPECT_EQ(window_.Style(), 0x54040000U);
    EXPECT_FALSE(window_.IsMovable());
    CreateAt(5, 6, 100, 50);
    EXPECT_EQ(PixelOf(window_, 0, 0), 0xC0C0C0U);
    EXPECT_EQ(window_.Style(), 0x54040000U);
    // No edge: what is put at (0, 0) stands at the window's corner.
    RECT client{};
    GetClientRect(window_.Window(), &client);
    EXPECT_EQ(client.right, 100);
    ExpectPlace(5, 6, 105, 56);
}

TEST_F(MovableWindow, FollowsTheMouseOnlyWhileItIsMovable) {
    CreateAt(10, 10, 100, 50);
    QWidget* const widget = desktop::WidgetOf(window_.Window());
    const auto drag = [&] {
        MovePointerTo(40, 40);
        QTest::mousePress(widget, Qt::LeftButton, {}, QPoint(40, 40) - widget->pos());
        lum.ProcessMessages();
        MovePointerTo(40 + 25, 40 + 35);
        lum.ProcessMessages();
        QTest::mouseRelease(widget, Qt::LeftButton, {}, {5, 5});
        lum.ProcessMessages();
    };
    drag();
    ExpectPlace(10, 10, 110, 60);
    window_.SetMovable(true);
    drag();
    ExpectPlace(35, 45, 135, 95);
    EXPECT_FALSE(window_.IsDragged());
    EXPECT_EQ(GetCapture(), nullptr);
    MovePointerTo(180, 170);
    lum.ProcessMessages();
    ExpectPlace(35, 45, 135, 95);
}

TEST_F(MovableWindow, HasAnEdgeThatSizesItWhileItIsMovable) {
    window_.SetMovable(true);
    CreateAt(50, 60, 100, 80);
    ExpectPlace(50, 60, 150, 140);
    RECT client{};
    GetClientRect(window_.Window(), &client);
    EXPECT_EQ(client.right, 92);
    EXPECT_EQ(client.bottom, 72);
    POINT corner{};
    ClientToScreen(window_.Window(), &corner);
    EXPECT_EQ(corner.x, Origin().x + 54);
    // The lower right corner, on the edge that is drawn on the owner.
    QWidget* const below = desktop::WidgetOf(owner_.Window());
    MovePointerTo(148, 138);
    lum.ProcessMessages();
    owner_.noted.clear();
    QTest::mousePress(below, Qt::LeftButton, {}, {148, 138});
    QTimer::singleShot(0, [&] {
        MovePointerTo(158, 168);
        QTest::mouseRelease(below, Qt::LeftButton, {}, {158, 168});
    });
    ASSERT_TRUE(ProcessUntil([this] { return Place().right == 160; }));
    ExpectPlace(50, 60, 160, 170);
    EXPECT_EQ(owner_.Count(WM_LBUTTONDOWN), 0);
}

} // namespace
} // namespace kelvo
