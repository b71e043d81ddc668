#pragma once
// The one table of the compression types: what each id is called, what it codes and how far it can
// shrink or grow a record. The catalogue (Compressionekel) binds the operations to it.

#include "container/codec/BlockTransform.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace kelvo::codec {

/// What turns a record into bytes, before the cmprs stage where there is one.
enum class Coder : std::uint8_t {
    ShortRuns,         ///< ColourRuns
    IndexedShortRuns,  ///< ColourRuns
    LongRuns,          ///< ColourRuns
    IndexedLongRuns,   ///< ColourRuns
    PixelDifference,   ///< FrameDifference
    GroupDifference,   ///< FrameDifference
    ByteGroups,        ///< ByteGroups
    SampleDifference,  ///< SampleDifference
    NibbleDifference,  ///< SampleDifference, packed in nibbles
    WholeTransform,    ///< BlockTransform, one block
    FixedTransform,    ///< BlockTransform, blocks of one size
    VariableTransform, ///< BlockTransform, the best size for each block
    Copy,              ///< the record itself
};

/// One row of the table.
struct CompressionType {
    int id;
    const char* description; ///< shown to people, and fixed
    Coder coder;
    bool cmprs;       ///< the cmprs stage follows the coder
    bool codes_video; ///< offered for 16-bit pictures
    bool codes_audio; ///< offered for sound
    bool lossless;
    bool length_required; ///< must know the record's length beforehand
    bool differential;    ///< builds each record on the one before
    bool forces_key;      ///< CompressKey makes a key record whenever it is called
    std::uint32_t
        greatest_expansion;   ///< bytes of record that one stored byte can stand for, at most
    TransformBlocks blocks{}; ///< of types 20 to 25
};

inline constexpr int kTypeVorbis = 69;
inline constexpr int kTypeNone = 99;

/// Every id of the catalogue, in ascending order.
std::span<const CompressionType> AllCompressionTypes();

/// The row of an id, or nullptr for one that the catalogue does not know.
const CompressionType* FindCompressionType(int id);

/// The row that codes an id: its own, or that of type 1 for an unknown one.
const CompressionType& CodingType(int id);

/// The ids offered for sound, in the order in which people are shown them.
std::span<const int> AudioTypeIds();

/// The longest stored record that a record of `record_length` bytes can become: what a buffer for
/// compressed records must hold.
std::size_t WorstStoredLength(const CompressionType& type, std::size_t record_length);

/// Before cmprs: what the work area between the two stages must hold.
std::size_t WorstCodedLength(const CompressionType& type, std::size_t record_length);

/// The longest record that a stored record of `stored_length` bytes could fill. A header that
/// claims a longer one, in a file that has no room for a longer stored record, cannot be true.
std::uint64_t GreatestRecordLength(const CompressionType& type, std::uint64_t stored_length);

} // namespace kelvo::codec
