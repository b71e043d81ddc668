#pragma once
// The scalar types, handles and small structures that every system call speaks.
// Handles and message parameters are pointer-sized; what lies in files keeps its exact width.

#include <cstddef>
#include <cstdint>

using BYTE = std::uint8_t;
using WORD = std::uint16_t;
using DWORD = std::uint32_t;
using UINT = std::uint32_t;
using LONG = std::int32_t;
using ULONG = std::uint32_t;
using BOOL = int;
using ATOM = std::uint16_t;
using COLORREF = std::uint32_t; ///< 0x00BBGGRR

using UINT_PTR = std::uintptr_t;
using INT_PTR = std::intptr_t;
using LONG_PTR = std::intptr_t;
using DWORD_PTR = std::uintptr_t;
using WPARAM = UINT_PTR;
using LPARAM = LONG_PTR;
using LRESULT = LONG_PTR;

using LPCSTR = const char*;
using LPSTR = char*;
using LPVOID = void*;
using LPCVOID = const void*;
using LPDWORD = DWORD*;
using SIZE_T = std::size_t;

using HANDLE = void*;
using HFILE = int;
using HMODULE = struct ModuleObject*;
using HINSTANCE = HMODULE;
using HRSRC = const struct ResourceObject*;
using HGLOBAL = void*;
using HWND = struct WindowObject*;
using HMENU = struct MenuObject*;
using HDC = struct DeviceContextObject*;
using HGDIOBJ = struct GraphicsObject*;
using HBITMAP = HGDIOBJ;
using HBRUSH = HGDIOBJ;
using HPEN = HGDIOBJ;
using HFONT = HGDIOBJ;
using HICON = struct IconObject*;
using HCURSOR = struct CursorObject*;

inline constexpr BOOL FALSE = 0;
inline constexpr BOOL TRUE = 1;
inline constexpr DWORD INFINITE = 0xFFFFFFFF;
inline const HANDLE INVALID_HANDLE_VALUE = reinterpret_cast<HANDLE>(-1);
inline constexpr int MAX_PATH = 260;

struct POINT {
    LONG x;
    LONG y;
};
struct SIZE {
    LONG cx;
    LONG cy;
};
struct RECT {
    LONG left;
    LONG top;
    LONG right;
    LONG bottom;
};

constexpr WORD LOWORD(DWORD_PTR value) {
    return static_cast<WORD>(value & 0xFFFFU);
}
constexpr WORD HIWORD(DWORD_PTR value) {
    return static_cast<WORD>((value >> 16U) & 0xFFFFU);
}
constexpr BYTE LOBYTE(DWORD_PTR value) {
    return static_cast<BYTE>(value & 0xFFU);
}
constexpr BYTE HIBYTE(DWORD_PTR value) {
    return static_cast<BYTE>((value >> 8U) & 0xFFU);
}
constexpr LONG MAKELONG(DWORD_PTR low, DWORD_PTR high) {
    return static_cast<LONG>(LOWORD(low) | (static_cast<DWORD>(LOWORD(high)) << 16U));
}
constexpr LPARAM MAKELPARAM(DWORD_PTR low, DWORD_PTR high) {
    return static_cast<LPARAM>(static_cast<DWORD>(MAKELONG(low, high)));
}
constexpr WPARAM MAKEWPARAM(DWORD_PTR low, DWORD_PTR high) {
    return static_cast<WPARAM>(static_cast<DWORD>(MAKELONG(low, high)));
}
constexpr COLORREF RGB(DWORD red, DWORD green, DWORD blue) {
    return (red & 0xFFU) | ((green & 0xFFU) << 8U) | ((blue & 0xFFU) << 16U);
}
constexpr BYTE GetRValue(COLORREF colour) {
    return static_cast<BYTE>(colour & 0xFFU);
}
constexpr BYTE GetGValue(COLORREF colour) {
    return static_cast<BYTE>((colour >> 8U) & 0xFFU);
}
constexpr BYTE GetBValue(COLORREF colour) {
    return static_cast<BYTE>((colour >> 16U) & 0xFFU);
}
