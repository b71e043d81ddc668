#pragma once
// A growable byte buffer that things are serialised into and out of; numbers are little-endian. An
// operation that finds no memory shows a box and leaves the buffer as it was.

#include "framework/base/Bytes.h"
#include "framework/base/CString.h"
#include "framework/base/MemCheck.h"

#include <cstddef>
#include <cstdint>

namespace kelvo {

class ChFile;

class CBufferlum {
public:
    static constexpr std::uint32_t kDefaultStep = 4096;

    CBufferlum() = default;
    explicit CBufferlum(std::uint32_t growth_step) : growth_step_(growth_step) {}
    CBufferlum(const CBufferlum& other) : growth_step_(other.growth_step_) { Append(other); }
    CBufferlum& operator=(const CBufferlum& other);

    /// Bytes in use.
    std::uint32_t Length() const { return length_; }
    std::uint32_t Capacity() const { return capacity_; }
    ByteView View() const { return {data_.get(), length_}; }
    ByteSpan Bytes() { return {data_.get(), length_}; }

    CBufferlum& Append(const CBufferlum& other) { return Append(other.View()); }
    /// The characters without a terminator.
    CBufferlum& Append(const CString& text);
    /// The characters and the terminating zero; null and the empty text do nothing.
    CBufferlum& Append(const char* text);
    CBufferlum& Append(ByteView bytes);
    CBufferlum& AppendByte(std::uint8_t value) { return AppendUnsigned(value, 1); }
    CBufferlum& Append16(std::uint16_t value) { return AppendUnsigned(value, 2); }
    CBufferlum& Append32(std::uint32_t value) { return AppendUnsigned(value, 4); }
    CBufferlum& Append32(std::int32_t value) {
        return AppendUnsigned(static_cast<std::uint32_t>(value), 4);
    }
    CBufferlum& Append64(std::uint64_t value) { return AppendUnsigned(value, 8); }

    // Numbers at an offset among the bytes in use.
    /// @return 2, 4 or 8; 0, and nothing is written, where the bytes in use end before
    std::size_t Put16(std::uint32_t offset, std::uint16_t value);
    std::size_t Put32(std::uint32_t offset, std::uint32_t value);
    std::size_t Put64(std::uint32_t offset, std::uint64_t value);
    /// @return 2, 4 or 8; 0, and the value is 0, where the bytes in use end before
    std::size_t Get16(std::uint32_t offset, std::uint16_t& value) const;
    std::size_t Get32(std::uint32_t offset, std::uint32_t& value) const;
    std::size_t Get64(std::uint32_t offset, std::uint64_t& value) const;

    /// The tail moves up; an offset beyond the bytes in use changes nothing.
    CBufferlum& Insert(std::uint32_t offset, const CBufferlum& other);

    /// A 32-bit length and that many bytes, in place of what was there.
    /// @return false when the file does not hold them or there is no memory; the buffer is
    /// unchanged
    [[nodiscard]] bool ReadFrom(ChFile& file);
    [[nodiscard]] bool WriteTo(ChFile& file) const;

    /// Frees the data.
    void Clear();
    /// Room for so many more bytes. @return false when there is no memory
    bool Reserve(std::uint32_t count);

private:
    bool AllocSpace(std::uint32_t count);
    CBufferlum& AppendUnsigned(std::uint64_t value, std::size_t width);

    MemBlock data_;
    std::uint32_t length_ = 0;
    std::uint32_t capacity_ = 0;
    std::uint32_t growth_step_ = kDefaultStep;
};

} // namespace kelvo
