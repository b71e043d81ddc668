#include "framework/base/CObj.h"

#include "framework/base/CString.h"
#include "framework/base/XLanguageInfoClass.h"
#include "platform/base/message_boxes.h"

#include <cstdarg>
#include <cstdio>

namespace kelvo {
namespace {

/// A caption with its number in the language files.
struct NumberedText {
    std::int32_t id;
    const char* italian;
    const char* Translated() const { return XLanguageInfoClass::Translate(id, italian); }
};

constexpr NumberedText kErrorTextCaption{1249, "ERRORE"};
constexpr NumberedText kErrorFormatCaption{1355, "ERRORE"};
constexpr NumberedText kWarningCaption{1356, "ATTENZIONE"};
constexpr NumberedText kConfirmCaption{1357, "NECESSARIA CONFERMA"};

constexpr UINT kErrorTextFlags = MB_ICONHAND | MB_TASKMODAL | MB_TOPMOST;

constexpr std::size_t kBoxTextBytes = 8192;

/// Formats into a text on the stack, so that a box can be shown when there is no memory left.
int ShowFormatted(const char* format, std::va_list arguments, NumberedText caption, UINT flags) {
    char text[kBoxTextBytes];
    const bool formatted = std::vsnprintf(text, sizeof text, format, arguments) >= 0;
    return MessageBoxA(nullptr, formatted ? text : format, caption.Translated(), flags);
}

// Places of the four parts of a class id in its 16-bit code.
constexpr std::uint32_t kCodesPerYear = 8;
constexpr std::uint32_t kCodesPerMonth = 22 * kCodesPerYear;
constexpr std::uint32_t kCodesPerDay = 12 * kCodesPerMonth;
static_assert(kCodesPerMonth == 176 && kCodesPerDay == 2112);
static_assert(31 * kCodesPerDay <= 0x10000);

} // namespace

CObj::CObj(std::uint32_t class_id) : class_code_(ClassIdentification(class_id)) {}

CObj::~CObj() = default;

bool CObj::Save(Stream& /*stream*/) {
    return false;
}

bool CObj::Load(Stream& /*stream*/) {
    return false;
}

bool CObj::HandleMessage(UINT /*message*/, WPARAM /*wparam*/, LPARAM /*lparam*/) {
    return false;
}

bool CObj::HandleSecondMessage(UINT /*message*/, WPARAM /*wparam*/, LPARAM /*lparam*/) {
    return false;
}

INT_PTR CObj::HandleNotification(int /*code*/, INT_PTR /*a*/, INT_PTR /*b*/) {
    return 0;
}

std::uint32_t CObj::ClassId() const {
    const std::uint32_t code = class_code_;
    const std::uint32_t in_day = code % kCodesPerDay;
    const std::uint32_t in_month = in_day % kCodesPerMonth;
    return in_month % kCodesPerYear + in_month / kCodesPerYear * 100 +
           (in_day / kCodesPerMonth + 1) * 10000 + (code / kCodesPerDay + 1) * 1000000;
}

std::uint16_t CObj::ClassIdentification(std::uint32_t class_id) {
    const std::uint32_t day = class_id / 1000000;
    const std::uint32_t month = class_id % 1000000 / 10000;
    const std::uint32_t year = class_id % 10000 / 100;
    const std::uint32_t number = class_id % 100;
    if (day < 1 || day > 31 || month < 1 || month > 12 || year > 21 || number > 7) {
        char caption[96];
        char text[160];
        std::snprintf(caption, sizeof caption,
                      "ERRORE CObj::ClassIdentification(GGmmAAnn) [%u] - INVALID ID", class_id);
        std::snprintf(text, sizeof text,
                      "GG = %u (must be: 1-31), mm = %u (must be: 01-12), "
                      "AA = %u (must be: 0-21), nn = %u",
                      day, month, year, number);
        ErrorBox(text, Caption{caption});
    }
    return static_cast<std::uint16_t>(number + year * kCodesPerYear + (month - 1) * kCodesPerMonth +
                                      (day - 1) * kCodesPerDay);
}

bool CObj::ErrorBox(const char* text) {
    MessageBoxA(nullptr, text, kErrorTextCaption.Translated(), kErrorTextFlags);
    return false;
}

bool CObj::ErrorBox(const CString& text) {
    return ErrorBox(text.Text());
}

bool CObj::ErrorBox(const char* text, Caption caption) {
    MessageBoxA(nullptr, text, caption.text, kErrorTextFlags);
    return false;
}

bool CObj::ErrorBox(const CString& text, Caption caption) {
    return ErrorBox(text.Text(), caption);
}

bool CObj::ErrorBoxFormat(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    ShowFormatted(format, arguments, kErrorFormatCaption, MB_ICONHAND | MB_TOPMOST);
    va_end(arguments);
    return false;
}

bool CObj::WarningBox(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    ShowFormatted(format, arguments, kWarningCaption, MB_ICONEXCLAMATION | MB_TOPMOST);
    va_end(arguments);
    return false;
}

bool CObj::ConfirmBox(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    const int answer =
        ShowFormatted(format, arguments, kConfirmCaption, MB_YESNO | MB_ICONQUESTION);
    va_end(arguments);
    return answer == IDYES;
}

} // namespace kelvo
