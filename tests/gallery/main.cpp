// gallery NAME [ARGUMENT]: shows what no command of the player reaches. Without a name it lists
// what there is.

#include "framework/window/LUM.h"
#include "platform/base/resources.h"
#include "platform/desktop/Desktop.h"
#include "tests/gallery/Exhibits.h"

#include <cstdio>
#include <string>
#include <string_view>

namespace kelvo::gallery {
namespace {

struct Exhibit {
    std::string_view name;
    void (*show)();
};

constexpr Exhibit kExhibits[] = {
    {"about", ShowAbout},
    {"boxes", ShowMessageBoxes},
    {"controls", ShowControls},
    {"font", ShowFontChoice},
    {"information", ShowInformationWindow},
    {"input-box", ShowInputBox},
    {"list", ShowListDialog},
    {"open-file", ShowOpenFile},
    {"pictures", ShowPictures},
    {"progress", ShowProgress},
    {"recompress", ShowRecompression},
    {"rich-text", ShowRichText},
    {"save-file", ShowSaveFile},
    {"string", ShowStringDialog},
    {"tools", ShowTools},
};

const Exhibit* Find(std::string_view name) {
    for (const Exhibit& one : kExhibits) {
        if (one.name == name) return &one;
    }
    return nullptr;
}

int ListThem() {
    for (const Exhibit& one : kExhibits) {
        std::printf("%.*s\n", static_cast<int>(one.name.size()), one.name.data());
    }
    return 2;
}

} // namespace

std::string& TheArgument() {
    static std::string argument;
    return argument;
}

std::string Argument() {
    return TheArgument();
}

void Report(const std::string& line) {
    std::printf("%s\n", line.c_str());
    std::fflush(stdout);
}

int Run(std::string_view name) {
    const Exhibit* exhibit = Find(name);
    if (exhibit == nullptr) return ListThem();
    if (!platform::StartDesktop("gallery")) return 1;
    const bool started = lum.StartDefaultKernel(GetModuleHandleA(nullptr), "ProgramIcon") != 0;
    if (started) exhibit->show();
    platform::EndDesktop();
    return started ? 0 : 1;
}

} // namespace kelvo::gallery

int main(int argument_count, char** arguments) {
    if (argument_count > 2) kelvo::gallery::TheArgument() = arguments[2];
    return kelvo::gallery::Run(argument_count > 1 ? arguments[1] : "");
}
