#pragma once
// A read cache of one block over a ChFile, for parsers that read a file byte by byte.

#include "framework/base/MemCheck.h"

#include <cstdint>

namespace kelvo {

class ChFile;

class FileBufferlum {
public:
    /// Takes the file's length as it is now; the file must outlive its use here.
    /// @return false for a block size of 0, a file whose length is unknown, and without memory
    [[nodiscard]] bool Bind(ChFile& file, std::uint32_t block_size);

    std::int64_t FileLength() const { return file_length_; }

    /// Reads the block that holds the position. The file's own position moves.
    /// @return the byte there, followed by the rest of its block; lives until the next load; null
    /// when
    ///         the position is outside the file or cannot be read
    const std::uint8_t* Load(std::int64_t position);

    /// The byte at a position, read only when another block is held; 0 where Load gives null.
    std::uint8_t At(std::int64_t position) {
        const std::int64_t index = position - block_start_;
        if (index >= 0 && index < block_length_) {
            return block_[static_cast<std::size_t>(index)];
        }
        const std::uint8_t* byte = Load(position);
        return byte == nullptr ? std::uint8_t{0} : *byte;
    }

private:
    std::int64_t file_length_ = 0;
    MemBlock block_;
    std::uint32_t block_size_ = 0;
    std::int64_t block_start_ = 0; // beyond the file until the first load
    std::int64_t block_length_ = 0;
    ChFile* file_ = nullptr;
};

} // namespace kelvo
