#pragma once
// A folder beside an output in which files lie until all of them are whole. It goes with its
// object, whatever happened.

#include "tools/kelvotool/report/Reporter.h"

#include <string>

namespace kelvo::tool {

class TemporaryFolder {
public:
    TemporaryFolder() = default;
    ~TemporaryFolder() { Remove(); }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    /// @param parent  full name of the folder in which it is made
    /// @return false after it was reported why not
    [[nodiscard]] bool Make(const std::string& parent, Reporter& reporter);
    const std::string& Name() const { return name_; }
    /// Everything in it reaches the disk. @return false when the system refuses
    [[nodiscard]] bool Sync() const;
    /// Gives the folder a name at which nothing or an empty folder is, and everybody's rights.
    [[nodiscard]] bool PutAt(const std::string& name);
    /// Takes it away with all that is in it.
    void Remove();

private:
    std::string name_; ///< empty: there is none
};

/// The folder in which a full name stands.
std::string ParentOf(const std::string& name);

} // namespace kelvo::tool
