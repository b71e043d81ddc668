#pragma once
// The program's compiled resources: menus, dialog templates, pictures, found by type and name. The
// resource compiler (tools/resource_compiler) makes them; what a kind of resource means is the
// business of whoever loads it. Any thread.

#include "platform/base/errors.h"
#include "platform/base/types.h"

#include <cstdint>
#include <span>

/// A number in the place of a name. "#123" means the same.
inline LPCSTR MAKEINTRESOURCEA(WORD id) {
    return reinterpret_cast<LPCSTR>(static_cast<UINT_PTR>(id));
}
/// True for what MAKEINTRESOURCEA made.
inline bool IS_INTRESOURCE(LPCSTR name) {
    return (reinterpret_cast<UINT_PTR>(name) >> 16U) == 0;
}

inline const LPCSTR RT_CURSOR = MAKEINTRESOURCEA(1);
inline const LPCSTR RT_BITMAP = MAKEINTRESOURCEA(2);
inline const LPCSTR RT_ICON = MAKEINTRESOURCEA(3);
inline const LPCSTR RT_MENU = MAKEINTRESOURCEA(4);
inline const LPCSTR RT_DIALOG = MAKEINTRESOURCEA(5);
inline const LPCSTR RT_STRING = MAKEINTRESOURCEA(6);
inline const LPCSTR RT_ACCELERATOR = MAKEINTRESOURCEA(9);
inline const LPCSTR RT_RCDATA = MAKEINTRESOURCEA(10);
inline const LPCSTR RT_GROUP_CURSOR = MAKEINTRESOURCEA(12);
inline const LPCSTR RT_GROUP_ICON = MAKEINTRESOURCEA(14);

/// The program's own module for null or the program file's name (with or without folder and
/// extension, in any case); null and ERROR_MOD_NOT_FOUND for any other.
HMODULE GetModuleHandleA(LPCSTR name);

/// A resource by name and type (text, or a number by MAKEINTRESOURCEA; the case of letters is not
/// looked at). A null module is the program's. Where several languages have it: the neutral one,
/// else Italian, else the first.
/// @return null with ERROR_RESOURCE_TYPE_NOT_FOUND or ERROR_RESOURCE_NAME_NOT_FOUND.
HRSRC FindResourceA(HMODULE module, LPCSTR name, LPCSTR type);

/// The same in this language (mind the order of the arguments); where it is missing: the same
/// primary language, else as FindResourceA. Language 0 asks for no special one.
HRSRC FindResourceExA(HMODULE module, LPCSTR type, LPCSTR name, WORD language);

/// @return null with ERROR_INVALID_HANDLE when `resource` is none of this module.
HGLOBAL LoadResource(HMODULE module, HRSRC resource);
/// The first byte; it lives as long as the module and is aligned to 8. Null for null.
LPVOID LockResource(HGLOBAL loaded);
/// In bytes; 0 with ERROR_INVALID_HANDLE when `resource` is none of this module.
DWORD SizeofResource(HMODULE module, HRSRC resource);

namespace kelvo::platform {

/// Gives a module (null: the program's) what the resource compiler wrote. The bytes must live as
/// long as the program. May be called again: what comes later is found first.
/// @return false, and nothing is added, when the bytes are not what the compiler writes: every
/// entry
///         is checked to lie inside them.
bool RegisterResources(HMODULE module, std::span<const std::uint8_t> bytes);

/// The bytes of the resource that begins here, as LockResource gave it; empty for any other place,
/// so that a reader who is only given a pointer can still keep inside.
[[nodiscard]] std::span<const std::uint8_t> ResourceBytesAt(const void* first);

/// A further module, as a library would be: without resources until some are registered.
[[nodiscard]] HMODULE AddModule();

} // namespace kelvo::platform
