#include "tools/resource_compiler/ScriptTokens.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>

namespace kelvo::resource_compiler {

namespace {

constexpr int kDeepestInclude = 16;
constexpr int kDeepestConstant = 32;
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view kSigns = ",|+-&~(){}*";

bool IsWordStart(char letter) {
    return std::isalpha(static_cast<unsigned char>(letter)) != 0 || letter == '_';
}
bool IsWordPart(char letter) {
    return IsWordStart(letter) || std::isdigit(static_cast<unsigned char>(letter)) != 0;
}

void AppendUtf8(std::string& text, std::uint32_t code) {
    if (code < 0x80) {
        text += static_cast<char>(code);
    } else {
        text += static_cast<char>(0xC0U | (code >> 6U));
        text += static_cast<char>(0x80U | (code & 0x3FU));
    }
}

class TokenReader {
public:
    explicit TokenReader(const ScriptOptions& options) : options_(options) {
        Define("RC_INVOKED", "1");
        for (const auto& [name, value] : options.constants) {
            Define(name, value);
        }
    }

    Script ReadAll(const std::string& file) {
        ReadFile(file, 0);
        Token end;
        end.place = here_;
        script_.tokens.push_back(end);
        return std::move(script_);
    }

private:
    void Fail(const std::string& message) {
        if (!script_.error) script_.error = ScriptError{here_, message};
    }
    bool Failed() const { return script_.error.has_value(); }

    void Define(const std::string& name, const std::string& value) {
        constants_[name] = TokensOf(value);
    }

    void ReadFile(const std::string& file, int depth) {
        const Place includer = here_;
        const auto source = ReadWholeFile(file);
        if (!source) {
            if (depth == 0) here_ = {file, 0};
            Fail(depth == 0 ? "cannot be read" : "cannot read " + file);
            return;
        }
        script_.files.push_back(file);
        const std::size_t outer_conditions = conditions_.size();
        std::string_view rest = *source;
        if (rest.starts_with(kByteOrderMark)) rest.remove_prefix(kByteOrderMark.size());
        here_ = {file, 0};
        in_comment_ = false;
        while (!rest.empty() && !Failed()) {
            const std::size_t end = rest.find('\n');
            ReadLine(rest.substr(0, end), depth);
            rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
        }
        if (in_comment_) Fail("a comment is not closed");
        if (conditions_.size() != outer_conditions) Fail("#endif is missing");
        // The script's own last line is where its end is found too early.
        if (depth > 0 && !Failed()) here_ = includer;
    }

    void ReadLine(std::string_view line, int depth) {
        ++here_.line;
        const std::string code = WithoutComments(line);
        const std::size_t start = code.find_first_not_of(" \t\r");
        if (start == std::string::npos) return;
        if (code[start] == '#') {
            ReadDirective(std::string_view{code}.substr(start + 1), depth);
            return;
        }
        if (!Skipping()) Append(TokensOf(code), 0);
    }

    // A comment becomes a blank; a text may hold what looks like one.
    std::string WithoutComments(std::string_view line) {
        std::string code;
        bool in_text = false;
        for (std::size_t i = 0; i < line.size(); ++i) {
            const std::string_view two = line.substr(i, 2);
            if (in_comment_) {
                if (two == "*/") {
                    in_comment_ = false;
                    ++i;
                }
            } else if (in_text) {
                code += line[i];
                if (line[i] == '\\' && i + 1 < line.size()) {
                    code += line[++i];
                } else if (line[i] == '"') {
                    in_text = false;
                }
            } else if (two == "//") {
                break;
            } else if (two == "/*") {
                in_comment_ = true;
                code += ' ';
                ++i;
            } else {
                in_text = line[i] == '"';
                code += line[i];
            }
        }
        return code;
    }

    bool Skipping() const {
        for (const bool taken : conditions_) {
            if (!taken) return true;
        }
        return false;
    }

    void ReadDirective(std::string_view text, int depth) {
        const std::string directive = TakeWord(text);
        if (directive == "ifdef" || directive == "ifndef") {
            const bool defined = constants_.contains(TakeWord(text));
            conditions_.push_back(defined == (directive == "ifdef"));
        } else if (directive == "else" || directive == "endif") {
            if (conditions_.empty()) return Fail('#' + directive + " without #ifdef");
            const bool taken = conditions_.back();
            conditions_.pop_back();
            if (directive == "else") conditions_.push_back(!taken);
        } else if (Skipping() || directive == "pragma") {
            return; // a script is UTF-8, whatever code page it names
        } else if (directive == "define") {
            const std::string name = TakeWord(text);
            if (name.empty()) return Fail("#define without a name");
            if (text.starts_with('(')) return Fail("#define with arguments is not known here");
            constants_[name] = TokensOf(text);
        } else if (directive == "undef") {
            constants_.erase(TakeWord(text));
        } else if (directive == "include") {
            Include(text, depth);
        } else {
            Fail("unknown directive #" + directive);
        }
    }

    static std::string TakeWord(std::string_view& text) {
        while (!text.empty() && std::isspace(static_cast<unsigned char>(text.front())) != 0) {
            text.remove_prefix(1);
        }
        std::size_t length = 0;
        while (length < text.size() && IsWordPart(text[length])) {
            ++length;
        }
        const std::string word{text.substr(0, length)};
        text.remove_prefix(length);
        return word;
    }

    void Include(std::string_view text, int depth) {
        const std::size_t first = text.find('"');
        const std::size_t last = text.rfind('"');
        if (first == std::string_view::npos || last == first) {
            return Fail("#include wants a file name in quotes");
        }
        if (depth == kDeepestInclude) return Fail("#include goes too deep");
        const std::string name{text.substr(first + 1, last - first - 1)};
        ReadFile(FindInclude(name), depth + 1);
    }

    std::string FindInclude(const std::string& name) const {
        const std::filesystem::path beside = std::filesystem::path{here_.file}.parent_path() / name;
        if (std::filesystem::exists(beside)) return beside.string();
        for (const std::string& folder : options_.include_folders) {
            const std::filesystem::path there = std::filesystem::path{folder} / name;
            if (std::filesystem::exists(there)) return there.string();
        }
        return beside.string();
    }

    // Puts constants in; a constant may name others.
    void Append(const std::vector<Token>& tokens, int depth) {
        for (const Token& token : tokens) {
            const auto constant =
                token.kind == TokenKind::Word ? constants_.find(token.text) : constants_.end();
            if (constant == constants_.end()) {
                script_.tokens.push_back(token);
                script_.tokens.back().place = here_;
            } else if (depth == kDeepestConstant) {
                Fail("constant " + token.text + " means itself");
            } else {
                Append(constant->second, depth + 1);
            }
        }
    }

    std::vector<Token> TokensOf(std::string_view code) {
        std::vector<Token> tokens;
        while (!code.empty() && !Failed()) {
            const char first = code.front();
            if (std::isspace(static_cast<unsigned char>(first)) != 0) {
                code.remove_prefix(1);
                continue;
            }
            Token token;
            token.place = here_;
            if (first == '"' || code.starts_with("L\"")) {
                ReadText(code, token);
            } else if (std::isdigit(static_cast<unsigned char>(first)) != 0) {
                ReadNumber(code, token);
            } else if (IsWordStart(first)) {
                token.kind = TokenKind::Word;
                token.text = TakeWord(code);
            } else if (kSigns.find(first) != std::string_view::npos) {
                token.kind = TokenKind::Sign;
                token.text = first;
                code.remove_prefix(1);
            } else {
                Fail(std::string{"unexpected character "} + first);
            }
            tokens.push_back(token);
        }
        return tokens;
    }

    void ReadNumber(std::string_view& code, Token& token) {
        token.kind = TokenKind::Number;
        token.text = TakeWord(code);
        std::string digits = token.text;
        while (!digits.empty() &&
               std::string_view{"lLuU"}.find(digits.back()) != std::string::npos) {
            token.wide = token.wide || digits.back() == 'l' || digits.back() == 'L';
            digits.pop_back();
        }
        const bool is_hex = digits.starts_with("0x") || digits.starts_with("0X");
        const std::uint64_t base = is_hex ? 16 : digits.size() > 1 && digits[0] == '0' ? 8 : 10;
        std::uint64_t value = 0;
        bool whole = digits.size() > (is_hex ? 2U : 0U);
        for (const char digit : digits.substr(is_hex ? 2 : 0)) {
            const int worth = DigitWorth(digit);
            whole = whole && worth >= 0 && static_cast<std::uint64_t>(worth) < base;
            value = value * base + static_cast<std::uint64_t>(worth);
            if (!whole || value > 0xFFFFFFFFU) return Fail("bad number " + token.text);
        }
        if (!whole) return Fail("bad number " + token.text);
        token.number = static_cast<std::uint32_t>(value);
    }

    static int DigitWorth(char digit) {
        if (digit >= '0' && digit <= '9') return digit - '0';
        const char lower = static_cast<char>(digit | 0x20);
        return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
    }

    void ReadText(std::string_view& code, Token& token) {
        token.kind = TokenKind::Text;
        token.wide = code.front() == 'L';
        code.remove_prefix(token.wide ? 2 : 1);
        while (!code.empty()) {
            if (code.starts_with("\"\"")) {
                token.text += '"';
                token.raw += '"';
                code.remove_prefix(2);
            } else if (code.front() == '"') {
                code.remove_prefix(1);
                return;
            } else if (code.front() == '\\' && code.size() > 1) {
                const std::size_t length = ReadEscape(code, token.text);
                token.raw += code.substr(0, length);
                code.remove_prefix(length);
            } else {
                token.text += code.front();
                token.raw += code.front();
                code.remove_prefix(1);
            }
        }
        Fail("a text is not closed in its line");
    }

    // @return the length of the escape at the start of `code`.
    std::size_t ReadEscape(std::string_view code, std::string& text) {
        switch (code[1]) {
        case 'n':
            text += '\n';
            return 2;
        case 'r':
            text += '\r';
            return 2;
        case 't':
            text += '\t';
            return 2;
        case 'a':
            text += '\b';
            return 2; // in a menu: what follows stands at the right edge
        case '\\':
        case '"':
            text += code[1];
            return 2;
        default:
            break;
        }
        const bool is_hex = code[1] == 'x' || code[1] == 'X';
        const int base = is_hex ? 16 : 8;
        std::uint32_t value = 0;
        const std::size_t start = is_hex ? 2 : 1;
        std::size_t length = start;
        while (length < code.size() && length < start + (is_hex ? 2U : 3U)) {
            const int worth = DigitWorth(code[length]);
            if (worth < 0 || worth >= base) break;
            value = value * static_cast<std::uint32_t>(base) + static_cast<std::uint32_t>(worth);
            ++length;
        }
        if (length == start) Fail("unknown escape in a text");
        AppendUtf8(text, value & 0xFFU);
        return std::max<std::size_t>(length, 2);
    }

    const ScriptOptions& options_;
    Script script_;
    Place here_;
    std::map<std::string, std::vector<Token>> constants_;
    std::vector<bool> conditions_; ///< which branches are taken, the outermost first
    bool in_comment_ = false;
};

} // namespace

Script ReadScript(const std::string& file, const ScriptOptions& options) {
    return TokenReader{options}.ReadAll(file);
}

std::optional<std::string> ReadWholeFile(const std::string& file) {
    std::ifstream stream{file, std::ios::binary};
    if (!stream || !std::filesystem::is_regular_file(file)) return std::nullopt;
    std::string bytes{std::istreambuf_iterator<char>{stream}, {}};
    if (stream.bad()) return std::nullopt;
    return bytes;
}

} // namespace kelvo::resource_compiler
