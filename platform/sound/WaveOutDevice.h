#pragma once
// One open device: the queue that the sound library's callback drains, and the thread that reports
// buffers once they have been heard and closes the device in the end (a close must not happen on
// the callback's thread, and takes longer than the UI thread may wait).

#include "platform/sound/HeardClock.h"
#include "platform/sound/wave.h"

#include <array>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <span>
#include <thread>

namespace kelvo::platform {

class WaveOutDevice {
public:
    WaveOutDevice(HWAVEOUT handle, HWND window, const WAVEFORMATEX& format);
    WaveOutDevice(const WaveOutDevice&) = delete;
    WaveOutDevice& operator=(const WaveOutDevice&) = delete;
    /// Waits for the thread; the device must have been asked to close.
    ~WaveOutDevice();

    /// Opens the device and starts taking sound, silence at first. @return MMSYSERR_...
    MMRESULT Open();
    /// Posts MM_WOM_OPEN.
    void ReportOpen() const;
    MMRESULT Write(WAVEHDR* header);
    MMRESULT Reset();
    MMRESULT Pause();
    MMRESULT Restart();
    /// @return WAVERR_STILLPLAYING while buffers are queued
    MMRESULT Close();
    DWORD Volume();
    void SetVolume(DWORD volume);
    /// Bytes heard since Open or Reset.
    std::uint64_t HeardBytes();
    std::uint32_t BlockAlign() const { return format_.nBlockAlign; }
    std::uint32_t BytesPerSecond() const { return format_.nAvgBytesPerSec; }
    /// Whether the device is closed and the thread is about to end.
    bool IsClosed();

private:
    using Time = HeardClock::Time;

    /// A buffer that the device has taken whole, until it has been heard.
    struct Taken {
        WAVEHDR* header;
        Time heard_at;
    };
    /// A stretch of the stream that is being heard or will be.
    struct Stretch {
        std::uint64_t first_byte;
        std::uint32_t bytes;
        Time heard_at;
    };

    static void Callback(void* device, std::uint8_t* block, int length);
    void FillBlock(std::span<std::uint8_t> block);
    std::size_t TakeBytes(std::span<std::uint8_t> block, Time block_heard_at);
    void ApplyVolume(std::span<std::uint8_t> block) const;
    void ForgetHeardStretches(Time now);
    void Serve();
    void Report(WAVEHDR* header) const;

    const HWAVEOUT handle_;
    const HWND window_;
    const WAVEFORMATEX format_;
    std::uint32_t device_ = 0; ///< the sound library's number; fixed after Open

    std::mutex mutex_;
    std::condition_variable changed_;
    // Under mutex_.
    HeardClock clock_;
    std::deque<WAVEHDR*> queue_;  ///< not yet taken whole
    std::size_t front_taken_ = 0; ///< bytes of the first one that were taken
    std::array<std::uint8_t, 8>
        carry_{}; ///< the beginning of a sample whose rest is not queued yet
    std::size_t carried_ = 0;
    std::deque<Taken> taken_;
    std::deque<Stretch> stretches_;
    std::uint64_t stream_bytes_ = 0; ///< taken since Open or Reset
    std::uint64_t heard_bytes_ = 0;  ///< up to the end of the last stretch that was forgotten
    DWORD volume_ = 0xFFFFFFFF;
    bool paused_ = false;
    Time paused_at_{};
    bool close_requested_ = false;
    bool closed_ = false;

    std::thread thread_;
};

} // namespace kelvo::platform
