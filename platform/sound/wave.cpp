#include "platform/sound/wave.h"

#include "platform/sound/DeviceTable.h"
#include "platform/sound/SoundLibrary.h"
#include "platform/sound/WaveOutDevice.h"
#include "platform/sound/wave_in.h"

#define SDL_MAIN_HANDLED
#include <SDL.h>

namespace {

using kelvo::platform::WaveOutDevice;

kelvo::platform::DeviceTable<HWAVEOUT, WaveOutDevice>& Devices() {
    static kelvo::platform::DeviceTable<HWAVEOUT, WaveOutDevice> table;
    return table;
}

} // namespace

MMRESULT waveOutOpen(HWAVEOUT* handle, UINT device, const WAVEFORMATEX* format, DWORD_PTR callback,
                     DWORD_PTR /*instance*/, DWORD flags) {
    if (handle == nullptr || format == nullptr || flags != CALLBACK_WINDOW) {
        return MMSYSERR_INVALPARAM;
    }
    if (device != WAVE_MAPPER) return MMSYSERR_BADDEVICEID;
    if (!kelvo::platform::IsPlainSound(*format)) return WAVERR_BADFORMAT;
    Devices().Sweep();
    const HWAVEOUT number = Devices().NewHandle();
    auto opened =
        std::make_shared<WaveOutDevice>(number, reinterpret_cast<HWND>(callback), *format);
    *handle = number;
    const MMRESULT result = opened->Open();
    if (result != MMSYSERR_NOERROR) {
        *handle = nullptr;
        return result;
    }
    Devices().Add(number, opened);
    opened->ReportOpen();
    return MMSYSERR_NOERROR;
}

MMRESULT waveOutClose(HWAVEOUT handle) {
    const auto device = Devices().Find(handle);
    if (device == nullptr) return MMSYSERR_INVALHANDLE;
    const MMRESULT result = device->Close();
    if (result == MMSYSERR_NOERROR) Devices().MoveToClosing(handle);
    return result;
}

MMRESULT waveOutPrepareHeader(HWAVEOUT handle, WAVEHDR* header, UINT size) {
    if (Devices().Find(handle) == nullptr) return MMSYSERR_INVALHANDLE;
    if (header == nullptr || size < sizeof(WAVEHDR) || header->lpData == nullptr) {
        return MMSYSERR_INVALPARAM;
    }
    header->dwFlags = (header->dwFlags | WHDR_PREPARED) & ~WHDR_DONE;
    return MMSYSERR_NOERROR;
}

MMRESULT waveOutUnprepareHeader(HWAVEOUT handle, WAVEHDR* header, UINT size) {
    if (Devices().Find(handle) == nullptr) return MMSYSERR_INVALHANDLE;
    if (header == nullptr || size < sizeof(WAVEHDR)) return MMSYSERR_INVALPARAM;
    if ((header->dwFlags & WHDR_INQUEUE) != 0) return WAVERR_STILLPLAYING;
    header->dwFlags &= ~WHDR_PREPARED;
    return MMSYSERR_NOERROR;
}

MMRESULT waveOutWrite(HWAVEOUT handle, WAVEHDR* header, UINT size) {
    const auto device = Devices().Find(handle);
    if (device == nullptr) return MMSYSERR_INVALHANDLE;
    if (header == nullptr || size < sizeof(WAVEHDR)) return MMSYSERR_INVALPARAM;
    return device->Write(header);
}

MMRESULT waveOutReset(HWAVEOUT handle) {
    const auto device = Devices().Find(handle);
    return device == nullptr ? MMSYSERR_INVALHANDLE : device->Reset();
}

MMRESULT waveOutPause(HWAVEOUT handle) {
    const auto device = Devices().Find(handle);
    return device == nullptr ? MMSYSERR_INVALHANDLE : device->Pause();
}

MMRESULT waveOutRestart(HWAVEOUT handle) {
    const auto device = Devices().Find(handle);
    return device == nullptr ? MMSYSERR_INVALHANDLE : device->Restart();
}

MMRESULT waveOutGetVolume(HWAVEOUT handle, DWORD* volume) {
    const auto device = Devices().Find(handle);
    if (device == nullptr) return MMSYSERR_INVALHANDLE;
    if (volume == nullptr) return MMSYSERR_INVALPARAM;
    *volume = device->Volume();
    return MMSYSERR_NOERROR;
}

MMRESULT waveOutSetVolume(HWAVEOUT handle, DWORD volume) {
    const auto device = Devices().Find(handle);
    if (device == nullptr) return MMSYSERR_INVALHANDLE;
    device->SetVolume(volume);
    return MMSYSERR_NOERROR;
}

MMRESULT waveOutGetPosition(HWAVEOUT handle, MMTIME* time, UINT size) {
    const auto device = Devices().Find(handle);
    if (device == nullptr) return MMSYSERR_INVALHANDLE;
    if (time == nullptr || size < sizeof(MMTIME)) return MMSYSERR_INVALPARAM;
    const std::uint64_t bytes = device->HeardBytes();
    switch (time->wType) {
    case TIME_MS:
        time->u.ms = static_cast<DWORD>(bytes * 1000 / device->BytesPerSecond());
        break;
    case TIME_SAMPLES:
        time->u.sample = static_cast<DWORD>(bytes / device->BlockAlign());
        break;
    default:
        time->wType = TIME_BYTES;
        time->u.cb = static_cast<DWORD>(bytes);
        break;
    }
    return MMSYSERR_NOERROR;
}

namespace kelvo::platform {

void UseSilentDeviceByDefault() {
    constexpr int kKeepTheUsersChoice = 0;
    SDL_setenv("SDL_AUDIODRIVER", "dummy", kKeepTheUsersChoice);
}

int CountWaveDevices() {
    return Devices().Count() + CountWaveInputs();
}

} // namespace kelvo::platform
