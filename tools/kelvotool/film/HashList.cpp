#include "tools/kelvotool/film/HashList.h"

#include "framework/base/ChFile.h"
#include "tools/kelvotool/film/Sha256.h"
#include "tools/kelvotool/report/StopSignal.h"

#include <fmt/format.h>

#include <algorithm>
#include <fstream>
#include <vector>

namespace kelvo::tool {

namespace {

constexpr std::size_t kHexDigits = 2 * Sha256::kBytes;
constexpr std::size_t kChunkBytes = std::size_t{1024} * 1024;

std::string Escaped(std::string_view name) {
    std::string escaped;
    for (const char letter : name) {
        if (letter == '\n') {
            escaped += "\\n";
        } else if (letter == '\\') {
            escaped += "\\\\";
        } else {
            escaped += letter;
        }
    }
    return escaped;
}

std::string Unescaped(std::string_view text) {
    std::string name;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\\' || i + 1 == text.size()) {
            name += text[i];
            continue;
        }
        ++i;
        name += text[i] == 'n' ? '\n' : text[i];
    }
    return name;
}

bool IsHex(std::string_view text) {
    return std::ranges::all_of(text, [](char digit) {
        return (digit >= '0' && digit <= '9') || (digit >= 'a' && digit <= 'f');
    });
}

} // namespace

bool HashList::Read(const std::string& name, Reporter& reporter) {
    std::ifstream file(name, std::ios::binary);
    std::string line;
    for (std::uint32_t number = 1; std::getline(file, line); ++number) {
        if (line.empty()) continue;
        const std::string_view text = line;
        const std::size_t space = text.find(' ', std::min(text.size(), kHexDigits + 1));
        const bool sound = space != std::string_view::npos && text[kHexDigits] == ' ' &&
                           IsHex(text.substr(0, kHexDigits)) && space + 1 < text.size();
        if (!sound) {
            reporter.NotDone(fmt::format("line {} is no hash of a film", number),
                             ProblemCode::InputUnreadable);
            return false;
        }
        Put(text.substr(kHexDigits + 1, space - kHexDigits - 1), Unescaped(text.substr(space + 1)),
            std::string(text.substr(0, kHexDigits)));
    }
    if (file.eof()) return true;
    reporter.NotDone("it cannot be read", ProblemCode::InputUnreadable);
    return false;
}

std::string HashList::Text() const {
    std::string text;
    for (const auto& [key, hex] : hashes_)
        text += fmt::format("{} {} {}\n", hex, key.second, Escaped(key.first));
    return text;
}

void HashList::Put(std::string_view what, const std::string& name, std::string hex) {
    hashes_[{name, std::string(what)}] = std::move(hex);
}

const std::string* HashList::Find(std::string_view what, const std::string& name) const {
    const auto found = hashes_.find({name, std::string(what)});
    return found == hashes_.end() ? nullptr : &found->second;
}

std::optional<std::string> HashOfFile(const std::string& name) {
    ChFile file;
    if (!file.OpenReadOnly(CString(std::string_view{name}))) return std::nullopt;
    std::vector<std::uint8_t> chunk(kChunkBytes);
    Sha256 sha256;
    sha256.Start();
    while (!StopRequested()) {
        const std::size_t count = file.ReadSome(chunk);
        if (file.ReadFailed()) return std::nullopt;
        if (count == 0) {
            std::string hex;
            AppendHex(hex, sha256.End());
            return hex;
        }
        sha256.Add(ByteView{chunk}.first(count));
    }
    return std::nullopt;
}

} // namespace kelvo::tool
