// Fonts, measuring and writing text.

#include "tests/platform/desktop/SurfaceWindow.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <string_view>
#include <thread>

namespace kelvo::desktop {
namespace {

LOGFONTA Describe(LONG height, LONG width, BYTE pitch, const char* face) {
    LOGFONTA font{};
    font.lfHeight = height;
    font.lfWidth = width;
    font.lfWeight = FW_NORMAL;
    font.lfCharSet = DEFAULT_CHARSET;
    font.lfQuality = PROOF_QUALITY;
    font.lfPitchAndFamily = pitch;
    std::strncpy(font.lfFaceName, face, LF_FACESIZE - 1);
    return font;
}

class Text : public testing::Test {
protected:
    Text() : before_(CountDrawingObjects()), window_({200, 60}), dc_(GetDC(window_.Handle())) {}
    ~Text() override {
        if (font_ != nullptr) {
            SelectObject(dc_, GetStockObject(SYSTEM_FONT));
            EXPECT_TRUE(DeleteObject(font_));
        }
        ReleaseDC(window_.Handle(), dc_);
        EXPECT_EQ(CountDrawingObjects(), before_);
    }

    void Select(const LOGFONTA& description) {
        const HFONT font = CreateFontIndirectA(&description);
        SelectObject(dc_, font);
        if (font_ != nullptr) {
            EXPECT_TRUE(DeleteObject(font_));
        }
        font_ = font;
    }
    int Width(std::string_view text) {
        SIZE size{};
        EXPECT_TRUE(GetTextExtentPoint32A(dc_, text.data(), static_cast<int>(text.size()), &size));
        return size.cx;
    }
    BOOL Write(int x, int y, std::string_view text) {
        return TextOutA(dc_, x, y, text.data(), static_cast<int>(text.size()));
    }
    /// The smallest rectangle around all pixels of a colour.
    QRect Bounds(std::uint32_t colour) {
        const QImage image = window_.Surface().Snapshot();
        QRect bounds;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                if ((image.pixel(x, y) & 0xFFFFFFU) == colour) bounds |= QRect(x, y, 1, 1);
            }
        }
        return bounds;
    }

    DrawingObjectCounts before_;
    SurfaceWindow window_;
    HDC dc_;
    HFONT font_ = nullptr;
};

TEST_F(Text, FillsItsCellWithTheBackgroundColourUnlessTransparent) {
    Select(Describe(20, 0, VARIABLE_PITCH, "Arial"));
    EXPECT_EQ(SetBkColor(dc_, RGB(0, 255, 0)), RGB(255, 255, 255));
    EXPECT_EQ(SetTextColor(dc_, RGB(0, 0, 255)), 0U);
    EXPECT_TRUE(Write(10, 5, "Kelvo"));
    TEXTMETRICA metrics{};
    EXPECT_TRUE(GetTextMetricsA(dc_, &metrics));
    EXPECT_NEAR(metrics.tmHeight, 20, 1);
    EXPECT_EQ(metrics.tmHeight, metrics.tmAscent + metrics.tmDescent);
    EXPECT_EQ(Bounds(0x00FF00), QRect(10, 5, Width("Kelvo"), metrics.tmHeight));
    EXPECT_FALSE(Bounds(0x0000FF).isEmpty()) << "whole strokes in the text colour";

    EXPECT_EQ(SetBkMode(dc_, TRANSPARENT), OPAQUE);
    EXPECT_EQ(SetBkMode(dc_, 3), 0);
    EXPECT_EQ(SetBkColor(dc_, RGB(255, 0, 0)), RGB(0, 255, 0));
    EXPECT_TRUE(Write(100, 5, "Kelvo"));
    EXPECT_TRUE(Bounds(0xFF0000).isEmpty());
}

TEST_F(Text, AlignmentSaysWhichCornerIsGiven) {
    Select(Describe(20, 0, VARIABLE_PITCH, "Arial"));
    SetBkColor(dc_, RGB(0, 255, 0));
    TEXTMETRICA metrics{};
    GetTextMetricsA(dc_, &metrics);
    EXPECT_EQ(SetTextAlign(dc_, TA_BOTTOM | TA_RIGHT), TA_LEFT | TA_TOP);
    EXPECT_TRUE(Write(100, 50, "Kelvo"));
    EXPECT_EQ(Bounds(0x00FF00),
              QRect(100 - Width("Kelvo"), 50 - metrics.tmHeight, Width("Kelvo"), metrics.tmHeight));
}

TEST_F(Text, UpdatingThePositionLeavesItBehindTheText) {
    SetTextAlign(dc_, TA_UPDATECP);
    MoveToEx(dc_, 7, 9, nullptr);
    EXPECT_TRUE(Write(0, 0, "ab"));
    POINT position{};
    GetCurrentPositionEx(dc_, &position);
    EXPECT_EQ(position.x, 7 + Width("ab"));
    EXPECT_EQ(position.y, 9);
}

TEST_F(Text, WidthFollowsTheFontThatWasAskedFor) {
    Select(Describe(16, 0, FIXED_PITCH, "CourierNew"));
    EXPECT_EQ(Width("iiii"), Width("WWWW"));
    TEXTMETRICA metrics{};
    GetTextMetricsA(dc_, &metrics);
    EXPECT_EQ(metrics.tmPitchAndFamily & 1, 0);
    Select(Describe(16, 0, VARIABLE_PITCH, "Arial"));
    EXPECT_LT(Width("iiii"), Width("WWWW"));
    GetTextMetricsA(dc_, &metrics);
    EXPECT_EQ(metrics.tmPitchAndFamily & 1, 1);
    const int natural = Width("Kelvo plays films");
    Select(Describe(16, metrics.tmAveCharWidth * 2, VARIABLE_PITCH, "Arial"));
    EXPECT_NEAR(Width("Kelvo plays films"), natural * 2, natural / 4);
    Select(Describe(32, 0, VARIABLE_PITCH, "Arial"));
    EXPECT_NEAR(Width("Kelvo plays films"), natural * 2, natural / 4);
}

TEST_F(Text, AFontGivesBackItsDescription) {
    const LOGFONTA wanted = Describe(14, 0, VARIABLE_PITCH | FF_SWISS, "Arial");
    Select(wanted);
    LOGFONTA found{};
    EXPECT_EQ(GetObjectA(font_, sizeof(found), &found), int{sizeof(LOGFONTA)});
    EXPECT_EQ(std::memcmp(&found, &wanted, sizeof(found)), 0);
    char face[4] = "...";
    EXPECT_EQ(GetTextFaceA(dc_, sizeof(face), face), 4);
    EXPECT_EQ(face[3], '\0');
    EXPECT_GT(GetTextFaceA(dc_, 0, nullptr), 4);
    EXPECT_EQ(CreateFontIndirectA(nullptr), nullptr);
}

TEST_F(Text, ExtentsGrowByCharactersNotByBytes) {
    const std::string_view text =
        "a\xC3\xA8z\xF0\x9F\x98\x80"; // a è z and a character of four bytes
    int extents[8] = {};
    int fit = -1;
    SIZE size{};
    const auto length = static_cast<int>(text.size());
    EXPECT_TRUE(GetTextExtentExPointA(dc_, text.data(), length, 10000, &fit, extents, &size));
    EXPECT_EQ(fit, 8);
    EXPECT_EQ(extents[0], Width("a"));
    EXPECT_EQ(extents[1], extents[2]) << "both bytes of one character";
    EXPECT_GT(extents[1], extents[0]);
    EXPECT_GT(extents[3], extents[2]);
    EXPECT_EQ(extents[4], extents[7]);
    EXPECT_EQ(extents[7], size.cx);
    // One pixel less than the second character needs: only the first fits.
    EXPECT_TRUE(
        GetTextExtentExPointA(dc_, text.data(), length, extents[1] - 1, &fit, nullptr, &size));
    EXPECT_EQ(fit, 1);
    EXPECT_TRUE(GetTextExtentExPointA(dc_, text.data(), length, -5, &fit, nullptr, &size));
    EXPECT_EQ(fit, 0);
}

TEST_F(Text, DamagedBytesAreMeasuredAndDrawnLikeOthers) {
    const std::string_view damaged = "\xC3\x28\xFF\xE2\x82\n\t\xF0\x9F";
    int extents[9];
    std::fill(std::begin(extents), std::end(extents), -1);
    int fit = 0;
    SIZE size{};
    EXPECT_TRUE(GetTextExtentExPointA(dc_, damaged.data(), 9, 10000, &fit, extents, &size));
    EXPECT_EQ(fit, 9);
    EXPECT_TRUE(std::is_sorted(std::begin(extents), std::end(extents)));
    EXPECT_GT(extents[0], 0);
    EXPECT_TRUE(Write(0, 0, damaged));
    EXPECT_TRUE(Write(0, 0, ""));
    EXPECT_FALSE(TextOutA(dc_, 0, 0, nullptr, 3));
    EXPECT_FALSE(TextOutA(dc_, 0, 0, "a", -1));
    EXPECT_FALSE(TextOutA(nullptr, 0, 0, "a", 1));
    EXPECT_FALSE(GetTextExtentPoint32A(dc_, "a", 1, nullptr));
    EXPECT_FALSE(GetTextMetricsA(dc_, nullptr));
}

TEST_F(Text, ScalesWithTheMapping) {
    Select(Describe(100, 0, VARIABLE_PITCH, "Arial"));
    const int logical = Width("Kelvo");
    SetMapMode(dc_, MM_ANISOTROPIC);
    SetWindowExtEx(dc_, 800, 800, nullptr);
    SetViewportExtEx(dc_, 80, 80, nullptr);
    SetBkColor(dc_, RGB(0, 255, 0));
    EXPECT_NEAR(Width("Kelvo"), logical, logical / 5);
    EXPECT_TRUE(Write(0, 0, "Kelvo"));
    EXPECT_NEAR(Bounds(0x00FF00).height(), 10, 1);
}

TEST_F(Text, IsWrittenByTwoThreadsAtOnce) {
    const auto write = [this](COLORREF colour) {
        const HDC dc = GetDC(window_.Handle());
        const LOGFONTA description = Describe(18, 7, VARIABLE_PITCH, "Arial");
        for (int i = 0; i < 50; ++i) {
            const HFONT font = CreateFontIndirectA(&description);
            const HGDIOBJ former = SelectObject(dc, font);
            SetTextColor(dc, colour);
            EXPECT_TRUE(TextOutA(dc, 3, 3, "Kelvo", 5));
            SelectObject(dc, former);
            EXPECT_TRUE(DeleteObject(font));
        }
        ReleaseDC(window_.Handle(), dc);
    };
    std::thread first(write, RGB(0, 0, 255));
    std::thread second(write, RGB(255, 0, 0));
    first.join();
    second.join();
    // Whoever came last: each writing covers all of the one before.
    EXPECT_NE(Bounds(0x0000FF).isEmpty(), Bounds(0xFF0000).isEmpty());
}

} // namespace
} // namespace kelvo::desktop
