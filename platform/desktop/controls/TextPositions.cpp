#include "platform/desktop/controls/TextPositions.h"

#include <algorithm>
#include <cstring>

namespace kelvo::desktop {

namespace {

/// The UTF-16 units of the character at a position, and its bytes.
struct Character {
    int units;
    int bytes;
};

Character CharacterAt(QStringView text, qsizetype position, TextLines lines) {
    const QChar unit = text[position];
    const ushort code = unit.unicode();
    if (code == u'\n' && lines == TextLines::Several) return {1, 2};
    if (code < 0x80) return {1, 1};
    if (code < 0x800) return {1, 2};
    if (!unit.isSurrogate()) return {1, 3};
    const bool is_pair =
        unit.isHighSurrogate() && position + 1 < text.size() && text[position + 1].isLowSurrogate();
    if (is_pair) return {2, 4};
    return {1, static_cast<int>(text.sliced(position, 1).toUtf8().size())}; // what stands in for it
}

} // namespace

QString TextFromBytes(const std::string& bytes, TextLines lines) {
    QString text = QString::fromStdString(bytes);
    if (lines == TextLines::Several) {
        text.replace(QLatin1String("\r\n"), QLatin1String("\n"));
        text.replace(QLatin1Char('\r'), QLatin1Char('\n'));
    }
    return text;
}

std::string BytesOf(const QString& text, TextLines lines) {
    if (lines == TextLines::One) return text.toStdString();
    QString ended = text;
    ended.replace(QLatin1Char('\n'), QLatin1String("\r\n"));
    return ended.toStdString();
}

int CountBytes(QStringView text, TextLines lines) {
    int bytes = 0;
    for (qsizetype position = 0; position < text.size();) {
        const Character character = CharacterAt(text, position, lines);
        bytes += character.bytes;
        position += character.units;
    }
    return bytes;
}

int PositionAt(QStringView text, LPARAM byte, TextLines lines) {
    LPARAM seen = 0;
    int position = 0;
    while (position < text.size() && seen < byte) {
        const Character character = CharacterAt(text, position, lines);
        seen += character.bytes;
        position += character.units;
    }
    return position;
}

LRESULT CopyBytes(const std::string& bytes, WPARAM capacity, LPARAM buffer) {
    if (capacity == 0 || buffer == 0) return 0;
    const std::size_t length = std::min<std::size_t>(bytes.size(), capacity - 1);
    auto* const target = reinterpret_cast<char*>(buffer);
    std::memcpy(target, bytes.data(), length);
    target[length] = '\0';
    return static_cast<LRESULT>(length);
}

int LineAt(QStringView text, int position) {
    return static_cast<int>(text.first(position).count(QLatin1Char('\n')));
}

std::optional<int> BeginOfLine(QStringView text, LPARAM line) {
    qsizetype begin = 0;
    for (; line > 0; --line) {
        begin = text.indexOf(QLatin1Char('\n'), begin) + 1;
        if (begin == 0) return std::nullopt;
    }
    return static_cast<int>(begin);
}

QStringView LineOf(QStringView text, LPARAM line) {
    const std::optional<int> begin = line < 0 ? std::nullopt : BeginOfLine(text, line);
    if (!begin) return {};
    const qsizetype end = text.indexOf(QLatin1Char('\n'), *begin);
    return text.sliced(*begin, (end < 0 ? text.size() : end) - *begin);
}

} // namespace kelvo::desktop
