#include "framework/base/LanguageFile.h"

#include <algorithm>
#include <limits>
#include <optional>

namespace kelvo {
namespace {

constexpr char kHeaderMark = '$';
constexpr std::string_view kEntryMarker = "@>";
constexpr char kIdEnd = '<';

/// Reads straight down; each function takes what it read off the front.
class Reader {
public:
    explicit Reader(std::string_view content) : rest_(content) {}

    bool AtEnd() const { return rest_.empty(); }

    bool Take(std::string_view expected) {
        if (!rest_.starts_with(expected)) return false;
        rest_.remove_prefix(expected.size());
        return true;
    }

    /// Decimal digits up to and with the closing character; no digits are 0.
    std::optional<std::int32_t> TakeNumber(char closing) {
        std::int64_t number = 0;
        while (!rest_.empty()) {
            const char c = rest_.front();
            rest_.remove_prefix(1);
            if (c == closing) return static_cast<std::int32_t>(number);
            if (c < '0' || c > '9') return std::nullopt;
            number = number * 10 + (c - '0');
            if (number > std::numeric_limits<std::int32_t>::max()) return std::nullopt;
        }
        return std::nullopt;
    }

    /// The text up to the next entry marker or the end, escapes resolved.
    CString TakeText() {
        CString text;
        text.SetGrowthIncrement(kTextGrowth);
        while (!rest_.empty() && !rest_.starts_with(kEntryMarker)) {
            char c = rest_.front();
            rest_.remove_prefix(1);
            if (c == '\\' && !rest_.empty()) {
                text += Escaped(rest_.front());
                rest_.remove_prefix(1);
            } else if (c != '\r' && c != '\n' && c != '\t') {
                text += c;
            }
        }
        return text;
    }

private:
    static constexpr std::int32_t kTextGrowth = 1024;

    static char Escaped(char c) {
        switch (c) {
        case 'b':
            return '\b';
        case 'n':
            return '\n';
        case 'r':
            return '\r';
        case 't':
            return '\t';
        default:
            return c;
        }
    }

    std::string_view rest_;
};

std::optional<std::int32_t> TakeEntryId(Reader& reader) {
    const bool negative = reader.Take("-");
    const std::optional<std::int32_t> number = reader.TakeNumber(kIdEnd);
    return negative && number ? -*number : number;
}

/// Stores a text; an empty one leaves what is there. False without memory.
bool StoreText(CArray<CString>& texts, std::int32_t index, const CString& text) {
    if (index >= texts.Count() && !texts.Resize(index + 1)) return false;
    if (text.IsEmpty()) return true;
    texts[index] = text;
    texts[index].Text(); // cut at a zero byte now: later it is only read, by any thread
    return true;
}

} // namespace

bool ParseLanguageFile(std::string_view content, XLanguageInfoClass::LinguaFile& file) {
    Reader reader(content);
    if (!reader.Take({&kHeaderMark, 1})) return false;
    const auto first = reader.TakeNumber(kHeaderMark);
    if (!first) return false;
    const auto last = reader.TakeNumber(kHeaderMark);
    if (!last || *last < *first || *last - *first >= kLanguageFileIds) return false;
    file.first_id = *first;
    file.last_id = *last;
    file.texts.Clear();

    // What stands before the first marker is the text of the first id; without any entry it is
    // none.
    const CString preamble = reader.TakeText();
    if (reader.AtEnd()) return true;
    if (!StoreText(file.texts, 0, preamble)) return false;
    while (reader.Take(kEntryMarker)) {
        const auto id = TakeEntryId(reader);
        if (!id || *id < *first || *id > *last) return false;
        if (!StoreText(file.texts, *id - *first, reader.TakeText())) return false;
    }
    return true;
}

} // namespace kelvo
