#pragma once
// The byte stream that Save and Load speak: the framework's device and stream base. ChFile is one.

#include "framework/base/CObj.h"

#include <cstdint>

namespace kelvo {

class Stream : public CObj {
public:
    static constexpr std::uint32_t kClassId = 19030101;

    explicit Stream(std::uint32_t class_id = kClassId) : CObj(class_id) {}

    // The virtual slots that a stream fills, in their order. Each gives the running byte position.

    /// The position grows by what was written.
    virtual std::int64_t Write(const void* bytes, std::uint32_t count) = 0;
    /// The position grows by what was read; the rest of the bytes is left alone.
    virtual std::int64_t Read(void* bytes, std::uint32_t count) = 0;
    /// Either way.
    virtual std::int64_t Skip(std::int64_t count) = 0;
    virtual std::int64_t SkipForward(std::uint32_t count) = 0;
    /// printf-style, without the terminator; the text is cut at 4095 bytes.
    [[gnu::format(printf, 2, 3)]] virtual std::int64_t WriteFormatted(const char* format, ...) = 0;

    /// Bytes between the position and the end: what a length that was read may claim at most.
    virtual std::int64_t Remaining() = 0;
    virtual std::int64_t Position() const = 0;
};

} // namespace kelvo
