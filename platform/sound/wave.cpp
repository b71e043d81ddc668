#include "platform/sound/wave.h"

#include "platform/sound/WaveOutDevice.h"

#define SDL_MAIN_HANDLED
#include <SDL.h>

#include <algorithm>
#include <map>
#include <memory>
#include <mutex>
#include <vector>

namespace {

using kelvo::platform::WaveOutDevice;

/// The devices behind the handles. A handle's number is never given twice, so that a late message
/// of an old device cannot be taken for one of a new device.
class DeviceTable {
public:
    HWAVEOUT NewHandle() {
        const std::lock_guard lock(mutex_);
        return reinterpret_cast<HWAVEOUT>(++last_number_);
    }
    void Add(HWAVEOUT handle, std::shared_ptr<WaveOutDevice> device) {
        const std::lock_guard lock(mutex_);
        open_[handle] = std::move(device);
    }
    std::shared_ptr<WaveOutDevice> Find(HWAVEOUT handle) {
        const std::lock_guard lock(mutex_);
        const auto found = open_.find(handle);
        return found == open_.end() ? nullptr : found->second;
    }
    /// The handle is dead; the device goes once its thread has ended.
    void MoveToClosing(HWAVEOUT handle) {
        const std::lock_guard lock(mutex_);
        const auto found = open_.find(handle);
        if (found == open_.end()) return;
        closing_.push_back(std::move(found->second));
        open_.erase(found);
    }
    /// Destroys what has closed; never waits for long.
    void Sweep() {
        std::vector<std::shared_ptr<WaveOutDevice>> closed;
        const std::lock_guard lock(mutex_);
        const auto first_closed = std::ranges::stable_partition(
            closing_, [](const auto& device) { return !device->IsClosed(); });
        closed.assign(first_closed.begin(), first_closed.end());
        closing_.erase(first_closed.begin(), first_closed.end());
    }
    int Count() {
        Sweep();
        const std::lock_guard lock(mutex_);
        return static_cast<int>(open_.size() + closing_.size());
    }

private:
    std::mutex mutex_;
    UINT_PTR last_number_ = 0;
    std::map<HWAVEOUT, std::shared_ptr<WaveOutDevice>> open_;
    std::vector<std::shared_ptr<WaveOutDevice>> closing_;
};

DeviceTable& Devices() {
    static DeviceTable table;
    return table;
}

bool IsPlayable(const WAVEFORMATEX& format) {
    const bool known_width = format.wBitsPerSample == 8 || format.wBitsPerSample == 16;
    const bool known_channels = format.nChannels == 1 || format.nChannels == 2;
    return format.wFormatTag == WAVE_FORMAT_PCM && known_width && known_channels &&
           format.nSamplesPerSec > 0 && format.nSamplesPerSec <= 768000 &&
           format.nBlockAlign == format.nChannels * format.wBitsPerSample / 8 &&
           format.nAvgBytesPerSec == format.nSamplesPerSec * format.nBlockAlign;
}

} // namespace

MMRESULT waveOutOpen(HWAVEOUT* handle, UINT device, const WAVEFORMATEX* format, DWORD_PTR callback,
                     DWORD_PTR /*instance*/, DWORD flags) {
    if (handle == nullptr || format == nullptr || flags != CALLBACK_WINDOW) {
        return MMSYSERR_INVALPARAM;
    }
    if (device != WAVE_MAPPER) return MMSYSERR_BADDEVICEID;
    if (!IsPlayable(*format)) return WAVERR_BADFORMAT;
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
    return Devices().Count();
}

} // namespace kelvo::platform
