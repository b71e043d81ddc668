#include "tools/kelvotool/film/RecordCoding.h"

#include "container/Compressionekel.h"
#include "container/RecordBytes.h"
#include "container/RecordFrame.h"
#include "container/codec/CompressionTypes.h"

#include <cstring>

namespace kelvo::tool {

namespace {

class FingerprintStage : public RecordStage {
public:
    bool Make(PipelineRecord& record) override {
        record.fingerprint = FingerprintOf(sha256_, record.record, record.side);
        return true;
    }

private:
    Sha256 sha256_;
};

class CodingStage : public RecordStage {
public:
    explicit CodingStage(const ContainerHeader& header)
        : header_(header),
          is_lossless_(codec::CodingType(static_cast<int>(header.CompressionType)).lossless) {
        const int length = static_cast<int>(header.RecordLength);
        const int type = static_cast<int>(header.CompressionType);
        can_code_ = catalogue_.SetCompressionType(type, length) || IsRaw(header_);
        can_code_ = can_code_ && frame_.Allocate(FrameRoom(catalogue_, header_));
        if (!is_lossless_) {
            can_code_ = can_code_ && reconstructor_.SetCompressionType(type, length) &&
                        reconstruction_.Allocate(header.RecordLength);
        }
    }

    bool Make(PipelineRecord& record) override {
        if (!can_code_) return false;
        record.side.resize(header_.SideLength);
        const ByteView frame = EncodeFrame(catalogue_, header_, record.number, record.record,
                                           record.side, frame_.Span());
        if (frame.empty()) return false;
        const ByteView stored = frame.subspan(
            kStoredLengthBytes, frame.size() - kStoredLengthBytes - record.side.size());
        record.made.assign(stored.begin(), stored.end());
        if (is_lossless_) {
            record.fingerprint = FingerprintOf(sha256_, record.record, record.side);
            return true;
        }
        if (reconstructor_.Decompress(stored, reconstruction_.Span()) != header_.RecordLength) {
            return false;
        }
        record.fingerprint = FingerprintOf(sha256_, reconstruction_.View(), record.side);
        return true;
    }

private:
    ContainerHeader header_;
    bool is_lossless_;
    bool can_code_ = false;
    Compressionekel catalogue_;
    RecordBytes frame_;
    // What a decoder will make of a type that loses something.
    Compressionekel reconstructor_;
    RecordBytes reconstruction_;
    Sha256 sha256_;
};

} // namespace

Fingerprint FingerprintOf(Sha256& sha256, ByteView record, ByteView side) {
    const Sha256::Digest of_record = sha256.Of(record);
    const Sha256::Digest of_side = sha256.Of(side);
    Fingerprint first = 0;
    Fingerprint second = 0;
    std::memcpy(&first, of_record.data(), sizeof(first));
    std::memcpy(&second, of_side.data(), sizeof(second));
    // Rotated, so that equal halves do not cancel each other.
    const Fingerprint both = first ^ (second << 1U | second >> 63U);
    return both == kNotComparable ? 1 : both;
}

StageFactory MakeFingerprints() {
    return [] { return std::make_unique<FingerprintStage>(); };
}

StageFactory MakeCoded(const ContainerHeader& header) {
    return [header] { return std::make_unique<CodingStage>(header); };
}

std::uint32_t ChainOf(const ContainerHeader& header) {
    const auto& type = codec::CodingType(static_cast<int>(header.CompressionType));
    if (!type.differential) return 1;
    return type.forces_key ? header.KeyInterval : 0;
}

} // namespace kelvo::tool
