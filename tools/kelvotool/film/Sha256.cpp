#include "tools/kelvotool/film/Sha256.h"

#include <openssl/evp.h>

namespace kelvo::tool {

void Sha256::Free::operator()(evp_md_ctx_st* context) const {
    EVP_MD_CTX_free(context);
}

Sha256::Sha256() : context_(EVP_MD_CTX_new()) {
    EVP_DigestInit_ex(context_.get(), EVP_sha256(), nullptr);
}

Sha256::~Sha256() = default;

Sha256::Digest Sha256::Of(ByteView bytes) {
    Start();
    Add(bytes);
    return End();
}

void Sha256::Start() {
    // Without a method the context starts again with the one it has.
    EVP_DigestInit_ex(context_.get(), nullptr, nullptr);
}

void Sha256::Add(ByteView bytes) {
    EVP_DigestUpdate(context_.get(), bytes.data(), bytes.size());
}

Sha256::Digest Sha256::End() {
    Digest digest{};
    EVP_DigestFinal_ex(context_.get(), digest.data(), nullptr);
    return digest;
}

void AppendHex(std::string& text, ByteView bytes) {
    static constexpr char kDigits[] = "0123456789abcdef";
    for (const std::uint8_t byte : bytes) {
        text += kDigits[byte >> 4U];
        text += kDigits[byte & 0x0FU];
    }
}

} // namespace kelvo::tool
