#pragma once
// The hash by which records are compared.

#include "framework/base/Bytes.h"

#include <array>
#include <cstdint>
#include <memory>
#include <string>

struct evp_md_ctx_st;

namespace kelvo::tool {

class Sha256 {
public:
    static constexpr std::size_t kBytes = 32;
    using Digest = std::array<std::uint8_t, kBytes>;

    Sha256();
    ~Sha256();
    Sha256(const Sha256&) = delete;
    Sha256& operator=(const Sha256&) = delete;

    /// The hash of the bytes; nothing is allocated.
    Digest Of(ByteView bytes);

    /// The hash of bytes that come one after another: start, add, end.
    void Start();
    void Add(ByteView bytes);
    Digest End();

private:
    struct Free {
        void operator()(evp_md_ctx_st* context) const;
    };
    std::unique_ptr<evp_md_ctx_st, Free> context_;
};

/// Appends two lower-case hexadecimal digits a byte.
void AppendHex(std::string& text, ByteView bytes);

} // namespace kelvo::tool
