#include "framework/base/CBufferlum.h"

#include "framework/base/ChFile.h"
#include "framework/base/FileBufferlum.h"
#include "platform/base/file_calls.h"
#include "platform/base/message_boxes.h"
#include "tests/framework/base/AllocationRefusal.h"
#include "tests/framework/base/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <string>

namespace kelvo {
namespace {

using platform::MessageBoxRecorder;
using testing::ElementsAre;

CBufferlum Of(std::initializer_list<int> bytes) {
    CBufferlum buffer;
    for (const int byte : bytes) {
        buffer.AppendByte(static_cast<std::uint8_t>(byte));
    }
    return buffer;
}

TEST(ByteBuffer, StoresNumbersLowByteFirst) {
    CBufferlum buffer;
    buffer.Append16(0x0102).Append32(0x01020304U).Append32(-2).Append64(0x0102030405060708U);
    EXPECT_THAT(buffer.View(),
                ElementsAre(2, 1, 4, 3, 2, 1, 0xFE, 0xFF, 0xFF, 0xFF, 8, 7, 6, 5, 4, 3, 2, 1));
    EXPECT_EQ(buffer.Put16(0, 0xAABB), 2U);
    EXPECT_EQ(buffer.Put32(2, 0xCCDDEEFF), 4U);
    EXPECT_EQ(buffer.Put64(10, 1), 8U);
    EXPECT_EQ(buffer.Put64(11, 2), 0U); // would end outside
    EXPECT_EQ(buffer.Put16(0xFFFFFFFF, 2), 0U);
    std::uint16_t small = 0;
    std::uint32_t middle = 0;
    std::uint64_t large = 0;
    EXPECT_EQ(buffer.Get16(0, small), 2U);
    EXPECT_EQ(buffer.Get32(2, middle), 4U);
    EXPECT_EQ(buffer.Get64(10, large), 8U);
    EXPECT_EQ(small, 0xAABB);
    EXPECT_EQ(middle, 0xCCDDEEFF);
    EXPECT_EQ(large, 1U);
    EXPECT_EQ(buffer.Get32(15, middle), 0U);
    EXPECT_EQ(middle, 0U);
}

TEST(ByteBuffer, AppendsTextsAndBuffers) {
    CBufferlum buffer;
    buffer.Append(CString("ab")).Append("c").Append("").Append(CString()).Append(CBufferlum());
    EXPECT_THAT(buffer.View(), ElementsAre('a', 'b', 'c', 0));
    buffer.Append(buffer);
    EXPECT_THAT(buffer.View(), ElementsAre('a', 'b', 'c', 0, 'a', 'b', 'c', 0));
    CBufferlum tight(1);
    tight.Append(ByteView{buffer.View().first(4)}).Append(tight.View().subspan(1, 2));
    EXPECT_THAT(tight.View(), ElementsAre('a', 'b', 'c', 0, 'b', 'c'));
    CBufferlum copy;
    copy = buffer;
    buffer.Clear();
    EXPECT_EQ(buffer.Capacity(), 0U);
    EXPECT_EQ(copy.Length(), 8U);
    copy = CBufferlum();
    EXPECT_EQ(copy.Length(), 0U);
}

TEST(ByteBuffer, InsertsAndMovesTheTailUp) {
    CBufferlum buffer = Of({1, 2, 3, 4, 5});
    buffer.Insert(0, Of({7, 8, 9}));
    EXPECT_THAT(buffer.View(), ElementsAre(7, 8, 9, 1, 2, 3, 4, 5));
    buffer.Insert(8, Of({6}));
    buffer.Insert(10, Of({99})); // outside: nothing
    EXPECT_THAT(buffer.View(), ElementsAre(7, 8, 9, 1, 2, 3, 4, 5, 6));
    CBufferlum twice = Of({1, 2});
    twice.Insert(1, twice);
    EXPECT_THAT(twice.View(), ElementsAre(1, 1, 2, 2));
}

TEST(ByteBuffer, GrowsByTheRequestAndItsStep) {
    CBufferlum buffer(10);
    buffer.Append32(0U);
    EXPECT_EQ(buffer.Capacity(), 14U);
    EXPECT_TRUE(buffer.Reserve(9));
    EXPECT_EQ(buffer.Capacity(), 14U);
    EXPECT_TRUE(buffer.Reserve(10)); // not below the capacity
    EXPECT_EQ(buffer.Capacity(), 24U);
}

TEST(ByteBuffer, IsWrittenToAFileAndReadBack) {
    const TemporaryFolder folder;
    ChFile file;
    ASSERT_TRUE(file.CreateFresh(folder.File("buffer")));
    EXPECT_TRUE(Of({1, 2, 3}).WriteTo(file));
    EXPECT_TRUE(CBufferlum().WriteTo(file));
    EXPECT_TRUE(file.WriteU32(0xFFFFFFF0)); // a length that the file does not hold
    EXPECT_EQ(TemporaryFolder::Content(file.FileName()),
              std::string("\3\0\0\0\1\2\3\0\0\0\0\xF0\xFF\xFF\xFF", 15));
    ASSERT_TRUE(file.Seek(0));
    CBufferlum buffer = Of({9});
    EXPECT_TRUE(buffer.ReadFrom(file));
    EXPECT_THAT(buffer.View(), ElementsAre(1, 2, 3));
    EXPECT_TRUE(buffer.ReadFrom(file));
    EXPECT_EQ(buffer.Length(), 0U);
    buffer.AppendByte(5);
    EXPECT_FALSE(buffer.ReadFrom(file));
    EXPECT_THAT(buffer.View(), ElementsAre(5));
}

TEST(ByteBuffer, ShowsTheBoxWithoutMemoryAndKeepsWhatItHad) {
    CBufferlum buffer(1);
    buffer.Append32(1U);
    const CBufferlum other = Of({1, 2, 3, 4, 5, 6, 7});
    const MessageBoxRecorder boxes;
    const AllocationRefusal refusal;
    buffer.Append64(1).Append(other).Insert(0, other);
    buffer = other;
    EXPECT_THAT(buffer.View(), ElementsAre(1, 0, 0, 0));
    ASSERT_EQ(boxes.Boxes().size(), 4U);
    EXPECT_EQ(boxes.Boxes()[3].text, "CBufferlum::AllocSpace() - new returns 0!");
    EXPECT_EQ(boxes.Boxes()[3].caption, "ERRORE ALLOCAZIONE");
}

TEST(BlockCache, ReadsTheBlockThatHoldsThePosition) {
    const TemporaryFolder folder;
    std::string content(1000, '\0');
    for (std::size_t i = 0; i < content.size(); ++i) {
        content[i] = static_cast<char>(i * 7 + i / 256);
    }
    ChFile file;
    ASSERT_TRUE(file.OpenReadOnly(folder.Write("parsed", content)));
    FileBufferlum cache;
    EXPECT_FALSE(cache.Bind(file, 0));
    ASSERT_TRUE(cache.Bind(file, 256));
    const std::uint8_t* byte = cache.Load(900);
    ASSERT_NE(byte, nullptr);
    EXPECT_EQ(*byte, static_cast<std::uint8_t>(content[900]));
    EXPECT_EQ(byte[-132], static_cast<std::uint8_t>(content[768])); // the block's first
    EXPECT_EQ(file.Position(), 768 + 232);

    ASSERT_TRUE(file.Seek(5));
    EXPECT_EQ(cache.At(768), static_cast<std::uint8_t>(content[768]));
    EXPECT_EQ(file.Position(), 5); // served from the block
    for (const std::size_t position : {0U, 255U, 256U, 999U, 300U}) {
        EXPECT_EQ(cache.At(static_cast<std::int64_t>(position)),
                  static_cast<std::uint8_t>(content[position]));
    }
    EXPECT_EQ(cache.Load(1000), nullptr);
    EXPECT_EQ(cache.Load(-1), nullptr);
    EXPECT_EQ(cache.At(1000), 0);

    const AllocationRefusal refusal;
    EXPECT_FALSE(cache.Bind(file, 256));
}

} // namespace
} // namespace kelvo
