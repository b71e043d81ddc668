#pragma once
// One open input: the queue of buffers that the sound library's callback fills, and the thread that
// gives them back and closes the device in the end. That thread alone posts, so that buffers come
// in the order of the sound, and the close after them.

#include "platform/sound/wave_in.h"

#include <array>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <span>
#include <thread>

namespace kelvo::platform {

class WaveInDevice {
public:
    WaveInDevice(HWAVEIN handle, HWND window, const WAVEFORMATEX& format);
    WaveInDevice(const WaveInDevice&) = delete;
    WaveInDevice& operator=(const WaveInDevice&) = delete;
    /// Waits for the thread; the device must have been asked to close.
    ~WaveInDevice();

    /// Opens the device, at rest. @return MMSYSERR_...
    MMRESULT Open();
    /// Posts MM_WIM_OPEN.
    void ReportOpen() const;
    MMRESULT Prepare(WAVEHDR* header);
    /// @return WAVERR_STILLPLAYING for a queued one
    MMRESULT Unprepare(WAVEHDR* header);
    MMRESULT Add(WAVEHDR* header);
    MMRESULT Start();
    MMRESULT Stop();
    MMRESULT Reset();
    /// @return WAVERR_STILLPLAYING while buffers are queued
    MMRESULT Close();
    /// Whether the device is closed and the thread is about to end.
    bool IsClosed();

private:
    static void Callback(void* device, std::uint8_t* block, int length);
    void TakeBlock(std::span<const std::uint8_t> block);
    std::span<const std::uint8_t> PutInto(WAVEHDR* header, std::span<const std::uint8_t> bytes);
    void GiveBackFront();
    void Serve();
    void Report(WAVEHDR* header) const;

    const HWAVEIN handle_;
    const HWND window_;
    const WAVEFORMATEX format_;
    std::uint32_t device_ = 0; ///< the sound library's number; fixed after Open

    std::mutex mutex_;
    std::condition_variable changed_;
    // Under mutex_, and so are the headers of queued buffers.
    std::deque<WAVEHDR*> queue_;
    std::deque<WAVEHDR*> given_back_; ///< not reported yet
    /// The rest of a sample that the last buffer ended inside of, when no other was queued.
    std::array<std::uint8_t, 4> carry_{};
    std::size_t carried_ = 0;
    std::size_t stream_phase_ = 0; ///< bytes of a sample that the last buffer ended with
    bool started_ = false;
    bool close_requested_ = false;
    bool closed_ = false;

    std::thread thread_;
};

} // namespace kelvo::platform
