#include "platform/sound/SoundLibrary.h"

#define SDL_MAIN_HANDLED
#include <SDL.h>

#include <algorithm>
#include <bit>
#include <mutex>

namespace kelvo::platform {
namespace {

/// Length of a device block at most: what is heard can be told to a block's precision, and a pause
/// takes effect after one.
constexpr std::uint32_t kBlocksPerSecond = 100;
/// The silent driver waits whole milliseconds after each block: with short ones films would run
/// fast, by a seventh at 22050 samples a second, with these by a fiftieth at most.
constexpr std::uint32_t kSilentBlocksPerSecond = 40;
constexpr std::uint16_t kBitsOfByteSample = 8;

// Guards the library's count of its users. No callback ever takes it.
std::mutex& UsersMutex() {
    static std::mutex mutex;
    return mutex;
}

bool BeginUse() {
    const std::lock_guard lock(UsersMutex());
    SDL_SetMainReady();
    SDL_SetHint(SDL_HINT_NO_SIGNAL_HANDLERS, "1");
    SDL_SetHint(SDL_HINT_AUDIO_DEVICE_APP_NAME, "Kelvo");
    SDL_SetHint(SDL_HINT_AUDIO_DEVICE_STREAM_NAME, "Kelvo");
    SDL_SetHint(SDL_HINT_AUDIO_DEVICE_STREAM_ROLE, "video");
    return SDL_InitSubSystem(SDL_INIT_AUDIO) == 0;
}

void EndUse() {
    const std::lock_guard lock(UsersMutex());
    SDL_QuitSubSystem(SDL_INIT_AUDIO);
}

std::uint16_t SamplesPerBlock(std::uint32_t rate, std::string_view driver) {
    const auto per_second = driver == kSilentDriver ? kSilentBlocksPerSecond : kBlocksPerSecond;
    return static_cast<std::uint16_t>(
        std::bit_floor(std::clamp<std::uint32_t>(rate / per_second, 32, 4096)));
}

} // namespace

MMRESULT OpenSoundDevice(SoundDirection direction, const WAVEFORMATEX& format,
                         SoundCallback callback, void* owner, OpenedSound& opened) {
    if (!BeginUse()) return MMSYSERR_NODRIVER;
    const int is_input = direction == SoundDirection::Input ? 1 : 0;
    opened.driver = SDL_GetCurrentAudioDriver();
    SDL_AudioSpec wanted{};
    wanted.freq = static_cast<int>(format.nSamplesPerSec);
    wanted.format = format.wBitsPerSample == kBitsOfByteSample ? AUDIO_U8 : AUDIO_S16LSB;
    wanted.channels = static_cast<std::uint8_t>(format.nChannels);
    wanted.samples = SamplesPerBlock(format.nSamplesPerSec, opened.driver);
    wanted.callback = callback;
    wanted.userdata = owner;
    opened.block_samples = wanted.samples;
    opened.device = SDL_OpenAudioDevice(nullptr, is_input, &wanted, nullptr, 0);
    if (opened.device != 0) return MMSYSERR_NOERROR;
    const bool has_none = SDL_GetNumAudioDevices(is_input) == 0;
    EndUse();
    return has_none ? MMSYSERR_BADDEVICEID : MMSYSERR_ALLOCATED;
}

void StartSoundDevice(std::uint32_t device) {
    SDL_PauseAudioDevice(device, 0);
}

void RestSoundDevice(std::uint32_t device) {
    SDL_PauseAudioDevice(device, 1);
}

void CloseSoundDevice(std::uint32_t device) {
    SDL_CloseAudioDevice(device);
    EndUse();
}

bool IsPlainSound(const WAVEFORMATEX& format) {
    const bool known_width = format.wBitsPerSample == 8 || format.wBitsPerSample == 16;
    const bool known_channels = format.nChannels == 1 || format.nChannels == 2;
    return format.wFormatTag == WAVE_FORMAT_PCM && known_width && known_channels &&
           format.nSamplesPerSec > 0 && format.nSamplesPerSec <= 768000 &&
           format.nBlockAlign == format.nChannels * format.wBitsPerSample / 8 &&
           format.nAvgBytesPerSec == format.nSamplesPerSec * format.nBlockAlign;
}

} // namespace kelvo::platform
