#pragma once
// The description of PCM sound, as it lies in sound tracks and as the wave devices take it.

#include "platform/base/types.h"

inline constexpr WORD WAVE_FORMAT_PCM = 1;

#pragma pack(push, 1)
struct WAVEFORMATEX {
    WORD wFormatTag;
    WORD nChannels;
    DWORD nSamplesPerSec;
    DWORD nAvgBytesPerSec;
    WORD nBlockAlign;
    WORD wBitsPerSample;
    WORD cbSize;
};
#pragma pack(pop)
static_assert(sizeof(WAVEFORMATEX) == 18);
