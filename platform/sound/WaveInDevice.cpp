#include "platform/sound/WaveInDevice.h"

#include "platform/desktop/messages.h"
#include "platform/sound/SoundLibrary.h"

#include <algorithm>

namespace kelvo::platform {

WaveInDevice::WaveInDevice(HWAVEIN handle, HWND window, const WAVEFORMATEX& format)
    : handle_(handle), window_(window), format_(format) {}

WaveInDevice::~WaveInDevice() {
    if (thread_.joinable()) thread_.join();
}

MMRESULT WaveInDevice::Open() {
    OpenedSound opened;
    const MMRESULT result =
        OpenSoundDevice(SoundDirection::Input, format_, &WaveInDevice::Callback, this, opened);
    if (result != MMSYSERR_NOERROR) return result;
    device_ = opened.device;
    thread_ = std::thread(&WaveInDevice::Serve, this);
    return MMSYSERR_NOERROR;
}

// --- what the sound library's thread does ------------------------------------------------------

void WaveInDevice::Callback(void* device, std::uint8_t* block, int length) {
    static_cast<WaveInDevice*>(device)->TakeBlock({block, static_cast<std::size_t>(length)});
}

// A block that nobody waits for is lost as a whole number of samples: of one that the last buffer
// ended inside of, the rest is carried to the next buffer.
void WaveInDevice::TakeBlock(std::span<const std::uint8_t> block) {
    bool has_news = false;
    {
        const std::lock_guard lock(mutex_);
        if (!started_) return;
        const std::size_t waiting = given_back_.size();
        if (carried_ > 0 && !queue_.empty()) {
            const auto rest = PutInto(queue_.front(), std::span{carry_}.first(carried_));
            std::ranges::copy(rest, carry_.begin());
            carried_ = rest.size();
        }
        while (carried_ == 0 && !queue_.empty() && !block.empty()) {
            block = PutInto(queue_.front(), block);
        }
        if (carried_ == 0 && stream_phase_ != 0 && !block.empty()) {
            carried_ = format_.nBlockAlign - stream_phase_;
            std::ranges::copy(block.first(carried_), carry_.begin());
        }
        has_news = given_back_.size() != waiting;
    }
    if (has_news) changed_.notify_one();
}

/// @return what did not fit
std::span<const std::uint8_t> WaveInDevice::PutInto(WAVEHDR* header,
                                                    std::span<const std::uint8_t> bytes) {
    const std::size_t count =
        std::min<std::size_t>(header->dwBufferLength - header->dwBytesRecorded, bytes.size());
    std::ranges::copy(bytes.first(count),
                      reinterpret_cast<std::uint8_t*>(header->lpData) + header->dwBytesRecorded);
    header->dwBytesRecorded += static_cast<DWORD>(count);
    stream_phase_ = (stream_phase_ + count) % format_.nBlockAlign;
    if (header->dwBytesRecorded == header->dwBufferLength) GiveBackFront();
    return bytes.subspan(count);
}

void WaveInDevice::GiveBackFront() {
    WAVEHDR* header = queue_.front();
    queue_.pop_front();
    header->dwFlags = (header->dwFlags & ~WHDR_INQUEUE) | WHDR_DONE;
    given_back_.push_back(header);
}

// --- the device's own thread -------------------------------------------------------------------

void WaveInDevice::Report(WAVEHDR* header) const {
    PostMessageA(window_, MM_WIM_DATA, reinterpret_cast<WPARAM>(handle_),
                 reinterpret_cast<LPARAM>(header));
}

void WaveInDevice::ReportOpen() const {
    PostMessageA(window_, MM_WIM_OPEN, reinterpret_cast<WPARAM>(handle_), 0);
}

void WaveInDevice::Serve() {
    std::unique_lock lock(mutex_);
    while (!close_requested_ || !given_back_.empty()) {
        if (given_back_.empty()) {
            changed_.wait(lock);
            continue;
        }
        WAVEHDR* const header = given_back_.front();
        given_back_.pop_front();
        lock.unlock();
        Report(header);
        lock.lock();
    }
    lock.unlock();
    CloseSoundDevice(device_);
    lock.lock();
    closed_ = true;
    lock.unlock();
    PostMessageA(window_, MM_WIM_CLOSE, reinterpret_cast<WPARAM>(handle_), 0);
}

// --- what callers ask --------------------------------------------------------------------------

MMRESULT WaveInDevice::Prepare(WAVEHDR* header) {
    const std::lock_guard lock(mutex_);
    header->dwFlags = (header->dwFlags | WHDR_PREPARED) & ~WHDR_DONE;
    return MMSYSERR_NOERROR;
}

MMRESULT WaveInDevice::Unprepare(WAVEHDR* header) {
    const std::lock_guard lock(mutex_);
    if ((header->dwFlags & WHDR_INQUEUE) != 0) return WAVERR_STILLPLAYING;
    header->dwFlags &= ~WHDR_PREPARED;
    return MMSYSERR_NOERROR;
}

MMRESULT WaveInDevice::Add(WAVEHDR* header) {
    const std::lock_guard lock(mutex_);
    if ((header->dwFlags & WHDR_PREPARED) == 0) return WAVERR_UNPREPARED;
    if ((header->dwFlags & WHDR_INQUEUE) != 0) return WAVERR_STILLPLAYING;
    if (header->dwBufferLength == 0)
        return MMSYSERR_INVALPARAM; // would come back at once, for ever
    header->dwFlags = (header->dwFlags & ~WHDR_DONE) | WHDR_INQUEUE;
    header->dwBytesRecorded = 0;
    queue_.push_back(header);
    return MMSYSERR_NOERROR;
}

MMRESULT WaveInDevice::Start() {
    {
        const std::lock_guard lock(mutex_);
        started_ = true;
    }
    StartSoundDevice(device_);
    return MMSYSERR_NOERROR;
}

MMRESULT WaveInDevice::Stop() {
    {
        const std::lock_guard lock(mutex_);
        started_ = false;
        if (!queue_.empty() && queue_.front()->dwBytesRecorded > 0) GiveBackFront();
    }
    changed_.notify_one();
    RestSoundDevice(device_);
    return MMSYSERR_NOERROR;
}

MMRESULT WaveInDevice::Reset() {
    {
        const std::lock_guard lock(mutex_);
        started_ = false;
        while (!queue_.empty()) {
            GiveBackFront();
        }
        carried_ = 0;
        stream_phase_ = 0;
    }
    changed_.notify_one();
    RestSoundDevice(device_);
    return MMSYSERR_NOERROR;
}

MMRESULT WaveInDevice::Close() {
    {
        const std::lock_guard lock(mutex_);
        if (!queue_.empty()) return WAVERR_STILLPLAYING;
        close_requested_ = true;
    }
    changed_.notify_one();
    return MMSYSERR_NOERROR;
}

bool WaveInDevice::IsClosed() {
    const std::lock_guard lock(mutex_);
    return closed_;
}

} // namespace kelvo::platform
