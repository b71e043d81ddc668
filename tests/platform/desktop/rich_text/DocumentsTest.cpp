// Documents that other programs wrote: read, written, and read again; and the same bytes damaged.

#include "tests/platform/desktop/rich_text/DescribeText.h"

#include "platform/desktop/rich_text/RtfWriter.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <random>
#include <string>

namespace kelvo::desktop {
namespace {

std::string DocumentOf(const std::string& program) {
    std::ifstream file(std::string(KELVO_SOURCE_DIR) +
                           "/tests/platform/desktop/rich_text/documents/" + program + ".rtf",
                       std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

TEST(Documents, OfLibreOfficeSurvive) {
    const auto text = ReadRtfText(DocumentOf("libreoffice"));
    ASSERT_TRUE(text);
    EXPECT_EQ(Describe(*text), R"(centre after283
  Arial 48 bold #c00000: Caffè più buono
left after283
  Times New Roman 24 #000000: Testo 
  Times New Roman 24 bold #000000: grassetto
  Times New Roman 24 #000000: , 
  Times New Roman 24 italic #000000: corsivo
  Times New Roman 24 #000000: , 
  Times New Roman 24 underline #000000: sottolineato
  Times New Roman 24 #000000: , 
  Times New Roman 24 strike #000000: barrato
  Times New Roman 24 #000000:  e 
  Times New Roman 24 bold italic #000000: tutti e due
  Times New Roman 24 #000000: .
right after283
  Times New Roman 24 #000000: Perché così è: 
  Times New Roman 24 #0000ff: àèìòù ÀÈÉ
  Times New Roman 24 #000000:  – “virgolette” € 10
justified after283
  Times New Roman 24 #000000: Łódź, Ελλάδα, Москва, 日本/😀 seconda riga
left after283
  Times New Roman 24 #000000: {graffe} e \barra\, 
  Times New Roman 24 #000000 on#ffff00: evidenziato
)");
    EXPECT_EQ(ReadRtfText(WriteRtf(*text)), text);
}

TEST(Documents, OfAbiWordSurvive) {
    const auto text = ReadRtfText(DocumentOf("abiword"));
    ASSERT_TRUE(text);
    EXPECT_EQ(Describe(*text), R"(centre
  Arial 48 bold #c00000: Caffè più buono
left
  Nimbus Roman 24: Testo 
  Nimbus Roman 24 bold: grassetto
  Nimbus Roman 24: , 
  Nimbus Roman 24 italic: corsivo
  Nimbus Roman 24: , 
  Nimbus Roman 24 underline: sottolineato
  Nimbus Roman 24: , 
  Nimbus Roman 24 strike: barrato
  Nimbus Roman 24:  e 
  Nimbus Roman 24 bold italic: tutti e due
  Nimbus Roman 24: .
right
  Nimbus Roman 24: Perché così è: 
  Nimbus Roman 24 #0000ff: àèìòù ÀÈÉ
  Nimbus Roman 24:  – “virgolette” € 10
justified
  Nimbus Roman 24: Łódź, Ελλάδα, Москва, 日本/😀 seconda riga
left
  Nimbus Roman 24: {graffe} e \barra\, 
  Nimbus Roman 24 on#ffff00: evidenziato
left
left
)");
    EXPECT_EQ(ReadRtfText(WriteRtf(*text)), text);
}

/// Replaces, doubles, moves or cuts pieces; the pieces that a reader trips over come in, too.
std::string Damaged(std::string bytes, std::mt19937& random) {
    static const std::string kPieces[] = {
        "{",       "}",       "\\",         "\\'",    "\\u-1 ",
        "\\bin9 ", "\\uc9 ",  "{\\fonttbl", "\\f7 ",  ";",
        "\\*",     "\\row ",  "\\u55357?",  "\\par ", "\\li-9999999999 ",
        "\\'83",   "{\\pict", "\\plain ",   "\\v ",   std::string(1, '\0')};
    const auto any = [&random](std::size_t below) {
        return std::uniform_int_distribution<std::size_t>(0, below - 1)(random);
    };
    for (std::size_t changes = 1 + any(20); changes > 0 && bytes.size() > 10; --changes) {
        const std::size_t at = 6 + any(bytes.size() - 6);
        switch (any(5)) {
        case 0:
            bytes[at] = static_cast<char>(any(256));
            break;
        case 1:
            bytes.insert(at, kPieces[any(std::size(kPieces))]);
            break;
        case 2:
            bytes.erase(at, 1 + any(40));
            break;
        case 3:
            bytes.insert(at, bytes.substr(any(bytes.size()), any(200)));
            break;
        default:
            if (any(20) == 0) bytes.resize(at);
        }
    }
    return bytes;
}

// Whatever comes in, what is made of it can be written and is then the same.
TEST(DamagedDocuments, GiveSomethingThatSurvivesWriting) {
    std::mt19937 random(20251125);
    const std::string documents[] = {DocumentOf("libreoffice"), DocumentOf("abiword")};
    for (int round = 0; round < 3000; ++round) {
        const std::string damaged = Damaged(documents[round % 2], random);
        const auto text = ReadRtfText(damaged);
        ASSERT_TRUE(text);
        ASSERT_FALSE(text->paragraphs.empty());
        const auto again = ReadRtfText(WriteRtf(*text));
        ASSERT_EQ(Describe(*again), Describe(*text)) << "round " << round;
        ASSERT_EQ(again, text) << "round " << round;
    }
}

} // namespace
} // namespace kelvo::desktop
