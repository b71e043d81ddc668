#include "tools/resource_compiler/PictureFiles.h"

#include "tools/resource_compiler/TemplateBytes.h"

#include "platform/base/bitmaps.h"

#include <cstdlib>
#include <cstring>

namespace kelvo::resource_compiler {

namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr std::uint16_t kBitmapMark = 0x4D42;
constexpr std::uint32_t kBitfields = 3;

template <class T>
std::optional<T> At(Bytes bytes, std::size_t offset) {
    if (offset > bytes.size() || bytes.size() - offset < sizeof(T)) return std::nullopt;
    T value;
    std::memcpy(&value, bytes.data() + offset, sizeof value);
    return value;
}

std::uint64_t StrideOf(std::uint64_t width, std::uint64_t bits) {
    return (width * bits + 31) / 32 * 4;
}

// What describes the pixels, and how many bytes of them there must be.
struct BitmapPlan {
    std::uint64_t info_length = 0; ///< header, masks and palette
    std::uint64_t pixel_length = 0;
    bool stored_plainly = true; ///< every row is there in full
};

std::optional<BitmapPlan> PlanOf(Bytes info, std::string& problem) {
    BitmapPlan plan;
    const auto size = At<std::uint32_t>(info, 0);
    const auto core = At<BITMAPCOREHEADER>(info, 0);
    if (size == sizeof(BITMAPCOREHEADER) && core) {
        const std::uint64_t colours = core->bcBitCount <= 8 ? 1ULL << core->bcBitCount : 0;
        plan.info_length = sizeof(BITMAPCOREHEADER) + colours * sizeof(RGBTRIPLE);
        plan.pixel_length = StrideOf(core->bcWidth, core->bcBitCount) * core->bcHeight;
        return plan;
    }
    const auto header = At<BITMAPINFOHEADER>(info, 0);
    if (!header || header->biSize < sizeof(BITMAPINFOHEADER)) {
        problem = "its info header is cut or unknown";
        return std::nullopt;
    }
    if (header->biWidth <= 0 || header->biHeight == 0) {
        problem = "it has no pixels";
        return std::nullopt;
    }
    std::uint64_t colours = header->biClrUsed;
    if (colours == 0 && header->biBitCount <= 8) colours = 1ULL << header->biBitCount;
    const bool masks =
        header->biCompression == kBitfields && header->biSize == sizeof(BITMAPINFOHEADER);
    plan.info_length = header->biSize + colours * sizeof(RGBQUAD) + (masks ? 12U : 0U);
    plan.stored_plainly = header->biCompression == BI_RGB || header->biCompression == kBitfields;
    plan.pixel_length =
        plan.stored_plainly
            ? StrideOf(static_cast<std::uint64_t>(header->biWidth), header->biBitCount) *
                  static_cast<std::uint64_t>(std::llabs(header->biHeight))
            : header->biSizeImage;
    return plan;
}

struct PictureEntry {
    std::uint8_t width;
    std::uint8_t height;
    std::uint8_t colours;
    std::uint8_t reserved;
    std::uint16_t planes_or_hot_x;
    std::uint16_t bits_or_hot_y;
    std::uint32_t length;
    std::uint32_t offset;
};
static_assert(sizeof(PictureEntry) == 16);

// A cursor's directory has sizes of 16 bits, its height counts both of its masks, and its planes
// and bits are those of the image.
void AddCursorEntry(TemplateBytes& group, const PictureEntry& entry, Bytes image) {
    const auto header = At<BITMAPINFOHEADER>(image, 0);
    const bool is_bitmap = header && header->biSize == sizeof(BITMAPINFOHEADER);
    group.AddU16(entry.width);
    group.AddU16(static_cast<std::uint16_t>(entry.height * 2));
    group.AddU16(is_bitmap ? header->biPlanes : std::uint16_t{1});
    group.AddU16(is_bitmap ? header->biBitCount : std::uint16_t{32});
}

void AddIconEntry(TemplateBytes& group, const PictureEntry& entry) {
    group.AddU8(entry.width);
    group.AddU8(entry.height);
    group.AddU8(entry.colours);
    group.AddU8(0);
    group.AddU16(entry.planes_or_hot_x);
    group.AddU16(entry.bits_or_hot_y);
}

std::vector<std::uint8_t> ImageBytes(const PictureEntry& entry, Bytes image, PictureKind kind) {
    TemplateBytes bytes;
    if (kind == PictureKind::Cursor) {
        bytes.AddU16(entry.planes_or_hot_x);
        bytes.AddU16(entry.bits_or_hot_y);
    }
    bytes.AddBytes(image);
    return bytes.Finish();
}

} // namespace

std::optional<std::vector<std::uint8_t>> PackedBitmapFrom(Bytes file, std::string& problem) {
    const auto header = At<BITMAPFILEHEADER>(file, 0);
    if (!header || header->bfType != kBitmapMark) {
        problem = "it is no BMP file";
        return std::nullopt;
    }
    const Bytes info = file.subspan(sizeof(BITMAPFILEHEADER));
    const auto plan = PlanOf(info, problem);
    if (!plan) return std::nullopt;
    const std::uint64_t pixels = header->bfOffBits;
    if (plan->info_length > info.size() || pixels < sizeof(BITMAPFILEHEADER) + plan->info_length ||
        pixels > file.size() || plan->pixel_length > file.size() - pixels) {
        problem = "it ends before its pixels do";
        return std::nullopt;
    }
    TemplateBytes packed;
    packed.AddBytes(info.first(plan->info_length));
    packed.AddBytes(file.subspan(pixels, plan->pixel_length));
    return packed.Finish();
}

std::optional<PictureGroup> PictureGroupFrom(Bytes file, PictureKind kind, std::uint16_t first_id,
                                             std::string& problem) {
    const std::uint16_t wanted_type = kind == PictureKind::Icon ? 1 : 2;
    const auto count = At<std::uint16_t>(file, 4);
    if (!count || At<std::uint16_t>(file, 0) != 0 || At<std::uint16_t>(file, 2) != wanted_type) {
        problem = kind == PictureKind::Icon ? "it is no ICO file" : "it is no CUR file";
        return std::nullopt;
    }
    PictureGroup result;
    TemplateBytes group;
    group.AddU16(0);
    group.AddU16(wanted_type);
    group.AddU16(*count);
    for (std::size_t i = 0; i < *count; ++i) {
        const auto entry = At<PictureEntry>(file, 6 + i * sizeof(PictureEntry));
        if (!entry || entry->offset > file.size() || entry->length > file.size() - entry->offset) {
            problem = "image " + std::to_string(i) + " lies outside the file";
            return std::nullopt;
        }
        const Bytes image = file.subspan(entry->offset, entry->length);
        result.images.push_back(ImageBytes(*entry, image, kind));
        if (kind == PictureKind::Cursor) {
            AddCursorEntry(group, *entry, image);
        } else {
            AddIconEntry(group, *entry);
        }
        group.AddU32(static_cast<std::uint32_t>(result.images.back().size()));
        group.AddU16(static_cast<std::uint16_t>(first_id + i));
    }
    result.group = group.Finish();
    return result;
}

} // namespace kelvo::resource_compiler
