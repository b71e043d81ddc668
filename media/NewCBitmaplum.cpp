#include "media/NewCBitmaplum.h"

#include "framework/base/CObj.h"
#include "framework/base/ChFile.h"
#include "media/Pixel555.h"
#include "platform/base/files.h"
#include "platform/base/handles.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <utility>

namespace kelvo {

namespace {

constexpr char kPackedCaption[] = "bool KLVNewCBitmapkel::CreateByPackedData()";
constexpr char kTooShortText[] = "(pbmfh->bfSize > dwFileSize)";
constexpr char kPixelsMissingText[] = "(nbytes > nDataSize";
constexpr char kOnly24To16Text[] =
    "KLVNewCBitmapkel::internalcorvert() IMPLEMENTATA solo per 24->16";

constexpr WORD kBitmapMark = 0x4D42; // "BM"
constexpr std::size_t kFileHeaderSize = sizeof(BITMAPFILEHEADER);
// Sizes in a bitmap file have 32 bits, and nothing of the player is larger than 31.
constexpr std::uint64_t kLargestImage = 0x7FFFFFFF;

/// What an info header says about the block behind it.
struct Measures {
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::uint32_t bit_count = 0;
    std::uint64_t stride = 0;
    std::uint64_t header_size = 0; // palette included
    std::uint64_t pixel_size = 0;

    std::uint64_t FileSize() const { return kFileHeaderSize + header_size + pixel_size; }
};

template <class T>
T Copied(ByteView bytes, std::size_t offset = 0) {
    T value{};
    std::memcpy(&value, bytes.data() + offset, std::min(sizeof(T), bytes.size() - offset));
    return value;
}

Measures MeasureCore(const BITMAPCOREHEADER& core) {
    Measures result;
    result.width = core.bcWidth;
    result.height = core.bcHeight;
    result.bit_count = core.bcBitCount;
    const std::size_t colours = core.bcBitCount <= 8 ? std::size_t{1} << core.bcBitCount : 0;
    result.header_size = sizeof(core) + colours * sizeof(RGBTRIPLE);
    return result;
}

Measures MeasureInfo(const BITMAPINFOHEADER& info) {
    Measures result;
    result.width = info.biWidth;
    result.height = info.biHeight < 0 ? -info.biHeight : info.biHeight;
    result.bit_count = info.biBitCount;
    result.header_size =
        std::uint64_t{info.biSize} + sizeof(RGBQUAD) * std::uint64_t{info.biClrUsed};
    result.pixel_size = info.biSizeImage;
    return result;
}

/// @return nothing when the header is cut, or describes no picture
std::optional<Measures> Measure(ByteView info) {
    if (info.size() < sizeof(BITMAPCOREHEADER)) return std::nullopt;
    const auto header = Copied<BITMAPINFOHEADER>(info);
    const bool core = header.biSize == sizeof(BITMAPCOREHEADER);
    if (!core && (header.biSize < sizeof(header) || info.size() < sizeof(header) ||
                  header.biHeight == INT32_MIN)) {
        return std::nullopt;
    }
    Measures result = core ? MeasureCore(Copied<BITMAPCOREHEADER>(info)) : MeasureInfo(header);
    if (result.width <= 0 || result.height <= 0) return std::nullopt;
    // At most 2^31 pixels of 2^16 bits, then 2^31 rows of 2^31 bytes: nothing wraps.
    result.stride = pixel::RowStride(static_cast<std::uint32_t>(result.width), result.bit_count);
    if (result.stride > kLargestImage) return std::nullopt;
    // Plain pixels may leave their size out; the clipboard often does.
    const bool plain = core || header.biCompression == BI_RGB;
    if (plain && result.pixel_size == 0) {
        result.pixel_size = result.stride * static_cast<std::uint32_t>(result.height);
    }
    if (result.FileSize() > kLargestImage) return std::nullopt;
    return result;
}

/// Plain pixels must fill every row, or drawing would read on behind them.
bool RowsAreThere(const Measures& measures, std::uint32_t compression) {
    return compression != BI_RGB ||
           measures.pixel_size >= measures.stride * static_cast<std::uint32_t>(measures.height);
}

std::uint32_t CompressionOf(ByteView info) {
    const auto header = Copied<BITMAPINFOHEADER>(info);
    return header.biSize == sizeof(BITMAPCOREHEADER) ? BI_RGB : header.biCompression;
}

} // namespace

void NewCBitmaplum::Free() {
    *this = NewCBitmaplum{};
}

bool NewCBitmaplum::SetByInfoAndBits(ByteView info, ByteView pixels) {
    Free();
    const std::optional<Measures> measures = Measure(info);
    if (!measures || measures->header_size > info.size() || measures->pixel_size > pixels.size() ||
        !RowsAreThere(*measures, CompressionOf(info))) {
        return false;
    }
    const auto header_size = static_cast<std::size_t>(measures->header_size);
    const auto pixel_size = static_cast<std::size_t>(measures->pixel_size);
    const std::size_t offset = kFileHeaderSize + header_size;
    image_.resize(offset + pixel_size);
    std::ranges::copy(info.first(header_size), image_.begin() + kFileHeaderSize);
    std::ranges::copy(pixels.first(pixel_size),
                      image_.begin() + static_cast<std::ptrdiff_t>(offset));
    SetFileHeader(static_cast<std::uint32_t>(image_.size()), static_cast<std::uint32_t>(offset));
    TakeMeasures();
    return true;
}

bool NewCBitmaplum::CreateByPackedData(ByteView packed) {
    Free();
    const std::optional<Measures> measures = Measure(packed);
    if (!measures || measures->FileSize() > packed.size() + kFileHeaderSize) {
        return CObj::ErrorBox(kTooShortText, Caption{kPackedCaption});
    }
    if (!RowsAreThere(*measures, CompressionOf(packed))) {
        return CObj::ErrorBox(kPixelsMissingText, Caption{kPackedCaption});
    }
    image_.resize(static_cast<std::size_t>(measures->FileSize()));
    std::ranges::copy(packed.first(image_.size() - kFileHeaderSize),
                      image_.begin() + kFileHeaderSize);
    SetFileHeader(static_cast<std::uint32_t>(image_.size()),
                  static_cast<std::uint32_t>(measures->header_size + kFileHeaderSize));
    TakeMeasures();
    return true;
}

bool NewCBitmaplum::SaveToFile(const CString& name) const {
    const CString path = ResolvePath(nullptr, name, nullptr);
    const HANDLE file = CreateFileA(path.Text(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return false;
    const ByteView image = FileImage();
    DWORD written = 0;
    const BOOL wrote =
        WriteFile(file, image.data(), static_cast<DWORD>(image.size()), &written, nullptr);
    const BOOL closed = CloseHandle(file);
    if (wrote != FALSE && closed != FALSE && written == image.size()) return true;
    DeleteFileA(path.Text());
    return false;
}

bool NewCBitmaplum::internalcorvert(int target_bit_count) {
    if (!HasImage() || BitsPerPixel() != 24 || target_bit_count != 16 ||
        InfoHeader().biSize == sizeof(BITMAPCOREHEADER) || InfoHeader().biCompression != BI_RGB) {
        return CObj::ErrorBox(kOnly24To16Text);
    }
    const auto width = static_cast<std::uint32_t>(width_);
    const auto height = static_cast<std::uint32_t>(height_);
    const std::size_t stride24 = stride_;
    const auto stride16 = static_cast<std::size_t>(pixel::RowStride(width, 16));
    std::uint8_t* const pixels = image_.data() + FileHeader().bfOffBits;
    // In ascending order every write lands at or before the bytes that are still to be read.
    for (std::uint32_t y = 0; y < height; ++y) {
        const std::uint8_t* source = pixels + stride24 * y;
        std::uint8_t* target = pixels + stride16 * y;
        for (std::uint32_t x = 0; x < width; ++x, source += 3, target += 2) {
            const std::uint16_t packed = pixel::PackRGB555(source[2], source[1], source[0]);
            target[0] = static_cast<std::uint8_t>(packed);
            target[1] = static_cast<std::uint8_t>(packed >> 8U);
        }
    }
    BITMAPINFOHEADER info = InfoHeader();
    info.biBitCount = 16;
    info.biSizeImage = static_cast<DWORD>(stride16 * height);
    std::memcpy(image_.data() + kFileHeaderSize, &info, sizeof(info));
    const DWORD offset = FileHeader().bfOffBits;
    SetFileHeader(offset + info.biSizeImage, offset);
    TakeMeasures();
    return true;
}

int NewCBitmaplum::BitsPerPixel() const {
    if (!HasImage()) return 0;
    const BITMAPINFOHEADER info = InfoHeader();
    if (info.biSize != sizeof(BITMAPCOREHEADER)) return info.biBitCount;
    return Copied<BITMAPCOREHEADER>(ByteView{image_}, kFileHeaderSize).bcBitCount;
}

const BITMAPINFO* NewCBitmaplum::Info() const {
    if (!HasImage()) return nullptr;
    return reinterpret_cast<const BITMAPINFO*>(image_.data() + kFileHeaderSize);
}

const std::uint8_t* NewCBitmaplum::Pixels() const {
    return HasImage() ? image_.data() + FileHeader().bfOffBits : nullptr;
}

ByteView NewCBitmaplum::FileImage() const {
    if (!HasImage()) return {};
    return ByteView{image_}.first(FileHeader().bfSize);
}

std::uint8_t* NewCBitmaplum::PixelAddress(std::int32_t x, std::int32_t y) {
    return const_cast<std::uint8_t*>(std::as_const(*this).PixelAddress(x, y));
}

const std::uint8_t* NewCBitmaplum::PixelAddress(std::int32_t x, std::int32_t y) const {
    if (!HasImage() || x < 0 || y < 0 || x >= width_ || y >= height_) return nullptr;
    const auto bits = static_cast<std::uint64_t>(BitsPerPixel());
    const std::uint64_t row = static_cast<std::uint32_t>(height_ - 1 - y);
    const std::uint64_t offset = row * stride_ + static_cast<std::uint32_t>(x) * bits / 8;
    if (offset + (bits + 7) / 8 > pixel_length_) return nullptr;
    return Pixels() + offset;
}

COLORREF NewCBitmaplum::GetPixel24(std::int32_t x, std::int32_t y) const {
    const std::uint8_t* const address = BitsPerPixel() == 24 ? PixelAddress(x, y) : nullptr;
    return address != nullptr ? RGB(address[2], address[1], address[0]) : 0;
}

void NewCBitmaplum::SetPixel24(std::int32_t x, std::int32_t y, COLORREF colour) {
    std::uint8_t* const address = BitsPerPixel() == 24 ? PixelAddress(x, y) : nullptr;
    if (address == nullptr) return;
    address[0] = GetBValue(colour);
    address[1] = GetGValue(colour);
    address[2] = GetRValue(colour);
}

BITMAPFILEHEADER NewCBitmaplum::FileHeader() const {
    return Copied<BITMAPFILEHEADER>(image_);
}

BITMAPINFOHEADER NewCBitmaplum::InfoHeader() const {
    return Copied<BITMAPINFOHEADER>(ByteView{image_}, kFileHeaderSize);
}

void NewCBitmaplum::SetFileHeader(std::uint32_t size, std::uint32_t pixel_offset) {
    const BITMAPFILEHEADER header{.bfType = kBitmapMark,
                                  .bfSize = size,
                                  .bfReserved1 = 0,
                                  .bfReserved2 = 0,
                                  .bfOffBits = pixel_offset};
    std::memcpy(image_.data(), &header, sizeof(header));
}

void NewCBitmaplum::TakeMeasures() {
    const BITMAPFILEHEADER file = FileHeader();
    const std::optional<Measures> measures = Measure(ByteView{image_}.subspan(kFileHeaderSize));
    if (!measures) return; // was measured before it was built
    width_ = measures->width;
    height_ = measures->height;
    stride_ = static_cast<std::uint32_t>(measures->stride);
    pixel_length_ = file.bfSize - file.bfOffBits;
    // A size that was left out is written down, so that the file is whole on its own.
    BITMAPINFOHEADER info = InfoHeader();
    if (info.biSize == sizeof(BITMAPCOREHEADER)) return;
    info.biSizeImage = pixel_length_;
    std::memcpy(image_.data() + kFileHeaderSize, &info, sizeof(info));
}

} // namespace kelvo
