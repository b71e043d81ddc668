#pragma once
// Texts of fields as messages know them: bytes of UTF-8, a line of several ending with CR and LF,
// places counted in bytes. The toolkit counts UTF-16 units, and its lines end with LF.

#include "platform/base/types.h"

#include <QString>
#include <QStringView>

#include <optional>
#include <string>

namespace kelvo::desktop {

enum class TextLines : bool { One, Several };

QString TextFromBytes(const std::string& bytes, TextLines lines);
std::string BytesOf(const QString& text, TextLines lines);
/// How many bytes BytesOf would give.
int CountBytes(QStringView text, TextLines lines);
/// The position of the first character that begins at this byte or behind it; at most the end.
int PositionAt(QStringView text, LPARAM byte, TextLines lines);

/// Answers WM_GETTEXT. @return the bytes copied, the terminating 0 not counted
LRESULT CopyBytes(const std::string& bytes, WPARAM capacity, LPARAM buffer);

/// The number of the line that a position lies in.
int LineAt(QStringView text, int position);
/// The position where a line begins. @return nothing when there is no such line
std::optional<int> BeginOfLine(QStringView text, LPARAM line);
/// A line without its end, empty when there is no such line.
QStringView LineOf(QStringView text, LPARAM line);

} // namespace kelvo::desktop
