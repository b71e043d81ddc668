#pragma once
// A series of pictures, one file an image: all of it or nothing. Files are coded and written by
// several threads, and lie in a temporary folder until the last one is whole.

#include "tools/kelvotool/files/SeriesNames.h"
#include "tools/kelvotool/files/TemporaryFolder.h"
#include "tools/kelvotool/picture/RgbImage.h"

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace kelvo::tool {

class PictureSeries {
public:
    /// The file of a picture; any thread. @return false when it cannot be made
    using Coder = std::function<bool(const RgbImage& image, std::vector<std::uint8_t>& file)>;

    PictureSeries() = default;
    /// Without Finish nothing is left.
    ~PictureSeries();
    PictureSeries(const PictureSeries&) = delete;
    PictureSeries& operator=(const PictureSeries&) = delete;

    /// @param given  a pattern, or a folder (which is made, or must be empty); its pictures are
    ///               "%06d" and the extension
    /// @param count  pictures that will come
    /// @return false after it was reported why not
    [[nodiscard]] bool Begin(const std::string& given, const std::string& extension,
                             std::uint64_t count, bool force, unsigned jobs, Coder coder,
                             Reporter& reporter);
    /// Room for the next image, to be filled; waits while all threads are busy.
    RgbImage& Room();
    /// The image in the room, so many times.
    void Add(std::uint32_t times);
    bool Failed();
    /// Waits for all threads and gives the files their names, or reports why not.
    void Finish(Reporter& reporter);

private:
    struct Slot {
        enum class State : std::uint8_t { Free, Filling, Ready, Coding };
        State state = State::Free;
        RgbImage image = {};
        std::uint64_t first = 0;
        std::uint32_t times = 0;
    };
    void Work();
    bool WriteSlot(const Slot& slot, std::vector<std::uint8_t>& file);
    void StopThreads();
    bool PlaceAll();

    // Fixed after Begin.
    TemporaryFolder temporary_;
    SeriesPattern pattern_;
    std::string folder_;      ///< where the files go
    bool new_folder_ = false; ///< the temporary one becomes it
    bool force_ = false;
    Coder coder_;
    std::vector<std::thread> threads_;

    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<Slot> slots_; ///< their states, and the two below, under the lock
    bool failed_ = false;
    bool ending_ = false;

    Slot* filling_ = nullptr; // who adds, alone
    std::uint64_t next_ = 0;
};

} // namespace kelvo::tool
