#pragma once
// Looks at single places of a container and tells whether a record can stand there: first by its
// length alone, then by decoding it.

#include "container/AVDirectory.h"
#include "container/Compressionekel.h"
#include "container/ContainerHeader.h"
#include "container/RecordBytes.h"
#include "framework/base/Bytes.h"
#include "platform/base/types.h"

#include <array>
#include <cstdint>
#include <optional>

namespace kelvo {

/// Numbers out of a file, in ascending places mostly: small records share one read.
class NumberReader {
public:
    NumberReader(HFILE file, const TrackWindow& window) : file_(file), window_(window) {}
    /// @param offset  from the window's start
    std::optional<std::uint32_t> At(std::uint64_t offset);

private:
    void Fill(std::uint64_t offset);

    HFILE file_;
    TrackWindow window_;
    std::array<std::uint8_t, 4096> bytes_{};
    std::uint64_t start_ = 0;
    std::size_t count_ = 0;
};

class RecordProbe {
public:
    /// Longer records are not decoded to prove them: memory follows the file, not its claims.
    static constexpr std::uint32_t kLargestProved = std::uint32_t{32} << 20U;

    /// @param header  must outlive the probe
    RecordProbe(HFILE file, const TrackWindow& window, const ContainerHeader& header);

    /// Whether a record of this stored length fits in there and could fill a record.
    bool IsPlausible(std::uint64_t offset, std::uint32_t stored_length) const;
    /// Whether it decodes to exactly one record; each is decoded over the one before.
    bool Decodes(std::uint64_t offset, std::uint32_t stored_length);
    /// Of a differential type: whether it needs no record before it.
    bool IsKey(std::uint64_t offset, std::uint32_t stored_length);
    bool IsDifferential() const { return differential_; }
    /// No coder makes a longer one.
    std::uint64_t LongestStored() const { return longest_; }
    bool CanProve() const { return header_.RecordLength <= kLargestProved; }
    /// What was decoded last.
    ByteView Record() const { return record_.View(); }

private:
    bool Prepare();
    ByteView Read(std::uint64_t offset, std::uint32_t stored_length);

    HFILE file_;
    TrackWindow window_;
    const ContainerHeader& header_;
    bool raw_;
    bool differential_;
    std::uint64_t longest_;
    Compressionekel catalogue_;
    RecordBytes record_;
    RecordBytes other_;
    RecordBytes stored_;
    bool tried_ = false;
    bool ready_ = false;
};

} // namespace kelvo
