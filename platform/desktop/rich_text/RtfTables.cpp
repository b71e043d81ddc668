#include "platform/desktop/rich_text/RtfTables.h"

#include "platform/desktop/rich_text/CodePages.h"
#include "platform/desktop/rich_text/Utf.h"

#include <algorithm>

namespace kelvo::desktop {
namespace {

constexpr std::size_t kLongestFamily = 128; ///< bytes

} // namespace

void RtfFontTable::Begin(std::int32_t number) {
    current_ = number;
    in_entry_ = true;
    fonts_[number] = {};
}

RtfFontTable::Entry* RtfFontTable::Current() {
    return in_entry_ ? &fonts_[current_] : nullptr;
}

void RtfFontTable::SetCharacterSet(std::int32_t character_set) {
    Entry* const entry = Current();
    if (entry == nullptr) return;
    entry->symbol = character_set == kSymbolSet;
    if (!entry->code_page) entry->code_page = CodePageOfCharacterSet(character_set);
}

void RtfFontTable::SetCodePage(std::int32_t code_page) {
    if (Entry* const entry = Current(); entry != nullptr && code_page > 0) {
        entry->code_page = code_page;
    }
}

void RtfFontTable::AppendName(std::u16string_view part) {
    Entry* const entry = Current();
    if (entry == nullptr) return;
    const std::size_t end = part.find(u';');
    std::u16string clean = WithoutStrayUnits(part.substr(0, end));
    std::erase_if(clean, [](char16_t unit) { return unit == u'\t' || unit == kLineBreak; });
    const std::string name = Utf8Of(clean);
    if (entry->family.size() + name.size() <= kLongestFamily) entry->family += name;
    if (end != std::u16string_view::npos) in_entry_ = false;
}

const RtfFontTable::Entry* RtfFontTable::Find(std::int32_t number) const {
    const auto found = fonts_.find(number);
    return found == fonts_.end() ? nullptr : &found->second;
}

const std::string& RtfFontTable::Family(std::int32_t number) const {
    static const std::string none;
    const Entry* const entry = Find(number);
    return entry == nullptr ? none : entry->family;
}

std::optional<int> RtfFontTable::CodePage(std::int32_t number) const {
    const Entry* const entry = Find(number);
    return entry == nullptr ? std::nullopt : entry->code_page;
}

bool RtfFontTable::IsSymbol(std::int32_t number) const {
    const Entry* const entry = Find(number);
    return entry != nullptr && entry->symbol;
}

void RtfColourTable::SetPart(unsigned shift, std::int32_t value) {
    const auto part = static_cast<RgbColour>(std::clamp(value, 0, 255));
    current_ = (current_.value_or(0) & ~(RgbColour{0xFF} << shift)) | (part << shift);
}

void RtfColourTable::ReadText(std::string_view text) {
    for (const char character : text) {
        if (character != ';') continue;
        colours_.push_back(current_);
        current_.reset();
    }
}

std::optional<RgbColour> RtfColourTable::Find(std::int32_t number) const {
    if (number < 0 || static_cast<std::size_t>(number) >= colours_.size()) return std::nullopt;
    return colours_[static_cast<std::size_t>(number)];
}

} // namespace kelvo::desktop
