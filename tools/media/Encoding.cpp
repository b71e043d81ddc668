#include "tools/media/Encoding.h"

#include "tools/media/MediaWriter.h"
#include "tools/media/PictureEncoder.h"
#include "tools/media/Report.h"
#include "tools/media/SoundEncoder.h"
#include "tools/media/StreamReader.h"

#include <fmt/format.h>

#include <unistd.h>

#include <optional>

namespace kelvo::media_tool {

namespace {

const OutputFormat* FormatOf(const EncodeOptions& options, Report& report) {
    const std::size_t dot = options.output.rfind('.');
    const std::string name = !options.format.empty()    ? options.format
                             : dot == std::string::npos ? std::string{}
                                                        : options.output.substr(dot + 1);
    const OutputFormat* const format = FindOutputFormat(name);
    if (format == nullptr) {
        report.NotDone("its name must end in .mkv, .mp4, .webm, .flac or .gif, or --format say "
                       "which of these it is");
    }
    return format;
}

/// One run of encode.
class Encoding {
public:
    Encoding(const EncodeOptions& options, Report& report)
        : options_(options), report_(report), input_(report), writer_(report) {}

    bool Run(const OutputFormat& format) {
        if (!input_.ReadDescription() || !writer_.Open(options_.output, format.muxer)) return false;
        if (!OpenEncoders(format)) return false;
        for (const auto& [key, value] : input_.Description().texts)
            writer_.Describe(key, value);
        if (!writer_.Begin() || !CodeStream()) return false;
        if (picture_ && !picture_->Finish()) return false;
        if (sound_ && !sound_->Finish()) return false;
        return writer_.Finish(options_.force);
    }

private:
    bool OpenEncoders(const OutputFormat& format) {
        const StreamDescription& description = input_.Description();
        const auto pictures = format.Pictures(options_.preset);
        const auto sounds = format.Sounds(options_.preset);
        const bool archive = format.IsArchive(options_.preset);
        if (description.picture && !pictures.empty()) {
            picture_.emplace(writer_, report_);
            if (!picture_->Open(*description.picture, pictures)) return false;
        }
        if (description.sound && !sounds.empty()) {
            sound_.emplace(writer_, report_);
            if (!sound_->Open(*description.sound, sounds)) return false;
            if (archive && !sounds.front().lossless) {
                report_.Warn(fmt::format("a .{} file takes no lossless sound", format.name));
            }
        }
        if (!picture_ && !sound_) {
            return report_.NotDone(fmt::format("a .{} file has no room for {}", format.name,
                                               description.picture ? "a picture" : "sound"));
        }
        if (description.picture && !picture_) {
            report_.Damaged(
                fmt::format("the picture is left out: a .{} file has no room for it", format.name));
        }
        if (description.sound && !sound_) {
            report_.Damaged(
                fmt::format("the sound is left out: a .{} file has no room for it", format.name));
        }
        return true;
    }

    bool CodeStream() {
        bool anything = false;
        while (true) {
            switch (input_.Next()) {
            case StreamReader::Event::Image:
                if (picture_ && !picture_->Add(input_.Head(), input_.Pixels())) return false;
                anything = anything || picture_;
                break;
            case StreamReader::Event::Samples:
                if (sound_ && !sound_->Add(input_.Samples())) return false;
                anything = anything || sound_;
                break;
            case StreamReader::Event::End:
                return anything || report_.NotDone("there is neither picture nor sound");
            case StreamReader::Event::Failed:
                return false;
            }
        }
    }

    const EncodeOptions& options_;
    Report& report_;
    StreamReader input_;
    MediaWriter writer_;
    std::optional<PictureEncoder> picture_;
    std::optional<SoundEncoder> sound_;
};

} // namespace

int Encode(const EncodeOptions& options) {
    Report report(options.output);
    const OutputFormat* const format = FormatOf(options, report);
    if (format == nullptr) return report.Code();
    if (!options.force && ::access(options.output.c_str(), F_OK) == 0) {
        report.NotDone("it is there already; -f replaces it");
        return report.Code();
    }
    Encoding(options, report).Run(*format);
    return report.Code();
}

} // namespace kelvo::media_tool
