#pragma once
// A file of decoded bytes that has its name only once it is whole.

#include "framework/base/Bytes.h"
#include "platform/base/durable_files.h"
#include "tools/kelvotool/report/Reporter.h"

#include <cstdint>
#include <string>
#include <vector>

namespace kelvo::tool {

class RawOutput {
public:
    /// @param name   full, as OutputName gives it
    /// @param force  whether a file of that name is replaced
    /// @return false after it was reported that the temporary beside it cannot be made
    [[nodiscard]] bool Begin(const std::string& name, bool force, Reporter& reporter);
    /// Kept in mind when it fails.
    void Append(ByteView bytes);
    bool Failed() const { return failed_; }
    /// Syncs it and gives it its name, or reports why not; nothing is left behind then.
    void Finish(Reporter& reporter);

private:
    void Flush();

    platform::DurableTemporary temporary_;
    std::string name_;
    std::vector<std::uint8_t> buffer_;
    std::uint64_t written_ = 0;
    bool force_ = false;
    bool failed_ = false;
};

} // namespace kelvo::tool
