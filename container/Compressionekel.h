#pragma once
// The catalogue of compression types: codes and decodes the records of one container, in the type
// that was set, and keeps what a differential type needs from one record to the next. Where records
// lie in a file is the container's affair (ZFilekel), how bytes are coded that of container/codec.
// One object belongs to one thread at a time.

#include "container/RecordBytes.h"
#include "container/codec/ColourRuns.h"
#include "container/codec/CompressionTypes.h"
#include "container/codec/Lzss.h"
#include "framework/base/Bytes.h"
#include "framework/base/CArray.h"
#include "framework/base/Result.h"

#include <cstddef>
#include <cstdint>
#include <memory>

namespace kelvo {

class Compressionekel {
public:
    Compressionekel();
    ~Compressionekel();
    Compressionekel(const Compressionekel&) = delete;
    Compressionekel& operator=(const Compressionekel&) = delete;

    /// Selects a type for records of `len` bytes, and makes every buffer that coding will need;
    /// they are zero pages until they are written, so a length that is only claimed costs nothing.
    /// Whatever was set before is gone: the next frame coded is a key frame. An unknown type codes
    /// as type 1.
    /// @return false when refused: the type needs a length and `len` is not above 0 (said in an
    ///     error box), or there is no memory for it. The catalogue is then reset and codes nothing.
    [[nodiscard]] bool SetCompressionType(int encd, int len);

    /// Codes one record. Differential types: as the difference to the record coded before it, a key
    /// record when it is the first.
    /// @param record  no longer than the length that was set, where the type needs one
    /// @param stored  at least codec::WorstStoredLength bytes (see StoredRoom)
    /// @return bytes of `stored` written; 0, too, for a record that breaks these rules
    [[nodiscard]] std::size_t Compress(ByteView record, ByteSpan stored);
    /// As Compress; types 7 and 8 make a key record, whatever came before.
    [[nodiscard]] std::size_t CompressKey(ByteView record, ByteSpan stored);

    /// Decodes one stored record, any bytes whatever.
    /// @param record  the whole record, no longer than the length that was set, where the type
    ///     needs one; holds the one before when the type is differential. Bytes that the stream
    ///     does not cover are left as they were.
    /// @return the length that the stream describes, which a sound one shares with `record`
    [[nodiscard]] std::uint64_t Decompress(ByteView stored, ByteSpan record);
    /// As Decompress, and says what is wrong: EndsEarly when the stream describes less than
    /// `record`, TooLarge when it describes more (decoded up to the record's end), BadValue when it
    /// holds what no encoder writes, when `record` is too long or when no type is set.
    [[nodiscard]] Decoded DecodeRecord(ByteView stored, ByteSpan record);

    /// The fixed text of a type; empty for an id that the catalogue does not know.
    static const char* TypeDescription(int id);
    /// Fills `list` with the types offered for sound, in the order in which they are offered.
    static void ListAudioTypes(CArray<int>& list);

    /// True for types whose records build on the one before.
    bool IsDifferential() const { return differential_; }
    /// The id that was set; 0 after a reset or a refusal.
    int CurrentType() const { return type_id_; }
    /// True when a type is set and can code.
    bool CanCode() const { return type_ != nullptr; }
    /// What `stored` of Compress must hold for records of `record_length` bytes of the type set.
    std::size_t StoredRoom(std::size_t record_length) const;
    /// The smallest power of two not below the record length; 0 unless a transform type is set.
    std::uint32_t TransformSize() const { return transform_size_; }

private:
    enum class Key : std::uint8_t { No, Forced };

    void Reset();
    bool MakeWorkAreas();
    /// For the work areas, which were made for the length that was set.
    bool IsTooLong(ByteView record) const;
    std::size_t CompressAs(ByteView record, ByteSpan stored, Key key);
    std::size_t Code(ByteView record, ByteSpan coded, Key key);
    std::size_t CodeFrameDifference(ByteView frame, ByteSpan coded, Key key);
    Decoded Uncode(ByteView coded, ByteSpan record);

    // Made once, serve every record.
    std::unique_ptr<codec::ColourMap> colour_map_;
    std::unique_ptr<codec::LzssEncoder> lzss_;

    // Fixed after SetCompressionType.
    const codec::CompressionType* type_ = nullptr;
    int type_id_ = 0;
    bool differential_ = false;
    std::size_t length_ = 0; ///< of a record; 0 when the type needs none and none was given
    std::uint32_t transform_size_ = 0;
    RecordBytes coded_;     ///< between the coder and cmprs
    RecordBytes transform_; ///< floats
    RecordBytes scratch_;   ///< samples decoded for the second pass, difference bytes

    // Carried from one record to the next.
    RecordBytes previous_frame_; ///< the frame coded before this one
    bool first_frame_ = true;
};

} // namespace kelvo
