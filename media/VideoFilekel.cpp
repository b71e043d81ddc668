#include "media/VideoFilekel.h"

#include "framework/base/ByteReader.h"
#include "framework/base/ByteWriter.h"
#include "media/FilmTracks.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <optional>
#include <tuple>
#include <utility>

namespace kelvo {

namespace {

constexpr std::uint32_t kVideoCreator = 1;
constexpr std::size_t kFileHeaderSize = sizeof(BITMAPFILEHEADER);

int AsInt(std::uint32_t value) {
    return static_cast<int>(std::min<std::uint32_t>(value, INT_MAX));
}

FrameSide ParseSide(ByteView side) {
    ByteReader reader{side};
    FrameSide result;
    result.SyncNumber = reader.ReadU32();
    result.second_value = reader.ReadU32();
    result.CaptureTime = reader.ReadU32();
    return result;
}

} // namespace

VideoFilekel::~VideoFilekel() = default;

bool VideoFilekel::OpenForRead(const CString& name) {
    header_error_ = {};
    if (OpenMode() != Mode::Closed) return false;
    const bool is_film = IsFilmName(name.View());
    if (ZFilekel::OpenForRead(name, 'V')) {
        const bool believable = IndexIsBelievable();
        if (believable && TakeHeader()) return true;
        if (believable && !is_film) return false; // whole, but of something else
        ZFilekel::Close();
    } else if (!is_film && LastError().fault == Fault::Missing) {
        return false;
    }
    return OpenDamaged(name);
}

bool VideoFilekel::OpenDamaged(const CString& name) {
    std::optional<TrackWindow> window;
    if (IsFilmName(name.View())) {
        const Result<FoundTracks> found = FindFilmTracks(name);
        if (!found || found.Value().directory.video.Absent()) return false;
        window = found.Value().directory.video;
    }
    if (!OpenSalvaged(name, window) || !TakeHeader()) return false;
    notice_.Show(FileName());
    return true;
}

bool VideoFilekel::OpenExisting(const CString& name) {
    header_error_ = {};
    return ZFilekel::OpenExisting(name) && TakeHeader();
}

// Closes a container that is no video track.
bool VideoFilekel::TakeHeader() {
    const ByteView stored = std::as_const(*this).UserHeader();
    const Result<VideoHeader> header = ParseVideoHeader(stored);
    header_error_ =
        header ? CheckVideoHeader(header.Value(), stored.size(), RecordLength()) : header.Why();
    if (header_error_.fault != Fault::None) {
        std::ignore = ZFilekel::Close(); // nothing was changed
        return false;
    }
    header_bytes_.assign(stored.begin(), stored.end());
    fields_ = header.Value();
    // Films may leave the size of plain pixels out or get it wrong; who copies a picture needs it.
    fields_.bitmap.biSizeImage = RecordLength();
    std::memcpy(header_bytes_.data() + kFileHeaderSize, &fields_.bitmap, sizeof(fields_.bitmap));
    PublishPosition();
    return true;
}

// The trailer for a bitmap part of so many bytes; the bitmap part is zeros.
void VideoFilekel::SetUpHeader(std::uint32_t bitmap_part) {
    header_bytes_.assign(std::size_t{bitmap_part} + kVideoTrailerSize, 0);
    fields_.BitmapHeaderLength = bitmap_part;
    fields_.VideoHeaderLength = static_cast<std::uint32_t>(header_bytes_.size());
    ByteWriter trailer{ByteSpan{header_bytes_}.last(kVideoTrailerSize)};
    trailer.WriteU32(fields_.BitmapHeaderLength);
    trailer.WriteU32(fields_.VideoHeaderLength);
    trailer.WriteU16(static_cast<std::uint16_t>(fields_.nImgAlSec));
    trailer.WriteU16(fields_.VideoFlags);
}

bool VideoFilekel::Create(const CString& name, std::uint32_t bitmap_part,
                          std::uint32_t record_length, int type, int images_per_second,
                          std::uint32_t key_interval, bool scanned) {
    header_error_ = {};
    if (OpenMode() != Mode::Closed) return false;
    if (bitmap_part < kBitmapHeadersSize || bitmap_part > kLargestContainer) {
        header_error_ = {Fault::BadValue, 0};
        return false;
    }
    fields_ = {};
    fields_.nImgAlSec = static_cast<std::int16_t>(images_per_second);
    fields_.VideoFlags = scanned ? kScannedFlag : std::uint16_t{0};
    SetUpHeader(bitmap_part);
    const bool created =
        ZFilekel::Create(name, fields_.VideoHeaderLength, record_length,
                         static_cast<std::uint32_t>(kVideoSideLength),
                         static_cast<std::uint32_t>(type), key_interval, kVideoCreator);
    if (!created) header_bytes_.clear();
    PublishPosition();
    return created;
}

bool VideoFilekel::WriteVideoHeader(ByteView bitmap_part) {
    if (bitmap_part.size() + kVideoTrailerSize != header_bytes_.size()) return false;
    std::ranges::copy(bitmap_part, header_bytes_.begin());
    std::memcpy(&fields_.bitmap, header_bytes_.data() + kFileHeaderSize, sizeof(fields_.bitmap));
    return WriteUserHeader(header_bytes_);
}

bool VideoFilekel::AppendFrame(ByteView pixels, std::uint32_t sync_number,
                               std::uint32_t capture_time) {
    ByteWriter writer{side_};
    writer.WriteU32(sync_number);
    writer.WriteU32(0);
    writer.WriteU32(capture_time);
    const bool appended = AppendRecord(pixels, side_);
    PublishPosition();
    return appended;
}

bool VideoFilekel::Close() {
    const bool closed = OpenMode() == Mode::Closed || ZFilekel::Close();
    notice_.Release();
    header_bytes_.clear();
    PublishPosition();
    return closed;
}

bool VideoFilekel::ReadNextFrame(FrameSide& side) {
    const bool read = ReadNextRecord();
    PublishPosition();
    if (read) side = ParseSide(SideBuffer());
    return read;
}

bool VideoFilekel::ReadFrame(int frame, FrameSide& side) {
    const bool read = ReadRecord(frame);
    PublishPosition();
    if (read) side = ParseSide(SideBuffer());
    return read;
}

bool VideoFilekel::GoToRecord(int frame) {
    const bool gone = ZFilekel::GoToRecord(frame);
    PublishPosition();
    return gone;
}

std::uint32_t VideoFilekel::CurrentSyncNumber() {
    return SyncNumberOf(CurrentFrame());
}

std::uint32_t VideoFilekel::SyncNumberOf(int frame) {
    if (OpenMode() == Mode::Closed || RecordCount() == 0) return 0;
    const auto record = static_cast<std::uint32_t>(
        std::clamp<std::int64_t>(frame, 0, std::int64_t{RecordCount()} - 1));
    const std::int64_t position = Position();
    // A foreign film's side blocks may be shorter; what is not there counts as 0.
    side_.fill(0);
    const auto length = std::min<std::size_t>(SideLength(), side_.size());
    const bool read = Seek(Index().SidePosition(record)) && ReadAll(ByteSpan{side_}.first(length));
    const bool back = Seek(position);
    return read && back ? ParseSide(side_).SyncNumber : 0;
}

const BITMAPINFO* VideoFilekel::GetBitmapInfo() const {
    if (header_bytes_.empty()) return nullptr;
    return reinterpret_cast<const BITMAPINFO*>(header_bytes_.data() + kFileHeaderSize);
}

ByteView VideoFilekel::BitmapInfoBytes() const {
    if (header_bytes_.empty()) return {};
    return ByteView{header_bytes_}.subspan(kFileHeaderSize, header_bytes_.size() - kFileHeaderSize -
                                                                kVideoTrailerSize);
}

ByteView VideoFilekel::FrameBits() const {
    return RecordBuffer();
}

const std::uint8_t* VideoFilekel::GetFrameBits() const {
    return FrameBits().data();
}

int VideoFilekel::FrameCount() const {
    return AsInt(RecordCount());
}

int VideoFilekel::CurrentFrame() const {
    return current_frame_;
}

void VideoFilekel::PublishPosition() {
    current_frame_ = AsInt(CurrentRecord());
}

} // namespace kelvo
