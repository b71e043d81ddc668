#include "platform/desktop/rich_text/EditStream.h"

#include <algorithm>
#include <array>

namespace kelvo::desktop {
namespace {

constexpr std::size_t kPieceBytes = 4096;

} // namespace

std::optional<std::string> PullStream(EDITSTREAM& stream) {
    stream.dwError = 0;
    std::string bytes;
    std::array<BYTE, kPieceBytes> piece{};
    while (stream.pfnCallback != nullptr) {
        LONG done = 0;
        stream.dwError = stream.pfnCallback(stream.dwCookie, piece.data(),
                                            static_cast<LONG>(piece.size()), &done);
        if (stream.dwError != 0 || done <= 0) break;
        const std::size_t given = std::min(static_cast<std::size_t>(done), piece.size());
        bytes.append(reinterpret_cast<const char*>(piece.data()), given);
        if (bytes.size() > kLongestStream) {
            stream.dwError = kEditStreamTooLong;
            return std::nullopt;
        }
    }
    return bytes;
}

bool PushStream(EDITSTREAM& stream, std::string_view bytes) {
    stream.dwError = 0;
    std::array<BYTE, kPieceBytes> piece{};
    while (!bytes.empty() && stream.pfnCallback != nullptr) {
        const std::size_t count = std::min(bytes.size(), piece.size());
        std::ranges::copy(bytes.substr(0, count), piece.begin());
        LONG done = 0;
        stream.dwError =
            stream.pfnCallback(stream.dwCookie, piece.data(), static_cast<LONG>(count), &done);
        if (stream.dwError != 0 || done <= 0) return false;
        bytes.remove_prefix(std::min(static_cast<std::size_t>(done), count));
    }
    return bytes.empty();
}

} // namespace kelvo::desktop
