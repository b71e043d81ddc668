#pragma once
// The wave-out device. It plays the queue of prepared buffers as one continuous stream of bytes: a
// sample that two buffers share stays whole. Everything it has to say comes as a message posted to
// the callback window, with the device's handle in wParam: MM_WOM_OPEN, MM_WOM_DONE for each buffer
// (its header in lParam) once it has been heard, MM_WOM_CLOSE. Any thread.

#include "platform/base/types.h"
#include "platform/base/wave_format.h"

using HWAVEOUT = struct WaveOutObject*;
using MMRESULT = UINT;

inline constexpr MMRESULT MMSYSERR_NOERROR = 0;
inline constexpr MMRESULT MMSYSERR_BADDEVICEID = 2; ///< not WAVE_MAPPER
inline constexpr MMRESULT MMSYSERR_ALLOCATED = 4;   ///< the device is there but does not open
inline constexpr MMRESULT MMSYSERR_INVALHANDLE = 5;
inline constexpr MMRESULT MMSYSERR_NODRIVER = 6; ///< no sound system
inline constexpr MMRESULT MMSYSERR_INVALPARAM = 11;
inline constexpr MMRESULT WAVERR_BADFORMAT = 32;
inline constexpr MMRESULT WAVERR_STILLPLAYING = 33;
inline constexpr MMRESULT WAVERR_UNPREPARED = 34;

inline constexpr UINT WAVE_MAPPER = 0xFFFFFFFF;
inline constexpr DWORD CALLBACK_WINDOW = 0x00010000;

inline constexpr UINT MM_WOM_OPEN = 0x03BB;
inline constexpr UINT MM_WOM_CLOSE = 0x03BC;
inline constexpr UINT MM_WOM_DONE = 0x03BD;

inline constexpr DWORD WHDR_DONE = 0x01;
inline constexpr DWORD WHDR_PREPARED = 0x02;
inline constexpr DWORD WHDR_BEGINLOOP = 0x04;
inline constexpr DWORD WHDR_ENDLOOP = 0x08;
inline constexpr DWORD WHDR_INQUEUE = 0x10;

/// One buffer. Header and bytes stay where they are from waveOutWrite until MM_WOM_DONE.
struct WAVEHDR {
    LPSTR lpData;
    DWORD dwBufferLength;
    DWORD dwBytesRecorded;
    DWORD_PTR dwUser;
    DWORD dwFlags;
    DWORD dwLoops; ///< a buffer is played once, whatever stands here
    WAVEHDR* lpNext;
    DWORD_PTR reserved;
};

inline constexpr UINT TIME_MS = 1;
inline constexpr UINT TIME_SAMPLES = 2;
inline constexpr UINT TIME_BYTES = 4;
struct MMTIME {
    UINT wType;
    union {
        DWORD ms;
        DWORD sample;
        DWORD cb;
    } u;
};

/// Opens the default device for PCM of 8 or 16 bits.
/// @param device         WAVE_MAPPER
/// @param callback       the window that the messages go to
/// @param flags          CALLBACK_WINDOW
/// @return the handle is stored before MM_WOM_OPEN is posted
MMRESULT waveOutOpen(HWAVEOUT* handle, UINT device, const WAVEFORMATEX* format, DWORD_PTR callback,
                     DWORD_PTR instance, DWORD flags);
/// Closes in the background and then posts MM_WOM_CLOSE; the handle is dead at once.
/// @return WAVERR_STILLPLAYING while buffers are queued
MMRESULT waveOutClose(HWAVEOUT handle);
MMRESULT waveOutPrepareHeader(HWAVEOUT handle, WAVEHDR* header, UINT size);
/// @return WAVERR_STILLPLAYING for a header that is in the queue
MMRESULT waveOutUnprepareHeader(HWAVEOUT handle, WAVEHDR* header, UINT size);
MMRESULT waveOutWrite(HWAVEOUT handle, WAVEHDR* header, UINT size);
/// Gives every queued buffer back (MM_WOM_DONE each, in order), counts positions from 0 again and
/// ends a pause.
MMRESULT waveOutReset(HWAVEOUT handle);
MMRESULT waveOutPause(HWAVEOUT handle);
MMRESULT waveOutRestart(HWAVEOUT handle);
/// Left channel in the low word, right channel in the high word; full is 0xFFFF.
MMRESULT waveOutGetVolume(HWAVEOUT handle, DWORD* volume);
/// For mono sound the left channel counts.
MMRESULT waveOutSetVolume(HWAVEOUT handle, DWORD volume);
/// How much has been heard since the device opened or was reset, as nearly as the device can tell.
/// @param time  wType chooses the unit; one that is not known becomes TIME_BYTES
MMRESULT waveOutGetPosition(HWAVEOUT handle, MMTIME* time, UINT size);

namespace kelvo::platform {

/// Sound goes nowhere, in real time, unless the user chose a driver (SDL_AUDIODRIVER). Before the
/// first waveOutOpen.
void UseSilentDeviceByDefault();

/// Devices that are open or still closing; a test compares before and after.
int CountWaveDevices();

} // namespace kelvo::platform
