#include "framework/window/Questions.h"

#include "framework/window/dialogs/GetStrDialoglum.h"
#include "framework/window/dialogs/SelectByListDialoglum.h"

#include <array>
#include <cstdarg>
#include <cstdio>

namespace kelvo {
namespace {

constexpr std::size_t kPromptBytes = 8192;

[[gnu::format(printf, 1, 0)]] CString Prompt(const char* format, std::va_list arguments) {
    std::array<char, kPromptBytes> text{};
    std::vsnprintf(text.data(), text.size(), format, arguments);
    return text.data();
}

} // namespace

CString EnterString(const CString& initial, const char* caption, const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    const CString prompt = Prompt(format, arguments);
    va_end(arguments);
    CString text = initial;
    GetStrDialoglum().Ask(nullptr, text, caption, prompt);
    return text;
}

int ChooseFromList(std::span<const CString> items, std::int32_t& selected, const char* caption,
                   const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    const CString prompt = Prompt(format, arguments);
    va_end(arguments);
    return SelectByListDialoglum().Ask(nullptr, items, selected, caption, prompt) != 0 ? 1 : 0;
}

} // namespace kelvo
