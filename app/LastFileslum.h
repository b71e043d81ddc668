#pragma once
// The files that were opened last, most recent first: as commands in a popup of the menu, and
// between runs in a file. What the file's bytes mean is RecentFilesFile's.

#include "app/RecentFilesFile.h"
#include "framework/base/CArray.h"
#include "framework/base/CString.h"
#include "platform/desktop/menus.h"

#include <cstdint>

namespace kelvo {

class LastFileslum {
public:
    /// One file: its full path, and a value that is stored with it.
    using xxdta = RecentFile;

    /// @param first_command  number of the first entry's command; entry i has the i-th after it
    /// @param popup          position of the popup in the menu bar
    /// @param anchor         number of the item before which the entries stand
    /// @param maximum        of entries; a longer list that was loaded keeps its length
    LastFileslum(UINT first_command, int popup, UINT anchor, std::int32_t maximum);

    /// Takes the list of a file. One that is not there or is damaged leaves the list empty, without
    /// a message.
    void Load(const CString& file);
    /// Writes the list. What another Kelvo has put into the file since it was loaded stays: then
    /// the files added here come in front of those. A damaged file is replaced only by a list that
    /// holds something. Whatever fails, without a message, leaves the file as it was.
    void Save(const CString& file);
    /// Puts a file in front, under its newest spelling, and shows the list.
    void AddFile(HMENU menu, const CString& path, std::uint32_t value);
    /// Shows the list: the files' titles, each after the prefix if there is one, and a separator
    /// below them.
    void RebuildMenu(HMENU menu, const char* prefix);
    /// Whether a message chooses one of the entries.
    bool IsRecentCommand(UINT message, WPARAM wparam) const;
    /// The path behind a command that IsRecentCommand knows; empty for any other.
    CString PathOf(UINT command) const;

    const CArray<xxdta>& Entries() const { return entries_; }

private:
    void RemoveFromMenu(HMENU popup);

    CArray<xxdta> entries_;
    std::int32_t popup_;
    std::int32_t maximum_;
    UINT first_command_;
    UINT anchor_;
    CArray<xxdta> added_;    ///< since the list was last saved; the latest in front
    std::int32_t shown_ = 0; ///< entries that the menu shows
};

} // namespace kelvo
