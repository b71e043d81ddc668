#pragma once
// What it takes to give back a container whose index or user header is about to be overwritten: the
// old header, user header and index, saved and synced beside the file under the file's full name
// and ".undo" until the new ones are safely in their place. Held locked, so that nobody undoes an
// edit that is still going on.

#include "container/ContainerHeader.h"
#include "container/RecordIndex.h"
#include "framework/base/Bytes.h"
#include "framework/base/Result.h"
#include "platform/base/durable_files.h"

#include <cstdint>
#include <string>

namespace kelvo {

class UndoFile {
public:
    /// Undoes what a kill left half done to the container `name`, and removes the undo file. An
    /// undo file that belongs to another file's bytes is left alone, as is a user's own file of
    /// that name.
    /// @return None, also when there was nothing to undo; Busy while another program edits the
    ///         container; Unwritable when the old state could not be put back
    static Error Recover(const std::string& name);
    /// Whether an edit of the container goes on or was left half done; changes nothing.
    static bool IsLeftBeside(const std::string& name);

    bool IsSaved() const { return file_.IsOpen(); }
    /// Saves and syncs the header, the user header and the index that `name` holds now.
    /// @param length  of the file; what is behind it is cut off when the edit is undone
    /// @return Busy or Mismatch when the name is taken by another program or by a user's own file
    Error Save(const std::string& name, const ContainerHeader& header, ByteView user_header,
               const RecordIndex& index, std::uint64_t length);
    /// Saves and syncs the header that is about to replace the old one; the index that goes with it
    /// is in its place already. From the moment the new header is in the file, the edit stands.
    Error Announce(const ContainerHeader& new_header);
    /// The edit is finished or undone: the file goes.
    void Remove();
    /// Leaves the file for the next opening to find.
    void Abandon();

private:
    platform::OwnFile file_;
    std::uint64_t end_ = 0;
};

} // namespace kelvo
