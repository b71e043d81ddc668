// A film or track of what other programs wrote.

#include "tools/kelvotool/commands/Commands.h"
#include "tools/kelvotool/importing/FilmImport.h"
#include "tools/kelvotool/options/CommandLine.h"

#include <charconv>
#include <limits>
#include <memory>
#include <optional>
#include <string>

namespace kelvo::tool {

namespace {

constexpr std::uint32_t kFastest = 32767;

/// "320x240"; nothing for anything else.
std::optional<ImageSize> ReadSize(const std::string& text) {
    ImageSize size;
    const char* const end = text.data() + text.size();
    const auto width = std::from_chars(text.data(), end, size.width);
    if (width.ec != std::errc{} || width.ptr == end || *width.ptr != 'x') return std::nullopt;
    const auto height = std::from_chars(width.ptr + 1, end, size.height);
    const bool fits = size.width > 0 && size.height > 0 && size.width <= kLargestImageSide &&
                      size.height <= kLargestImageSide;
    if (height.ec != std::errc{} || height.ptr != end || !fits) return std::nullopt;
    return size;
}

void AddPictureOptions(CLI::App& command, ImportOptions& options) {
    command.add_option("--fps", options.fps, "images a second; the source's own, or 25")
        ->check(CLI::Range(1U, kFastest))
        ->type_name("N");
    command
        .add_option_function<std::string>(
            "--size",
            [&options](const std::string& text) {
                options.size = ReadSize(text);
                if (!options.size) {
                    throw CLI::ValidationError("--size", "\"" + text + "\" is no size as 320x240");
                }
            },
            "every image in this size")
        ->type_name("WxH");
    command.add_option("--bits", options.bits, "a pixel: 16 (5-5-5), or 24")
        ->check(CLI::IsMember({16, 24}).description(""))
        ->type_name("16|24");
    command.add_option("--type", options.type, "of the picture; 8, or 17 for 24-bit pixels")
        ->type_name("N");
    command
        .add_option("--key-interval", options.key_interval,
                    "images from key record to key record, for types 7 and 8; two seconds")
        ->check(CLI::Range(std::uint32_t{1}, std::numeric_limits<std::uint32_t>::max()))
        ->type_name("K");
    command.add_flag_callback(
        "--dither", [&options] { options.dither = Dither::Ordered; },
        "spread what 5 bits a channel lose over neighbouring pixels");
}

void AddSoundOptions(CLI::App& command, ImportOptions& options) {
    command.add_option("--sound", options.sound, "the film's sound, where IN has none")
        ->type_name("FILE");
    command
        .add_option("--audio-type", options.audio_type,
                    "of the sound; 16, or 17 for 16-bit samples; 69 is the Vorbis form")
        ->type_name("N");
    command
        .add_option("--audio-frames", options.audio_frames,
                    "a second; the most that the rates allow")
        ->check(CLI::IsMember({1, 5, 10}).description(""))
        ->type_name("1|5|10");
    command.add_option("--audio-bits", options.audio_bits, "a sample; as the source has it")
        ->check(CLI::IsMember({8, 16}).description(""))
        ->type_name("8|16");
    command.add_flag("--link", options.link,
                     "insist that the picture is tied to the sound, which is done where the rates "
                     "allow it");
}

} // namespace

void AddImport(CommandLine& line) {
    CLI::App& command = line.AddCommand(
        "import",
        "Make a film of pictures and sound: BMP and PNG series, .y4m, .wav, and what "
        "FFmpeg reads",
        kUsesJson | kUsesForce);
    const auto options = std::make_shared<ImportOptions>();
    command
        .add_option("IN", options->input,
                    "the file; of pictures a folder or a name such as frames-%06d.png")
        ->required();
    command.add_option("OUT", options->output, "the film (.kva) or track (.kvf, .kaf)")->required();
    AddPictureOptions(command, *options);
    AddSoundOptions(command, *options);
    line.WhenChosen(command, [options](const CommonOptions& common) {
        SetTask("import " + options->input);
        return FilmImport(*options, common).Run();
    });
}

} // namespace kelvo::tool
