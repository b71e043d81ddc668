#include "container/RewriteTarget.h"

#include "container/RecordFrame.h"
#include "framework/base/ChFile.h"
#include "platform/base/files.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <span>
#include <string_view>

namespace kelvo {

namespace {

// Small records, as of sound, are gathered until they are worth a system call.
constexpr std::size_t kBufferBytes = std::size_t{256} * 1024;

constexpr Error kNone{};

ByteView BytesOf(std::span<const std::uint32_t> values) {
    return {reinterpret_cast<const std::uint8_t*>(values.data()), values.size_bytes()};
}

} // namespace

std::string TemporaryNameFor(const std::string& name) {
    const CString path(std::string_view{name});
    const CString temporary = PathDirectory(path) + PathTitle(path) + ".tmp";
    return std::string(temporary.View());
}

Error RewriteTarget::Begin(const std::string& destination, Kind kind) {
    destination_ = destination;
    buffer_.clear();
    buffer_.reserve(kBufferBytes);
    size_ = 0;
    switch (temporary_.Make(TemporaryNameFor(destination), destination)) {
    case platform::Claim::Taken:
        break;
    case platform::Claim::Busy:
        return {Fault::Busy, 0};
    case platform::Claim::Foreign:
        return {Fault::Mismatch, 0};
    case platform::Claim::Failed:
        return {Fault::Unwritable, 0};
    }
    if (kind == Kind::Track) return kNone;
    return AppendBytes(DirectoryBytes({}));
}

Error RewriteTarget::Flush() {
    const std::uint64_t offset = size_ - buffer_.size();
    const bool written = temporary_.WriteAt(offset, buffer_);
    buffer_.clear();
    return written ? kNone : Error{Fault::Unwritable, offset};
}

Error RewriteTarget::AppendBytes(ByteView bytes) {
    if (bytes.size() > kLargestContainer - std::min(size_, kLargestContainer)) {
        return {Fault::TooLarge, size_};
    }
    if (bytes.size() > kBufferBytes - buffer_.size()) {
        if (const Error error = Flush(); error.fault != Fault::None) return error;
    }
    if (bytes.size() >= kBufferBytes) {
        if (!temporary_.WriteAt(size_, bytes)) return {Fault::Unwritable, size_};
    } else {
        buffer_.insert(buffer_.end(), bytes.begin(), bytes.end());
    }
    size_ += bytes.size();
    return kNone;
}

Error RewriteTarget::CopyWindow(HFILE file, const TrackWindow& window) {
    std::vector<std::uint8_t> chunk(std::min<std::size_t>(window.Size(), kBufferBytes));
    for (std::uint64_t offset = window.start; offset < window.end;) {
        const std::size_t count = std::min<std::size_t>(window.end - offset, chunk.size());
        const ByteSpan bytes = ByteSpan{chunk}.first(count);
        if (platform::ReadFileAt(file, offset, bytes.data(), count) !=
            static_cast<std::int64_t>(count)) {
            return {Fault::Unreadable, offset};
        }
        if (const Error error = AppendBytes(bytes); error.fault != Fault::None) return error;
        offset += count;
    }
    return kNone;
}

Error RewriteTarget::BeginContainer(const ContainerHeader& header, ByteView user_header) {
    header_ = header;
    header_.RecordCount = 0;
    container_start_ = static_cast<std::uint32_t>(size_);
    if (header.FirstRecordOffset() > kLargestContainer) return {Fault::TooLarge, size_};
    if (!index_.Start(static_cast<std::uint32_t>(header.FirstRecordOffset()))) {
        return {Fault::TooLarge, size_};
    }
    const bool can_code = catalogue_.SetCompressionType(static_cast<int>(header.CompressionType),
                                                        static_cast<int>(header.RecordLength)) ||
                          IsRaw(header);
    if (!can_code && header.RecordCount > 0) return {Fault::BadValue, size_};
    if (!frame_.Allocate(FrameRoom(catalogue_, header_))) return {Fault::TooLarge, size_};

    if (const Error error = AppendBytes(HeaderBytes(header_)); error.fault != Fault::None) {
        return error;
    }
    const ByteView given =
        user_header.first(std::min<std::size_t>(user_header.size(), header.UserHeaderSize));
    if (const Error error = AppendBytes(given); error.fault != Fault::None) return error;
    const std::vector<std::uint8_t> zeros(header.UserHeaderSize - given.size());
    return AppendBytes(zeros);
}

Error RewriteTarget::AppendFrame(ByteView frame) {
    if (frame.empty()) return {Fault::BadValue, size_};
    ContainerHeader grown = header_;
    ++grown.RecordCount;
    const std::uint64_t rest = grown.IndexBytes() + reserved_behind_;
    if (size_ + frame.size() + rest > kLargestContainer) return {Fault::TooLarge, size_};
    if (const Error error = AppendBytes(frame); error.fault != Fault::None) return error;
    const std::uint32_t end = index_.End() + static_cast<std::uint32_t>(frame.size());
    if (!index_.Append(end - header_.SideLength, end)) return {Fault::TooLarge, size_};
    ++header_.RecordCount;
    return kNone;
}

Error RewriteTarget::AppendRecord(ByteView payload, ByteView side) {
    assert(payload.size() == header_.RecordLength && side.size() == header_.SideLength);
    return AppendFrame(
        EncodeFrame(catalogue_, header_, header_.RecordCount, payload, side, frame_.Span()));
}

Error RewriteTarget::AppendStored(ByteView stored, ByteView side) {
    assert(side.size() == header_.SideLength);
    if (stored.size() > PayloadRoom(catalogue_, header_)) return {Fault::TooLarge, size_};
    std::ranges::copy(stored, frame_.Span().subspan(kStoredLengthBytes).begin());
    return AppendFrame(CloseFrame(stored.size(), side, frame_.Span()));
}

Error RewriteTarget::AppendIndex(const RecordIndex& index) {
    if (const Error error = AppendBytes(BytesOf(index.Offsets())); error.fault != Fault::None) {
        return error;
    }
    return AppendBytes(BytesOf(index.SidePositions()));
}

Error RewriteTarget::EndContainer() {
    header_.IndexOffset = index_.End();
    header_.HeaderMark = 1;
    if (const Error error = AppendIndex(index_); error.fault != Fault::None) return error;
    if (const Error error = Flush(); error.fault != Fault::None) return error;
    if (!temporary_.WriteAt(container_start_, HeaderBytes(header_))) {
        return {Fault::Unwritable, container_start_};
    }
    container_end_ = static_cast<std::uint32_t>(size_);
    return kNone;
}

Error RewriteTarget::PutDirectory(const AVDirectory& directory) {
    if (const Error error = Flush(); error.fault != Fault::None) return error;
    return temporary_.WriteAt(0, DirectoryBytes(directory)) ? kNone : Error{Fault::Unwritable, 0};
}

Error RewriteTarget::Finish() {
    if (const Error error = Flush(); error.fault != Fault::None) return error;
    return temporary_.Finish(destination_) ? kNone : Error{Fault::Unwritable, size_};
}

bool RewriteTarget::PutInPlace() {
    return temporary_.PutInPlaceOf(destination_);
}

bool RewriteTarget::PutWhereNothingIs() {
    return temporary_.PutAt(destination_);
}

} // namespace kelvo
