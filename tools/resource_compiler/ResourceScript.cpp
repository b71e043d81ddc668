#include "tools/resource_compiler/ResourceScript.h"

#include "tools/resource_compiler/DialogTemplate.h"
#include "tools/resource_compiler/MenuTemplate.h"
#include "tools/resource_compiler/PictureFiles.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <map>
#include <span>
#include <string_view>
#include <tuple>
#include <utility>

namespace kelvo::resource_compiler {

namespace {

constexpr std::uint16_t kCursorType = 1;
constexpr std::uint16_t kBitmapType = 2;
constexpr std::uint16_t kIconType = 3;
constexpr std::uint16_t kMenuType = 4;
constexpr std::uint16_t kDialogType = 5;
constexpr std::uint16_t kStringType = 6;
constexpr std::uint16_t kAcceleratorType = 9;
constexpr std::uint16_t kRawDataType = 10;
constexpr std::uint16_t kGroupCursorType = 12;
constexpr std::uint16_t kGroupIconType = 14;
constexpr std::size_t kBlockTexts = 16;

// Where a resource once lay in memory; nothing looks at it today.
constexpr std::string_view kMemoryWords[] = {"PRELOAD", "LOADONCALL", "FIXED",      "MOVEABLE",
                                             "PURE",    "IMPURE",     "DISCARDABLE"};
constexpr std::string_view kUnknownTypes[] = {"MENUEX", "VERSIONINFO", "FONT", "MESSAGETABLE"};

std::span<const std::uint8_t> BytesOf(const std::string& text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

class ScriptCompiler {
public:
    ScriptCompiler(const Script& script, const ScriptOptions& options)
        : options_(options), cursor_(script) {
        result_.files = script.files;
    }

    CompiledScript Compile() {
        while (!cursor_.AtEnd()) {
            CompileStatement();
        }
        AddStringBlocks();
        result_.error = cursor_.Failure();
        return std::move(result_);
    }

private:
    void CompileStatement() {
        if (cursor_.AcceptWord("LANGUAGE")) {
            language_ = ParseLanguage(cursor_);
        } else if (cursor_.AcceptWord("STRINGTABLE")) {
            SkipMemoryWords();
            const std::uint16_t language = ParseOptionalStatements();
            ParseStringTable(cursor_, strings_[language]);
        } else {
            statement_place_ = cursor_.Peek().place;
            const NumberOrText name = ParseName();
            CompileResource(name);
        }
    }

    // A word, a text or a number; a constant has become its number already.
    NumberOrText ParseName() {
        const Token token = cursor_.Peek();
        if (token.kind == TokenKind::Word || token.kind == TokenKind::Text) {
            if (token.text.empty()) cursor_.Fail("a name may not be empty");
            return cursor_.Take().text;
        }
        return cursor_.ExpectWord();
    }

    void CompileResource(const NumberOrText& name) {
        if (cursor_.AcceptWord("MENU")) {
            CompileBlock(kMenuType, name, ParseMenu);
        } else if (cursor_.AcceptWord("DIALOG")) {
            CompileDialog(name, Extended::No);
        } else if (cursor_.AcceptWord("DIALOGEX")) {
            CompileDialog(name, Extended::Yes);
        } else if (cursor_.AcceptWord("ACCELERATORS")) {
            CompileBlock(kAcceleratorType, name, ParseAccelerators);
        } else if (cursor_.AcceptWord("BITMAP")) {
            CompileBitmap(name);
        } else if (cursor_.AcceptWord("ICON")) {
            CompilePictures(name, PictureKind::Icon);
        } else if (cursor_.AcceptWord("CURSOR")) {
            CompilePictures(name, PictureKind::Cursor);
        } else if (cursor_.AcceptWord("RCDATA")) {
            CompileData(kRawDataType, name);
        } else {
            for (const std::string_view unknown : kUnknownTypes) {
                if (cursor_.AcceptWord(unknown)) {
                    cursor_.Fail(std::string{unknown} + " is not known here");
                }
            }
            CompileData(ParseName(), name); // a type of the program's own
        }
    }

    void SkipMemoryWords() {
        for (bool found = true; found;) {
            found = std::ranges::any_of(
                kMemoryWords, [&](std::string_view word) { return cursor_.AcceptWord(word); });
        }
    }

    // @return the language of the resource.
    std::uint16_t ParseOptionalStatements() {
        std::uint16_t language = language_;
        for (;;) {
            if (cursor_.AcceptWord("LANGUAGE")) {
                language = ParseLanguage(cursor_);
            } else if (cursor_.AcceptWord("CHARACTERISTICS") || cursor_.AcceptWord("VERSION")) {
                cursor_.ExpectNumber();
            } else {
                return language;
            }
        }
    }

    void CompileBlock(std::uint16_t type, const NumberOrText& name,
                      std::vector<std::uint8_t> (*parse)(TokenCursor&)) {
        SkipMemoryWords();
        const std::uint16_t language = ParseOptionalStatements();
        Add(type, name, language, parse(cursor_));
    }

    void CompileDialog(const NumberOrText& name, Extended extended) {
        SkipMemoryWords();
        ParsedDialog dialog = ParseDialog(cursor_, extended);
        Add(kDialogType, name, dialog.language.value_or(language_), std::move(dialog.bytes));
    }

    void CompileBitmap(const NumberOrText& name) {
        const auto file = ReadNamedFile();
        if (!file) return;
        std::string problem;
        auto packed = PackedBitmapFrom(BytesOf(*file), problem);
        if (!packed) return FailWith(problem);
        Add(kBitmapType, name, language_, std::move(*packed));
    }

    void CompilePictures(const NumberOrText& name, PictureKind kind) {
        const auto file = ReadNamedFile();
        if (!file) return;
        const bool is_icon = kind == PictureKind::Icon;
        std::uint16_t& next_id = is_icon ? next_icon_ : next_cursor_;
        std::string problem;
        auto pictures = PictureGroupFrom(BytesOf(*file), kind, next_id, problem);
        if (!pictures) return FailWith(problem);
        for (auto& image : pictures->images) {
            Add(is_icon ? kIconType : kCursorType, next_id++, language_, std::move(image));
        }
        Add(is_icon ? kGroupIconType : kGroupCursorType, name, language_,
            std::move(pictures->group));
    }

    void CompileData(const NumberOrText& type, const NumberOrText& name) {
        SkipMemoryWords();
        if (cursor_.Peek().kind == TokenKind::Text) {
            const auto file = ReadNamedFile();
            if (!file) return;
            const auto bytes = BytesOf(*file);
            Add(type, name, language_, {bytes.begin(), bytes.end()});
            return;
        }
        const std::uint16_t language = ParseOptionalStatements();
        Add(type, name, language, ParseRawData(cursor_));
    }

    // Searched like an include. A file name keeps its bytes; `\` and `\\` in it mean `/`.
    std::optional<std::string> ReadNamedFile() {
        SkipMemoryWords();
        const Token token = cursor_.Peek();
        statement_place_ = token.place;
        std::ignore = cursor_.ExpectText();
        if (cursor_.Failure()) return std::nullopt;
        file_name_ = token.raw;
        for (std::size_t at = 0; (at = file_name_.find('\\', at)) != std::string::npos; ++at) {
            file_name_.replace(at, file_name_.compare(at, 2, "\\\\") == 0 ? 2 : 1, "/");
        }
        std::vector<std::filesystem::path> folders = {
            std::filesystem::path{token.place.file}.parent_path()};
        folders.insert(folders.end(), options_.include_folders.begin(),
                       options_.include_folders.end());
        for (const std::filesystem::path& folder : folders) {
            const std::string path = (folder / file_name_).string();
            if (auto bytes = ReadWholeFile(path)) {
                result_.files.push_back(path);
                return bytes;
            }
        }
        FailWith("it cannot be read");
        return std::nullopt;
    }

    void FailWith(const std::string& problem) {
        cursor_.FailAt(statement_place_, "\"" + file_name_ + "\": " + problem);
    }

    void Add(const NumberOrText& type, const NumberOrText& name, std::uint16_t language,
             std::vector<std::uint8_t> data) {
        if (cursor_.Failure()) return;
        for (const CompiledResource& other : result_.resources) {
            if (other.language == language && Same(other.type, type) && Same(other.name, name)) {
                cursor_.FailAt(statement_place_, "there is such a resource already");
                return;
            }
        }
        result_.resources.push_back({type, name, language, std::move(data)});
    }

    static bool Same(const NumberOrText& a, const NumberOrText& b) {
        if (a.index() != b.index()) return false;
        if (std::holds_alternative<std::uint16_t>(a)) return a == b;
        return SameWord(std::get<std::string>(a), std::get<std::string>(b));
    }

    void AddStringBlocks() {
        for (const auto& [language, texts] : strings_) {
            std::map<std::uint16_t, std::array<std::string, kBlockTexts>> blocks;
            for (const auto& [id, text] : texts) {
                blocks[static_cast<std::uint16_t>(id / kBlockTexts + 1)][id % kBlockTexts] = text;
            }
            for (const auto& [number, block] : blocks) {
                Add(kStringType, number, language, StringBlock(block));
            }
        }
    }

    const ScriptOptions& options_;
    TokenCursor cursor_;
    CompiledScript result_;
    std::uint16_t language_ = 0;
    std::uint16_t next_icon_ = 1;
    std::uint16_t next_cursor_ = 1;
    std::map<std::uint16_t, std::map<std::uint16_t, std::string>> strings_; ///< by language
    Place statement_place_;
    std::string file_name_;
};

} // namespace

CompiledScript CompileScript(const std::string& file, const ScriptOptions& options) {
    const Script script = ReadScript(file, options);
    return ScriptCompiler{script, options}.Compile();
}

} // namespace kelvo::resource_compiler
