#include "tools/kelvotool/report/Results.h"

#include "tools/kelvotool/options/CommonOptions.h"

#include <openssl/evp.h>

namespace kelvo::tool {

namespace {

constexpr int kIndent = 2;

std::string Dump(const Json& json, int indent) {
    return json.dump(indent, ' ', false, Json::error_handler_t::replace);
}

std::string Base64(std::string_view bytes) {
    std::string text(4 * ((bytes.size() + 2) / 3) + 1, '\0');
    const int length = EVP_EncodeBlock(reinterpret_cast<unsigned char*>(text.data()),
                                       reinterpret_cast<const unsigned char*>(bytes.data()),
                                       static_cast<int>(bytes.size()));
    text.resize(static_cast<std::size_t>(length));
    return text;
}

} // namespace

std::string JsonText(std::string_view bytes) {
    // Through the document's own rule, so that every place replaces the same bytes.
    const std::string quoted = Dump(Json(std::string(bytes)), -1);
    return Json::parse(quoted).get<std::string>();
}

void PutName(Json& json, const std::string& key, std::string_view name) {
    json[key] = JsonText(name);
    if (json[key] != std::string(name)) json[key + "_base64"] = Base64(name);
}

Json ResultFor(std::string_view file) {
    Json json{{"schema", kJsonSchema}};
    PutName(json, "file", file);
    return json;
}

Json JsonOf(const std::vector<Problem>& problems) {
    Json list = Json::array();
    for (const Problem& problem : problems)
        list.push_back(JsonOf(problem));
    return list;
}

Results::Results(const CommonOptions& options, ResultCount count)
    : format_(options.format), count_(count), quiet_(options.quiet) {}

void Results::Add(const Json& object, std::string_view text) {
    switch (format_) {
    case ResultFormat::Text:
        if (!quiet_) output_.Write(text);
        break;
    case ResultFormat::Lines:
        output_.Write(Dump(object, -1) + "\n");
        output_.Flush();
        break;
    case ResultFormat::Document:
        if (count_ == ResultCount::One) {
            output_.Write(Dump(object, kIndent) + "\n");
        } else {
            output_.Write(any_ ? ",\n" : "{\"schema\": 1, \"files\": [\n");
            output_.Write(Dump(object, kIndent));
        }
        break;
    }
    any_ = true;
}

int Results::Finish(int exit_code) {
    if (format_ == ResultFormat::Document && count_ == ResultCount::Several) {
        output_.Write(any_ ? "\n]}\n" : "{\"schema\": 1, \"files\": []}\n");
    }
    return output_.Finish(exit_code);
}

} // namespace kelvo::tool
