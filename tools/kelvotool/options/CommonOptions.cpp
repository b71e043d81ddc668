#include "tools/kelvotool/options/CommonOptions.h"

#include <algorithm>
#include <thread>

namespace kelvo::tool {

unsigned CommonOptions::Jobs() const {
    return jobs != 0 ? jobs : std::max(1U, std::thread::hardware_concurrency());
}

} // namespace kelvo::tool
