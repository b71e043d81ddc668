#pragma once
// A formatted text as it grows, within its limits.

#include "platform/desktop/rich_text/RichText.h"

#include <cstddef>
#include <string_view>

namespace kelvo::desktop {

class RichTextBuilder {
public:
    /// Clean text, in one format.
    void Append(std::u16string_view text, const CharacterFormat& format);
    /// Whether the paragraph holds something.
    bool HasBegun() const { return !current_.runs.empty(); }
    /// @param mark  what its next characters would look like
    void EndParagraph(const ParagraphFormat& format, const CharacterFormat& mark);
    /// Takes back the tab that ends the paragraph, if one does.
    void DropLastTab();
    /// Ends the last paragraph, if it has begun or is the only one, and gives the whole.
    RichText Finish(const ParagraphFormat& format, const CharacterFormat& mark);

private:
    RichText text_;
    Paragraph current_;
    std::size_t runs_ = 0;
};

} // namespace kelvo::desktop
