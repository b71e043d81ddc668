// The command line of kelvotool: what a person types, and what it means.

#include "tools/kelvotool/Commands.h"
#include "tools/kelvotool/Console.h"
#include "tools/kelvotool/StopSignal.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <exception>
#include <functional>
#include <limits>
#include <map>
#include <string>

namespace kelvo::tool {

namespace {

/// Options of all commands, and the one that was chosen.
struct Request {
    bool show_boxes = false;
    InfoOptions info;
    FramesOptions frames;
    VerifyOptions verify;
    RebuildOptions rebuild;
    ConvertOptions convert;
    std::function<int()> run;
};

void AddInfo(CLI::App& app, Request& request) {
    CLI::App* const command =
        app.add_subcommand("info", "Show the headers, tracks and sizes of a file");
    command->add_option("FILE", request.info.file, "a .kva, .kvf or .kaf file")->required();
    command->add_flag("--json", request.info.json, "as one JSON document");
    command->callback([&request] { request.run = [&] { return RunInfo(request.info); }; });
}

void AddFrames(CLI::App& app, Request& request) {
    static const std::map<std::string, TrackKind> kKinds{{"audio", TrackKind::Audio},
                                                         {"video", TrackKind::Video}};
    FramesOptions& options = request.frames;
    CLI::App* const command =
        app.add_subcommand("frames", "Decode every record of a track: its hash, or its bytes");
    command->add_option("FILE", options.file, "a .kva, .kvf or .kaf file")->required();
    command
        ->add_option_function<std::string>(
            "--track", [&options](const std::string& name) { options.track = kKinds.at(name); },
            "audio or video; needed where the file has both")
        ->check(CLI::IsMember({"audio", "video"}))
        ->type_name("KIND");
    command->add_flag("--json", options.json, "as one JSON document");
    command->add_option("--raw", options.raw, "write the decoded bytes, one record after another")
        ->type_name("OUT");
    command->add_flag("-f,--force", options.force, "replace OUT when it exists");
    command->callback([&request] { request.run = [&] { return RunFrames(request.frames); }; });
}

void AddVerify(CLI::App& app, Request& request) {
    CLI::App* const command = app.add_subcommand(
        "verify", "Read everything, in order and by number; 0 sound, 1 damaged, 2 unreadable");
    command->add_option("FILE", request.verify.files, "files to read")->required();
    command->callback([&request] { request.run = [&] { return RunVerify(request.verify); }; });
}

void AddRebuild(CLI::App& app, Request& request) {
    CLI::App* const command =
        app.add_subcommand("rebuild", "Make the index of a file anew from its records");
    command->add_option("FILE", request.rebuild.file, "the file, which is replaced at the end")
        ->required();
    command->callback([&request] { request.run = [&] { return RunRebuild(request.rebuild); }; });
}

void AddConvert(CLI::App& app, Request& request) {
    ConvertOptions& options = request.convert;
    CLI::App* const command =
        app.add_subcommand("convert", "Write the same film or track in another type");
    command->add_option("IN", options.input, "a .kva, .kvf or .kaf file")->required();
    command->add_option("OUT", options.output, "the new file")->required();
    auto* const type =
        command->add_option("--type", options.type, "of the picture, or of the only track")
            ->type_name("N");
    auto* const audio_type =
        command->add_option("--audio-type", options.audio_type, "of the sound")->type_name("N");
    auto* const key_interval =
        command
            ->add_option("--key-interval", options.key_interval,
                         "records from key record to key record, for types 7 and 8")
            ->type_name("K")
            ->check(CLI::Range(std::uint32_t{1}, std::numeric_limits<std::uint32_t>::max()));
    command->add_flag("-f,--force", options.force, "replace OUT when it exists");
    command->callback([&request, type, audio_type, key_interval] {
        if (type->empty() && audio_type->empty() && key_interval->empty()) {
            throw CLI::RequiredError("--type");
        }
        request.run = [&] { return RunConvert(request.convert); };
    });
}

/// Wrong use is said in one line, help on standard output.
int SayWhyNot(const CLI::App& app, const CLI::ParseError& error) {
    if (error.get_exit_code() == 0) {
        StandardOutput output;
        const bool is_help = dynamic_cast<const CLI::CallForHelp*>(&error) != nullptr ||
                             dynamic_cast<const CLI::CallForAllHelp*>(&error) != nullptr;
        output.Write(is_help ? app.help() : std::string(error.what()) + "\n");
        return output.Finish(kAllWell);
    }
    // An unknown command is found to be missing before it is found to be unknown.
    const bool has_command = !app.get_subcommands().empty();
    std::string what = error.what();
    if (const auto rest = app.remaining(); !has_command && !rest.empty()) {
        what = (rest.front().starts_with('-') ? "there is no option " : "there is no command ") +
               rest.front();
    }
    SayError(Printable(what) + "; see kelvotool --help");
    return kNotDone;
}

int Main(int argc, char** argv) {
    CatchStopSignals();
    Request request;
    CLI::App app("Inspects, proves, mends and converts films and sound tracks.", "kelvotool");
    app.set_version_flag("-V,--version", "kelvotool " KELVO_VERSION);
    app.add_flag("-v,--verbose", request.show_boxes, "show the boxes that a player would show");
    app.require_subcommand(1);
    app.fallthrough();
    AddInfo(app, request);
    AddFrames(app, request);
    AddVerify(app, request);
    AddRebuild(app, request);
    AddConvert(app, request);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return SayWhyNot(app, error);
    }
    InstallConsole(request.show_boxes ? Boxes::Shown : Boxes::Hidden);
    return request.run();
}

} // namespace

} // namespace kelvo::tool

int main(int argc, char** argv) {
    try {
        return kelvo::tool::Main(argc, argv);
    } catch (const std::exception& error) {
        kelvo::tool::SayError(error.what());
    } catch (...) { // the classes' way of saying that memory ran out
        kelvo::tool::SayError("there is not enough memory");
    }
    return kelvo::tool::kNotDone;
}
