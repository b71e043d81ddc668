#pragma once
// Memory for whole records, sized by what a file claims: zero pages that cost nothing until they
// are written, so that memory follows the bytes that are there and not the claim.

#include "framework/base/Bytes.h"

#include <cstddef>
#include <cstdint>

namespace kelvo {

class RecordBytes {
public:
    RecordBytes() = default;
    RecordBytes(RecordBytes&& other) noexcept;
    RecordBytes& operator=(RecordBytes&& other) noexcept;
    RecordBytes(const RecordBytes&) = delete;
    RecordBytes& operator=(const RecordBytes&) = delete;
    ~RecordBytes();

    /// Replaces what was held by `size` zero bytes, aligned for any number.
    /// @return false, and nothing held, when the system has no memory or address space for them
    [[nodiscard]] bool Allocate(std::size_t size);
    void Free();

    std::size_t Size() const { return size_; }
    ByteSpan Span() { return {data_, size_}; }
    ByteView View() const { return {data_, size_}; }

private:
    std::uint8_t* data_ = nullptr;
    std::size_t size_ = 0;
};

} // namespace kelvo
