#include "tools/kelvotool/picture/PngFile.h"

#include <png.h>

#include <algorithm>
#include <csetjmp>
#include <cstring>
#include <tuple>

namespace kelvo::tool {

namespace {

constexpr int kSignatureBytes = 8;
constexpr unsigned kByteBits = 8;
// A hostile picture may claim what does not fit any memory.
constexpr png_alloc_size_t kLargestChunk = png_alloc_size_t{64} << 20U;

void FailQuietly(png_structp png, png_const_charp) {
    png_longjmp(png, 1);
}
void IgnoreWarning(png_structp, png_const_charp) {}

void AppendBytes(png_structp png, png_bytep bytes, png_size_t count) {
    auto& file = *static_cast<std::vector<std::uint8_t>*>(png_get_io_ptr(png));
    file.insert(file.end(), bytes, bytes + count);
}
void NothingToFlush(png_structp) {}

void TakeBytes(png_structp png, png_bytep bytes, png_size_t count) {
    auto& rest = *static_cast<ByteView*>(png_get_io_ptr(png));
    if (count > rest.size()) png_error(png, "ends early");
    std::memcpy(bytes, rest.data(), count);
    rest = rest.subspan(count);
}

/// libpng leaves by longjmp: nothing with a destructor may live in this function.
bool WriteAll(png_structp png, png_infop info, const RgbImage& image, unsigned significant_bits,
              png_bytepp rows) {
    if (setjmp(png_jmpbuf(png)) != 0) return false;
    png_set_IHDR(png, info, image.width, image.height, 8, PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    if (significant_bits < kByteBits) {
        png_color_8 bits{};
        bits.red = bits.green = bits.blue = static_cast<png_byte>(significant_bits);
        png_set_sBIT(png, info, &bits);
    }
    png_write_info(png, info);
    png_write_image(png, rows);
    png_write_end(png, info);
    return true;
}

struct PngFacts {
    png_uint_32 width = 0;
    png_uint_32 height = 0;
    bool too_large = false;
    bool has_alpha = false;
    bool is_deep = false;
    bool has_five_bits = false;
};

bool ReadFacts(png_structp png, png_infop info, std::uint32_t largest_side, PngFacts& facts) {
    if (setjmp(png_jmpbuf(png)) != 0) return false;
    png_read_info(png, info);
    facts.width = png_get_image_width(png, info);
    facts.height = png_get_image_height(png, info);
    facts.too_large = facts.width > largest_side || facts.height > largest_side;
    facts.has_alpha = (png_get_color_type(png, info) & PNG_COLOR_MASK_ALPHA) != 0 ||
                      png_get_valid(png, info, PNG_INFO_tRNS) != 0;
    facts.is_deep = png_get_bit_depth(png, info) > 8;
    png_color_8p bits = nullptr;
    facts.has_five_bits = png_get_sBIT(png, info, &bits) != 0 && bits != nullptr &&
                          bits->red == 5 && bits->green == 5 && bits->blue == 5;
    if (facts.too_large) return true;
    png_set_expand(png);
    png_set_scale_16(png);
    png_set_gray_to_rgb(png);
    if (facts.has_alpha) {
        png_color_16 black{};
        png_set_background(png, &black, PNG_BACKGROUND_GAMMA_SCREEN, 0, 1.0);
    }
    std::ignore = png_set_interlace_handling(png);
    png_read_update_info(png, info);
    if (png_get_rowbytes(png, info) != png_size_t{facts.width} * 3) return false;
    return true;
}

bool ReadRows(png_structp png, png_bytepp rows) {
    if (setjmp(png_jmpbuf(png)) != 0) return false;
    png_read_image(png, rows);
    png_read_end(png, nullptr);
    return true;
}

std::vector<png_bytep> RowsOf(RgbImage& image) {
    std::vector<png_bytep> rows(image.height);
    for (std::uint32_t y = 0; y < image.height; ++y)
        rows[y] = image.Row(y);
    return rows;
}

} // namespace

bool EncodePng(const RgbImage& image, unsigned significant_bits, std::vector<std::uint8_t>& file) {
    file.clear();
    png_structp png =
        png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, FailQuietly, IgnoreWarning);
    if (png == nullptr) return false;
    png_infop info = png_create_info_struct(png);
    std::vector<png_bytep> rows(image.height);
    for (std::uint32_t y = 0; y < image.height; ++y)
        rows[y] = const_cast<png_bytep>(image.Row(y)); // libpng only reads them
    png_set_write_fn(png, &file, AppendBytes, NothingToFlush);
    const bool written =
        info != nullptr && WriteAll(png, info, image, significant_bits, rows.data());
    png_destroy_write_struct(&png, &info);
    return written;
}

Result<ReadPicture> DecodePng(ByteView file, std::uint32_t largest_side) {
    const Error broken{Fault::BadValue, 0};
    if (file.size() < kSignatureBytes || png_sig_cmp(file.data(), 0, kSignatureBytes) != 0) {
        return broken;
    }
    png_structp png =
        png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, FailQuietly, IgnoreWarning);
    if (png == nullptr) return broken;
    png_infop info = png_create_info_struct(png);
    ByteView rest = file;
    png_set_read_fn(png, &rest, TakeBytes);
    png_set_chunk_malloc_max(png, kLargestChunk);
    PngFacts facts;
    ReadPicture picture;
    bool is_read = info != nullptr && ReadFacts(png, info, largest_side, facts);
    if (is_read && !facts.too_large) {
        picture.image.Resize(facts.width, facts.height);
        auto rows = RowsOf(picture.image);
        is_read = ReadRows(png, rows.data());
    }
    png_destroy_read_struct(&png, &info, nullptr);
    if (!is_read) return broken;
    if (facts.too_large) return Error{Fault::TooLarge, 0};
    picture.lost_transparency = facts.has_alpha;
    picture.lost_depth = facts.is_deep;
    picture.has_five_bits = facts.has_five_bits;
    return picture;
}

} // namespace kelvo::tool
