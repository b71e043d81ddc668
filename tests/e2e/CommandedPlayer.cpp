// The player with a hand on its commands: each number that comes in on standard input is posted to
// its main window as a command. So a test can pause, seek and stop a film that is seen and heard.

#include "app/CommandLine.h"
#include "app/KelvoWinkel.h"
#include "framework/window/LUM.h"
#include "platform/base/resources.h"
#include "platform/desktop/Desktop.h"
#include "platform/desktop/messages.h"

#include <iostream>
#include <thread>

namespace {

class CommandedWindow : public kelvo::KelvoWinkel {
public:
    bool HandleMessage(UINT message, WPARAM wparam, LPARAM lparam) override {
        if (message == WM_CREATE) {
            // Ends with the process: a read from standard input cannot be woken.
            std::thread([window = Window()] {
                for (unsigned command = 0; std::cin >> command;) {
                    PostMessageA(window, WM_COMMAND, command, 0);
                }
            }).detach();
        }
        return KelvoWinkel::HandleMessage(message, wparam, lparam);
    }
};

} // namespace

int main(int argument_count, char** arguments) {
    const kelvo::CString file_name = kelvo::FileNameFrom(argument_count, arguments);
    if (!kelvo::platform::StartDesktop("kelvo")) return 2;
    if (kelvo::lum.StartDefaultKernel(GetModuleHandleA(nullptr), "ProgramIcon") == 0) return 2;
    bool result = false;
    {
        CommandedWindow window;
        result = window.Run(nullptr, file_name, kelvo::kCommandLineStart);
    }
    kelvo::platform::EndDesktop();
    return result ? 1 : 0;
}
