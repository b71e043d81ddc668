#include "container/RecordProbe.h"

#include "container/RecordFrame.h"
#include "container/codec/CompressionTypes.h"
#include "framework/base/ByteReader.h"
#include "platform/base/files.h"

#include <algorithm>

namespace kelvo {

namespace {

/// What the second of two decodings begins with, so that pixels which a stream leaves alone differ.
constexpr std::uint8_t kOtherBytes = 0x55;

const codec::CompressionType& TypeOf(const ContainerHeader& header) {
    return codec::CodingType(static_cast<int>(header.CompressionType));
}

} // namespace

std::optional<std::uint32_t> NumberReader::At(std::uint64_t offset) {
    if (offset + 4 > window_.Size()) return std::nullopt;
    if (offset < start_ || offset + 4 > start_ + count_) Fill(offset);
    if (offset + 4 > start_ + count_) return std::nullopt;
    const auto first = static_cast<std::size_t>(offset - start_);
    return ByteReader{ByteView{bytes_}.subspan(first, 4)}.ReadU32();
}

void NumberReader::Fill(std::uint64_t offset) {
    const std::size_t wanted =
        std::min<std::size_t>(bytes_.size(), window_.Size() - static_cast<std::size_t>(offset));
    const std::int64_t count =
        platform::ReadFileAt(file_, window_.start + offset, bytes_.data(), wanted);
    start_ = offset;
    count_ = count > 0 ? static_cast<std::size_t>(count) : 0;
}

RecordProbe::RecordProbe(HFILE file, const TrackWindow& window, const ContainerHeader& header)
    : file_(file), window_(window), header_(header), raw_(IsRaw(header)),
      differential_(TypeOf(header).differential),
      longest_(
          std::max<std::uint64_t>(2 * std::uint64_t{header.RecordLength},
                                  codec::WorstStoredLength(TypeOf(header), header.RecordLength))) {}

bool RecordProbe::IsPlausible(std::uint64_t offset, std::uint32_t stored_length) const {
    if (stored_length > longest_) return false;
    const std::uint64_t side = offset + kStoredLengthBytes + stored_length;
    if (side + header_.SideLength > window_.Size()) return false;
    if (raw_) return stored_length == header_.RecordLength;
    return header_.RecordLength <= codec::GreatestRecordLength(TypeOf(header_), stored_length);
}

bool RecordProbe::Prepare() {
    if (tried_) return ready_;
    tried_ = true;
    if (header_.RecordLength == 0 || !CanProve()) return false;
    if (!raw_ && !catalogue_.SetCompressionType(static_cast<int>(header_.CompressionType),
                                                static_cast<int>(header_.RecordLength))) {
        return false;
    }
    ready_ = record_.Allocate(header_.RecordLength) &&
             stored_.Allocate(static_cast<std::size_t>(longest_));
    return ready_;
}

ByteView RecordProbe::Read(std::uint64_t offset, std::uint32_t stored_length) {
    if (!Prepare() || !IsPlausible(offset, stored_length)) return {};
    const ByteSpan stored = stored_.Span().first(stored_length);
    const std::int64_t count = platform::ReadFileAt(
        file_, window_.start + offset + kStoredLengthBytes, stored.data(), stored.size());
    return count == static_cast<std::int64_t>(stored.size()) ? ByteView{stored} : ByteView{};
}

bool RecordProbe::Decodes(std::uint64_t offset, std::uint32_t stored_length) {
    if (raw_ && !CanProve()) return IsPlausible(offset, stored_length);
    const ByteView stored = Read(offset, stored_length);
    if (stored.empty()) return false;
    if (raw_) {
        std::ranges::copy(stored, record_.Span().begin());
        return true;
    }
    const Decoded decoded = catalogue_.DecodeRecord(stored, record_.Span());
    return decoded.described == header_.RecordLength && decoded.fault == Fault::None;
}

bool RecordProbe::IsKey(std::uint64_t offset, std::uint32_t stored_length) {
    if (!differential_) return true;
    const ByteView stored = Read(offset, stored_length);
    if (stored.empty() || (other_.Size() == 0 && !other_.Allocate(record_.Size()))) return false;
    std::ranges::fill(other_.Span(), kOtherBytes);
    std::ranges::fill(record_.Span(), std::uint8_t{0});
    const bool both = catalogue_.DecodeRecord(stored, other_.Span()).fault == Fault::None &&
                      catalogue_.DecodeRecord(stored, record_.Span()).fault == Fault::None;
    return both && std::ranges::equal(other_.View(), record_.View());
}

} // namespace kelvo
