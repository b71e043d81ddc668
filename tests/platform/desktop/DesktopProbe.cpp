// A program of its own that starts the desktop and says what it found; DesktopStartTest runs it.

#include "platform/base/message_boxes.h"
#include "platform/desktop/Desktop.h"
#include "platform/desktop/windows.h"

#include <clocale>
#include <cstdio>

int main() {
    if (!kelvo::platform::StartDesktop("desktop probe")) return 1;
    if (kelvo::platform::StartDesktop("desktop probe")) return 2;
    std::printf("display %d, chosen %d, numbers as in %s\n", kelvo::platform::HasDisplay(),
                kelvo::platform::PlatformChosenByUser(), std::setlocale(LC_NUMERIC, nullptr));
    if (!kelvo::platform::HasDisplay() && !kelvo::platform::PlatformChosenByUser()) {
        std::printf("answers %d %d\n", ::MessageBoxA(nullptr, "testo", "titolo", MB_OK),
                    ::MessageBoxA(nullptr, "davvero?", "titolo", MB_YESNO));
    }
    const HWND desktop = ::GetDesktopWindow();
    RECT screen{};
    ::GetWindowRect(desktop, &screen);
    std::printf("screen %d\n", screen.right > 0 && screen.bottom > 0);
    kelvo::platform::EndDesktop();
    kelvo::platform::EndDesktop();
    return 0;
}
