#include "platform/desktop/dialogs/FolderNames.h"

#include <QFile>
#include <QFileInfo>
#include <QStringDecoder>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <memory>

namespace kelvo::desktop {

namespace {

constexpr std::size_t kMostOddEntries = 10'000;

bool IsUtf8(std::string_view bytes) {
    QStringDecoder decoder(QStringDecoder::Utf8, QStringConverter::Flag::Stateless);
    const QString text = decoder(QByteArrayView(bytes.data(), std::ssize(bytes)));
    return !decoder.hasError();
}

QString DescriptorPath(int descriptor) {
    return QStringLiteral("/proc/self/fd/%1").arg(descriptor);
}

} // namespace

FolderNames::~FolderNames() {
    for (const Alias& alias : aliases_)
        ::close(alias.descriptor);
}

QString FolderNames::PathOf(const std::string& folder) {
    if (IsUtf8(folder)) {
        const QString path = QString::fromStdString(folder);
        return QFileInfo(path).isDir() ? path : QString();
    }
    const auto known = std::ranges::find(aliases_, folder, &Alias::bytes);
    if (known != aliases_.end()) return DescriptorPath(known->descriptor);
    const int descriptor = ::open(folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
    if (descriptor == -1) return {};
    aliases_.push_back({folder, descriptor});
    return DescriptorPath(descriptor);
}

std::string FolderNames::BytesOf(const QString& path) const {
    for (const Alias& alias : aliases_) {
        const QString alias_path = DescriptorPath(alias.descriptor);
        if (path == alias_path) return alias.bytes;
        if (!path.startsWith(alias_path + u'/')) continue;
        return alias.bytes + QFile::encodeName(path.mid(alias_path.size())).toStdString();
    }
    return QFile::encodeName(path).toStdString();
}

QString ReadableName(std::string_view name) {
    const QByteArrayView bytes(name.data(), std::ssize(name));
    return IsUtf8(name) ? QString::fromUtf8(bytes) : QString::fromLatin1(bytes);
}

std::vector<OddEntry> OddEntriesOf(const std::string& folder) {
    std::vector<OddEntry> entries;
    const std::unique_ptr<DIR, int (*)(DIR*)> listing(::opendir(folder.c_str()), &::closedir);
    if (!listing) return entries;
    while (const dirent* entry = ::readdir(listing.get())) {
        if (IsUtf8(entry->d_name)) continue;
        struct stat status = {};
        const bool is_folder = ::fstatat(::dirfd(listing.get()), entry->d_name, &status, 0) == 0 &&
                               S_ISDIR(status.st_mode);
        entries.push_back({entry->d_name, is_folder});
        if (entries.size() >= kMostOddEntries) break;
    }
    std::ranges::sort(entries, {}, &OddEntry::name);
    return entries;
}

} // namespace kelvo::desktop
