// The clipboard's picture, both ways.

#include "platform/desktop/clipboard.h"

#include "platform/base/memory.h"

#include <gtest/gtest.h>

#include <QClipboard>
#include <QGuiApplication>
#include <QImage>

#include <cstdint>
#include <cstring>
#include <vector>

namespace {

using Bytes = std::vector<std::uint8_t>;

/// 3 x 2, 24 bits: a row of blue, then above it one of red, green and white.
const Bytes kPacked{40, 0, 0, 0, 3,  0, 0,   0, 2,   0, 0,   0,   1,   0, 24,  0,
                    0,  0, 0, 0, 24, 0, 0,   0, 0,   0, 0,   0,   0,   0, 0,   0,
                    0,  0, 0, 0, 0,  0, 0,   0, 255, 0, 0,   255, 0,   0, 255, 0,
                    0,  0, 0, 0, 0,  0, 255, 0, 255, 0, 255, 255, 255, 0, 0,   0};

HGLOBAL Block(const Bytes& bytes) {
    const HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, bytes.size());
    std::memcpy(GlobalLock(block), bytes.data(), bytes.size());
    GlobalUnlock(block);
    return block;
}

Bytes Content(HANDLE block) {
    const auto* bytes = static_cast<const std::uint8_t*>(GlobalLock(block));
    Bytes content(bytes, bytes + GlobalSize(block));
    GlobalUnlock(block);
    return content;
}

TEST(Clipboard, GivesTheDesktopsPictureAsAPackedBitmap) {
    QImage picture(3, 2, QImage::Format_ARGB32);
    picture.fill(0xFF0000FF);
    picture.setPixel(0, 0, 0xFFFF0000);
    picture.setPixel(1, 0, 0xFF00FF00);
    picture.setPixel(2, 0, 0x00000000); // transparent: white
    QGuiApplication::clipboard()->setImage(picture);
    EXPECT_TRUE(IsClipboardFormatAvailable(CF_DIB));
    EXPECT_FALSE(IsClipboardFormatAvailable(1));
    EXPECT_EQ(GetClipboardData(CF_DIB), nullptr) << "not open";
    ASSERT_TRUE(OpenClipboard(nullptr));
    EXPECT_FALSE(OpenClipboard(nullptr)) << "open already";
    EXPECT_EQ(GetClipboardData(1), nullptr);
    const HANDLE block = GetClipboardData(CF_DIB);
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(Content(block), kPacked);
    EXPECT_EQ(GetClipboardData(CF_DIB), block);
    EXPECT_TRUE(CloseClipboard());
    EXPECT_FALSE(CloseClipboard());
    EXPECT_EQ(GlobalSize(block), 0U) << "the clipboard's block goes with it";
}

TEST(Clipboard, GivesNothingWhenThereIsNoPicture) {
    QGuiApplication::clipboard()->setText("words");
    EXPECT_FALSE(IsClipboardFormatAvailable(CF_DIB));
    ASSERT_TRUE(OpenClipboard(nullptr));
    EXPECT_EQ(GetClipboardData(CF_DIB), nullptr);
    EXPECT_TRUE(CloseClipboard());
    EXPECT_EQ(QGuiApplication::clipboard()->text(), "words");
}

TEST(Clipboard, TakesAPictureWhenItIsClosed) {
    QGuiApplication::clipboard()->setText("words");
    const HGLOBAL block = Block(kPacked);
    EXPECT_EQ(SetClipboardData(CF_DIB, block), nullptr) << "not open";
    ASSERT_TRUE(OpenClipboard(nullptr));
    EXPECT_EQ(SetClipboardData(CF_DIB, block), nullptr) << "not emptied";
    EXPECT_TRUE(EmptyClipboard());
    Bytes cut = kPacked;
    cut.pop_back();
    const HGLOBAL cut_block = Block(cut);
    EXPECT_EQ(SetClipboardData(CF_DIB, cut_block), nullptr);
    EXPECT_EQ(GlobalFree(cut_block), nullptr) << "still the caller's";
    EXPECT_EQ(SetClipboardData(CF_DIB, block), block);
    EXPECT_EQ(GetClipboardData(CF_DIB), block);
    EXPECT_TRUE(CloseClipboard());
    const QImage picture = QGuiApplication::clipboard()->image();
    ASSERT_EQ(picture.size(), QSize(3, 2));
    EXPECT_EQ(picture.pixel(0, 0), 0xFFFF0000U);
    EXPECT_EQ(picture.pixel(2, 1), 0xFF0000FFU);
}

TEST(Clipboard, IsClearedWhenNothingFollowsTheEmptying) {
    QGuiApplication::clipboard()->setText("words");
    EXPECT_FALSE(EmptyClipboard());
    ASSERT_TRUE(OpenClipboard(nullptr));
    EXPECT_TRUE(EmptyClipboard());
    EXPECT_TRUE(CloseClipboard());
    EXPECT_EQ(QGuiApplication::clipboard()->text(), QString());
}

} // namespace
