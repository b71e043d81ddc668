#include "platform/desktop/Desktop.h"

#include "platform/base/Immortal.h"
#include "platform/base/message_boxes.h"
#include "platform/desktop/Icons.h"
#include "platform/desktop/MessageBoxes.h"
#include "platform/desktop/Surface.h"
#include "platform/desktop/UiLoop.h"
#include "platform/desktop/Window.h"
#include "platform/desktop/WindowMenus.h"
#include "platform/desktop/WindowTable.h"
#include "platform/desktop/WindowViews.h"
#include "platform/desktop/controls/ControlClass.h"
#include "platform/desktop/windows.h"

#include <QApplication>
#include <QScreen>

#include <atomic>
#include <clocale>
#include <memory>
#include <string>

namespace kelvo::desktop {

LiveCounts CountLiveObjects() {
    const auto queue = MessageQueue::OfThisThreadIfAny();
    return {.windows = static_cast<int>(LockedWindows().All().size()),
            .menus = CountMenus(),
            .surfaces = CountSurfaces(),
            .timers = queue ? queue->TimerCount() : 0};
}

} // namespace kelvo::desktop

namespace kelvo::platform {

namespace {

using namespace kelvo::desktop;

/// What is worth trying, in order: a display that the environment does not name is not there, and
/// the toolkit would complain about it on the terminal.
std::string PlatformsToTry() {
    std::string platforms;
    if (qEnvironmentVariableIsSet("DISPLAY")) platforms += "xcb;";
    if (qEnvironmentVariableIsSet("WAYLAND_DISPLAY")) platforms += "wayland;";
    return platforms + "offscreen";
}

/// The application object keeps references to its arguments.
struct Application {
    explicit Application(const char* program_name) : name(program_name) {
        if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) {
            arguments[1] = option.data();
            arguments[2] = platforms.data();
            count = 3;
        }
        application = std::make_unique<QApplication>(count, arguments);
    }

    std::string name;
    std::string option = "-platform";
    std::string platforms = PlatformsToTry();
    char* arguments[4] = {name.data(), nullptr, nullptr, nullptr};
    int count = 1;
    std::unique_ptr<QApplication> application;
    std::unique_ptr<UiLoop> loop;
    MessageBoxHandler handler_before;
};

// A process that ends without EndDesktop leaves it: the toolkit's own statics go before ours, and
// the application object does not survive them.
Immortal<std::unique_ptr<Application>> application_slot;
std::unique_ptr<Application>& the_application = *application_slot; // UI thread only
bool was_started = false;
std::atomic<bool> has_display{false};
std::atomic<bool> platform_chosen{false};

void NoteScreen() {
    const QString platform = QGuiApplication::platformName();
    has_display = platform != QLatin1String("offscreen") && platform != QLatin1String("minimal");
    const QRect screen = QGuiApplication::primaryScreen()->geometry();
    LockedWindows windows;
    windows.Find(windows.Desktop())->rect = {screen.left(), screen.top(),
                                             screen.left() + screen.width(),
                                             screen.top() + screen.height()};
}

} // namespace

bool StartDesktop(const char* program_name) {
    if (was_started) return false;
    was_started = true;
    platform_chosen = qEnvironmentVariableIsSet("QT_QPA_PLATFORM");
    the_application = std::make_unique<Application>(program_name);
    std::setlocale(LC_NUMERIC, "C"); // the toolkit has just taken the environment's
    QApplication::setQuitOnLastWindowClosed(false);
    the_application->loop = std::make_unique<UiLoop>();
    RegisterStandardControls();
    NoteScreen();
    the_application->handler_before = SetMessageBoxHandler(&ShowMessageBox);
    return true;
}

void EndDesktop() {
    if (!the_application || !OnUiThread()) return;
    for (const HWND window : LockedWindows().All())
        ::DestroyWindow(window);
    DestroyAllMenus();
    SetMessageBoxHandler(std::move(the_application->handler_before));
    CloseThreadsBoxes();
    the_application->loop.reset();
    UiLoop::DeleteLeftWidgets();
    ForgetPictures();
    the_application.reset();
}

bool HasDisplay() {
    return has_display;
}

bool PlatformChosenByUser() {
    return platform_chosen;
}

} // namespace kelvo::platform
