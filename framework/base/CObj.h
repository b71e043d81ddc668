#pragma once
// The root of every framework and player class: its virtual slots in their fixed order, the class
// code packed from a date-coded class id, and the message boxes through which everything reports to
// the user.

#include "platform/base/types.h"

#include <cstdint>

namespace kelvo {

class CString;
class Stream;

/// Marks a text as the caption of a box, so that it cannot be taken for a printf argument.
struct Caption {
    const char* text;
};

class CObj {
public:
    /// @param class_id  GGmmAAnn: day, month, two-digit year, sequence; an invalid one is shown in
    /// a box
    explicit CObj(std::uint32_t class_id);
    CObj(const CObj&) = default;
    CObj& operator=(const CObj&) = default;

    // The virtual slots, 0 to 6; derived classes append theirs.
    virtual void Hook() {}
    /// Writes the persistent fields.
    virtual bool Save(Stream& stream);
    /// Reads them back in the same order.
    virtual bool Load(Stream& stream);
    /// @return true when the message was handled
    virtual bool HandleMessage(UINT message, WPARAM wparam, LPARAM lparam);
    virtual bool HandleSecondMessage(UINT message, WPARAM wparam, LPARAM lparam);
    /// Progress and completion codes of work in the background.
    virtual INT_PTR HandleNotification(int code, INT_PTR a, INT_PTR b);
    virtual ~CObj();

    /// The class id packed into 16 bits.
    std::uint16_t ClassCode() const { return class_code_; }
    /// The class id read back from the code.
    std::uint32_t ClassId() const;

    // The boxes have no owner window. They return false so that a failure can be shown and returned
    // in one line. The printf forms cut their text at 8191 bytes.

    /// Caption "ERRORE". The text is shown as it is, per cent signs included; the printf form has a
    /// name of its own, because a variable argument list cannot be told from no arguments.
    static bool ErrorBox(const char* text);
    static bool ErrorBox(const CString& text);
    static bool ErrorBox(const char* text, Caption caption);
    static bool ErrorBox(const CString& text, Caption caption);
    [[gnu::format(printf, 1, 2)]] static bool ErrorBoxFormat(const char* format, ...);
    /// Caption "ATTENZIONE".
    [[gnu::format(printf, 1, 2)]] static bool WarningBox(const char* format, ...);
    /// Caption "NECESSARIA CONFERMA". @return true only for Yes
    [[gnu::format(printf, 1, 2)]] static bool ConfirmBox(const char* format, ...);

private:
    std::uint16_t ClassIdentification(std::uint32_t class_id);

    std::uint16_t class_code_ = 0;
};

} // namespace kelvo
