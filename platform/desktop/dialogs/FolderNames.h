#pragma once
// The names of files between the system, for which they are bytes, and the toolkit, which knows
// only those that are UTF-8. A folder of another name is given to it by another path that leads
// there. UI thread only.

#include <QString>

#include <string>
#include <string_view>
#include <vector>

namespace kelvo::desktop {

class FolderNames {
public:
    FolderNames() = default;
    FolderNames(const FolderNames&) = delete;
    FolderNames& operator=(const FolderNames&) = delete;
    ~FolderNames();

    /// A path by which the toolkit finds the folder; empty when there is no such folder. It is
    /// good as long as this object lives.
    QString PathOf(const std::string& folder);
    /// The name in bytes of what the toolkit calls so.
    std::string BytesOf(const QString& path) const;

private:
    struct Alias {
        std::string bytes;
        int descriptor;
    };
    std::vector<Alias> aliases_;
};

/// A text for a person to read, whatever the bytes are: UTF-8, else taken for Latin letters.
QString ReadableName(std::string_view name);

/// The entries of a folder whose names are no UTF-8, sorted; the toolkit leaves these out.
struct OddEntry {
    std::string name;
    bool is_folder = false;
};
std::vector<OddEntry> OddEntriesOf(const std::string& folder);

} // namespace kelvo::desktop
