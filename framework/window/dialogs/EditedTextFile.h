#pragma once
// A text file as an edit control shows it and gives it back: what a person sees is what may be
// saved, and saving never loses what the file held before.

#include "framework/base/CString.h"

#include <string>

namespace kelvo {

class EditedTextFile {
public:
    /// Reads the file in pieces of 1000 bytes, each up to its first zero byte. A file that does not
    /// exist is an empty text.
    void Load(const CString& name);

    const std::string& Text() const { return text_; }
    /// Whether all that the file holds is in Text() and an edit control can show it: otherwise
    /// saving would lose the rest.
    bool MaySave() const { return may_save_; }

    /// Writes the text of an edit control, with the line ends that the file had, in the place of
    /// the file.
    /// @return false when the system refuses (a full disk); the file is then as it was
    [[nodiscard]] bool Save(const CString& text) const;

private:
    std::string name_; ///< the system's own
    std::string text_;
    bool may_save_ = false;
    bool bare_line_feeds_ = false; ///< its lines end without carriage returns
};

} // namespace kelvo
