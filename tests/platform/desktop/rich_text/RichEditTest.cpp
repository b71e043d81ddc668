// The rich-text control through its messages, and documents on their way through it.

#include "tests/platform/desktop/rich_text/DescribeText.h"

#include "platform/base/errors.h"
#include "platform/desktop/Window.h"
#include "platform/desktop/controls.h"
#include "platform/desktop/drawing.h"
#include "platform/desktop/messages.h"
#include "platform/desktop/rich_text.h"
#include "platform/desktop/windows.h"

#include <QApplication>
#include <QClipboard>
#include <QMimeData>
#include <QTextEdit>

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>

namespace kelvo::desktop {
namespace {

/// A stream that a test gives to the control, or takes from it.
struct Stream {
    std::string bytes;
    std::size_t position = 0;
    std::size_t piece = 1000;                 ///< bytes given or taken by one call at most
    std::size_t stop_after = ~std::size_t{0}; ///< calls; then the stream is ended with 7
    std::size_t calls = 0;
    std::function<void()> at_first_call;
};

DWORD Give(DWORD_PTR cookie, BYTE* buffer, LONG count, LONG* done) {
    auto& stream = *reinterpret_cast<Stream*>(cookie);
    if (stream.calls++ == 0 && stream.at_first_call) stream.at_first_call();
    const std::size_t given = std::min(
        {stream.piece, static_cast<std::size_t>(count), stream.bytes.size() - stream.position});
    std::copy_n(stream.bytes.begin() + static_cast<std::ptrdiff_t>(stream.position), given, buffer);
    stream.position += given;
    *done = static_cast<LONG>(given);
    return stream.calls > stream.stop_after ? 7 : 0;
}

DWORD Take(DWORD_PTR cookie, BYTE* buffer, LONG count, LONG* done) {
    auto& stream = *reinterpret_cast<Stream*>(cookie);
    const std::size_t taken = std::min(stream.piece, static_cast<std::size_t>(count));
    stream.bytes.append(reinterpret_cast<const char*>(buffer), taken);
    *done = static_cast<LONG>(taken);
    return ++stream.calls >= stream.stop_after ? 7 : 0;
}

class RichEdit : public testing::Test {
protected:
    void SetUp() override {
        library_ = ::LoadLibraryA("RICHED32.DLL");
        ASSERT_NE(library_, nullptr);
        parent_ = ::CreateWindowExA(0, WC_STATIC, "", WS_POPUP | WS_VISIBLE, 0, 0, 400, 300,
                                    nullptr, nullptr, nullptr, nullptr);
        control_ = Make("RICHEDIT");
        ASSERT_NE(control_, nullptr);
    }
    void TearDown() override {
        ::DestroyWindow(parent_);
        ::FreeLibrary(library_);
    }

    HWND Make(const char* class_name, DWORD style = ES_MULTILINE | WS_VSCROLL) const {
        return ::CreateWindowExA(0, class_name, "", WS_CHILD | WS_VISIBLE | style, 0, 0, 300, 200,
                                 parent_, reinterpret_cast<HMENU>(INT_PTR{7}), nullptr, nullptr);
    }
    LRESULT StreamIn(Stream& stream, WPARAM format = SF_RTF) {
        EDITSTREAM edit{reinterpret_cast<DWORD_PTR>(&stream), 99, &Give};
        const LRESULT result =
            ::SendMessageA(control_, EM_STREAMIN, format, reinterpret_cast<LPARAM>(&edit));
        error_ = edit.dwError;
        return result;
    }
    LRESULT StreamIn(const std::string& bytes, WPARAM format = SF_RTF) {
        Stream stream{.bytes = bytes, .at_first_call = {}};
        return StreamIn(stream, format);
    }
    std::string StreamOut(WPARAM format = SF_RTF) {
        Stream stream{.bytes = {}, .at_first_call = {}};
        EDITSTREAM edit{reinterpret_cast<DWORD_PTR>(&stream), 99, &Take};
        ::SendMessageA(control_, EM_STREAMOUT, format, reinterpret_cast<LPARAM>(&edit));
        error_ = edit.dwError;
        return stream.bytes;
    }
    std::string Text() const {
        const LRESULT length = ::SendMessageA(control_, WM_GETTEXTLENGTH, 0, 0);
        std::string text(static_cast<std::size_t>(length) + 1, '#');
        ::SendMessageA(control_, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()));
        text.pop_back();
        return text;
    }
    void SetText(const char* text) {
        ::SendMessageA(control_, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text));
    }
    void Type(const std::string& text) {
        for (const char byte : text) {
            ::SendMessageA(control_, WM_CHAR, static_cast<BYTE>(byte), 0);
        }
    }
    QTextEdit* Editor() const { return WidgetOf(control_)->findChild<QTextEdit*>(); }

    HMODULE library_ = nullptr;
    HWND parent_ = nullptr;
    HWND control_ = nullptr;
    DWORD error_ = 0;
};

TEST(RichEditLibrary, BringsItsClassesAndTakesThemAway) {
    const auto make = [](const char* class_name) {
        const HWND window = ::CreateWindowExA(0, class_name, "", WS_POPUP, 0, 0, 10, 10, nullptr,
                                              nullptr, nullptr, nullptr);
        return window != nullptr && ::DestroyWindow(window) != FALSE;
    };
    EXPECT_FALSE(make("RICHEDIT"));
    const HMODULE library = ::LoadLibraryA("riched32.dll");
    ASSERT_NE(library, nullptr);
    EXPECT_EQ(::LoadLibraryA("RICHED32.DLL"), library);
    EXPECT_TRUE(make("RichEdit"));
    EXPECT_TRUE(make("RichEdit20A"));
    EXPECT_TRUE(::FreeLibrary(library));
    EXPECT_TRUE(make("RICHEDIT"));
    EXPECT_TRUE(::FreeLibrary(library));
    EXPECT_FALSE(make("RICHEDIT"));
    EXPECT_FALSE(::FreeLibrary(library));
    for (const char* name : {"", "RICHED32", "KERNEL32.DLL", static_cast<const char*>(nullptr)}) {
        EXPECT_EQ(::LoadLibraryA(name), nullptr);
        EXPECT_EQ(::GetLastError(), ERROR_MOD_NOT_FOUND);
    }
}

TEST_F(RichEdit, ShowsADocumentAsTheToolkitDoes) {
    StreamIn("{\\rtf1\\ansi{\\fonttbl{\\f0 DejaVu Sans;}}{\\colortbl;\\red255\\green0\\blue0;}\\f0"
             "\\qc\\b\\fs40\\cf1 Caff\\'e8\\par\\pard\\plain a\\i b\\ul c}");
    ASSERT_NE(Editor(), nullptr);
    EXPECT_EQ(Editor()->toPlainText(), QStringLiteral("Caffè\nabc"));
    QTextCursor cursor(Editor()->document());
    cursor.setPosition(2);
    EXPECT_EQ(cursor.blockFormat().alignment(), Qt::AlignHCenter);
    EXPECT_EQ(cursor.charFormat().fontWeight(), QFont::Bold);
    EXPECT_EQ(cursor.charFormat().fontPointSize(), 20);
    EXPECT_EQ(cursor.charFormat().foreground().color(), QColor(Qt::red));
    cursor.setPosition(9);
    EXPECT_EQ(cursor.blockFormat().alignment() & Qt::AlignHorizontal_Mask, Qt::AlignLeft);
    EXPECT_TRUE(cursor.charFormat().fontItalic());
    EXPECT_TRUE(cursor.charFormat().fontUnderline());
}

TEST_F(RichEdit, DocumentsOfOtherProgramsSurviveInAndOutAndIn) {
    for (const char* program : {"libreoffice", "abiword"}) {
        std::ifstream file(std::string(KELVO_SOURCE_DIR) +
                               "/tests/platform/desktop/rich_text/documents/" + program + ".rtf",
                           std::ios::binary);
        const std::string document{std::istreambuf_iterator<char>(file), {}};
        ASSERT_FALSE(document.empty());
        EXPECT_GT(StreamIn(document), 0);
        EXPECT_EQ(error_, 0U);
        const std::string out = StreamOut();
        EXPECT_EQ(Describe(*ReadRtfText(out)), Describe(*ReadRtfText(document))) << program;
        StreamIn(out);
        EXPECT_EQ(StreamOut(), out) << program;
    }
}

TEST_F(RichEdit, KeepsEveryFormatThatTheConverterKnows) {
    const std::string document =
        "{\\rtf1\\ansi\\deff0{\\fonttbl{\\f0 DejaVu Sans;}{\\f1 DejaVu Serif;}}{\\colortbl;"
        "\\red1\\green2\\blue3;\\red250\\green251\\blue252;}"
        "\\pard\\qj\\li720\\ri361\\fi-359\\sb119\\sa241\\tx1000\\tqr\\tx2001\\tqc\\tx3000\\tqdec"
        "\\tx4000\\fs23\\strike a\\strike0\\super b\\nosupersub\\sub c\\nosupersub\\cf1\\highlight2"
        " d\\line e\\tab f\\~g\\-h\\_i\\par\\pard\\qr\\plain\\f1\\fs100\\par\\par\\pard\\plain "
        "z\\par\\par}";
    StreamIn(document);
    EXPECT_EQ(Describe(*ReadRtfText(StreamOut())), Describe(*ReadRtfText(document)));
}

TEST_F(RichEdit, StreamsInPiecesOfAnySize) {
    for (const std::size_t piece : {1U, 7U, 4096U, 100000U}) {
        Stream stream{.bytes = "{\\rtf1 caff\\'e8 " + std::string(9000, 'x') + "}",
                      .piece = piece,
                      .at_first_call = {}};
        EXPECT_EQ(StreamIn(stream), 9006);
        EXPECT_EQ(error_, 0U);
        EXPECT_EQ(Text(), "caffè " + std::string(9000, 'x'));
    }
}

TEST_F(RichEdit, TellsWhyAStreamEnded) {
    Stream stopped{.bytes = "{\\rtf1 abcdef}", .piece = 10, .stop_after = 1, .at_first_call = {}};
    StreamIn(stopped);
    EXPECT_EQ(error_, 7U);
    EXPECT_EQ(Text(), "abc"); // what the stopping call gave is not used

    StreamIn("this is no rich text");
    EXPECT_EQ(error_, kEditStreamBadFormat);
    EXPECT_EQ(Text(), "abc");

    SetText(std::string(10000, 'x').c_str());
    Stream refused{.bytes = {}, .stop_after = 1, .at_first_call = {}};
    EDITSTREAM edit{reinterpret_cast<DWORD_PTR>(&refused), 0, &Take};
    EXPECT_EQ(::SendMessageA(control_, EM_STREAMOUT, SF_TEXT, reinterpret_cast<LPARAM>(&edit)), 0);
    EXPECT_EQ(edit.dwError, 7U);
    EXPECT_EQ(refused.calls, 1U);
}

TEST_F(RichEdit, StreamsPlainText) {
    EXPECT_EQ(StreamIn("prima\r\nseconda è", SF_TEXT), 15);
    EXPECT_EQ(Text(), "prima\r\nseconda è");
    EXPECT_EQ(StreamOut(SF_TEXT), "prima\r\nseconda è");
    EXPECT_EQ(PlainText(*ReadRtfText(StreamOut(SF_RTF))), "prima|seconda è");
}

TEST_F(RichEdit, OutlivesACallbackThatDestroysIt) {
    Stream stream{.bytes = "{\\rtf1 a}", .at_first_call = [this] { ::DestroyWindow(control_); }};
    EXPECT_EQ(StreamIn(stream), 0);
    EXPECT_FALSE(::IsWindow(control_));
}

TEST_F(RichEdit, AnswersAsAnEditControl) {
    SetText("Caffè nero");
    EXPECT_EQ(Text(), "Caffè nero");
    ::SendMessageA(control_, EM_SETSEL, 6, 7); // bytes: behind the accent
    Type("\xC3\xA0");
    EXPECT_EQ(Text(), "Caffèànero");
    EXPECT_EQ(::SendMessageA(control_, EM_GETMODIFY, 0, 0), TRUE);
    ::SendMessageA(control_, WM_UNDO, 0, 0);
    EXPECT_EQ(Text(), "Caffè nero");
    ::SendMessageA(control_, EM_SETSEL, 0, -1);
    Type("a\rb\t\bc");
    EXPECT_EQ(Text(), "a\r\nbc");
    EXPECT_EQ(::SendMessageA(control_, EM_GETLINECOUNT, 0, 0), 2);
    ::SendMessageA(control_, EM_SETREADONLY, TRUE, 0);
    Type("x");
    EXPECT_EQ(Text(), "a\r\nbc");
    EXPECT_TRUE(Editor()->isReadOnly());
}

TEST_F(RichEdit, LimitsWhatAPersonEntersAndNothingElse) {
    ::SendMessageA(control_, EM_EXLIMITTEXT, 5, 0);
    StreamIn("{\\rtf1 abcdefgh}");
    EXPECT_EQ(Text(), "abcdefgh");
    Type("x");
    EXPECT_EQ(Text(), "abcdefgh");
    SetText("abc");
    ::SendMessageA(control_, EM_SETSEL, 3, 3);
    Type("xyz");
    EXPECT_EQ(Text(), "abcxy");
    ::SendMessageA(control_, EM_EXLIMITTEXT, 0, 0);
    Type("z");
    EXPECT_EQ(Text(), "abcxyz");
}

TEST_F(RichEdit, CopiesAndPastesFormats) {
    StreamIn("{\\rtf1 a{\\b b}c}");
    ::SendMessageA(control_, EM_SETSEL, 1, 2);
    ::SendMessageA(control_, WM_COPY, 0, 0);
    ASSERT_TRUE(QApplication::clipboard()->mimeData()->hasFormat(QStringLiteral("text/rtf")));
    SetText("x");
    ::SendMessageA(control_, EM_SETSEL, 1, 1);
    ::SendMessageA(control_, WM_PASTE, 0, 0);
    const auto text = ReadRtfText(StreamOut());
    ASSERT_TRUE(text);
    ASSERT_EQ(text->paragraphs.size(), 1U);
    ASSERT_EQ(text->paragraphs[0].runs.size(), 2U);
    EXPECT_EQ(text->paragraphs[0].runs[1].text, u"b");
    EXPECT_TRUE(text->paragraphs[0].runs[1].format.bold);
}

TEST_F(RichEdit, TakesABackgroundColour) {
    const COLORREF standard = ::GetSysColor(COLOR_WINDOW);
    EXPECT_EQ(::SendMessageA(control_, EM_SETBKGNDCOLOR, 0, RGB(1, 2, 250)),
              static_cast<LRESULT>(standard));
    EXPECT_EQ(Editor()->palette().color(QPalette::Base), QColor(1, 2, 250));
    EXPECT_EQ(::SendMessageA(control_, EM_SETBKGNDCOLOR, 1, 0), RGB(1, 2, 250));
}

} // namespace
} // namespace kelvo::desktop
