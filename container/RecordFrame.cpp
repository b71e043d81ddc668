#include "container/RecordFrame.h"

#include "container/codec/CompressionTypes.h"
#include "framework/base/ByteWriter.h"

#include <algorithm>
#include <cassert>

namespace kelvo {

namespace {

enum class Key : bool { No, Yes };

ByteView Encode(Compressionekel& catalogue, const ContainerHeader& header, Key key,
                ByteView payload, ByteView side, ByteSpan frame) {
    assert(frame.size() >= FrameRoom(catalogue, header));
    const ByteSpan room =
        frame.subspan(kStoredLengthBytes, frame.size() - kStoredLengthBytes - side.size());
    std::size_t stored_length = payload.size();
    if (IsRaw(header)) {
        std::ranges::copy(payload, room.begin());
    } else {
        if (!catalogue.CanCode()) return {};
        stored_length = key == Key::Yes ? catalogue.CompressKey(payload, room)
                                        : catalogue.Compress(payload, room);
    }
    return CloseFrame(stored_length, side, frame);
}

} // namespace

bool IsRaw(const ContainerHeader& header) {
    return header.CompressionType == static_cast<std::uint32_t>(codec::kTypeNone);
}

std::size_t PayloadRoom(const Compressionekel& catalogue, const ContainerHeader& header) {
    const std::size_t record_length = header.RecordLength;
    const std::size_t twice = 2 * record_length;
    return catalogue.CanCode() ? std::max(twice, catalogue.StoredRoom(record_length)) : twice;
}

std::size_t FrameRoom(const Compressionekel& catalogue, const ContainerHeader& header) {
    return kStoredLengthBytes + PayloadRoom(catalogue, header) + header.SideLength;
}

ByteView EncodeFrame(Compressionekel& catalogue, const ContainerHeader& header,
                     std::uint32_t record, ByteView payload, ByteView side, ByteSpan frame) {
    const bool key = catalogue.IsDifferential() && header.KeyRecordOf(record) == record;
    return Encode(catalogue, header, key ? Key::Yes : Key::No, payload, side, frame);
}

ByteView EncodeReplacement(Compressionekel& catalogue, const ContainerHeader& header,
                           ByteView payload, ByteView side, ByteSpan frame) {
    return Encode(catalogue, header, Key::No, payload, side, frame);
}

ByteView CloseFrame(std::size_t stored_length, ByteView side, ByteSpan frame) {
    ByteWriter{frame}.WriteU32(static_cast<std::uint32_t>(stored_length));
    const std::size_t side_start = kStoredLengthBytes + stored_length;
    std::ranges::copy(side, frame.subspan(side_start).begin());
    return frame.first(side_start + side.size());
}

} // namespace kelvo
