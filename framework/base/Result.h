#pragma once
// Errors as values, for everything below the given operations: what went wrong with foreign bytes
// or with a file, and where. Who talks to a person turns a Fault into its text.

#include <cassert>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <utility>

namespace kelvo {

/// What is wrong with bytes that came from outside, or with the file that holds them.
enum class Fault : std::uint8_t {
    None,
    EndsEarly,  ///< the data ran out before what was promised
    TooLarge,   ///< more data than there is room for, or a claim beyond a limit
    BadValue,   ///< a field holds what it never may
    Mismatch,   ///< two places that must agree do not
    Unreadable, ///< the system refused to read
    Unwritable, ///< the system refused to write, sync, close or rename; also a full disk
    Missing,    ///< no such file, or the file holds no such part
    Busy,       ///< another process holds it
    Stopped,    ///< a person stopped the operation
};

/// A fault and the place where it was found.
struct Error {
    Fault fault = Fault::None;
    std::uint64_t offset = 0; ///< bytes from the start of what was read
    friend bool operator==(const Error&, const Error&) = default;
};

/// A T, or the Error that kept it from being made.
template <class T>
class [[nodiscard]] Result {
public:
    Result(T value) : value_(std::move(value)) {}
    Result(Error error) : error_(error) { assert(error.fault != Fault::None); }

    bool Ok() const { return value_.has_value(); }
    explicit operator bool() const { return Ok(); }
    /// Only when Ok().
    T& Value() { return *value_; }
    const T& Value() const { return *value_; }
    /// Fault::None when Ok().
    const Error& Why() const { return error_; }

private:
    std::optional<T> value_;
    Error error_;
};

/// What a decoder made of a stream: what came before the damage is worth keeping.
struct [[nodiscard]] Decoded {
    std::size_t written = 0; ///< bytes of the record that the stream covered, never beyond its end
    Fault fault = Fault::None;   ///< EndsEarly: cut stream; TooLarge: describes more than a record
    std::uint64_t described = 0; ///< bytes that the stream describes; above `written` when TooLarge
    friend bool operator==(const Decoded&, const Decoded&) = default;
};

} // namespace kelvo
