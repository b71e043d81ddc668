#include "platform/desktop/rich_text/RichTextBuilder.h"

#include "platform/desktop/rich_text/RtfReader.h"

#include <utility>

namespace kelvo::desktop {

void RichTextBuilder::Append(std::u16string_view text, const CharacterFormat& format) {
    if (text.empty()) return;
    if (runs_ >= kMaximumRuns && !current_.runs.empty()) {
        current_.runs.back().text += text;
        return;
    }
    const std::size_t before = current_.runs.size();
    current_.Append(text, format);
    runs_ += current_.runs.size() - before;
}

void RichTextBuilder::EndParagraph(const ParagraphFormat& format, const CharacterFormat& mark) {
    if (text_.paragraphs.size() >= kMaximumParagraphs) {
        Append({&kLineBreak, 1}, mark);
        return;
    }
    current_.format = format;
    if (current_.runs.empty()) current_.if_empty = mark;
    text_.paragraphs.push_back(std::move(current_));
    current_ = {};
}

void RichTextBuilder::DropLastTab() {
    if (!HasBegun() || current_.runs.back().text.back() != u'\t') return;
    current_.runs.back().text.pop_back();
    if (current_.runs.back().text.empty()) {
        current_.runs.pop_back();
        --runs_;
    }
}

RichText RichTextBuilder::Finish(const ParagraphFormat& format, const CharacterFormat& mark) {
    if (HasBegun() || text_.paragraphs.empty()) {
        current_.format = format;
        if (current_.runs.empty()) current_.if_empty = mark;
        text_.paragraphs.push_back(std::move(current_));
    }
    return std::move(text_);
}

} // namespace kelvo::desktop
