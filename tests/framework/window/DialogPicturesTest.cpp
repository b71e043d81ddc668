// What a dialog draws into its owner-drawn controls: bitmap buttons, pictures, frames.

#include "framework/base/MemCheck.h"
#include "framework/window/CDc.h"
#include "framework/window/dialogs/COwnerDrawButton.h"
#include "framework/window/dialogs/FrameControls.h"
#include "framework/window/dialogs/StaticBitmaps.h"
#include "platform/desktop/controls.h"
#include "tests/framework/window/WindowFixture.h"

namespace kelvo {
namespace {

constexpr int kId = 201;
constexpr COLORREF kPaper = 0x123456;
constexpr COLORREF kRed = 0x0000FF;
constexpr COLORREF kGreen = 0x00FF00;
constexpr COLORREF kBlue = 0xFF0000;

HBITMAP MakeBitmap(LONG width, LONG height, COLORREF colour) {
    CDc screen;
    screen.Attach(GetDC(nullptr));
    CDc memory;
    memory.Attach(CreateCompatibleDC(screen.Context()));
    const HBITMAP bitmap = CreateCompatibleBitmap(screen.Context(), width, height);
    const HGDIOBJ former = SelectObject(memory.Context(), bitmap);
    const RECT all{0, 0, width, height};
    const HBRUSH brush = CreateSolidBrush(colour);
    FillRect(memory.Context(), &all, brush);
    DeleteObject(brush);
    SelectObject(memory.Context(), former);
    DeleteDC(memory.Context());
    ReleaseDC(nullptr, screen.Context());
    return bitmap;
}

void PaintPixels(HBITMAP bitmap, std::initializer_list<POINT> points, COLORREF colour) {
    const HDC memory = CreateCompatibleDC(nullptr);
    const HGDIOBJ former = SelectObject(memory, bitmap);
    for (const POINT& point : points) {
        SetPixel(memory, point.x, point.y, colour);
    }
    SelectObject(memory, former);
    DeleteDC(memory);
}

/// A control of 100 x 60 pixels in a window, and the items that it asks to have drawn.
class DrawnControls : public testing::Test {
protected:
    void SetUp() override {
        window_.SetStyle(WS_POPUP | WS_VISIBLE);
        window_.SetPlacement(0, 0, 200, 200);
        ASSERT_EQ(window_.Create(), 1);
        control_.SetStyle(WS_CHILD | WS_VISIBLE);
        control_.SetParent(&window_);
        control_.SetPlacement(10, 10, 100, 60);
        control_.SetBackgroundColour(kPaper);
        control_.SetPaintBackground(true);
        ASSERT_EQ(control_.Create(), 1);
        lum.ProcessMessages();
        context_.GetWindowDc(control_);
    }
    void TearDown() override { context_.ReleaseWindowDc(control_); }

    DRAWITEMSTRUCT Item(UINT state = 0, int id = kId) const {
        DRAWITEMSTRUCT item{};
        item.CtlID = static_cast<UINT>(id);
        item.itemState = state;
        item.hwndItem = control_.Window();
        item.hDC = context_.Context();
        item.rcItem = {0, 0, 100, 60};
        return item;
    }
    static bool Draw(CObj& button, const DRAWITEMSTRUCT& item) {
        return button.HandleMessage(WM_DRAWITEM, item.CtlID, reinterpret_cast<LPARAM>(&item));
    }
    COLORREF Pixel(LONG x, LONG y) const { return GetPixel(context_.Context(), x, y); }
    SIZE ControlSize() const {
        RECT client{};
        GetClientRect(control_.Window(), &client);
        return {client.right, client.bottom};
    }

    NotingWindow window_;
    NotingWindow control_;
    CDc context_;
};

TEST_F(DrawnControls, ButtonTakesTheSizeOfTheStateItShows) {
    COwnerDrawButton button(kId, {MakeBitmap(30, 20, kRed), MakeBitmap(40, 24, kGreen)}, {});
    EXPECT_FALSE(Draw(button, Item(0, kId + 1)));
    EXPECT_EQ(Pixel(0, 0), kPaper);

    EXPECT_TRUE(Draw(button, Item()));
    EXPECT_EQ(ControlSize().cx, 40);
    EXPECT_EQ(ControlSize().cy, 24);
    EXPECT_EQ(Pixel(0, 0), kGreen);
    EXPECT_EQ(Pixel(39, 23), kGreen);

    EXPECT_TRUE(Draw(button, Item(ODS_SELECTED)));
    EXPECT_EQ(ControlSize().cx, 30);
    EXPECT_EQ(ControlSize().cy, 20);
    EXPECT_EQ(Pixel(29, 19), kRed);
}

TEST_F(DrawnControls, ButtonMeasuresTenByTen) {
    COwnerDrawButton button(kId, {}, {});
    MEASUREITEMSTRUCT item{};
    item.CtlID = kId + 1;
    EXPECT_FALSE(button.HandleMessage(WM_MEASUREITEM, 0, reinterpret_cast<LPARAM>(&item)));
    item.CtlID = kId;
    EXPECT_TRUE(button.HandleMessage(WM_MEASUREITEM, kId, reinterpret_cast<LPARAM>(&item)));
    EXPECT_EQ(item.itemWidth, 10U);
    EXPECT_EQ(item.itemHeight, 10U);
}

TEST_F(DrawnControls, ButtonReplacesTheColourThatTwoCornersShare) {
    const HBITMAP normal = MakeBitmap(10, 10, kRed);
    PaintPixels(normal, {{0, 0}, {9, 9}, {5, 5}}, kGreen); // bottom left and top right stay red
    PaintPixels(normal, {{0, 9}}, kBlue);
    COwnerDrawButton button(kId, {MakeBitmap(10, 10, kRed), normal}, kPaper);
    ASSERT_TRUE(Draw(button, Item()));
    EXPECT_EQ(Pixel(0, 0), kPaper); // top left agrees with bottom right: green is the background
    EXPECT_EQ(Pixel(5, 5), kPaper);
    EXPECT_EQ(Pixel(9, 9), kPaper);
    EXPECT_EQ(Pixel(0, 9), kBlue);
    EXPECT_EQ(Pixel(9, 0), kRed);
}

struct Fitting {
    const char* name;
    LONG width;
    LONG height;
    LONG shown_width;
    LONG shown_height;
};
const Fitting kFittings[] = {
    {"SmallerStaysAsItIs", 50, 40, 50, 40},
    {"WiderIsShrunkToTheWidth", 200, 60, 100, 30},
    {"HigherIsShrunkToTheHeight", 60, 120, 30, 60},
    {"BothByTheGreaterRatio", 300, 240, 75, 60},
};

TEST_F(DrawnControls, LonePictureIsFittedIntoTheControl) {
    for (const Fitting& one : kFittings) {
        SCOPED_TRACE(one.name);
        const RECT all{0, 0, 100, 60};
        const HBRUSH paper = CreateSolidBrush(kPaper);
        FillRect(context_.Context(), &all, paper);
        DeleteObject(paper);
        COwnerDrawButton button(kId, {nullptr, MakeBitmap(one.width, one.height, kGreen)}, {});
        ASSERT_TRUE(Draw(button, Item()));
        EXPECT_EQ(ControlSize().cx, 100);
        EXPECT_EQ(Pixel(one.shown_width - 1, one.shown_height - 1), kGreen);
        if (one.shown_width < 100) {
            EXPECT_EQ(Pixel(one.shown_width, 0), kPaper);
        }
        if (one.shown_height < 60) {
            EXPECT_EQ(Pixel(0, one.shown_height), kPaper);
        }
        // Pressed there is nothing to show, but it is this control's all the same.
        EXPECT_TRUE(Draw(button, Item(ODS_SELECTED)));
    }
}

TEST_F(DrawnControls, ArrayOffersTheItemToEachButton) {
    COwnerDrawButtonArray buttons;
    ASSERT_TRUE(buttons.AddButton(kId, {nullptr, MakeBitmap(10, 10, kRed)}));
    ASSERT_TRUE(buttons.AddButton(kId + 1, {nullptr, MakeBitmap(10, 10, kGreen)}));
    EXPECT_TRUE(Draw(buttons, Item(0, kId + 1)));
    EXPECT_EQ(Pixel(0, 0), kGreen);
    EXPECT_FALSE(Draw(buttons, Item(0, kId + 2)));
}

TEST_F(DrawnControls, ArrayWithoutMemorySaysSoAndAddsNothing) {
    platform::MessageBoxRecorder boxes;
    COwnerDrawButtonArray buttons;
    const AllocationGate before = SetAllocationGate([](std::size_t) { return false; });
    const bool added = buttons.AddButton(kId, {MakeBitmap(4, 4, kRed), nullptr});
    SetAllocationGate(before);
    EXPECT_FALSE(added);
    EXPECT_EQ(buttons.Count(), 0);
    EXPECT_EQ(boxes.Texts(),
              std::vector<std::string>{"new FALLITO in: COwnerDrawButtonArray::AddButton()"});
}

TEST_F(DrawnControls, StaticPictureFollowsItsRecord) {
    CArray<StaticControlBitmap> records;
    records.Add({MakeBitmap(40, 40, kRed), kDrawNoScale | kDrawCentre | kDrawMiddle, kId, 1, 0});
    EXPECT_FALSE(DrawStaticBitmap(records, Item(0, kId + 1)));
    EXPECT_TRUE(DrawStaticBitmap(records, Item()));
    EXPECT_EQ(Pixel(29, 30), kPaper);
    EXPECT_EQ(Pixel(30, 10), kRed);
    EXPECT_EQ(Pixel(69, 49), kRed);
    DeleteStaticBitmaps(records);
    EXPECT_EQ(records.Count(), 0);
}

TEST_F(DrawnControls, FramesAreSunkenAndRaised) {
    constexpr COLORREF kShadow = 0x7F7F7F;
    constexpr COLORREF kLight = 0xFFFFFF;
    struct Edge {
        int id;
        COLORREF top_left;
        COLORREF bottom_right;
    };
    for (const Edge& edge : {Edge{10001, kShadow, kLight}, Edge{10002, kLight, kShadow}}) {
        SCOPED_TRACE(edge.id);
        EXPECT_EQ(DrawFrameControl(control_.Window(), context_.Context(), edge.id), 1);
        EXPECT_EQ(Pixel(50, 0), edge.top_left);
        EXPECT_EQ(Pixel(0, 30), edge.top_left);
        EXPECT_EQ(Pixel(50, 59), edge.bottom_right);
        EXPECT_EQ(Pixel(99, 30), edge.bottom_right);
        EXPECT_EQ(Pixel(50, 30), 0xC0C0C0U);
        EXPECT_EQ(Pixel(99, 59), 0xC0C0C0U); // where both edges end, neither draws
    }
    EXPECT_EQ(DrawFrameControl(control_.Window(), context_.Context(), 10003), 0);
}

} // namespace
} // namespace kelvo
