#pragma once
// A file that is written whole before it has its name: what FilmFile and VorbisTrackWriter write
// through. Beside the name stands a temporary file (title and ".tmp") until then.

#include "framework/base/Bytes.h"
#include "framework/base/CString.h"
#include "framework/base/Result.h"
#include "platform/base/durable_files.h"

#include <cstdint>
#include <string>

namespace kelvo {

/// What may stand at a name before a file is written there.
enum class Existing : bool { Refuse, Replace };

class NewFile {
public:
    /// Makes the temporary file.
    /// @return Busy when the name is taken and is not to be replaced, or when the temporary's is;
    ///         Missing when there is no such folder; Unwritable when the system refuses
    [[nodiscard]] Error Begin(const CString& name, Existing existing);
    /// Writes all of it; once it has failed, every later call fails.
    [[nodiscard]] Error WriteAt(std::uint64_t offset, ByteView bytes);
    /// Syncs the file and gives it its name.
    [[nodiscard]] Error Finish();
    /// Takes the temporary file away; nothing else is left behind.
    void Discard() { temporary_.Discard(); }

    bool IsOpen() const { return temporary_.IsOpen(); }
    std::uint64_t Size() const { return temporary_.Size(); }

private:
    platform::DurableTemporary temporary_;
    std::string name_;
    Existing existing_ = Existing::Refuse;
    bool failed_ = false;
};

} // namespace kelvo
