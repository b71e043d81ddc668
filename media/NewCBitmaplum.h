#pragma once
// A bitmap that holds a whole BMP file image in memory: the preview of a film, still pictures. Film
// images are never copied into one while they play. Drawing it and taking it from the clipboard
// need a window and stand in framework/window.

#include "framework/base/Bytes.h"
#include "framework/base/CString.h"
#include "platform/base/bitmaps.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace kelvo {

class NewCBitmaplum {
public:
    /// Builds the image from an info header with its palette and the pixels behind it.
    /// @param info    at least 40 + 4 x biClrUsed bytes
    /// @param pixels  at least biSizeImage bytes
    /// @return false, and no image, when one of them is shorter than the header says
    [[nodiscard]] bool SetByInfoAndBits(ByteView info, ByteView pixels);
    /// Builds the image from info header, palette and pixels in one block, as the clipboard gives
    /// it. A block that is shorter than its header says is reported in a box.
    [[nodiscard]] bool CreateByPackedData(ByteView packed);
    /// Writes the BMP file; a file that could not be written whole is deleted again.
    [[nodiscard]] bool SaveToFile(const CString& name) const;
    /// Converts in place, 24 to 16 bits a pixel; any other wish is refused in a box.
    [[nodiscard]] bool internalcorvert(int target_bit_count);
    void Free();

    bool HasImage() const { return !image_.empty(); }
    std::int32_t Width() const { return width_; }
    std::int32_t Height() const { return height_; }
    /// Bytes of one row, filled up to a multiple of 4.
    std::uint32_t Stride() const { return stride_; }
    /// Bytes behind the headers.
    std::uint32_t PixelLength() const { return pixel_length_; }
    int BitsPerPixel() const;
    std::int64_t PixelCount() const { return std::int64_t{width_} * height_; }
    /// For StretchDIBits; null without an image. Lives until the bitmap changes, as all below.
    const BITMAPINFO* Info() const;
    const std::uint8_t* Pixels() const;
    /// The BMP file: bfSize bytes.
    ByteView FileImage() const;

    /// @param y  counted from the top row
    /// @return null outside the picture or where the pixel is not inside the image
    std::uint8_t* PixelAddress(std::int32_t x, std::int32_t y);
    const std::uint8_t* PixelAddress(std::int32_t x, std::int32_t y) const;
    /// Of a 24-bit bitmap; 0 outside the picture or of another kind.
    COLORREF GetPixel24(std::int32_t x, std::int32_t y) const;
    void SetPixel24(std::int32_t x, std::int32_t y, COLORREF colour);

private:
    BITMAPFILEHEADER FileHeader() const;
    void SetFileHeader(std::uint32_t size, std::uint32_t pixel_offset);
    void TakeMeasures();
    BITMAPINFOHEADER InfoHeader() const;

    std::int32_t width_ = 0;
    std::int32_t height_ = 0;
    std::uint32_t pixel_length_ = 0;
    std::uint32_t stride_ = 0;
    std::vector<std::uint8_t> image_; // file header, info header, palette, pixels
};

/// The player's name for the same class.
using KLVNewCBitmapkel = NewCBitmaplum;

} // namespace kelvo
