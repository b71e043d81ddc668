#pragma once
// The wave-in device. What the microphone gives fills the queued buffers one after the other, as
// one continuous stream of bytes: a sample that two buffers share stays whole. Everything it has to
// say comes as a message posted to the callback window, with the device's handle in wParam:
// MM_WIM_OPEN, MM_WIM_DATA for each buffer that is given back (its header in lParam), in the order
// of the sound, and MM_WIM_CLOSE. Any thread.

#include "platform/sound/wave.h"

using HWAVEIN = struct WaveInObject*;

inline constexpr UINT MM_WIM_OPEN = 0x03BE;
inline constexpr UINT MM_WIM_CLOSE = 0x03BF;
inline constexpr UINT MM_WIM_DATA = 0x03C0;

/// Opens the default input for PCM of 8 or 16 bits; it records once it is started.
/// @param device         WAVE_MAPPER
/// @param callback       the window that the messages go to
/// @param flags          CALLBACK_WINDOW
/// @return MMSYSERR_BADDEVICEID where there is no input; the handle is stored before MM_WIM_OPEN is
///         posted
MMRESULT waveInOpen(HWAVEIN* handle, UINT device, const WAVEFORMATEX* format, DWORD_PTR callback,
                    DWORD_PTR instance, DWORD flags);
/// Closes in the background and then posts MM_WIM_CLOSE; the handle is dead at once.
/// @return WAVERR_STILLPLAYING while buffers are queued
MMRESULT waveInClose(HWAVEIN handle);
MMRESULT waveInPrepareHeader(HWAVEIN handle, WAVEHDR* header, UINT size);
/// @return WAVERR_STILLPLAYING for a header that is in the queue
MMRESULT waveInUnprepareHeader(HWAVEIN handle, WAVEHDR* header, UINT size);
/// Queues a buffer, which is given back when dwBufferLength bytes are in it; dwBytesRecorded tells
/// how many there are. While none is queued, what is recorded is lost.
MMRESULT waveInAddBuffer(HWAVEIN handle, WAVEHDR* header, UINT size);
MMRESULT waveInStart(HWAVEIN handle);
/// Gives the buffer back that has been begun, as far as it is filled; the others stay queued.
MMRESULT waveInStop(HWAVEIN handle);
/// Stops and gives every queued buffer back, the first one as far as it is filled.
MMRESULT waveInReset(HWAVEIN handle);

namespace kelvo::platform {

/// Inputs that are open or still closing; CountWaveDevices counts them, too.
int CountWaveInputs();

} // namespace kelvo::platform
