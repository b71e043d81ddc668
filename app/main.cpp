// The program's entry: starts the framework, builds the main window, runs it.

#include "app/CommandLine.h"
#include "app/KelvoWinkel.h"
#include "app/ProgressBarDialogkel.h"
#include "framework/window/LUM.h"
#include "platform/base/resources.h"
#include "platform/desktop/Desktop.h"
#include "platform/sound/wave.h"

#include <cstdio>
#include <optional>

namespace {

constexpr char kProgramName[] = "kelvo";
constexpr char kIcon[] = "ProgramIcon";
constexpr char kNothingToShow[] = "kelvo: there is no display; name a film to play\n";

int RunPlayer(HINSTANCE instance, const kelvo::CString& file_name) {
    if (kelvo::lum.StartDefaultKernel(instance, kIcon) == 0) return 0;
    const bool terminal =
        !kelvo::platform::HasDisplay() && !kelvo::platform::PlatformChosenByUser();
    if (terminal && file_name.IsEmpty()) {
        std::fputs(kNothingToShow, stderr);
        return 1;
    }
    kelvo::KelvoWinkel window;
    std::optional<kelvo::ProgressDialogs> progress_dialogs;
    if (!terminal) progress_dialogs.emplace(window);
    if (terminal) {
        kelvo::platform::UseSilentDeviceByDefault();
        window.ShowProgressOnTerminal();
    }
    const bool result =
        window.Run(nullptr, file_name, file_name.IsEmpty() ? 0 : kelvo::kCommandLineStart);
    return result ? 1 : 0;
}

} // namespace

int main(int argument_count, char** arguments) {
    const kelvo::CString file_name = kelvo::FileNameFrom(argument_count, arguments);
    if (!kelvo::platform::StartDesktop(kProgramName)) return 0;
    const HINSTANCE instance = GetModuleHandleA(nullptr);
    const int exit_code = RunPlayer(instance, file_name);
    kelvo::platform::EndDesktop();
    return exit_code;
}
