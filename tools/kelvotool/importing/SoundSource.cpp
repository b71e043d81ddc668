#include "tools/kelvotool/importing/SoundSource.h"

#include "framework/base/ByteReader.h"
#include "tools/kelvotool/files/FileNames.h"
#include "tools/kelvotool/report/StopSignal.h"
#include "tools/kelvotool/sound/WavFile.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <system_error>

namespace kelvo::tool {

namespace {

constexpr std::size_t kHeadBytes = std::size_t{64} * 1024; // pictures and texts may come first
constexpr std::size_t kMomentsAtOnce = 4096;

class WavSource : public SoundSource {
public:
    explicit WavSource(Reporter& reporter) : reporter_(reporter) {}

    bool Begin(const std::string& name) {
        file_.reset(std::fopen(name.c_str(), "rbe"));
        std::error_code error;
        const std::uintmax_t size = std::filesystem::file_size(name, error);
        std::vector<std::uint8_t> head(kHeadBytes);
        if (file_) head.resize(std::fread(head.data(), 1, head.size(), file_.get()));
        const auto layout =
            file_ && !error ? ParseWav(head, size) : Result<WavLayout>(Error{Fault::Unreadable, 0});
        if (!layout) {
            reporter_.NotDone("it is no WAV file that can be read", ProblemCode::InputUnreadable);
            return false;
        }
        layout_ = layout.Value();
        if (layout_.is_cut) {
            reporter_.Report(
                {.code = ProblemCode::RecordMissing, .what = "it ends before its sound does"});
        }
        facts_ = {.sample_rate = layout_.sample_rate,
                  .channels = layout_.channels,
                  .bits = layout_.bits,
                  .count = layout_.Count()};
        buffer_.resize(kMomentsAtOnce * layout_.BlockBytes());
        return std::fseek(file_.get(), static_cast<long>(layout_.start), SEEK_SET) == 0;
    }

    bool Next(std::vector<std::int16_t>& samples) override {
        const std::uint64_t count =
            std::min<std::uint64_t>(layout_.Count() - read_, kMomentsAtOnce);
        if (count == 0 || StopRequested()) return false;
        const std::uint64_t bytes = count * layout_.BlockBytes();
        if (std::fread(buffer_.data(), 1, bytes, file_.get()) != bytes) {
            reporter_.NotDone("it cannot be read", ProblemCode::InputUnreadable);
            return false;
        }
        samples.resize(count);
        for (std::size_t i = 0; i < count; ++i) {
            const std::uint8_t* const block = buffer_.data() + i * layout_.BlockBytes();
            samples[i] = static_cast<std::int16_t>(MonoSample(layout_, block));
        }
        read_ += count;
        return true;
    }

private:
    struct CloseFile {
        void operator()(std::FILE* file) const { std::ignore = std::fclose(file); } // only read
    };
    Reporter& reporter_;
    std::unique_ptr<std::FILE, CloseFile> file_;
    WavLayout layout_;
    std::uint64_t read_ = 0;
    std::vector<std::uint8_t> buffer_;
};

class ForeignSound : public SoundSource {
public:
    explicit ForeignSound(Reporter& reporter) : stream_(reporter) {}

    bool Begin(const std::string& name) {
        if (!stream_.Open(name, ForeignStream::Part::Sound) || !stream_.Sound()) return false;
        const media_stream::SoundFormat& format = *stream_.Sound();
        facts_ = {.sample_rate = format.sample_rate,
                  .channels = format.channels,
                  .bits = format.significant_bits,
                  .count = format.count};
        return true;
    }

    bool Next(std::vector<std::int16_t>& samples) override {
        ByteView bytes;
        if (StopRequested() || !stream_.Next(media_stream::kSamples, bytes)) return false;
        const std::uint32_t channels = facts_.channels;
        samples.resize(bytes.size() / 2 / channels);
        ByteReader reader{bytes};
        for (std::int16_t& sample : samples) {
            std::int32_t sum = 0;
            for (std::uint32_t channel = 0; channel < channels; ++channel)
                sum += static_cast<std::int16_t>(reader.ReadU16());
            sample = static_cast<std::int16_t>(sum / static_cast<std::int32_t>(channels));
        }
        return true;
    }

private:
    ForeignStream stream_;
};

} // namespace

std::unique_ptr<SoundSource> OpenWav(const std::string& given, Reporter& reporter) {
    const auto name = InputName(given, reporter);
    auto source = std::make_unique<WavSource>(reporter);
    if (!name || !source->Begin(*name)) return nullptr;
    return source;
}

std::unique_ptr<SoundSource> OpenForeignSound(const std::string& name, Reporter& reporter) {
    auto source = std::make_unique<ForeignSound>(reporter);
    if (!source->Begin(name)) return nullptr;
    return source;
}

} // namespace kelvo::tool
