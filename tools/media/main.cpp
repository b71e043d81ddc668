// kelvotool-media: turns foreign films and sound into a stream of pictures and samples and back, so
// that FFmpeg's libraries stay out of kelvotool, which runs it.

#include "tools/media/DamageLog.h"
#include "tools/media/Decoding.h"
#include "tools/media/Encoding.h"
#include "tools/media/ForeignFile.h"
#include "tools/media/Report.h"

#include <CLI/CLI.hpp>

#include <charconv>
#include <exception>
#include <iostream>
#include <map>
#include <new>
#include <string>

namespace kelvo::media_tool {

namespace {

/// "A<separator>B" as two numbers above 0.
bool ReadTwo(const std::string& text, char separator, int& first, int& second) {
    const char* const end = text.data() + text.size();
    const auto [middle, error] = std::from_chars(text.data(), end, first);
    if (error != std::errc{} || middle == end || *middle != separator) return false;
    const auto [last, last_error] = std::from_chars(middle + 1, end, second);
    return last_error == std::errc{} && last == end && first > 0 && second > 0;
}

void AddEncode(CLI::App& app, EncodeOptions& options) {
    static const std::map<std::string, Preset> kPresets{{"archive", Preset::Archive},
                                                        {"share", Preset::Share}};
    CLI::App& command =
        *app.add_subcommand("encode", "Write the stream on standard input as a film or sound");
    command.add_option("OUT", options.output, "the file to write")->required();
    command
        .add_option("--format", options.format,
                    "when the extension of OUT is not to decide: mkv, mp4, webm, flac, gif")
        ->type_name("NAME");
    command
        .add_option_function<std::string>(
            "--preset", [&options](const std::string& name) { options.preset = kPresets.at(name); },
            "archive: nothing is lost; share: small, and plays everywhere")
        ->check(CLI::IsMember({"archive", "share"}).description(""))
        ->type_name("archive|share");
    command.add_flag("-f,--force", options.force, "replace an output that exists");
}

void AddDecode(CLI::App& app, DecodeOptions& options) {
    CLI::App& command =
        *app.add_subcommand("decode", "Write a film or sound as a stream to standard output");
    command.add_option("IN", options.input, "any file that FFmpeg's libraries read")->required();
    command
        .add_option_function<std::string>(
            "--size",
            [&options](const std::string& text) {
                if (!ReadTwo(text, 'x', options.picture.width, options.picture.height)) {
                    throw CLI::ValidationError("--size takes WxH");
                }
            },
            "of the images; the file's own if not given")
        ->type_name("WxH");
    command
        .add_option_function<std::string>(
            "--fps",
            [&options](const std::string& text) {
                AVRational rate{0, 1};
                const bool is_fraction = text.find('/') != std::string::npos;
                if (!ReadTwo(is_fraction ? text : text + "/1", '/', rate.num, rate.den)) {
                    throw CLI::ValidationError("--fps takes N or N/D");
                }
                options.picture.rate = rate;
            },
            "images a second, at even times; the file's own times if not given")
        ->type_name("N[/D]");
    command.add_option("--sample-rate", options.sound.sample_rate, "samples a second")
        ->type_name("HZ")
        ->check(CLI::Range(1, 768'000));
    command.add_option("--channels", options.sound.channels, "of the sound")
        ->type_name("N")
        ->check(CLI::Range(1, static_cast<int>(media_stream::kMostChannels)));
    command
        .add_option_function<std::string>(
            "--track",
            [&options](const std::string& name) {
                options.wants_picture = name == "video";
                options.wants_sound = name == "audio";
            },
            "only the sound (audio) or the picture (video)")
        ->check(CLI::IsMember({"audio", "video"}).description(""))
        ->type_name("audio|video");
}

int Run(int argc, char** argv) {
    CLI::App app("Reads and writes foreign films for kelvotool.", "kelvotool-media");
    app.set_version_flag("-V,--version", "kelvotool-media " KELVO_VERSION);
    app.require_subcommand(1);
    EncodeOptions encode;
    DecodeOptions decode;
    AddEncode(app, encode);
    AddDecode(app, decode);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() == 0) {
            app.exit(error);
            return std::cout.flush() ? kAllWell : kNotDone;
        }
        SayLine(std::string(error.what()) + "; see kelvotool-media --help");
        return kNotDone;
    }
    KeepLog();
    return app.got_subcommand("encode") ? Encode(encode) : Decode(decode);
}

} // namespace

} // namespace kelvo::media_tool

int main(int argc, char** argv) {
    using namespace kelvo::media_tool;
    try {
        CatchStopSignals();
        LimitMemory();
        return Run(argc, argv);
    } catch (const std::bad_alloc&) {
        SayLine("there is not enough memory");
    } catch (const std::exception& error) {
        SayLine(error.what());
    }
    return kNotDone;
}
