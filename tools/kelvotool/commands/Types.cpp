#include "container/codec/CompressionTypes.h"
#include "tools/kelvotool/commands/Commands.h"
#include "tools/kelvotool/options/CommandLine.h"
#include "tools/kelvotool/report/Results.h"

#include <fmt/format.h>

#include <string>

namespace kelvo::tool {

namespace {

std::string KindsOf(const codec::CompressionType& type) {
    std::string kinds;
    if (type.codes_video) kinds = "picture";
    if (type.codes_audio) kinds += kinds.empty() ? "sound" : ", sound";
    return kinds.empty() ? "anything" : kinds;
}

Json JsonOf(const codec::CompressionType& type) {
    return {{"type", type.id},
            {"description", type.description},
            {"picture", type.codes_video},
            {"sound", type.codes_audio},
            {"lossless", type.lossless},
            {"differential", type.differential}};
}

int RunTypes(const CommonOptions& common) {
    Results results(common, ResultCount::One);
    Json list = Json::array();
    std::string text = fmt::format("{:>4}  {:<16} {:<9} {:<12} {}\n", "type", "for", "lossless",
                                   "by itself", "description");
    for (const codec::CompressionType& type : codec::AllCompressionTypes()) {
        list.push_back(JsonOf(type));
        text += fmt::format("{:>4}  {:<16} {:<9} {:<12} {}\n", type.id, KindsOf(type),
                            type.lossless ? "yes" : "no", type.differential ? "key records" : "yes",
                            type.description);
    }
    results.Add(Json{{"schema", kJsonSchema}, {"types", list}}, text);
    return results.Finish(kAllWell);
}

} // namespace

void AddTypes(CommandLine& line) {
    CLI::App& command = line.AddCommand(
        "types", "List the compression types: what each is for and what it keeps", kUsesJson);
    line.WhenChosen(command, [](const CommonOptions& common) { return RunTypes(common); });
}

} // namespace kelvo::tool
