#include "platform/desktop/controls/Typing.h"

#include <QKeyEvent>

#include <utility>

namespace kelvo::desktop {

namespace {

constexpr unsigned char kFirstLetter = 32;

/// How many bytes the character takes that begins with this one.
std::size_t BytesOfCharacter(char first_byte) {
    const auto first = static_cast<unsigned char>(first_byte);
    if (first >= 0xF0) return 4;
    if (first >= 0xE0) return 3;
    return first >= 0xC0 ? 2 : 1;
}

} // namespace

bool IsControlCharacter(unsigned char byte) {
    return byte < kFirstLetter || byte == kDelete;
}

bool ComesAsCharacter(const QKeyEvent& event) {
    switch (event.key()) {
    case Qt::Key_Backspace:
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Tab:
    case Qt::Key_Backtab:
    case Qt::Key_Escape:
        return true;
    default:
        break;
    }
    const QString text = event.text();
    if (text.isEmpty()) return false;
    const ushort letter = text[0].unicode();
    if (letter >= kFirstLetter) return letter != kDelete;
    return letter == kSelectAll || letter == kCopy || letter == kPaste || letter == kCut ||
           letter == kUndo;
}

QString CharacterBytes::Add(unsigned char byte) {
    const bool continues = (byte & 0xC0U) == 0x80U;
    if (!continues) bytes_.clear();
    if (continues && bytes_.empty()) return {}; // the rest of nothing
    bytes_ += static_cast<char>(byte);
    if (bytes_.size() < BytesOfCharacter(bytes_.front())) return {};
    return QString::fromStdString(std::exchange(bytes_, {}));
}

} // namespace kelvo::desktop
