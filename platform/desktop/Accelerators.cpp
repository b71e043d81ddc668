#include "platform/desktop/accelerators.h"
#include "platform/base/resources.h"
#include "platform/desktop/MessageQueue.h"
#include "platform/desktop/NextMessage.h"
#include "platform/desktop/windows.h"

#include <QGuiApplication>
#include <QKeyEvent>
#include <QtEndian>

#include <map>
#include <memory>
#include <optional>
#include <span>
#include <vector>

using namespace kelvo::desktop;

namespace {

constexpr UINT kIsKey = 0x01; ///< a key's number, else a character
constexpr UINT kShift = 0x04;
constexpr UINT kControl = 0x08;
constexpr UINT kAlt = 0x10;
constexpr UINT kLast = 0x80;
constexpr std::size_t kEntryBytes = 8;

struct Accelerator {
    UINT flags = 0;
    WORD key = 0;
    WORD command = 0;
};

} // namespace

struct AcceleratorTable {
    std::vector<Accelerator> entries;
};

namespace {

/// Flags, key, command, and a word of nothing, each of 16 bits; the last one is marked.
std::optional<AcceleratorTable> ReadTable(std::span<const std::uint8_t> bytes) {
    AcceleratorTable table;
    while (bytes.size() >= kEntryBytes) {
        const UINT flags = qFromLittleEndian<quint16>(bytes.data());
        table.entries.push_back({flags, qFromLittleEndian<quint16>(bytes.data() + 2),
                                 qFromLittleEndian<quint16>(bytes.data() + 4)});
        if ((flags & kLast) != 0) return table;
        bytes = bytes.subspan(kEntryBytes);
    }
    return std::nullopt;
}

std::map<const void*, std::unique_ptr<AcceleratorTable>>& Tables() {
    static auto* const tables = new std::map<const void*, std::unique_ptr<AcceleratorTable>>;
    return *tables;
}

bool IsTable(HACCEL table) {
    for (const auto& [bytes, known] : Tables()) {
        if (known.get() == table) return true;
    }
    return false;
}

UINT ModifiersOf(const MSG& message) {
    const auto input = MessageQueue::OfThisThread()->InputBehind(message);
    const Qt::KeyboardModifiers held = input && input->isInputEvent()
                                           ? static_cast<const QInputEvent&>(*input).modifiers()
                                           : QGuiApplication::keyboardModifiers();
    UINT flags = message.message == WM_SYSKEYDOWN ? kAlt : 0;
    if (held.testFlag(Qt::ShiftModifier)) flags |= kShift;
    if (held.testFlag(Qt::ControlModifier)) flags |= kControl;
    if (held.testFlag(Qt::AltModifier)) flags |= kAlt;
    return flags;
}

bool Matches(const Accelerator& entry, const MSG& message, UINT modifiers) {
    if (entry.key != message.wParam) return false;
    constexpr UINT kAll = kShift | kControl | kAlt;
    if ((entry.flags & kIsKey) != 0) {
        return message.message != WM_CHAR && (entry.flags & kAll) == modifiers;
    }
    // A character already has its shift and control in it.
    return message.message == WM_CHAR && (entry.flags & kAlt) == (modifiers & kAlt);
}

} // namespace

HACCEL LoadAcceleratorsA(HINSTANCE module, LPCSTR name) {
    const HRSRC found = ::FindResourceA(module, name, RT_ACCELERATOR);
    if (found == nullptr) return nullptr;
    const void* const bytes = ::LockResource(::LoadResource(module, found));
    auto& table = Tables()[bytes];
    if (!table) {
        const auto read = ReadTable(kelvo::platform::ResourceBytesAt(bytes));
        if (!read) {
            Tables().erase(bytes);
            return nullptr;
        }
        table = std::make_unique<AcceleratorTable>(*read);
    }
    return table.get();
}

int TranslateAcceleratorA(HWND window, HACCEL table, MSG* message) {
    if (message == nullptr || !IsTable(table) || ::IsWindow(window) == FALSE) return 0;
    if (message->message != WM_KEYDOWN && message->message != WM_SYSKEYDOWN &&
        message->message != WM_CHAR) {
        return 0;
    }
    const UINT modifiers = ModifiersOf(*message);
    for (const Accelerator& entry : table->entries) {
        if (!Matches(entry, *message, modifiers)) continue;
        ::SendMessageA(window, WM_COMMAND, MAKEWPARAM(entry.command, 1), 0);
        return 1;
    }
    return 0;
}
