#pragma once
// How what is typed comes into a field: as WM_CHAR, byte by byte, so that who filters that message
// filters the typing; all other keys go to the field.

#include <QString>

#include <string>

class QKeyEvent;

namespace kelvo::desktop {

/// Characters that Ctrl and a letter give, and their neighbours.
enum ControlCharacter : unsigned char {
    kSelectAll = 1,
    kCopy = 3,
    kBackspace = 8,
    kTab = 9,
    kLineFeed = 10,
    kReturn = 13,
    kPaste = 22,
    kCut = 24,
    kUndo = 26,
    kDelete = 127,
};

bool IsControlCharacter(unsigned char byte);

/// Whether what a key does to a field comes by WM_CHAR, and the field must not see the key.
bool ComesAsCharacter(const QKeyEvent& event);

/// Makes characters of the bytes of WM_CHAR.
class CharacterBytes {
public:
    /// @return the character that this byte ends, empty while it goes on or begins nowhere
    QString Add(unsigned char byte);
    void Clear() { bytes_.clear(); }

private:
    std::string bytes_; ///< of a character that goes on
};

} // namespace kelvo::desktop
