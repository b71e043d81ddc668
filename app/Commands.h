#pragma once
// Numbers of the main window's commands, as the menu resource and the button bar have them.

#include "platform/base/types.h"

namespace kelvo {

enum class Command : WORD {
    Open = 101,
    CloseFilm = 102,
    OpenNamed = 249, ///< lParam: the name
    ToStart = 401,
    FastBackward = 402,
    Stop = 403,
    Pause = 404,
    Play = 405,
    FastForward = 406,
    ToEnd = 407,
    NaturalSize = 1001,
    Quarter = 1002,
    Half = 1003,
    ThreeQuarters = 1004,
    OneAndAHalf = 1005,
    Twice = 1006,
    FitToWindow = 1007,
    Continuous = 1015,
    Topmost = 1016,
    Exit = 10005,
    FirstRecent = 20000, ///< and the following ones: the recent files
};

} // namespace kelvo
