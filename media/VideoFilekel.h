#pragma once
// The picture track of a film: a record container whose records are images and whose user header
// describes them. An image is drawn where it was decoded, without a copy. What opens is safe to
// draw: its header was checked against the length of the records.

#include "container/ZFilekel.h"
#include "framework/base/Bytes.h"
#include "framework/base/CString.h"
#include "media/DamagedFilm.h"
#include "media/VideoHeader.h"
#include "platform/base/bitmaps.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <vector>

namespace kelvo {

/// What the side block of an image says.
struct FrameSide {
    std::uint32_t SyncNumber = 0;   ///< audio frame during which the image is shown
    std::uint32_t second_value = 0; ///< of no meaning
    std::uint32_t CaptureTime = 0;  ///< milliseconds; the low 28 bits count
    friend bool operator==(const FrameSide&, const FrameSide&) = default;
};

class VideoFilekel : public ZFilekel {
public:
    VideoFilekel() = default;
    /// Closes.
    ~VideoFilekel() override;

    /// Of a .kva it is the picture. A user header that is no video header is refused without a box.
    /// A damaged film opens with what can be found of it, after one message for the whole film
    /// (DamagedFilmNotice); its file is never touched.
    [[nodiscard]] bool OpenForRead(const CString& name);
    [[nodiscard]] bool OpenExisting(const CString& name);
    /// A new track; WriteVideoHeader and AppendFrame follow.
    /// @param bitmap_part  bytes of the bitmap headers, palette included: 54 without one
    [[nodiscard]] bool Create(const CString& name, std::uint32_t bitmap_part,
                              std::uint32_t record_length, int type, int images_per_second,
                              std::uint32_t key_interval, bool scanned);
    /// @param bitmap_part  as many bytes as Create was told; others are refused
    [[nodiscard]] bool WriteVideoHeader(ByteView bitmap_part);
    [[nodiscard]] bool AppendFrame(ByteView pixels, std::uint32_t sync_number,
                                   std::uint32_t capture_time);
    /// @return false only when a track that was written or edited could not be finished
    bool Close();

    /// @param side  left alone when there is no frame
    bool ReadNextFrame(FrameSide& side);
    bool ReadFrame(int frame, FrameSide& side);
    /// Taken into what there is: the next ReadNextFrame gives that image.
    bool GoToRecord(int frame);

    /// The SyncNumber of the image that the next read gives (past the end: of the last one),
    /// without decoding anything; 0 for a track without images. Not while another thread reads the
    /// track.
    std::uint32_t CurrentSyncNumber();
    /// The same of any image; a number outside the track counts as its nearest one.
    std::uint32_t SyncNumberOf(int frame);

    /// With GetFrameBits, what StretchDIBits draws with DIB_RGB_COLORS; null while closed. Its
    /// biSizeImage is the record length, whatever the file says.
    const BITMAPINFO* GetBitmapInfo() const;
    /// Bottom-up rows, each filled up to a multiple of 4 bytes; valid until the next read or close.
    const std::uint8_t* GetFrameBits() const;
    /// The same two as bytes, for NewCBitmaplum::SetByInfoAndBits.
    ByteView BitmapInfoBytes() const;
    ByteView FrameBits() const;

    int Width() const { return fields_.bitmap.biWidth; }
    int Height() const { return fields_.bitmap.biHeight; }
    int BitCount() const { return fields_.bitmap.biBitCount; }
    /// As stored: may be 0 or negative in a damaged film.
    int nImgAlSec() const { return fields_.nImgAlSec; }
    /// What periods are computed from: nImgAlSec, or 1 where it is below.
    int ImagesPerSecond() const { return fields_.nImgAlSec < 1 ? 1 : fields_.nImgAlSec; }
    /// 1000 / ImagesPerSecond, in whole milliseconds.
    int PeriodMs() const { return 1000 / ImagesPerSecond(); }
    bool IsScanned() const { return (fields_.VideoFlags & kScannedFlag) != 0; }
    /// Images build on one another: fast motion reads them in order.
    bool IsSequentialOnly() const { return IsDifferential(); }
    int FrameCount() const;
    /// Number of the image that the next read gives. Any thread.
    int CurrentFrame() const;
    /// What keeps the user header from being a video header, with the offset in it; none after an
    /// opening that succeeded.
    const Error& HeaderError() const { return header_error_; }

private:
    bool OpenDamaged(const CString& name);
    bool TakeHeader();
    void SetUpHeader(std::uint32_t bitmap_part);
    FrameSide SideOfRecord() const;
    void PublishPosition();

    std::vector<std::uint8_t> header_bytes_; // the VideoHeader; empty while closed
    VideoHeader fields_;                     // read from header_bytes_
    std::array<std::uint8_t, kVideoSideLength> side_{};
    Error header_error_;
    DamagedFilmNotice notice_;

    std::atomic<int> current_frame_{0}; ///< who reads images writes it, any thread reads it
};

} // namespace kelvo
