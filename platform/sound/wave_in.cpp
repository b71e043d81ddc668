#include "platform/sound/wave_in.h"

#include "platform/sound/DeviceTable.h"
#include "platform/sound/SoundLibrary.h"
#include "platform/sound/WaveInDevice.h"

namespace {

using kelvo::platform::WaveInDevice;

kelvo::platform::DeviceTable<HWAVEIN, WaveInDevice>& Inputs() {
    static kelvo::platform::DeviceTable<HWAVEIN, WaveInDevice> table;
    return table;
}

/// Looks the device up and checks a header for it.
template <class Operation>
MMRESULT WithHeader(HWAVEIN handle, const WAVEHDR* header, UINT size, Operation operation) {
    const auto device = Inputs().Find(handle);
    if (device == nullptr) return MMSYSERR_INVALHANDLE;
    if (header == nullptr || size < sizeof(WAVEHDR)) return MMSYSERR_INVALPARAM;
    return operation(*device);
}

} // namespace

MMRESULT waveInOpen(HWAVEIN* handle, UINT device, const WAVEFORMATEX* format, DWORD_PTR callback,
                    DWORD_PTR /*instance*/, DWORD flags) {
    if (handle == nullptr || format == nullptr || flags != CALLBACK_WINDOW) {
        return MMSYSERR_INVALPARAM;
    }
    if (device != WAVE_MAPPER) return MMSYSERR_BADDEVICEID;
    if (!kelvo::platform::IsPlainSound(*format)) return WAVERR_BADFORMAT;
    Inputs().Sweep();
    const HWAVEIN number = Inputs().NewHandle();
    auto opened = std::make_shared<WaveInDevice>(number, reinterpret_cast<HWND>(callback), *format);
    *handle = number;
    const MMRESULT result = opened->Open();
    if (result != MMSYSERR_NOERROR) {
        *handle = nullptr;
        return result;
    }
    Inputs().Add(number, opened);
    opened->ReportOpen();
    return MMSYSERR_NOERROR;
}

MMRESULT waveInClose(HWAVEIN handle) {
    const auto device = Inputs().Find(handle);
    if (device == nullptr) return MMSYSERR_INVALHANDLE;
    const MMRESULT result = device->Close();
    if (result == MMSYSERR_NOERROR) Inputs().MoveToClosing(handle);
    return result;
}

MMRESULT waveInPrepareHeader(HWAVEIN handle, WAVEHDR* header, UINT size) {
    return WithHeader(handle, header, size, [header](WaveInDevice& device) {
        return header->lpData == nullptr ? MMSYSERR_INVALPARAM : device.Prepare(header);
    });
}

MMRESULT waveInUnprepareHeader(HWAVEIN handle, WAVEHDR* header, UINT size) {
    return WithHeader(handle, header, size,
                      [header](WaveInDevice& device) { return device.Unprepare(header); });
}

MMRESULT waveInAddBuffer(HWAVEIN handle, WAVEHDR* header, UINT size) {
    return WithHeader(handle, header, size,
                      [header](WaveInDevice& device) { return device.Add(header); });
}

MMRESULT waveInStart(HWAVEIN handle) {
    const auto device = Inputs().Find(handle);
    return device == nullptr ? MMSYSERR_INVALHANDLE : device->Start();
}

MMRESULT waveInStop(HWAVEIN handle) {
    const auto device = Inputs().Find(handle);
    return device == nullptr ? MMSYSERR_INVALHANDLE : device->Stop();
}

MMRESULT waveInReset(HWAVEIN handle) {
    const auto device = Inputs().Find(handle);
    return device == nullptr ? MMSYSERR_INVALHANDLE : device->Reset();
}

namespace kelvo::platform {

int CountWaveInputs() {
    return Inputs().Count();
}

} // namespace kelvo::platform
