#include "tests/platform/desktop/rich_text/DescribeText.h"

#include "platform/desktop/rich_text/RtfReader.h"
#include "platform/desktop/rich_text/RtfWriter.h"

#include <gtest/gtest.h>

#include <string>

namespace kelvo::desktop {
namespace {

/// The text inside of a document's group.
std::string Document(const std::string& content) {
    return "{\\rtf1\\ansi\r\n" + content + "}";
}

struct Vector {
    const char* name;
    std::string content;
    const char* expected;
};

std::string NameOf(const testing::TestParamInfo<Vector>& info) {
    return info.param.name;
}

class RtfText : public testing::TestWithParam<Vector> {};

TEST_P(RtfText, IsReadAndSurvivesWriting) {
    const auto text = ReadRtfText(Document(GetParam().content));
    ASSERT_TRUE(text);
    EXPECT_EQ(PlainText(*text), GetParam().expected);
    EXPECT_EQ(ReadRtfText(WriteRtf(*text)), text);
}

INSTANTIATE_TEST_SUITE_P(
    Characters, RtfText,
    testing::Values(
        Vector{"BytesOfTheWesternCodePage", "\\ansicpg1252 Caff\\'e8, \\'80\\'85", "Caffè, €…"},
        Vector{"RawBytesAreInTheCodePage", "\\ansicpg1252 Caff\xE8", "Caffè"},
        Vector{"TheDocumentNamesItsCodePage", "\\ansicpg1251 \\'cc\\'ee\\'f1\\'ea\\'e2\\'e0",
               "Москва"},
        Vector{"Central", "\\ansicpg1250 \\'a3\\'f3d\\'9f", "Łódź"},
        Vector{"Greek", "\\ansicpg1253 \\'c5\\'eb\\'eb\\'dc\\'e4\\'e1", "Ελλάδα"},
        Vector{"CombiningCodePagesKeepTheirLastLetter", "\\ansicpg1258 a", "a"},
        Vector{"OldMacintosh", "\\mac Caff\\'8f", "Caffè"},
        Vector{"OldDos", "\\pca Caff\\'8a", "Caffè"},
        Vector{"TwoByteCharactersMayLookLikeSyntax", "\\ansicpg932 \\'83\\'5c\\'93\\'fa\\'83\\\\",
               "ソ日ソ"},
        Vector{"HalfATwoByteCharacterIsNone", "\\ansicpg932 a\\'83", "a\xEF\xBF\xBD"},
        Vector{"Utf8IsACodePageToo", "\\ansicpg65001 Caff\\'c3\\'a8", "Caffè"},
        Vector{"UnknownCodePagesAreWestern", "\\ansicpg77777 \\'e8", "è"},
        Vector{"FontsHaveCodePages",
               "{\\fonttbl{\\f0\\fcharset0 A;}{\\f1\\fcharset204 B;}{\\f2\\fcharset238 C;}}\\f1 "
               "\\'cc\\f2 \\'a3\\f0 \\'e8",
               "МŁè"},
        Vector{"UnicodeWithItsFallback", "\\u321\\'3f\\u243?d\\u378 ?", "Łódź"},
        Vector{"UnicodeWithoutFallback", "\\uc0\\u321\\u243 d", "Łód"},
        Vector{"FallbackOfSeveralCharacters", "\\uc2\\u1052\\'3f\\'3f\\uc1\\u1086 ?.", "Мо."},
        Vector{"FallbackCountIsRestoredByTheGroup", "{\\uc3\\u321 abc}\\u321 abc", "ŁŁbc"},
        Vector{"FallbackEndsWithTheGroup", "{\\u321}abc", "Łabc"},
        Vector{"FallbackMayBeAWord", "\\u8211\\endash x", "–x"},
        Vector{"FallbackMayBeASymbol", "\\u321\\~x", "Łx"},
        Vector{"FormatsAreNoFallback", "\\u321\\b x", "Łx"},
        Vector{"ParagraphsAreNoFallback", "\\u321\\par x", "Ł|x"},
        Vector{"NegativeNumbersCountFrom65536", "\\u-30050?", "語"},
        Vector{"SurrogatePairs", "\\u-10179?\\u-8704?", "😀"},
        Vector{"SurrogatePairsAroundAFallbackCount", "\\uc0 \\u55357\\uc1 \\u56832\\'3f", "😀"},
        Vector{"HalfASurrogatePairIsReplaced", "\\u55357?a\\u56832?", "\uFFFDa\uFFFD"},
        Vector{"NamedCharacters",
               "\\lquote\\rquote\\ldblquote\\rdblquote\\bullet\\endash\\emdash\\~\\_",
               "‘’“”•–—\u00A0\u2011"},
        Vector{"SoftHyphenAndNoWidth", "a\\-b\\zwj\\zwnj c", "a\u00ADb\u200D\u200Cc"},
        Vector{"EscapedSyntax", "\\{a\\}\\\\", "{a}\\"},
        Vector{"LineEndsMeanNothing", "a\r\nb\nc", "abc"},
        Vector{"TabsAndLineBreaks", "a\\tab b\tc\\line d", "a\tb\tc/d"},
        Vector{"BadHexIsText", "\\'zzx", "zzx"},
        Vector{"UnitsThatAreNoCharactersAreReplaced", "\\u64976?\\u65535?a", "\uFFFD\uFFFDa"},
        Vector{"ListPicturesBecomeBullets",
               "{\\fonttbl{\\f0 A;}{\\f1\\fcharset2 Symbol;}}{\\listtext\\f1\\'b7\\tab}\\f0 x",
               "•\tx"}),
    NameOf);

INSTANTIATE_TEST_SUITE_P(
    Structure, RtfText,
    testing::Values(
        Vector{"Nothing", "", ""}, Vector{"TheLastParagraphNeedsNoEnd", "a\\par b", "a|b"},
        Vector{"AnEndedLastParagraphIsNotFollowedByAnEmptyOne", "a\\par b\\par", "a|b"},
        Vector{"EmptyParagraphsStay", "a\\par\\par\\par b\\par\\par", "a|||b|"},
        Vector{"EscapedLineEndsAreParagraphs", "a\\\nb", "a|b"},
        Vector{"TableCellsBecomeTabs", "\\trowd a\\cell b\\cell\\row c\\par", "a\tb|c"},
        Vector{"PagesAreLineBreaks", "a\\page b\\par\\page c", "a/b|c"},
        Vector{"SectionsEndWhatHasBegun", "a\\sect b\\par\\sect c", "a|b|c"},
        Vector{"SkippedGroups",
               "{\\stylesheet{\\s0 Normal;}}{\\info{\\title T}}{\\*\\generator G;}a"
               "{\\pict\\pngblip 89504e47}{\\header h}b{\\footnote f}{\\*\\unknown{\\b x}y}c",
               "abc"},
        Vector{"UnknownWordsMeanNothing", "\\whatever12 a{\\nobodyknows b}", "ab"},
        Vector{"FieldsShowTheirResult", "{\\field{\\*\\fldinst HYPERLINK \"x\"}{\\fldrslt shown}}",
               "shown"},
        Vector{"UnicodeAlternativesAreNotDoubled", "{\\upr{a}{\\*\\ud{b}}}", "a"},
        Vector{"BinaryDataIsSkipped", "a{\\pict\\bin5 }}}{{}b\\bin3 {}{c", "abc"},
        Vector{"HiddenTextIsLeftOut", "a{\\v b}c", "ac"}),
    NameOf);

INSTANTIATE_TEST_SUITE_P(
    Hostile, RtfText,
    testing::Values(
        Vector{"GreatNumbersAreCut",
               "\\fs99999999999\\li-99999999999\\cf99999999\\f-2147483648\\u99999999999?a",
               "\uFFFDa"},
        Vector{"BinaryBeyondTheEnd", "a\\bin4294967295 bcd", "a"},
        Vector{"NegativeBinary", "a\\bin-5 bcd", "abcd"},
        Vector{"DeepGroupsAreLeftOut",
               std::string(100000, '{') + "deep" + std::string(100000, '}') + " after", " after"},
        Vector{"DeepGroupsThatNeverEnd", "before" + std::string(2000000, '{'), "before"},
        Vector{"WordsWithoutEnd", "a\\" + std::string(100000, 'w') + " b", "ab"},
        Vector{"WhatFollowsTheEnd", "a}b{c}}}", "a"}, Vector{"TheEndIsEscaped", "a\\", "a}"}),
    NameOf);

TEST(Rtf, WhatDoesNotBeginAsOneIsNone) {
    for (const char* bytes : {"", "plain", "{", "{}", "{\\", "{\\rt", "{\\b x}", "\\rtf1 x"}) {
        EXPECT_FALSE(ReadRtfText(bytes)) << bytes;
    }
}

TEST(Rtf, IsReadAsFarAsItGoes) {
    const std::string whole = Document("{\\fonttbl{\\f0 Arial;}}\\f0\\b Caff\\'e8\\par\\u321?x");
    for (std::size_t length = 5; length < whole.size(); ++length) {
        EXPECT_TRUE(ReadRtfText(whole.substr(0, length))) << length;
    }
    EXPECT_EQ(PlainText(*ReadRtfText(whole.substr(0, whole.size() - 2))), "Caffè|Ł");
}

TEST(RtfFormats, EndWithTheirGroupsAndWords) {
    const auto text = ReadRtfText(Document(
        "\\deff1{\\fonttbl{\\f0\\froman Times;}{\\f1\\fswiss\\fcharset0 Ar\\'ecal{\\*\\falt X};}}"
        "{\\colortbl;\\red255\\green0\\blue0;\\red0\\green128\\blue255;}"
        "a{\\b b{\\i c}}\\ul d\\ulnone\\f0\\fs40 e\\cf1 f\\highlight2 g\\plain h\\strike\\super "
        "i\\strike0\\nosupersub\\sub j\\cf0\\plain\\uldb k\\ul0 l"));
    ASSERT_TRUE(text);
    EXPECT_EQ(Describe(*text), "left\n"
                               "  Arìal 24: a\n"
                               "  Arìal 24 bold: b\n"
                               "  Arìal 24 bold italic: c\n"
                               "  Arìal 24 underline: d\n"
                               "  Times 40: e\n"
                               "  Times 40 #ff0000: f\n"
                               "  Times 40 #ff0000 on#0080ff: g\n"
                               "  Arìal 24: h\n"
                               "  Arìal 24 strike super: i\n"
                               "  Arìal 24 sub: j\n"
                               "  Arìal 24 underline: k\n"
                               "  Arìal 24: l\n");
    EXPECT_EQ(ReadRtfText(WriteRtf(*text)), text);
}

TEST(RtfFormats, OfParagraphsAreThoseAtTheirEnd) {
    const auto text = ReadRtfText(
        Document("\\qc a\\qr\\par b\\pard\\par\\qj\\li720\\ri360\\fi-360\\sb120\\sa240\\tx1000"
                 "\\tqr\\tx2000\\tqc\\tx3000\\tqdec\\tx4000 c\\par\\pard d"));
    ASSERT_TRUE(text);
    EXPECT_EQ(Describe(*text),
              "right\n  - 24: a\n"
              "left\n  - 24: b\n"
              "justified left720 right360 first-360 before120 after240 tab1000 right-tab2000 "
              "centre-tab3000 decimal-tab4000\n  - 24: c\n"
              "left\n  - 24: d\n");
    EXPECT_EQ(ReadRtfText(WriteRtf(*text)), text);
}

TEST(RtfFormats, OfStrangersAreCutToWhatAPageHolds) {
    const auto text = ReadRtfText(
        Document("\\li99999999\\ri-5\\fi-99999999\\fs999999" + std::string(100, ' ') + [] {
            std::string tabs;
            for (int i = 0; i < 1000; ++i)
                tabs += "\\tx100";
            return tabs;
        }() + " a"));
    ASSERT_TRUE(text);
    const Paragraph& paragraph = text->paragraphs.front();
    EXPECT_EQ(paragraph.format.left, 31680);
    EXPECT_EQ(paragraph.format.right, 0);
    EXPECT_EQ(paragraph.format.first_line, -31680);
    EXPECT_EQ(paragraph.format.tabs.size(), kMaximumTabs);
    EXPECT_EQ(paragraph.runs.front().format.half_points, 3276);
}

TEST(RtfFormats, BeyondTheLimitCostNoMemoryAndTheTextStays) {
    std::string content;
    for (std::size_t i = 0; i < kMaximumRuns + 1000; ++i)
        content += i % 2 == 0 ? "\\b a" : "\\b0 a";
    const auto text = ReadRtfText(Document(content));
    ASSERT_TRUE(text);
    ASSERT_EQ(text->paragraphs.size(), 1U);
    EXPECT_EQ(text->paragraphs[0].runs.size(), kMaximumRuns);
    EXPECT_EQ(PlainText(*text).size(), kMaximumRuns + 1000);
}

} // namespace
} // namespace kelvo::desktop
