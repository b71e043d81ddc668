#pragma once
// A sound server of the test's own, whose only loudspeaker is a recorder: what is heard comes with
// the time at which it is heard, on the clock that pictures are timed by.

#include "tests/e2e/ChildProcess.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace kelvo::test {

struct ServerStream;

class SoundServer {
public:
    static constexpr int kRate = 48000;

    /// Starts the server and waits until it answers; Problem() tells when it does not.
    /// @param folder  its run-time folder and home
    explicit SoundServer(const std::string& folder);
    ~SoundServer();
    SoundServer(const SoundServer&) = delete;
    SoundServer& operator=(const SoundServer&) = delete;

    const std::string& Problem() const { return problem_; }
    /// What a program needs to play here.
    Environment ForClients() const;
    /// Streams that play now.
    int PlayingStreams() const;
    std::string Address() const { return "unix:" + folder_ + "/sound"; }

private:
    std::string folder_;
    std::string problem_;
    std::unique_ptr<ChildProcess> daemon_;
    /// Hears and forgets: a loudspeaker without a listener takes its sound by the second, and a
    /// stream that begins meanwhile waits as long.
    std::unique_ptr<ServerStream> listener_;
};

/// What came out of the loudspeaker.
struct Recording {
    /// A block that arrived at once: its first sample was heard when it arrived.
    struct Block {
        std::size_t first_sample;
        Clock::time_point at;
    };
    std::vector<float> samples; ///< mono, -1 to 1
    std::vector<Block> blocks;

    /// When a sample was heard: told by the one of the blocks around it that was held up least.
    Clock::time_point HeardAt(double sample) const;
    /// The first sample louder than a threshold, from one on; the count of samples without any.
    std::size_t FirstLoud(std::size_t from, float threshold) const;
};

/// Records from its making until Stop.
class Recorder {
public:
    explicit Recorder(const SoundServer& server);
    ~Recorder();
    Recorder(const Recorder&) = delete;
    Recorder& operator=(const Recorder&) = delete;

    bool IsRecording() const;
    /// A copy of what there is so far.
    Recording SoFar() const;
    Recording Stop();

private:
    std::unique_ptr<ServerStream> stream_;
};

} // namespace kelvo::test
