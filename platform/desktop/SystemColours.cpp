#include "platform/desktop/SystemColours.h"

#include "platform/desktop/drawing.h"

#include <QGuiApplication>
#include <QPalette>
#include <QThread>

#include <algorithm>
#include <array>
#include <atomic>

namespace kelvo::desktop {

namespace {

struct SystemColour {
    int index;
    QPalette::ColorRole role;
    QPalette::ColorGroup group;
    COLORREF without_desktop;
};

constexpr std::array kSystemColours{
    SystemColour{COLOR_SCROLLBAR, QPalette::Window, QPalette::Active, RGB(200, 200, 200)},
    SystemColour{COLOR_WINDOW, QPalette::Base, QPalette::Active, RGB(255, 255, 255)},
    SystemColour{COLOR_WINDOWTEXT, QPalette::Text, QPalette::Active, RGB(0, 0, 0)},
    SystemColour{COLOR_HIGHLIGHT, QPalette::Highlight, QPalette::Active, RGB(48, 140, 198)},
    SystemColour{COLOR_HIGHLIGHTTEXT, QPalette::HighlightedText, QPalette::Active,
                 RGB(255, 255, 255)},
    SystemColour{COLOR_BTNFACE, QPalette::Window, QPalette::Active, RGB(240, 240, 240)},
    SystemColour{COLOR_BTNSHADOW, QPalette::Dark, QPalette::Active, RGB(160, 160, 160)},
    SystemColour{COLOR_GRAYTEXT, QPalette::Text, QPalette::Disabled, RGB(109, 109, 109)},
    SystemColour{COLOR_BTNTEXT, QPalette::ButtonText, QPalette::Active, RGB(0, 0, 0)},
    SystemColour{COLOR_INFOTEXT, QPalette::ToolTipText, QPalette::Active, RGB(0, 0, 0)},
    SystemColour{COLOR_INFOBK, QPalette::ToolTipBase, QPalette::Active, RGB(255, 255, 225)},
};

bool MayAskDesktop() {
    const QCoreApplication* application = QCoreApplication::instance();
    return qobject_cast<const QGuiApplication*>(application) != nullptr &&
           application->thread() == QThread::currentThread();
}

// Other threads see what the UI thread saw last: it alone may look at the palette.
struct SeenColours {
    SeenColours() {
        std::ranges::transform(kSystemColours, colours.begin(), &SystemColour::without_desktop);
    }
    std::array<std::atomic<DWORD>, kSystemColours.size()> colours;
};

} // namespace

} // namespace kelvo::desktop

DWORD GetSysColor(int index) {
    using namespace kelvo::desktop;
    static SeenColours seen_last;
    const auto* const found = std::ranges::find(kSystemColours, index, &SystemColour::index);
    if (found == kSystemColours.end()) return 0;
    auto& colour = seen_last.colours[static_cast<std::size_t>(found - kSystemColours.begin())];
    if (MayAskDesktop()) {
        const QColor seen = QGuiApplication::palette().color(found->group, found->role);
        colour = RGB(static_cast<DWORD>(seen.red()), static_cast<DWORD>(seen.green()),
                     static_cast<DWORD>(seen.blue()));
    }
    return colour;
}
