#pragma once
// The results of a command on standard output: text for a person, one JSON document, or one JSON
// object a line. What a command finds out is the same in all three.

#include "tools/kelvotool/report/Console.h"
#include "tools/kelvotool/report/Problem.h"

#include <nlohmann/json.hpp>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo::tool {

struct CommonOptions;

/// Keys in the order in which they were put, so that documents read well and compare well.
using Json = nlohmann::ordered_json;

/// Goes up only when a key that was there goes or changes its meaning.
inline constexpr int kJsonSchema = 1;

enum class ResultFormat : std::uint8_t { Text, Document, Lines };

/// Whether a document holds one result or a list of them ("files").
enum class ResultCount : bool { One, Several };

/// A text as JSON holds it: a byte that is no UTF-8 becomes the replacement character.
std::string JsonText(std::string_view bytes);

/// Puts a name under a key; bytes that are no UTF-8 stand beside it in base64 (key "..._base64").
void PutName(Json& json, const std::string& key, std::string_view name);

/// The start of a result about one file: its schema and its name.
Json ResultFor(std::string_view file);

/// The problems as a document lists them.
Json JsonOf(const std::vector<Problem>& problems);

class Results {
public:
    Results(const CommonOptions& options, ResultCount count);

    ResultFormat Format() const { return format_; }
    bool IsText() const { return format_ == ResultFormat::Text; }
    /// Whether a file of which nothing could be found out has a result, too: in a list, so that
    /// every file that was asked for has its line.
    bool ListsFailures() const {
        return format_ != ResultFormat::Text && count_ == ResultCount::Several;
    }

    /// One result; `text` is what a person reads, with its line ends. Only one of the two is used:
    /// a caller for whom the other is dear may leave it empty.
    void Add(const Json& object, std::string_view text);
    /// Writes what is left. @return `exit_code`, or kNotDone when standard output failed
    [[nodiscard]] int Finish(int exit_code);
    bool Failed() const { return output_.Failed(); }

private:
    ResultFormat format_;
    ResultCount count_;
    bool quiet_;
    bool any_ = false;
    StandardOutput output_;
};

} // namespace kelvo::tool
