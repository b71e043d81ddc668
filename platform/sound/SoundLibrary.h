#pragma once
// Opens and closes devices of the sound library for both directions. Its own count of users is not
// safe between threads: that is why starting and ending it go through here.

#include "platform/sound/wave.h"

#include <cstdint>
#include <string_view>

namespace kelvo::platform {

enum class SoundDirection : std::uint8_t { Output, Input };

/// The library's driver that stands for no device, and the one of a sound server.
inline constexpr std::string_view kSilentDriver = "dummy";
inline constexpr std::string_view kServerDriver = "pulseaudio";

/// Called on a thread of the library's own with each block.
using SoundCallback = void (*)(void* owner, std::uint8_t* block, int length);

struct OpenedSound {
    std::uint32_t device = 0;        ///< the library's number
    std::uint32_t block_samples = 0; ///< of each block
    std::string_view driver;         ///< lives until the device is closed
};

/// Opens the default device, at rest: StartSoundDevice starts the callbacks.
/// @param format  one that IsPlainSound accepts
/// @return MMSYSERR_NODRIVER without a sound system, MMSYSERR_BADDEVICEID without a device of this
///         direction, MMSYSERR_ALLOCATED when it is there but does not open
MMRESULT OpenSoundDevice(SoundDirection direction, const WAVEFORMATEX& format,
                         SoundCallback callback, void* owner, OpenedSound& opened);
/// Neither under a lock that the callback takes, nor on its thread.
void StartSoundDevice(std::uint32_t device);
void RestSoundDevice(std::uint32_t device);
/// The same; waits for the callback's thread.
void CloseSoundDevice(std::uint32_t device);

/// PCM of 8 or 16 bits whose derived fields agree.
bool IsPlainSound(const WAVEFORMATEX& format);

} // namespace kelvo::platform
