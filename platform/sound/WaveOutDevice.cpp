#include "platform/sound/WaveOutDevice.h"

#include "platform/desktop/messages.h"
#include "platform/sound/SoundLibrary.h"

#include <algorithm>
#include <string_view>

namespace kelvo::platform {
namespace {

/// Blocks between the taking of one and its being heard: the one that plays and the one that waits.
constexpr int kBlocksAhead = 2;
/// A sound server takes a block when the one before begins to play: measured at 8000, 22050 and
/// 44100 samples a second, within 0.3 ms. The silent driver waits a block after each.
constexpr int kBlocksAheadOfServer = 1;
constexpr std::uint16_t kBitsOfByteSample = 8;

HeardClock::Duration LatencyOf(std::uint32_t samples, std::uint32_t rate, std::string_view driver) {
    const bool is_short = driver == kServerDriver || driver == kSilentDriver;
    return std::chrono::nanoseconds(std::int64_t{samples} *
                                    (is_short ? kBlocksAheadOfServer : kBlocksAhead) *
                                    1'000'000'000 / rate);
}

} // namespace

WaveOutDevice::WaveOutDevice(HWAVEOUT handle, HWND window, const WAVEFORMATEX& format)
    : handle_(handle), window_(window), format_(format), clock_(format.nAvgBytesPerSec, {}) {}

WaveOutDevice::~WaveOutDevice() {
    if (thread_.joinable()) thread_.join();
}

MMRESULT WaveOutDevice::Open() {
    OpenedSound opened;
    const MMRESULT result =
        OpenSoundDevice(SoundDirection::Output, format_, &WaveOutDevice::Callback, this, opened);
    if (result != MMSYSERR_NOERROR) return result;
    device_ = opened.device;
    {
        const std::lock_guard lock(mutex_);
        clock_.SetLatency(LatencyOf(opened.block_samples, format_.nSamplesPerSec, opened.driver));
    }
    thread_ = std::thread(&WaveOutDevice::Serve, this);
    StartSoundDevice(device_);
    return MMSYSERR_NOERROR;
}

// --- what the sound library's thread does ------------------------------------------------------

void WaveOutDevice::Callback(void* device, std::uint8_t* block, int length) {
    static_cast<WaveOutDevice*>(device)->FillBlock({block, static_cast<std::size_t>(length)});
}

void WaveOutDevice::FillBlock(std::span<std::uint8_t> block) {
    const std::uint8_t silence = format_.wBitsPerSample == kBitsOfByteSample ? 0x80 : 0;
    bool has_news = false;
    {
        const std::lock_guard lock(mutex_);
        const Time now = std::chrono::steady_clock::now();
        ForgetHeardStretches(now); // or they grow with the film
        const Time heard_at = clock_.TakeBlock(now, block.size());
        const std::size_t waiting = taken_.size();
        const std::size_t taken = paused_ ? 0 : TakeBytes(block, heard_at);
        std::ranges::fill(block.subspan(taken), silence);
        ApplyVolume(block.first(taken));
        has_news = taken_.size() != waiting;
    }
    if (has_news) changed_.notify_one();
}

// Gives whole samples only: the beginning of one whose rest has not been queued is carried over.
std::size_t WaveOutDevice::TakeBytes(std::span<std::uint8_t> block, Time block_heard_at) {
    const std::size_t align = format_.nBlockAlign;
    std::size_t filled = std::min(carried_, block.size());
    std::copy_n(carry_.begin(), filled, block.begin());
    carried_ = 0;
    while (!queue_.empty() && filled < block.size()) {
        WAVEHDR* header = queue_.front();
        const std::size_t count =
            std::min(block.size() - filled, header->dwBufferLength - front_taken_);
        std::copy_n(reinterpret_cast<const std::uint8_t*>(header->lpData) + front_taken_, count,
                    block.subspan(filled).begin());
        filled += count;
        front_taken_ += count;
        if (front_taken_ < header->dwBufferLength) break;
        queue_.pop_front();
        front_taken_ = 0;
        taken_.push_back({header, block_heard_at + clock_.LengthOf(filled)});
    }
    carried_ = filled % align;
    filled -= carried_;
    std::copy_n(block.subspan(filled).begin(), carried_, carry_.begin());
    if (filled > 0) {
        stretches_.push_back({stream_bytes_, static_cast<std::uint32_t>(filled), block_heard_at});
        stream_bytes_ += filled;
    }
    return filled;
}

void WaveOutDevice::ApplyVolume(std::span<std::uint8_t> block) const {
    const std::array<int, 2> gains = {LOWORD(volume_), HIWORD(volume_)};
    constexpr int kFull = 0xFFFF;
    if (gains[0] == kFull && (gains[1] == kFull || format_.nChannels == 1)) return;
    const std::size_t sample_bytes = format_.wBitsPerSample / 8U;
    for (std::size_t i = 0; i < block.size() / sample_bytes; ++i) {
        const int gain = gains[format_.nChannels == 1 ? 0 : i % format_.nChannels % 2];
        if (sample_bytes == 1) {
            block[i] = static_cast<std::uint8_t>((block[i] - 128) * gain / kFull + 128);
        } else {
            const auto sample = static_cast<std::int16_t>(block[2 * i] | (block[2 * i + 1] << 8));
            const auto scaled = static_cast<std::uint16_t>(std::int64_t{sample} * gain / kFull);
            block[2 * i] = static_cast<std::uint8_t>(scaled);
            block[2 * i + 1] = static_cast<std::uint8_t>(scaled >> 8U);
        }
    }
}

// --- the device's own thread -------------------------------------------------------------------

void WaveOutDevice::Report(WAVEHDR* header) const {
    header->dwFlags = (header->dwFlags & ~WHDR_INQUEUE) | WHDR_DONE;
    PostMessageA(window_, MM_WOM_DONE, reinterpret_cast<WPARAM>(handle_),
                 reinterpret_cast<LPARAM>(header));
}

void WaveOutDevice::ReportOpen() const {
    PostMessageA(window_, MM_WOM_OPEN, reinterpret_cast<WPARAM>(handle_), 0);
}

void WaveOutDevice::Serve() {
    std::unique_lock lock(mutex_);
    while (!close_requested_) {
        if (paused_ || taken_.empty()) {
            changed_.wait(lock);
            continue;
        }
        const Taken next = taken_.front();
        if (std::chrono::steady_clock::now() < next.heard_at) {
            changed_.wait_until(lock, next.heard_at);
            continue;
        }
        taken_.pop_front();
        lock.unlock();
        Report(next.header);
        lock.lock();
    }
    lock.unlock();
    CloseSoundDevice(device_);
    lock.lock();
    closed_ = true;
    lock.unlock();
    PostMessageA(window_, MM_WOM_CLOSE, reinterpret_cast<WPARAM>(handle_), 0);
}

// --- what callers ask --------------------------------------------------------------------------

MMRESULT WaveOutDevice::Write(WAVEHDR* header) {
    {
        const std::lock_guard lock(mutex_);
        if ((header->dwFlags & WHDR_PREPARED) == 0) return WAVERR_UNPREPARED;
        if ((header->dwFlags & WHDR_INQUEUE) != 0) return WAVERR_STILLPLAYING;
        header->dwFlags = (header->dwFlags & ~WHDR_DONE) | WHDR_INQUEUE;
        if (header->dwBufferLength > 0) {
            queue_.push_back(header);
        } else {
            taken_.push_back({header, std::chrono::steady_clock::now()});
        }
    }
    changed_.notify_one();
    return MMSYSERR_NOERROR;
}

MMRESULT WaveOutDevice::Reset() {
    std::deque<WAVEHDR*> given_back;
    {
        const std::lock_guard lock(mutex_);
        for (const Taken& taken : taken_) {
            given_back.push_back(taken.header);
        }
        given_back.insert(given_back.end(), queue_.begin(), queue_.end());
        taken_.clear();
        queue_.clear();
        stretches_.clear();
        front_taken_ = 0;
        carried_ = 0;
        stream_bytes_ = 0;
        heard_bytes_ = 0;
        paused_ = false;
    }
    for (WAVEHDR* header : given_back) {
        Report(header);
    }
    return MMSYSERR_NOERROR;
}

MMRESULT WaveOutDevice::Pause() {
    const std::lock_guard lock(mutex_);
    if (!paused_) paused_at_ = std::chrono::steady_clock::now();
    paused_ = true;
    return MMSYSERR_NOERROR;
}

// What was taken before the pause is heard by then or a block later; what waits to be reported
// waits as much longer as the pause has lasted.
MMRESULT WaveOutDevice::Restart() {
    {
        const std::lock_guard lock(mutex_);
        if (!paused_) return MMSYSERR_NOERROR;
        paused_ = false;
        const auto now = std::chrono::steady_clock::now();
        for (Taken& taken : taken_) {
            if (taken.heard_at > paused_at_) taken.heard_at += now - paused_at_;
        }
    }
    changed_.notify_one();
    return MMSYSERR_NOERROR;
}

MMRESULT WaveOutDevice::Close() {
    {
        const std::lock_guard lock(mutex_);
        if (!queue_.empty() || !taken_.empty()) return WAVERR_STILLPLAYING;
        close_requested_ = true;
    }
    changed_.notify_one();
    return MMSYSERR_NOERROR;
}

DWORD WaveOutDevice::Volume() {
    const std::lock_guard lock(mutex_);
    return volume_;
}

void WaveOutDevice::SetVolume(DWORD volume) {
    const std::lock_guard lock(mutex_);
    volume_ = volume;
}

void WaveOutDevice::ForgetHeardStretches(Time now) {
    while (!stretches_.empty() &&
           stretches_.front().heard_at + clock_.LengthOf(stretches_.front().bytes) <= now) {
        heard_bytes_ = stretches_.front().first_byte + stretches_.front().bytes;
        stretches_.pop_front();
    }
}

std::uint64_t WaveOutDevice::HeardBytes() {
    const std::lock_guard lock(mutex_);
    const Time now = std::chrono::steady_clock::now();
    ForgetHeardStretches(now);
    if (stretches_.empty() || stretches_.front().heard_at >= now) return heard_bytes_;
    const auto heard_for = std::chrono::nanoseconds(now - stretches_.front().heard_at).count();
    const auto bytes =
        static_cast<std::uint64_t>(heard_for * format_.nAvgBytesPerSec / 1'000'000'000);
    return stretches_.front().first_byte + std::min<std::uint64_t>(bytes, stretches_.front().bytes);
}

bool WaveOutDevice::IsClosed() {
    const std::lock_guard lock(mutex_);
    return closed_;
}

} // namespace kelvo::platform
