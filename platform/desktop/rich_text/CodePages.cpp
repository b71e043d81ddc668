#include "platform/desktop/rich_text/CodePages.h"

#include <iconv.h>

#include <algorithm>
#include <array>
#include <cstddef>

namespace kelvo::desktop {
namespace {

constexpr char16_t kReplacement = 0xFFFD;

/// 0x80 to 0x9F of code page 1252; the rest of its upper half is U+00A0 to U+00FF.
constexpr std::array<char16_t, 32> kWesternHigh = {
    0x20AC,       kReplacement, 0x201A, 0x0192, 0x201E, 0x2026,       0x2020, 0x2021,
    0x02C6,       0x2030,       0x0160, 0x2039, 0x0152, kReplacement, 0x017D, kReplacement,
    kReplacement, 0x2018,       0x2019, 0x201C, 0x201D, 0x2022,       0x2013, 0x2014,
    0x02DC,       0x2122,       0x0161, 0x203A, 0x0153, kReplacement, 0x017E, 0x0178};

struct CharacterSetPage {
    int character_set;
    int code_page;
};
constexpr CharacterSetPage kCharacterSets[] = {
    {77, 10000}, {128, 932},  {129, 949},  {130, 1361}, {134, 936},  {136, 950},
    {161, 1253}, {162, 1254}, {163, 1258}, {177, 1255}, {178, 1256}, {186, 1257},
    {204, 1251}, {222, 874},  {238, 1250}, {254, 437},  {255, 850}};

/// Under which name the system knows a code page.
struct PageName {
    int number;
    const char* name;
};
constexpr PageName kPageNames[] = {
    {437, "CP437"},        {850, "CP850"},        {852, "CP852"},         {855, "CP855"},
    {858, "CP858"},        {860, "CP860"},        {861, "CP861"},         {862, "CP862"},
    {863, "CP863"},        {865, "CP865"},        {866, "CP866"},         {874, "CP874"},
    {932, "CP932"},        {936, "CP936"},        {949, "CP949"},         {950, "BIG5"},
    {1250, "CP1250"},      {1251, "CP1251"},      {1253, "CP1253"},       {1254, "CP1254"},
    {1255, "CP1255"},      {1256, "CP1256"},      {1257, "CP1257"},       {1258, "CP1258"},
    {1361, "JOHAB"},       {10000, "MACINTOSH"},  {20866, "KOI8-R"},      {21866, "KOI8-U"},
    {28591, "ISO-8859-1"}, {28592, "ISO-8859-2"}, {28605, "ISO-8859-15"}, {54936, "GB18030"},
    {65001, "UTF-8"}};

iconv_t NoConverter() {
    return reinterpret_cast<iconv_t>(-1);
}

iconv_t OpenConverter(int number) {
    const auto page = std::ranges::find(kPageNames, number, &PageName::number);
    if (page == std::end(kPageNames)) return NoConverter();
    return iconv_open("UTF-16LE", page->name);
}

void AppendUnits(std::u16string& text, std::string_view little_endian) {
    for (std::size_t at = 0; at + 1 < little_endian.size(); at += 2) {
        const auto low = static_cast<std::uint8_t>(little_endian[at]);
        const auto high = static_cast<std::uint8_t>(little_endian[at + 1]);
        text += static_cast<char16_t>(low | (high << 8U));
    }
}

std::u16string DecodeWestern(std::string_view bytes) {
    std::u16string text;
    text.reserve(bytes.size());
    for (const char character : bytes) {
        const auto byte = static_cast<std::uint8_t>(character);
        text +=
            byte >= 0x80 && byte < 0xA0 ? kWesternHigh[byte - 0x80U] : static_cast<char16_t>(byte);
    }
    return text;
}

std::u16string DecodeBySystem(iconv_t converter, std::string_view bytes) {
    std::u16string text;
    text.reserve(bytes.size());
    iconv(converter, nullptr, nullptr, nullptr, nullptr);
    char* input = const_cast<char*>(bytes.data());
    std::size_t input_left = bytes.size();
    while (input_left > 0) {
        std::array<char, 1024> piece;
        char* output = piece.data();
        std::size_t output_left = piece.size();
        const std::size_t before = input_left;
        const std::size_t result = iconv(converter, &input, &input_left, &output, &output_left);
        AppendUnits(text, {piece.data(), piece.size() - output_left});
        // A full piece made progress; without any, the next byte means nothing.
        if (result == static_cast<std::size_t>(-1) && output_left > 8 && input_left > 0) {
            text += kReplacement;
            ++input;
            --input_left;
        } else if (input_left == before) {
            break;
        }
    }
    // Some code pages hold a letter back until they have seen that no accent follows.
    std::array<char, 64> rest;
    char* output = rest.data();
    std::size_t output_left = rest.size();
    iconv(converter, nullptr, nullptr, &output, &output_left);
    AppendUnits(text, {rest.data(), rest.size() - output_left});
    return text;
}

} // namespace

std::optional<int> CodePageOfCharacterSet(int character_set) {
    const auto* entry =
        std::ranges::find(kCharacterSets, character_set, &CharacterSetPage::character_set);
    if (entry == std::end(kCharacterSets)) return std::nullopt;
    return entry->code_page;
}

int KnownCodePage(int number) {
    return std::ranges::find(kPageNames, number, &PageName::number) == std::end(kPageNames)
               ? kWesternCodePage
               : number;
}

CodePage::CodePage(int number) : number_(number) {
    iconv_t converter = number == kWesternCodePage ? NoConverter() : OpenConverter(number);
    if (converter == NoConverter()) {
        number_ = kWesternCodePage;
    } else {
        converter_ = converter;
    }
}

CodePage::~CodePage() {
    if (converter_ != nullptr) iconv_close(converter_);
}

std::u16string CodePage::Decode(std::string_view bytes) {
    return converter_ == nullptr ? DecodeWestern(bytes) : DecodeBySystem(converter_, bytes);
}

std::optional<std::uint8_t> WesternByte(char16_t character) {
    if (character < 0x80 || (character >= 0xA0 && character <= 0xFF)) {
        return static_cast<std::uint8_t>(character);
    }
    if (character == kReplacement) return std::nullopt;
    const auto* place = std::ranges::find(kWesternHigh, character);
    if (place == kWesternHigh.end()) return std::nullopt;
    return static_cast<std::uint8_t>(0x80 + (place - kWesternHigh.begin()));
}

} // namespace kelvo::desktop
