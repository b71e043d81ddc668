#pragma once
// Blocks of memory behind handles, the form in which the clipboard hands over its data. Any thread.

#include "platform/base/errors.h"
#include "platform/base/types.h"

inline constexpr UINT GMEM_FIXED = 0;
inline constexpr UINT GMEM_MOVEABLE = 2;
inline constexpr UINT GMEM_ZEROINIT = 0x40;

/// A block of `size` bytes, always zeroed. @return null with ERROR_NOT_ENOUGH_MEMORY.
HGLOBAL GlobalAlloc(UINT flags, SIZE_T size);
/// The first byte, which stays where it is; null with ERROR_INVALID_HANDLE for what is no block.
LPVOID GlobalLock(HGLOBAL block);
/// FALSE with ERROR_SUCCESS when the last lock was taken away (the usual case), TRUE while it is
/// still locked.
BOOL GlobalUnlock(HGLOBAL block);
/// Exactly the size that was asked for; 0 with ERROR_INVALID_HANDLE for what is no block.
SIZE_T GlobalSize(HGLOBAL block);
/// @return null, or the block itself when it is none.
HGLOBAL GlobalFree(HGLOBAL block);
