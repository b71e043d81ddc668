#pragma once
// Writes one track in another type and proves it: what was written is decoded again, and every
// record compared by its hash with what it should be, before the new file has its name.

#include "container/ContainerHeader.h"
#include "container/RewriteTarget.h"
#include "framework/base/Result.h"
#include "tools/kelvotool/film/RecordCoding.h"
#include "tools/kelvotool/film/TrackReader.h"

#include <cstdint>
#include <string>
#include <vector>

namespace kelvo::tool {

class TrackConversion {
public:
    /// @param reader  of the source, open
    /// @param header  of the new container
    /// @param jobs    threads
    TrackConversion(TrackReader& reader, const ContainerHeader& header, unsigned jobs,
                    Reporter& reporter)
        : reader_(reader), header_(header), jobs_(jobs), reporter_(reporter) {}

    /// The whole container. Damaged records are reported, and come along as far as they read.
    Error Write(RewriteTarget& target);
    /// Decodes what Write wrote. For a type that loses something, the records must be those that
    /// the encoder knew a decoder would make.
    /// @param file  in which it now stands, whatever it is called
    /// @return Mismatch at a record that is another one; its number is in `offset`
    Error Prove(const std::string& file);

    const ContainerHeader& Header() const { return header_; }
    /// Of the new container, with its header and index.
    std::uint32_t Size() const { return window_.Size(); }
    std::uint32_t ProvedRecords() const { return proved_; }

private:
    bool KeepsStoredRecords() const;
    Error CodeRecords(RewriteTarget& target);
    Error CopyStored(RewriteTarget& target);

    TrackReader& reader_;
    ContainerHeader header_;
    unsigned jobs_;
    Reporter& reporter_;
    std::vector<Fingerprint> expected_; ///< of every record
    TrackWindow window_;                ///< in the new file
    std::uint32_t proved_ = 0;
};

} // namespace kelvo::tool
