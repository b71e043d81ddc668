#include "container/Compressionekel.h"

#include "container/codec/BlockTransform.h"
#include "container/codec/ByteGroups.h"
#include "container/codec/FrameDifference.h"
#include "container/codec/SampleDifference.h"
#include "framework/base/CObj.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cstdio>
#include <span>

namespace kelvo {

namespace {

constexpr const char* kLengthNeeded = "Compressionekel TIPO %d NECESSITA LUNGHEZZA BYTES!!!";
constexpr Caption kLengthNeededCaption{
    "void Compressionekel::SetCompressionType(int encd, int len)"};

using codec::Coder;

bool IsTransform(Coder coder) {
    return coder == Coder::WholeTransform || coder == Coder::FixedTransform ||
           coder == Coder::VariableTransform;
}

std::size_t TransformArrayLength(const codec::CompressionType& type, std::size_t length) {
    switch (type.coder) {
    case Coder::WholeTransform:
        return codec::WholeTransformArray(length);
    case Coder::FixedTransform:
        return codec::TransformBlocksArray(type.blocks);
    case Coder::VariableTransform:
        return codec::VariableBlocksArray(length);
    default:
        return 0;
    }
}

std::span<float> Floats(RecordBytes& bytes) {
    return {reinterpret_cast<float*>(bytes.Span().data()), bytes.Size() / sizeof(float)};
}

/// What a decoder of `described` bytes, of which as many as fit were written, reports.
Decoded Report(std::uint64_t described, ByteSpan record) {
    const std::uint64_t written = std::min<std::uint64_t>(described, record.size());
    const Fault fault = described < record.size()   ? Fault::EndsEarly
                        : described > record.size() ? Fault::TooLarge
                                                    : Fault::None;
    return {static_cast<std::size_t>(written), fault, described};
}

std::size_t CopyFitting(ByteView from, ByteSpan to) {
    const std::size_t fitting = std::min(from.size(), to.size());
    std::ranges::copy(from.first(fitting), to.begin());
    return fitting;
}

/// Whether the coder builds its stream in the record itself, with nothing between it and cmprs.
bool CodesInPlace(Coder coder) {
    return coder == Coder::Copy || coder == Coder::SampleDifference;
}

} // namespace

Compressionekel::Compressionekel()
    : colour_map_(std::make_unique_for_overwrite<codec::ColourMap>()) {}

Compressionekel::~Compressionekel() = default;

void Compressionekel::Reset() {
    type_ = nullptr;
    type_id_ = 0;
    differential_ = false;
    length_ = 0;
    transform_size_ = 0;
    first_frame_ = true;
    coded_.Free();
    transform_.Free();
    scratch_.Free();
    previous_frame_.Free();
}

bool Compressionekel::SetCompressionType(int encd, int len) {
    Reset();
    const codec::CompressionType& type = codec::CodingType(encd);
    if (type.length_required && len <= 0) {
        std::array<char, 80> text{};
        std::snprintf(text.data(), text.size(), kLengthNeeded, encd);
        return CObj::ErrorBox(text.data(), kLengthNeededCaption);
    }
    type_ = &type;
    length_ = static_cast<std::size_t>(std::max(len, 0));
    if (!MakeWorkAreas()) {
        Reset();
        return false;
    }
    type_id_ = encd;
    differential_ = type.differential;
    if (IsTransform(type.coder)) {
        transform_size_ = static_cast<std::uint32_t>(codec::TransformSize(length_));
    }
    return true;
}

bool Compressionekel::MakeWorkAreas() {
    const codec::CompressionType& type = *type_;
    if (type.cmprs && lzss_ == nullptr) lzss_ = std::make_unique<codec::LzssEncoder>();
    const std::size_t coded =
        type.cmprs && type.coder != Coder::Copy ? codec::WorstCodedLength(type, length_) : 0;
    const std::size_t scratch = type.coder == Coder::NibbleDifference ? length_ : 0;
    const std::size_t previous = type.differential ? length_ : 0;
    return coded_.Allocate(coded) && scratch_.Allocate(scratch) &&
           previous_frame_.Allocate(previous) &&
           transform_.Allocate(TransformArrayLength(type, length_) * sizeof(float));
}

std::size_t Compressionekel::StoredRoom(std::size_t record_length) const {
    return type_ == nullptr ? 0 : codec::WorstStoredLength(*type_, record_length);
}

bool Compressionekel::IsTooLong(ByteView record) const {
    return type_->length_required && record.size() > length_;
}

std::size_t Compressionekel::Compress(ByteView record, ByteSpan stored) {
    return CompressAs(record, stored, Key::No);
}

std::size_t Compressionekel::CompressKey(ByteView record, ByteSpan stored) {
    return CompressAs(record, stored, Key::Forced);
}

std::size_t Compressionekel::CompressAs(ByteView record, ByteSpan stored, Key key) {
    if (type_ == nullptr || IsTooLong(record)) return 0;
    if (stored.size() < StoredRoom(record.size())) return 0;
    if (!type_->cmprs) return Code(record, stored, key);
    if (type_->coder == Coder::Copy) return lzss_->Encode(record, stored);
    const std::size_t length = Code(record, coded_.Span(), key);
    return lzss_->Encode(coded_.View().first(length), stored);
}

std::size_t Compressionekel::Code(ByteView record, ByteSpan coded, Key key) {
    using namespace codec;
    switch (type_->coder) {
    case Coder::ShortRuns:
        return EncodeRuns(record, coded, kShortRuns);
    case Coder::IndexedShortRuns:
        return EncodeIndexedRuns(record, coded, kShortRuns, *colour_map_);
    case Coder::LongRuns:
        return EncodeRuns(record, coded, kLongRuns);
    case Coder::IndexedLongRuns:
        return EncodeIndexedRuns(record, coded, kLongRuns, *colour_map_);
    case Coder::PixelDifference:
    case Coder::GroupDifference:
        return CodeFrameDifference(record, coded, key);
    case Coder::ByteGroups:
        return EncodeByteGroups(record, coded);
    case Coder::SampleDifference:
        EncodeDifferences(record, coded);
        return record.size();
    case Coder::NibbleDifference: {
        const ByteSpan differences = scratch_.Span().first(record.size());
        EncodeDifferences(record, differences);
        return PackNibbles(differences, coded);
    }
    case Coder::WholeTransform:
        return EncodeWholeTransform(record, coded, Floats(transform_));
    case Coder::FixedTransform:
        return EncodeTransformBlocks(record, coded, Floats(transform_), type_->blocks);
    case Coder::VariableTransform:
        return EncodeVariableBlocks(record, coded, Floats(transform_));
    case Coder::Copy:
        break;
    }
    return CopyFitting(record, coded);
}

std::size_t Compressionekel::CodeFrameDifference(ByteView frame, ByteSpan coded, Key key) {
    const bool forced = key == Key::Forced && type_->forces_key;
    const auto kind = first_frame_ || forced ? codec::CodeAs::Key : codec::CodeAs::Difference;
    first_frame_ = false;
    if (type_->coder == Coder::PixelDifference) {
        return codec::EncodePixelDifference(frame, previous_frame_.Span(), coded, kind);
    }
    return codec::EncodeGroupDifference(frame, previous_frame_.Span(), coded, kind, *colour_map_);
}

std::uint64_t Compressionekel::Decompress(ByteView stored, ByteSpan record) {
    return DecodeRecord(stored, record).described;
}

Decoded Compressionekel::DecodeRecord(ByteView stored, ByteSpan record) {
    if (type_ == nullptr || IsTooLong(record)) return {0, Fault::BadValue, 0};
    if (!type_->cmprs) return Uncode(stored, record);
    if (CodesInPlace(type_->coder)) {
        const Decoded undone = codec::DecodeLzss(stored, record);
        if (type_->coder == Coder::SampleDifference) {
            codec::DecodeDifferences(record.first(undone.written), record);
        }
        return Report(undone.described, record);
    }
    const Decoded undone = codec::DecodeLzss(stored, coded_.Span());
    Decoded decoded = Uncode(coded_.View().first(undone.written), record);
    if (undone.fault == Fault::TooLarge) {
        // More than any encoder makes of a record: what did not fit counts, so that it is seen.
        decoded.described += undone.described - undone.written;
        if (decoded.fault == Fault::None) decoded.fault = Fault::TooLarge;
    }
    return decoded;
}

Decoded Compressionekel::Uncode(ByteView coded, ByteSpan record) {
    using namespace codec;
    switch (type_->coder) {
    case Coder::ShortRuns:
        return DecodeRuns(coded, record, kShortRuns);
    case Coder::IndexedShortRuns:
        return DecodeIndexedRuns(coded, record, kShortRuns);
    case Coder::LongRuns:
        return DecodeRuns(coded, record, kLongRuns);
    case Coder::IndexedLongRuns:
        return DecodeIndexedRuns(coded, record, kLongRuns);
    case Coder::PixelDifference:
        return DecodePixelDifference(coded, record);
    case Coder::GroupDifference:
        return DecodeGroupDifference(coded, record);
    case Coder::ByteGroups:
        return DecodeByteGroups(coded, record);
    case Coder::NibbleDifference:
        return UnpackNibblesToSamples(coded, record);
    case Coder::WholeTransform:
        return DecodeWholeTransform(coded, record, Floats(transform_));
    case Coder::FixedTransform:
        return DecodeTransformBlocks(coded, record, Floats(transform_), type_->blocks);
    case Coder::VariableTransform:
        return DecodeVariableBlocks(coded, record, Floats(transform_));
    case Coder::SampleDifference: // undone in place, see DecodeRecord
    case Coder::Copy:
        break;
    }
    CopyFitting(coded, record);
    return Report(coded.size(), record);
}

const char* Compressionekel::TypeDescription(int id) {
    const codec::CompressionType* const type = codec::FindCompressionType(id);
    return type != nullptr ? type->description : "";
}

void Compressionekel::ListAudioTypes(CArray<int>& list) {
    list.Clear();
    for (const int id : codec::AudioTypeIds()) {
        list.Add(id);
    }
}

} // namespace kelvo
