#include "tools/kelvotool/files/ByteOutput.h"

#include "tools/kelvotool/files/FileNames.h"

#include <string_view>

namespace kelvo::tool {

bool ByteOutput::Begin(const std::string& given, const std::string& input, bool force,
                       Reporter& reporter) {
    is_standard_output_ = given == kStandardOutput;
    if (is_standard_output_) return true;
    const auto name = OutputName(given, input, force, reporter);
    return name && file_.Begin(*name, force, reporter);
}

void ByteOutput::Append(ByteView bytes) {
    if (!is_standard_output_) {
        file_.Append(bytes);
    } else {
        standard_output_.Write({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
    }
}

bool ByteOutput::Failed() const {
    return is_standard_output_ ? standard_output_.Failed() : file_.Failed();
}

void ByteOutput::Finish(Reporter& reporter) {
    if (!is_standard_output_) {
        file_.Finish(reporter);
    } else if (standard_output_.Finish(kAllWell) != kAllWell) {
        reporter.NotDone("it cannot be written", ProblemCode::OutputUnwritable);
    }
}

} // namespace kelvo::tool
