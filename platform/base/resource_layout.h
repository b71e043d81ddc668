#pragma once
// The layout of compiled resources, shared by the compiler that writes them and the calls that find
// them. Little-endian; the data of every resource begins at a multiple of 8.
//
//   header      kMagic, kVersion, entry count, 0
//   entries     type, name, language, data offset, data length: kEntrySize bytes each
//   texts       u16 length and bytes (UTF-8), where a type or name is a text
//   data
//
// A type or name is its number, or the offset of its text with kIsText set.

#include <cstddef>
#include <cstdint>

namespace kelvo::platform::resource_layout {

inline constexpr std::uint32_t kMagic = 0x4352564B; ///< "KVRC"
inline constexpr std::uint32_t kVersion = 1;
inline constexpr std::size_t kHeaderSize = 16;
inline constexpr std::size_t kEntrySize = 20;
inline constexpr std::uint32_t kIsText = 0x80000000;
inline constexpr std::size_t kDataAlignment = 8;

} // namespace kelvo::platform::resource_layout
