#include "platform/desktop/Keys.h"

#include "platform/desktop/messages.h"

#include <QKeyEvent>

namespace kelvo::desktop {

namespace {

struct Key {
    int toolkit;
    WPARAM number;
};

constexpr Key kKeys[] = {
    {Qt::Key_Backspace, VK_BACK},  {Qt::Key_Tab, VK_TAB},       {Qt::Key_Backtab, VK_TAB},
    {Qt::Key_Return, VK_RETURN},   {Qt::Key_Enter, VK_RETURN},  {Qt::Key_Shift, VK_SHIFT},
    {Qt::Key_Control, VK_CONTROL}, {Qt::Key_Alt, VK_MENU},      {Qt::Key_Escape, VK_ESCAPE},
    {Qt::Key_Space, VK_SPACE},     {Qt::Key_PageUp, VK_PRIOR},  {Qt::Key_PageDown, VK_NEXT},
    {Qt::Key_End, VK_END},         {Qt::Key_Home, VK_HOME},     {Qt::Key_Left, VK_LEFT},
    {Qt::Key_Up, VK_UP},           {Qt::Key_Right, VK_RIGHT},   {Qt::Key_Down, VK_DOWN},
    {Qt::Key_Insert, VK_INSERT},   {Qt::Key_Delete, VK_DELETE},
};

} // namespace

WPARAM VirtualKey(const QKeyEvent& event) {
    const int key = event.key();
    if ((key >= Qt::Key_0 && key <= Qt::Key_9) || (key >= Qt::Key_A && key <= Qt::Key_Z)) {
        return static_cast<WPARAM>(key);
    }
    if (key >= Qt::Key_F1 && key <= Qt::Key_F24)
        return VK_F1 + static_cast<WPARAM>(key - Qt::Key_F1);
    for (const Key& known : kKeys) {
        if (known.toolkit == key) return known.number;
    }
    return 0;
}

int ToolkitKey(WPARAM number) {
    if ((number >= '0' && number <= '9') || (number >= 'A' && number <= 'Z')) {
        return static_cast<int>(number);
    }
    if (number >= VK_F1 && number < VK_F1 + 24)
        return Qt::Key_F1 + static_cast<int>(number - VK_F1);
    for (const Key& known : kKeys) {
        if (known.number == number) return known.toolkit;
    }
    return 0;
}

} // namespace kelvo::desktop
