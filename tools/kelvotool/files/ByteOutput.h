#pragma once
// Where the bytes of an export go: a file that has its name only once it is whole, or standard
// output.

#include "framework/base/Bytes.h"
#include "tools/kelvotool/files/RawOutput.h"
#include "tools/kelvotool/report/Console.h"
#include "tools/kelvotool/report/Reporter.h"

#include <string>

namespace kelvo::tool {

/// The name that means standard output.
inline constexpr const char* kStandardOutput = "-";

class ByteOutput {
public:
    /// @param given  as the person named it
    /// @param input  full name of the file that is read
    /// @return false after it was reported why not
    [[nodiscard]] bool Begin(const std::string& given, const std::string& input, bool force,
                             Reporter& reporter);
    void Append(ByteView bytes);
    bool Failed() const;
    bool IsStandardOutput() const { return is_standard_output_; }
    /// Gives the file its name, or hands on the last bytes.
    void Finish(Reporter& reporter);

private:
    bool is_standard_output_ = false;
    RawOutput file_;
    StandardOutput standard_output_;
};

} // namespace kelvo::tool
