#include "framework/window/dialogs/EditedTextFile.h"

#include "framework/base/ChFile.h"
#include "framework/base/FilePaths.h"
#include "platform/base/durable_files.h"
#include "platform/base/errors.h"
#include "platform/base/file_names.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

namespace kelvo {
namespace {

constexpr std::size_t kPieceBytes = 1000;
constexpr std::size_t kLongestText = std::size_t{16} << 20U;

/// Whether an edit control shows every byte: it knows UTF-8.
bool IsUtf8(std::string_view text) {
    std::size_t at = 0;
    while (at < text.size()) {
        const auto first = static_cast<std::uint8_t>(text[at]);
        const std::size_t length = first < 0x80 ? 1 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
        if ((first >= 0x80 && first < 0xC2) || first > 0xF4) return false;
        if (length > text.size() - at) return false;
        std::uint32_t point = length == 1 ? first : first & (0x7FU >> length);
        for (std::size_t next = 1; next < length; ++next) {
            const auto byte = static_cast<std::uint8_t>(text[at + next]);
            if ((byte & 0xC0U) != 0x80) return false;
            point = (point << 6U) | (byte & 0x3FU);
        }
        if ((length == 3 && point < 0x800) || (length == 4 && point < 0x10000)) return false;
        if ((point >= 0xD800 && point < 0xE000) || point > 0x10FFFF) return false;
        at += length;
    }
    return true;
}

} // namespace

void EditedTextFile::Load(const CString& name) {
    text_.clear();
    const std::string path{ResolvePath(nullptr, name, nullptr).View()};
    const std::optional<std::string> existing = platform::ExistingFileName(path);
    name_ = existing ? *existing : platform::NewFileName(path).value_or(path);
    ChFile file;
    if (!file.OpenReadOnly(name)) {
        may_save_ = !existing; // one that is there and cannot be read is not replaced either
        return;
    }
    bool is_whole = true;
    std::array<std::uint8_t, kPieceBytes> piece{};
    while (const std::size_t count = file.ReadSome(piece)) {
        const std::string_view bytes{reinterpret_cast<const char*>(piece.data()), count};
        const std::size_t end = bytes.find('\0');
        text_ += bytes.substr(0, end);
        if (end != std::string_view::npos) is_whole = false;
        if (text_.size() > kLongestText) {
            is_whole = false;
            break;
        }
    }
    may_save_ = is_whole && !file.ReadFailed() && IsUtf8(text_);
    bare_line_feeds_ =
        text_.find('\n') != std::string::npos && text_.find('\r') == std::string::npos;
}

bool EditedTextFile::Save(const CString& text) const {
    std::string bytes{text.View()};
    if (bare_line_feeds_) std::erase(bytes, '\r');
    const std::string target = platform::WithoutLinks(name_);
    const CString path{std::string_view{target}};
    CString temporary_name = PathDirectory(path);
    temporary_name += PathTitle(path);
    temporary_name += ".tmp";
    platform::DurableTemporary temporary;
    if (temporary.Make(std::string{temporary_name.View()}) != platform::Claim::Taken) return false;
    return temporary.WriteAt(0,
                             {reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()}) &&
           temporary.Finish(target) && temporary.PutInPlaceOf(target);
}

} // namespace kelvo
