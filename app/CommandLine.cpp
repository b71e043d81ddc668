#include "app/CommandLine.h"

#include "platform/base/paths.h"

#include <string>

namespace kelvo {

CString FileNameFrom(int argument_count, const char* const* arguments) {
    std::string name;
    for (int i = 1; i < argument_count; ++i) {
        if (i > 1) name += ' ';
        name += arguments[i];
    }
    return CString(std::string_view(platform::AbsoluteIfExisting(name)));
}

} // namespace kelvo
