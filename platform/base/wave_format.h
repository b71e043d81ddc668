#pragma once
// The format of sampled sound, as it lies in audio track headers and goes to the sound device.

#include "platform/base/types.h"

inline constexpr WORD WAVE_FORMAT_PCM = 1;

#pragma pack(push, 1)

struct WAVEFORMATEX {
    WORD wFormatTag; ///< WAVE_FORMAT_PCM
    WORD nChannels;
    DWORD nSamplesPerSec;
    DWORD nAvgBytesPerSec;
    WORD nBlockAlign;
    WORD wBitsPerSample;
    WORD cbSize; ///< of what follows; 0 for PCM
};

#pragma pack(pop)

static_assert(sizeof(WAVEFORMATEX) == 18);
