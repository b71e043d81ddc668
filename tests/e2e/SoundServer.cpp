#include "tests/e2e/SoundServer.h"

#include <pulse/pulseaudio.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <mutex>
#include <optional>

namespace kelvo::test {

constexpr char kSink[] = "loudspeaker";
constexpr std::chrono::microseconds kSameBlock{1500};
/// The server's clock runs a little fast or slow against ours; over this time that does not show.
constexpr double kSteadySeconds = 0.4;
/// Of the recorder: small, so that times are exact.
constexpr std::uint32_t kFragmentMs = 10;

/// A connection with a thread of its own; whoever calls the library holds the lock.
class Connection {
public:
    explicit Connection(const std::string& address) : loop_(pa_threaded_mainloop_new()) {
        context_ = pa_context_new(pa_threaded_mainloop_get_api(loop_), "ear");
        pa_threaded_mainloop_start(loop_);
        pa_threaded_mainloop_lock(loop_);
        pa_context_connect(context_, address.c_str(), PA_CONTEXT_NOAUTOSPAWN, nullptr);
        pa_threaded_mainloop_unlock(loop_);
    }
    ~Connection() {
        pa_threaded_mainloop_lock(loop_);
        pa_context_disconnect(context_);
        pa_context_unref(context_);
        pa_threaded_mainloop_unlock(loop_);
        pa_threaded_mainloop_stop(loop_);
        pa_threaded_mainloop_free(loop_);
    }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    pa_context_state_t State() const {
        const Locked locked(*this);
        return pa_context_get_state(context_);
    }
    bool WaitUntilReady() const {
        WaitUntil([this] {
            const auto state = State();
            return state == PA_CONTEXT_READY || !PA_CONTEXT_IS_GOOD(state);
        });
        return State() == PA_CONTEXT_READY;
    }

    struct Locked {
        explicit Locked(const Connection& connection) : loop(connection.loop_) {
            pa_threaded_mainloop_lock(loop);
        }
        ~Locked() { pa_threaded_mainloop_unlock(loop); }
        Locked(const Locked&) = delete;
        Locked& operator=(const Locked&) = delete;
        pa_threaded_mainloop* loop;
    };

    pa_threaded_mainloop* loop_;
    pa_context* context_;
};

enum class Memory : bool { None, All };

/// A stream that records the loudspeaker.
struct ServerStream {
    ServerStream(const SoundServer& server, Memory memory_kept)
        : memory(memory_kept), connection(server.Address()) {
        if (!connection.WaitUntilReady()) return;
        const Connection::Locked locked(connection);
        const std::lock_guard lock(mutex);
        const pa_sample_spec spec{PA_SAMPLE_FLOAT32LE, SoundServer::kRate, 1};
        stream = pa_stream_new(connection.context_, "ear", &spec, nullptr);
        pa_stream_set_read_callback(
            stream,
            [](pa_stream*, std::size_t, void* data) { static_cast<ServerStream*>(data)->Take(); },
            this);
        pa_buffer_attr attributes{};
        attributes.maxlength = static_cast<std::uint32_t>(-1);
        attributes.fragsize = SoundServer::kRate * kFragmentMs / 1000 * sizeof(float);
        pa_stream_connect_record(stream, (std::string(kSink) + ".monitor").c_str(), &attributes,
                                 PA_STREAM_ADJUST_LATENCY);
    }
    ~ServerStream() { Disconnect(); }
    ServerStream(const ServerStream&) = delete;
    ServerStream& operator=(const ServerStream&) = delete;

    void Disconnect() {
        if (stream == nullptr) return;
        const Connection::Locked locked(connection);
        const std::lock_guard lock(mutex);
        pa_stream_set_read_callback(stream, nullptr, nullptr);
        pa_stream_disconnect(stream);
        pa_stream_unref(stream);
        stream = nullptr;
    }
    void Take() {
        const auto now = Clock::now();
        const std::lock_guard lock(mutex);
        // What the server renders at once arrives in pieces: the first one has the time.
        if (now - last_arrival > kSameBlock) {
            recording.blocks.push_back({recording.samples.size(), now});
        }
        last_arrival = now;
        if (memory == Memory::None) recording = {};
        while (pa_stream_readable_size(stream) > 0) {
            const void* data = nullptr;
            std::size_t bytes = 0;
            if (pa_stream_peek(stream, &data, &bytes) != 0 || bytes == 0) return;
            const std::size_t count = bytes / sizeof(float);
            const auto* samples = static_cast<const float*>(data);
            if (samples == nullptr) {
                recording.samples.insert(recording.samples.end(), count, 0.0F); // a hole
            } else {
                recording.samples.insert(recording.samples.end(), samples, samples + count);
            }
            pa_stream_drop(stream);
        }
    }

    // Made before the connection's thread begins, and gone after it has ended.
    const Memory memory;
    std::mutex mutex;
    pa_stream* stream = nullptr; // under mutex, for its callback, and so are the two below
    Recording recording;
    Clock::time_point last_arrival{};
    Connection connection;
};

// --- the server --------------------------------------------------------------------------------

SoundServer::SoundServer(const std::string& folder) : folder_(folder) {
    const std::string socket = folder + "/sound";
    daemon_ = std::make_unique<ChildProcess>(
        std::vector<std::string>{
            "pulseaudio", "-n", "--daemonize=no", "--exit-idle-time=-1", "--use-pid-file=no",
            "--log-target=stderr", "--log-level=error",
            "--load=module-native-protocol-unix auth-anonymous=1 socket=" + socket,
            std::string("--load=module-null-sink sink_name=") + kSink + " channels=1 rate=48000"},
        Environment{{"HOME", folder},
                    {"XDG_RUNTIME_DIR", folder},
                    {"XDG_CONFIG_HOME", folder},
                    {"DISPLAY", std::nullopt},
                    {"DBUS_SESSION_BUS_ADDRESS", std::nullopt},
                    {"PULSE_SERVER", std::nullopt}});
    std::optional<Connection> probe;
    const bool ready = WaitUntil([&] {
        if (!daemon_->IsRunning()) return true;
        probe.emplace(Address());
        return probe->WaitUntilReady();
    });
    if (!ready || !daemon_->IsRunning()) {
        problem_ = "pulseaudio did not start: " + daemon_->Errors();
        return;
    }
    listener_ = std::make_unique<ServerStream>(*this, Memory::None);
}

SoundServer::~SoundServer() = default;

Environment SoundServer::ForClients() const {
    return {{"PULSE_SERVER", Address()},
            {"SDL_AUDIODRIVER", "pulseaudio"},
            {"XDG_RUNTIME_DIR", folder_}};
}

int SoundServer::PlayingStreams() const {
    Connection connection(Address());
    if (!connection.WaitUntilReady()) return -1;
    struct Answer {
        pa_threaded_mainloop* loop;
        int count = 0;
        bool done = false;
    } answer{connection.loop_};
    const Connection::Locked locked(connection);
    pa_operation* operation = pa_context_get_sink_input_info_list(
        connection.context_,
        [](pa_context*, const pa_sink_input_info* info, int end, void* data) {
            auto& to = *static_cast<Answer*>(data);
            if (info != nullptr) ++to.count;
            if (end != 0) {
                to.done = true;
                pa_threaded_mainloop_signal(to.loop, 0);
            }
        },
        &answer);
    while (operation != nullptr && !answer.done) {
        pa_threaded_mainloop_wait(connection.loop_);
    }
    if (operation != nullptr) pa_operation_unref(operation);
    return answer.count;
}

// --- the recording -----------------------------------------------------------------------------

Clock::time_point Recording::HeardAt(double sample) const {
    const auto length = [](double count) {
        return std::chrono::duration_cast<Clock::duration>(
            std::chrono::duration<double>(count / SoundServer::kRate));
    };
    Clock::duration offset = Clock::duration::max();
    for (const Block& block : blocks) {
        const auto first = static_cast<double>(block.first_sample);
        if (std::fabs(first - sample) > kSteadySeconds * SoundServer::kRate) continue;
        offset = std::min(offset, block.at.time_since_epoch() - length(first));
    }
    return Clock::time_point(offset + length(sample));
}

std::size_t Recording::FirstLoud(std::size_t from, float threshold) const {
    while (from < samples.size() && std::fabs(samples[from]) < threshold) {
        ++from;
    }
    return from;
}

// --- the recorder ------------------------------------------------------------------------------

Recorder::Recorder(const SoundServer& server)
    : stream_(std::make_unique<ServerStream>(server, Memory::All)) {
    WaitUntil([this] { return !SoFar().samples.empty(); });
}

Recorder::~Recorder() = default;

bool Recorder::IsRecording() const {
    return stream_->stream != nullptr && !SoFar().samples.empty();
}

Recording Recorder::SoFar() const {
    const std::lock_guard lock(stream_->mutex);
    return stream_->recording;
}

Recording Recorder::Stop() {
    stream_->Disconnect();
    return SoFar();
}

} // namespace kelvo::test
