#include "framework/base/CString.h"

#include "framework/base/CArray.h"
#include "framework/base/ChFile.h"
#include "platform/base/message_boxes.h"
#include "tests/framework/base/AllocationRefusal.h"
#include "tests/framework/base/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>

namespace kelvo {
namespace {

using platform::MessageBoxRecorder;
using testing::ElementsAre;

TEST(StringGrowth, AllocatesAtLength0AndAgainAt10And20And30) {
    CString text;
    EXPECT_EQ(text.Capacity(), 0);
    for (int length = 1; length <= 31; ++length) {
        text += 'x';
        const int capacity = length <= 10 ? 11 : length <= 20 ? 21 : length <= 30 ? 31 : 41;
        ASSERT_EQ(text.Capacity(), capacity) << length;
    }
    EXPECT_EQ(text, std::string(31, 'x').c_str());
}

TEST(StringGrowth, AddsTheIncrementOfTheOwner) {
    CString text;
    text.SetGrowthIncrement(100);
    text = "abc";
    EXPECT_EQ(text.Capacity(), 103);
    text += std::string_view(std::string(100, 'x'));
    EXPECT_EQ(text.Capacity(), 203);
    text.Clear();
    EXPECT_EQ(text.Capacity(), 0);
}

TEST(StringBuffer, TakesItsLengthFromWhatWasWritten) {
    CString text("before");
    char* const buffer = text.RawBuffer(10);
    std::memcpy(buffer, "abc\0\0\0\0\0\0\0", 10);
    EXPECT_EQ(text.Length(), 10);
    EXPECT_STREQ(text.TextFrom(1), "bc");
    EXPECT_EQ(text.Length(), 10);
    EXPECT_STREQ(text.Text(), "abc");
    EXPECT_EQ(text.Length(), 3);

    EXPECT_STREQ(text.RawBuffer(0), "");
    EXPECT_EQ(text, "abc");
    std::memset(text.RawBuffer(4), 'y', 4); // no zero written: all of it counts
    EXPECT_STREQ(text.Text(), "yyyy");
}

TEST(StringValues, AreWrittenInDecimal) {
    CString text("before");
    text = -5;
    EXPECT_EQ(text, "-5");
    EXPECT_EQ(CString(std::int8_t{-128}), "-128");
    EXPECT_EQ(CString(std::uint8_t{200}), "200");
    EXPECT_EQ(CString(std::uint16_t{65535}), "65535");
    EXPECT_EQ(CString(INT32_MIN), "-2147483648");
    EXPECT_EQ(CString(UINT32_MAX), "4294967295");
    EXPECT_EQ(CString("n = ") + 7 + 'c' + -1 + 0.5 + CString("!"), "n = 7c-10.5!");
}

TEST(StringValues, WriteDoublesInGeneralForm) {
    EXPECT_EQ(CString(0.5), "0.5");
    EXPECT_EQ(CString(-2.0), "-2");
    EXPECT_EQ(CString(0.1), "0.10000000000000001");
    EXPECT_EQ(CString(1e300), "1.0000000000000001e+300");
    EXPECT_LT(CString(std::numeric_limits<double>::lowest()).Length(), 30);
}

TEST(StringValues, TreatNullAsEmptyAndOwnTextAsAnyOther) {
    CString text(static_cast<const char*>(nullptr));
    EXPECT_TRUE(text.IsEmpty());
    EXPECT_STREQ(text.c_str(), "");
    text = "abcdefghij";
    text += text;
    EXPECT_EQ(text, "abcdefghijabcdefghij");
    text = text.c_str() + 18;
    EXPECT_EQ(text, "ij");
    text.Insert(1, text.View());
    EXPECT_EQ(text, "iijj");
    text.AssignFormat("<%s>", text.c_str());
    EXPECT_EQ(text, "<iijj>");
    text.Fill(text.c_str(), 2);
    EXPECT_EQ(text, "<iijj><iijj>");
    text = *&text;
    EXPECT_EQ(text, "<iijj><iijj>");
}

TEST(StringFormat, IsCutWhereTheScratchBlockEnds) {
    EXPECT_EQ(CString::Formatted("%d-%s", 7, "x"), "7-x");
    const std::string huge(20000, 'h');
    CString text("=");
    text.AppendFormat("%s", huge.c_str());
    EXPECT_EQ(text.Length(), 1 + 2 * 2 + 8192 - 1);
    text.AssignFormat("%%");
    EXPECT_EQ(text, "%");
}

TEST(StringEditing, CutsInsertsFillsAndPads) {
    CString text("hello");
    text.Truncate(5);
    EXPECT_EQ(text, "hello");
    text.Truncate(4);
    EXPECT_EQ(text, "hell");
    text.DeleteFirst(1);
    EXPECT_EQ(text, "ell");
    text.Insert(0, "B");
    text.Insert(99, 'a');
    text.Insert(1, "--");
    EXPECT_EQ(text, "B--ella");
    text.DeleteFirst(7);
    EXPECT_EQ(text.Capacity(), 0);

    EXPECT_EQ(text.Fill('z', 3), "zzz");
    EXPECT_EQ(text.Fill("ab", 3), "ababab");
    EXPECT_EQ(text.Fill("ab", 0), "");
    EXPECT_EQ(text.Fill("", 5), "");
    EXPECT_EQ(CString("  a b").WithoutLeadingSpaces(), "a b");
    text = "000";
    text.RemoveLeading('0');
    EXPECT_EQ(text, "");
    EXPECT_EQ(CString("ab").PaddedRight(4, '.'), "ab..");
    EXPECT_EQ(CString("abcd").PaddedRight(3, '.'), "abcd");
    EXPECT_EQ(CString("a/b/c").Replaced('/', '\\'), "a\\b\\c");
}

TEST(StringEditing, TakesSubstringsInsideItsBounds) {
    const CString text("hello");
    EXPECT_EQ(text.Substring(1, 3), "ell");
    EXPECT_EQ(text.Substring(3), "lo");
    EXPECT_EQ(text.Substring(3, 99), "lo");
    EXPECT_EQ(text.Substring(5, 1), "");
    EXPECT_EQ(text.Substring(-1, 2), "");
    EXPECT_EQ(text.Substring(2, 0), "");
}

TEST(StringEditing, ChangesTheCaseOfAsciiLettersInARange) {
    const auto upper = [](const char* text, int from, int to) {
        CString result(text);
        result.UpperCase(from, to);
        return result;
    };
    EXPECT_EQ(upper("hello", 1, 3), "hELlo");
    EXPECT_EQ(upper("hello", 0, 99), "HELLO");
    EXPECT_EQ(upper("hello", -4, 2), "HEllo");
    EXPECT_EQ(upper("hello", 3, 1), "helLO");
    EXPECT_EQ(upper("hello", 99, 100), "hello");
    EXPECT_EQ(upper("{à`z", 0, -1), "{à`Z");
    CString text("ÀBC[@");
    text.LowerCase();
    EXPECT_EQ(text, "Àbc[@");
}

TEST(StringEditing, CutsToAWidthAndAbbreviatesWords) {
    const CString text("Compressione video");
    EXPECT_EQ(text.CutTo(5, ' ', Abbreviate::Yes), "Comp.");
    EXPECT_EQ(text.CutTo(5, ' ', Abbreviate::No), "Compr");
    EXPECT_EQ(text.CutTo(12, ' ', Abbreviate::Yes), "Compressione"); // the word is whole
    EXPECT_EQ(text.CutTo(2, ' ', Abbreviate::Yes), "Co");
    EXPECT_EQ(text.CutTo(20, '_', Abbreviate::Yes), "Compressione video__");
    EXPECT_EQ(text.CutTo(-3, ' ', Abbreviate::Yes), "");
}

TEST(StringSearch, FindsCharactersAndPatterns) {
    const CString text("abcab");
    EXPECT_EQ(text.Find('b', 2), 4);
    EXPECT_EQ(text.Find('z'), -1);
    EXPECT_EQ(text.Find('a', 99), -1);
    EXPECT_EQ(text.FirstIndexOf('c'), 2);
    EXPECT_EQ(text.FirstIndexOf('z'), 5);
    EXPECT_EQ(text.LastIndexOf('a'), 3);
    EXPECT_EQ(text.LastIndexOf('z'), -1);
    EXPECT_EQ(text.CountOf('b'), 2);

    const CString abc("abc");
    EXPECT_EQ(abc.Find(CString("abc")), 0);
    EXPECT_EQ(abc.Find(CString("bc"), 0), 1);
    EXPECT_EQ(abc.Find(CString("bc"), 2), -1);
    EXPECT_EQ(abc.Find(CString("abcd")), -1);
    EXPECT_EQ(abc.Find(CString("")), -1);
    EXPECT_EQ(CString("aaab").Find(CString("aab")), 1);
}

TEST(StringOrder, ComparesBytes) {
    EXPECT_TRUE(CString("abc") == "abc");
    EXPECT_FALSE(CString("abc") == CString("abC"));
    EXPECT_FALSE(CString("abc") == "abcd");
    EXPECT_LT(CString("a"), CString("à")); // unsigned bytes
    EXPECT_LT(CString("B"), CString("a"));
    EXPECT_EQ(CString("C:\\A\\x.KVF").CompareWithoutCase("c:\\a\\X.kvf"), 0);
    EXPECT_LT(CString("ab").CompareWithoutCase("ABC"), 0);

    CArray<CString> names;
    for (const char* name : {"pear", "Fig", "apple", "pea", ""}) {
        names.Add(name);
    }
    SortStrings(names);
    EXPECT_THAT(names.Items(), ElementsAre("", "Fig", "apple", "pea", "pear"));
}

TEST(StringOrder, KnowsThe23Delimiters) {
    int delimiters = 0;
    for (int c = 0; c < 256; ++c) {
        delimiters += CString::IsDelimiter(static_cast<char>(c)) ? 1 : 0;
    }
    EXPECT_EQ(delimiters, 23);
    for (const char c : std::string(";.:,\"()[]{}*/+!?=^\r\n\t\b ")) {
        EXPECT_TRUE(CString::IsDelimiter(c)) << c;
    }
}

TEST(SavedString, IsItsLengthAndItsBytes) {
    const TemporaryFolder folder;
    ChFile file;
    ASSERT_TRUE(file.CreateFresh(folder.File("saved")));
    EXPECT_TRUE(CString("abc").Save(file));
    EXPECT_TRUE(CString().Save(file));
    EXPECT_EQ(TemporaryFolder::Content(file.FileName()), std::string("\3\0\0\0abc\0\0\0\0", 11));

    ASSERT_TRUE(file.Seek(0));
    CString text("something else");
    EXPECT_TRUE(text.Load(file));
    EXPECT_EQ(text, "abc");
    EXPECT_TRUE(text.Load(file));
    EXPECT_EQ(text, "");
    EXPECT_FALSE(text.Load(file)); // nothing left
}

TEST(SavedString, IsRefusedBeforeAnAllocationWhenItsLengthIsALie) {
    const TemporaryFolder folder;
    const std::string_view claims[] = {
        {"\xFF\xFF\xFF\xFFxx", 6}, {"\xFF\xFF\xFF\x7Fxx", 6}, {"\3\0\0\0xx", 6}, {"\3\0\0", 3}};
    for (const std::string_view claim : claims) {
        ChFile file;
        ASSERT_TRUE(file.OpenReadOnly(folder.Write("claim", claim)));
        const MessageBoxRecorder boxes;
        const AllocationRefusal refusal; // would show a box
        CString text;
        EXPECT_FALSE(text.Load(file));
        EXPECT_TRUE(text.IsEmpty());
        EXPECT_TRUE(boxes.Boxes().empty());
    }
}

TEST(StringWithoutMemory, ShowsTheBoxAndKeepsWhatItHad) {
    CString text("0123456789");
    const CString other("other");
    const MessageBoxRecorder boxes;
    {
        const AllocationRefusal refusal;
        text += "needs more room";
        EXPECT_EQ(text, "0123456789");
        EXPECT_FALSE(text.Insert(0, "needs more room"));
        EXPECT_EQ(text, "0123456789");
        EXPECT_FALSE(text.Reserve(INT_MAX));
        text = other;
        EXPECT_TRUE(text.IsEmpty());
        EXPECT_EQ(text.RawBuffer(5), nullptr);
    }
    ASSERT_EQ(boxes.Boxes().size(), 5U);
    for (const auto& box : boxes.Boxes()) {
        EXPECT_EQ(box.owner, nullptr);
        EXPECT_EQ(box.text, "CString::AllocSpace() - new returns 0!");
        EXPECT_EQ(box.caption, "- ERRORE ALLOCAZIONE -");
        EXPECT_EQ(box.type, MB_OK);
    }
    text = "again";
    EXPECT_EQ(text, "again");
}

} // namespace
} // namespace kelvo
