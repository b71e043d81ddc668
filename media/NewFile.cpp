#include "media/NewFile.h"

#include "framework/base/ChFile.h"
#include "platform/base/file_names.h"

#include <optional>

namespace kelvo {

namespace {

constexpr char kTemporaryExtension[] = ".tmp";

} // namespace

Error NewFile::Begin(const CString& name, Existing existing) {
    failed_ = false;
    existing_ = existing;
    const CString path = ResolvePath(nullptr, name, nullptr);
    const std::optional<std::string> full_name = platform::NewFileName(path.View());
    if (!full_name) return {Fault::Missing, 0};
    name_ = *full_name;
    if (existing == Existing::Refuse && platform::ExistingFileName(name_) == name_) {
        return {Fault::Busy, 0};
    }
    const CString own_name{std::string_view{name_}};
    const CString temporary = PathDirectory(own_name) + PathTitle(own_name) + kTemporaryExtension;
    switch (temporary_.Make(std::string{temporary.View()})) {
    case platform::Claim::Taken:
        return {};
    case platform::Claim::Busy:
    case platform::Claim::Foreign:
        return {Fault::Busy, 0};
    case platform::Claim::Failed:
        break;
    }
    return {Fault::Unwritable, 0};
}

Error NewFile::WriteAt(std::uint64_t offset, ByteView bytes) {
    if (failed_ || !temporary_.WriteAt(offset, bytes)) {
        failed_ = true;
        return {Fault::Unwritable, offset};
    }
    return {};
}

Error NewFile::Finish() {
    const bool placed =
        !failed_ && temporary_.Finish(existing_ == Existing::Replace ? name_ : std::string{}) &&
        (existing_ == Existing::Replace ? temporary_.PutInPlaceOf(name_) : temporary_.PutAt(name_));
    if (placed) return {};
    temporary_.Discard();
    return {Fault::Unwritable, 0};
}

} // namespace kelvo
