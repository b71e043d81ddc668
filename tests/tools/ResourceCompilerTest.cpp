#include "tools/resource_compiler/ResourceScript.h"

#include "platform/base/resources.h"

#include <gtest/gtest.h>

#include <sys/wait.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

using namespace kelvo::resource_compiler;

namespace {

using Bytes = std::vector<std::uint8_t>;

// Bytes written out; a text literal stands for its UTF-16 units and the final 0.
class Expected {
public:
    Expected& operator()(std::initializer_list<std::uint8_t> bytes) {
        bytes_.insert(bytes_.end(), bytes);
        return *this;
    }
    Expected& operator()(std::u16string_view text) {
        for (const char16_t unit : text) {
            bytes_.push_back(static_cast<std::uint8_t>(unit));
            bytes_.push_back(static_cast<std::uint8_t>(unit >> 8U));
        }
        return (*this)({0, 0});
    }
    operator Bytes() const { return bytes_; }

private:
    Bytes bytes_;
};

// From the sample script that is linked into this test.
Bytes Linked(LPCSTR type, LPCSTR name, WORD language = 0) {
    const HRSRC found = FindResourceExA(nullptr, type, name, language);
    if (found == nullptr) return {};
    const auto* const bytes =
        static_cast<const std::uint8_t*>(LockResource(LoadResource(nullptr, found)));
    return {bytes, bytes + SizeofResource(nullptr, found)};
}

TEST(CompiledResources, MenusHoldFlagsIdsAndTexts) {
    EXPECT_EQ(Linked(RT_MENU, "SAMPLEMENU"),
              Bytes(Expected{}({0, 0, 0, 0})                // header
                    ({0x10, 0})(u"&File")                   // a popup, without an id
                    ({0x09, 0, 101, 0})(u"Apri...\tF3")     // grey and ticked
                    ({0, 0x08, 0, 0})(u"")                  // separator
                    ({0x80, 0, 0x15, 0x27})(u"Perch\u00E9") // the popup's last
                    ({0x80, 0, 7, 0})(u"?")));              // the menu's last
}

TEST(CompiledResources, DialogsHoldTheirControlsAtMultiplesOfFour) {
    EXPECT_EQ(Linked(RT_DIALOG, "SAMPLEDIALOG"),
              Bytes(Expected{}({0x40, 0, 0xC0, 0x80, 0, 0, 0, 0})          // style, extended style
                    ({3, 0, 1, 0, 0xFE, 0xFF, 0x5D, 1, 25, 0})             // controls, place
                    ({0, 0, 0, 0})(u"Ricompressione")                      // no menu, no class
                    ({8, 0})(u"Arial")                                     //
                    ({0, 0})                                               //
                    ({1, 0, 1, 0x50, 0, 0, 0, 0})                          //
                    ({0x2C, 1, 3, 0, 40, 0, 14, 0, 2, 0})                  //
                    ({0xFF, 0xFF, 0x80, 0})(u"Interrompi")({0, 0})({0, 0}) //
                    ({0, 2, 0, 0x50, 0, 0, 2, 0})                          //
                    ({0xFD, 0xFF, 0, 0, 20, 0, 8, 0, 101, 0})              //
                    ({0xFF, 0xFF, 0x82, 0})(u"00:00")({0, 0})              //
                    ({0x10, 0, 1, 0x50, 0, 0, 0, 0})                       //
                    ({0, 0, 0, 0, 40, 0, 11, 0, 0xFF, 0xFF})               //
                    (u"msctls_trackbar32")(u"")({0, 0})));
}

TEST(CompiledResources, ExtendedDialogsOfAnotherLanguageStandBesideThem) {
    EXPECT_EQ(Linked(RT_DIALOG, "SAMPLEDIALOG", 0x0409),
              Bytes(Expected{}({1, 0, 0xFF, 0xFF, 77, 0, 0, 0})        // mark, help
                    ({8, 0, 0, 0, 0x40, 0, 0x88, 0x80})                // styles
                    ({2, 0, 0, 0, 0, 0, 10, 0, 20, 0})                 //
                    ({0, 0})(u"LUMDIALOG")(u"")                        //
                    ({9, 0, 0xBC, 2, 1, 0})(u"Sans")({0, 0})           //
                    ({88, 0, 0, 0, 0, 0, 0, 0, 2, 0, 1, 0x50})         //
                    ({1, 0, 2, 0, 3, 0, 4, 0, 5, 0, 0, 0})             //
                    ({0xFF, 0xFF, 0x85, 0, 0, 0, 0, 0})                //
                    ({0, 0, 0, 0, 0, 0, 0, 0, 3, 0, 0, 0x50})          //
                    ({6, 0, 7, 0, 0, 0, 0, 0, 0xFF, 0xFF, 0xFF, 0xFF}) //
                    ({0xFF, 0xFF, 0x82, 0})(u"ProgramIcon")({0, 0})));
}

TEST(CompiledResources, BitmapsArePackedWithoutTheGapsOfTheirFiles) {
    const Bytes packed = Linked(RT_BITMAP, "samplepicture");
    ASSERT_EQ(packed.size(), 40U + 24U);
    EXPECT_EQ(packed[0], 40);
    EXPECT_EQ(packed[40], 1); // not the gap's 'G'
    EXPECT_EQ(packed[52], 11);
}

TEST(CompiledResources, CursorsAndIconsAreAGroupAndItsImages) {
    EXPECT_EQ(Linked(RT_GROUP_CURSOR, "SAMPLEARROW"),
              (Bytes{0, 0, 2, 0, 1, 0, 8, 0, 16, 0, 1, 0, 1, 0, 116, 0, 0, 0, 1, 0}));
    const Bytes cursor = Linked(RT_CURSOR, MAKEINTRESOURCEA(1));
    ASSERT_EQ(cursor.size(), 116U);
    EXPECT_EQ(Bytes(cursor.begin(), cursor.begin() + 8), (Bytes{3, 0, 5, 0, 40, 0, 0, 0}));
    EXPECT_EQ(Linked(RT_GROUP_ICON, "SampleIcon"),
              (Bytes{0, 0, 1, 0, 1, 0, 8, 8, 2, 0, 1, 0, 1, 0, 112, 0, 0, 0, 1, 0}));
    EXPECT_EQ(Linked(RT_ICON, MAKEINTRESOURCEA(1)).size(), 112U);
}

TEST(CompiledResources, KeysDataAndTextsLieAsTheyAreWritten) {
    EXPECT_EQ(Linked(RT_ACCELERATOR, "SAMPLEKEYS"), (Bytes{0,    0, 15,   0, 101,  0,    0, 0, //
                                                           0x0D, 0, 'X',  0, 0x15, 0x27, 0, 0, //
                                                           0x93, 0, 0x74, 0, 0x2C, 1,    0, 0}));
    EXPECT_EQ(Linked(RT_RCDATA, "#100"),
              (Bytes{0x34, 0x12, 5, 0, 0, 0, 'a', 0, 0xC3, 0xA9, 0xE9, 0, 0xFF, 0xFF}));
    EXPECT_EQ(Linked("wordlist", "WORDS"), (Bytes{'u', 'n', 'o'}));
    const Bytes block = Linked(RT_STRING, MAKEINTRESOURCEA(101 / 16 + 1));
    ASSERT_EQ(block.size(), 16U * 2 + 4 * 2);
    EXPECT_EQ(Bytes(block.begin() + 10, block.begin() + 16), (Bytes{4, 0, 'A', 0, 'p', 0}));
}

class Scripts : public testing::Test {
protected:
    Scripts() {
        std::string pattern = (std::filesystem::temp_directory_path() / "kelvo-rc-XXXXXX").string();
        folder_ = mkdtemp(pattern.data());
    }
    ~Scripts() override {
        std::error_code failure;
        std::filesystem::remove_all(folder_, failure);
    }

    std::string Write(const std::string& name, std::string_view text) const {
        const std::string path = folder_ + '/' + name;
        std::ofstream{path, std::ios::binary} << text;
        return path;
    }
    CompiledScript Compile(std::string_view text, const ScriptOptions& options = {}) const {
        return CompileScript(Write("script.rc", text), options);
    }
    // "line: message"; empty when it compiles.
    std::string ErrorOf(std::string_view text) const {
        const CompiledScript compiled = Compile(text);
        if (!compiled.error) return "";
        return std::to_string(compiled.error->place.line) + ": " + compiled.error->message;
    }

    std::string folder_;
};

TEST_F(Scripts, SayWhereAndWhatIsWrong) {
    Write("cut.bmp", "BM");
    Write("loop.h", "#include \"loop.h\"\n");
    const struct {
        const char* script;
        const char* error;
    } kCases[] = {
        {"A MENU\nBEGIN\nMENUITEM \"x\" 5\nEND", "3: a comma is missing before 5"},
        {"A MENU\nBEGIN\nMENUITEM \"x\", FIVE\nEND", "3: unknown name FIVE"},
        {"A MENU\nBEGIN\nEND", "3: a menu must hold an item"},
        {"A MENU BEGIN\nMENUITEM \"x\", 5", "2: END is missing"},
        {"A MENU BEGIN LTEXT END", "1: MENUITEM, POPUP or END is wanted, not LTEXT"},
        {"A MENU BEGIN MENUITEM \"x\", 70000 END", "1: the number does not fit into 16 bits"},
        {"A DIALOG 0, 0, 1, 1 BEGIN\nMENUITEM\nEND", "2: a control or END is wanted, not MENUITEM"},
        {"A DIALOG 0, 0, 1, 1\nSTYLE DS_SETFONT\nBEGIN END", "3: DS_SETFONT without FONT"},
        {"A DIALOG 0, 0, 1 BEGIN END", "1: a comma is missing before BEGIN"},
        {"A BITMAP \"none.bmp\"", "1: \"none.bmp\": it cannot be read"},
        {"\nA BITMAP \"cut.bmp\"", "2: \"cut.bmp\": it is no BMP file"},
        {"A ICON \"cut.bmp\"", "1: \"cut.bmp\": it is no ICO file"},
        {"A RCDATA { 1 }\nB RCDATA { 1 }\na RCDATA { 2 }", "3: there is such a resource already"},
        {"A VERSIONINFO BEGIN END", "1: VERSIONINFO is not known here"},
        {"A RCDATA { 0x }", "1: bad number 0x"},
        {"A RCDATA { 08 }", "1: bad number 08"},
        {"A RCDATA { 4294967296 }", "1: bad number 4294967296"},
        {"A RCDATA { \"open\n }", "1: a text is not closed in its line"},
        {"A RCDATA { \"\\q\" }", "1: unknown escape in a text"},
        {"A RCDATA { (1 + 2 }", "1: a parenthesis is not closed"},
        {"A RCDATA { @ }", "1: unexpected character @"},
        {"\n/* open", "2: a comment is not closed"},
        {"#ifdef X\n", "1: #endif is missing"},
        {"#endif\n", "1: #endif without #ifdef"},
        {"#import \"x\"\n", "1: unknown directive #import"},
        {"#define A B\n#define B A\nX RCDATA { A }", "3: constant A means itself"},
        {"#include \"loop.h\"\n", "1: #include goes too deep"},
        {"STRINGTABLE { 1 \"a\"\n1 \"b\" }", "2: string 1 occurs twice"},
        {"LANGUAGE 2000, 1", "1: there is no such language"},
    };
    for (const auto& row : kCases) {
        EXPECT_EQ(ErrorOf(row.script), row.error) << row.script;
    }
    std::string deep = "A RCDATA { ";
    deep.append(100000, '(');
    EXPECT_EQ(ErrorOf(deep), "1: too many parentheses");
}

TEST_F(Scripts, TakeConstantsFromIncludesAndFromTheCommandLine) {
    std::filesystem::create_directory(folder_ + "/include");
    Write("include/ids.h", "\xEF\xBB\xBF#define BASE 0x100 // hexadecimal\n#define NAME \"n\"\n");
    ScriptOptions options;
    options.include_folders = {folder_ + "/include"};
    options.constants = {{"EXTRA", "1"}};
    const CompiledScript compiled =
        Compile("#include \"ids.h\"\n"
                "#ifdef EXTRA\n"
                "BASE RCDATA { BASE | 2 * (3 - 1), ~0xFFFE & 0xFF, NAME }\n"
                "#else\n#ifndef EXTRA\nnonsense\n#endif\n@\n#endif\n"
                "#undef NAME\nNAME RCDATA { \"say \"\"//\"\"\" }\n",
                options);
    ASSERT_FALSE(compiled.error) << compiled.error->Line();
    ASSERT_EQ(compiled.resources.size(), 2U);
    EXPECT_EQ(compiled.resources[0].name, NumberOrText{std::uint16_t{0x100}});
    EXPECT_EQ(compiled.resources[0].data, (Bytes{4, 1, 1, 0, 'n'}));
    EXPECT_EQ(compiled.resources[1].name, NumberOrText{std::string{"NAME"}});
    EXPECT_EQ(compiled.resources[1].data, (Bytes{'s', 'a', 'y', ' ', '"', '/', '/', '"'}));
    ASSERT_EQ(compiled.files.size(), 2U);
    EXPECT_TRUE(compiled.files[1].ends_with("include/ids.h"));
}

// Every shorter form of a picture's file is refused and none of them is read past its end.
TEST_F(Scripts, RefusePicturesThatAreCutAnywhere) {
    const std::string folder = std::string{KELVO_SOURCE_DIR} + "/tests/tools/";
    for (const auto& [name, kind] : {std::pair{"ResourceCompilerPicture.bmp", "BITMAP"},
                                     std::pair{"ResourceCompilerArrow.cur", "CURSOR"},
                                     std::pair{"ResourceCompilerIcon.ico", "ICON"}}) {
        std::ifstream stream{folder + name, std::ios::binary};
        const std::string whole{std::istreambuf_iterator<char>{stream}, {}};
        ASSERT_GT(whole.size(), 70U);
        const std::string script = std::string{"A "} + kind + " \"picture\"";
        for (std::size_t length = 0; length < whole.size(); ++length) {
            Write("picture", whole.substr(0, length));
            ASSERT_NE(ErrorOf(script), "") << name << " cut at " << length;
        }
        Write("picture", whole);
        EXPECT_EQ(ErrorOf(script), "");
    }
}

TEST_F(Scripts, RefuseBitmapsWhoseNumbersLie) {
    const std::string folder = std::string{KELVO_SOURCE_DIR} + "/tests/tools/";
    std::ifstream stream{folder + "ResourceCompilerPicture.bmp", std::ios::binary};
    const std::string whole{std::istreambuf_iterator<char>{stream}, {}};
    const struct {
        std::size_t offset;
        std::uint32_t value;
    } kLies[] = {
        {10, 0xFFFFFFFF}, // pixels far behind the end
        {10, 20},         // pixels inside the header
        {14, 0xFFFFFFF0}, // info header
        {18, 0x7FFFFFFF}, // width
        {18, 0},          // no width
        {22, 0x80000000}, // height
        {46, 0xFFFFFFFF}, // colours
    };
    for (const auto& lie : kLies) {
        std::string changed = whole;
        std::memcpy(changed.data() + lie.offset, &lie.value, sizeof lie.value);
        Write("picture.bmp", changed);
        EXPECT_NE(ErrorOf("A BITMAP \"picture.bmp\""), "") << lie.offset;
    }
}

struct ProgramEnd {
    int exit_code;
    std::string output;
};

ProgramEnd RunCompiler(const std::string& arguments) {
    const std::string command = std::string{RESOURCE_COMPILER} + ' ' + arguments + " 2>&1";
    FILE* const pipe = popen(command.c_str(), "r");
    std::string output;
    for (int letter = fgetc(pipe); letter != EOF; letter = fgetc(pipe)) {
        output += static_cast<char>(letter);
    }
    const int status = pclose(pipe);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, output};
}

TEST_F(Scripts, FailOnTheCommandLineWithTheirPlaceAndLeaveNothing) {
    const std::string script = Write("script.rc", "A RCDATA { 1 }\nB MENU\n");
    const std::string output = folder_ + "/out.bin";
    const ProgramEnd failed = RunCompiler("-o " + output + ' ' + script);
    EXPECT_EQ(failed.exit_code, 1);
    EXPECT_EQ(failed.output, script + ":2: BEGIN is missing before the end of the script\n");
    EXPECT_FALSE(std::filesystem::exists(output));
    const ProgramEnd missing = RunCompiler("-o " + output + ' ' + folder_ + "/none.rc");
    EXPECT_EQ(missing.exit_code, 1);
    EXPECT_EQ(missing.output, folder_ + "/none.rc:0: cannot be read\n");
    EXPECT_EQ(RunCompiler("").exit_code, 1);
    EXPECT_EQ(RunCompiler("--what -o x y").exit_code, 1);
    EXPECT_EQ(RunCompiler("-o /dev/null/out " + script).exit_code, 1);
}

TEST_F(Scripts, CompileOnTheCommandLineIntoBytesThatRegister) {
    const std::string script = Write("script.rc", "A RCDATA { N }\n");
    const std::string output = folder_ + "/out.bin";
    const ProgramEnd end =
        RunCompiler("-D N=258 --depfile " + output + ".d -o " + output + ' ' + script);
    EXPECT_EQ(end.exit_code, 0) << end.output;
    std::ifstream stream{output, std::ios::binary};
    const std::string text{std::istreambuf_iterator<char>{stream}, {}};
    const Bytes bytes{text.begin(), text.end()};
    const HMODULE module = kelvo::platform::AddModule();
    ASSERT_TRUE(kelvo::platform::RegisterResources(module, bytes));
    const HRSRC found = FindResourceA(module, "a", RT_RCDATA);
    ASSERT_EQ(SizeofResource(module, found), 2U);
    EXPECT_EQ(std::memcmp(LockResource(LoadResource(module, found)), "\x02\x01", 2), 0);
    std::ifstream rule{output + ".d"};
    EXPECT_EQ((std::string{std::istreambuf_iterator<char>{rule}, {}}),
              output + ": \\\n  " + script + '\n');
}

} // namespace
