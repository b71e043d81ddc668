#include "platform/desktop/Icons.h"

#include "platform/base/resources.h"
#include "platform/desktop/Window.h"
#include "platform/desktop/windows.h"

#include <QApplication>
#include <QBuffer>
#include <QByteArray>
#include <QImageReader>
#include <QPixmap>
#include <QStyle>
#include <QtEndian>

#include <map>
#include <optional>
#include <string>
#include <utility>

using namespace kelvo::desktop;

namespace kelvo::desktop {

namespace {

// A group (all sizes of one picture) names its pictures by number; in a file of the same kind each
// entry has the picture's offset instead.
constexpr int kGroupHeaderBytes = 6;
constexpr int kGroupEntryBytes = 14;
constexpr int kFileEntryBytes = 16;
constexpr int kHotSpotBytes = 4; ///< before a cursor's picture
constexpr int kMostPictures = 32;
constexpr quint16 kIconKind = 1;
constexpr quint16 kCursorKind = 2;

QByteArray ResourceBytes(HINSTANCE instance, LPCSTR name, LPCSTR type) {
    const HRSRC found = ::FindResourceA(instance, name, type);
    if (found == nullptr) return {};
    const void* bytes = ::LockResource(::LoadResource(instance, found));
    if (bytes == nullptr) return {};
    return QByteArray(static_cast<const char*>(bytes),
                      static_cast<qsizetype>(::SizeofResource(instance, found)));
}

quint16 WordAt(const QByteArray& bytes, qsizetype offset) {
    return qFromLittleEndian<quint16>(bytes.constData() + offset);
}

void AppendLong(QByteArray& bytes, quint32 value) {
    char stored[4];
    qToLittleEndian(value, stored);
    bytes.append(stored, 4);
}

/// Width and height of an entry: bytes in an icon's, words (height doubled) in a cursor's.
struct EntrySize {
    char width = 0;
    char height = 0;
};

EntrySize SizeOfEntry(const QByteArray& group, qsizetype entry, quint16 kind) {
    if (kind == kIconKind) return {group[entry], group[entry + 1]};
    const int width = WordAt(group, entry);
    const int height = WordAt(group, entry + 2) / 2;
    return {static_cast<char>(width > 255 ? 0 : width),
            static_cast<char>(height > 255 ? 0 : height)};
}

/// The file that the pictures of a group would make. Empty when the group or a picture is damaged.
QByteArray FileFromGroup(HINSTANCE instance, const QByteArray& group, quint16 kind) {
    if (group.size() < kGroupHeaderBytes || WordAt(group, 2) != kind) return {};
    const int count = WordAt(group, 4);
    if (count == 0 || count > kMostPictures) return {};
    if (group.size() < kGroupHeaderBytes + qsizetype{count} * kGroupEntryBytes) return {};
    QByteArray file = group.first(kGroupHeaderBytes);
    QByteArray pictures;
    for (int i = 0; i < count; ++i) {
        const qsizetype entry = kGroupHeaderBytes + qsizetype{i} * kGroupEntryBytes;
        const LPCSTR id = MAKEINTRESOURCEA(WordAt(group, entry + 12));
        QByteArray picture = ResourceBytes(instance, id, kind == kIconKind ? RT_ICON : RT_CURSOR);
        const EntrySize size = SizeOfEntry(group, entry, kind);
        file.append(size.width).append(size.height).append('\0').append('\0');
        if (kind == kCursorKind) {
            if (picture.size() < kHotSpotBytes) return {};
            file.append(picture.first(kHotSpotBytes));
            picture.remove(0, kHotSpotBytes);
        } else {
            file.append(group.mid(entry + 4, 4));
        }
        if (picture.isEmpty()) return {};
        const qsizetype offset =
            kGroupHeaderBytes + qsizetype{count} * kFileEntryBytes + pictures.size();
        AppendLong(file, static_cast<quint32>(picture.size()));
        AppendLong(file, static_cast<quint32>(offset));
        pictures.append(picture);
    }
    return file.append(pictures);
}

QList<QImage> ReadPictures(QByteArray file) {
    QList<QImage> images;
    QBuffer buffer(&file);
    QImageReader reader(&buffer, "ico");
    for (int i = 0; i < reader.imageCount() && reader.jumpToImage(i); ++i) {
        const QImage image = reader.read();
        if (!image.isNull()) images.append(image);
    }
    return images;
}

/// Loaded once under each name, and kept as long as the desktop runs.
template <class Handle, class Picture>
class Loaded {
public:
    using Key = std::pair<HINSTANCE, std::string>;

    Handle Find(const Key& key) const {
        const auto found = by_name_.find(key);
        return found == by_name_.end() ? nullptr : found->second;
    }
    Handle Add(const Key& key, Picture picture) {
        const auto handle = reinterpret_cast<Handle>(next_ += 2);
        pictures_.emplace(handle, std::move(picture));
        by_name_.emplace(key, handle);
        return handle;
    }
    const Picture* PictureOf(Handle handle) const {
        const auto found = pictures_.find(handle);
        return found == pictures_.end() ? nullptr : &found->second;
    }

private:
    UINT_PTR next_ = 0x30000;
    std::map<Key, Handle> by_name_;
    std::map<Handle, Picture> pictures_;
};

struct LoadedPictures {
    Loaded<HICON, QIcon> icons;
    Loaded<HCURSOR, QCursor> cursors;
};

std::optional<LoadedPictures>& Pictures() {
    static auto* const pictures = new std::optional<LoadedPictures>;
    return *pictures;
}

LoadedPictures& ThePictures() {
    auto& pictures = Pictures();
    return pictures ? *pictures : pictures.emplace();
}

std::string KeyName(LPCSTR name) {
    if (IS_INTRESOURCE(name)) {
        return std::string("#").append(std::to_string(reinterpret_cast<UINT_PTR>(name)));
    }
    return name;
}

std::optional<QIcon> ReadIcon(HINSTANCE instance, LPCSTR name) {
    const QByteArray group = ResourceBytes(instance, name, RT_GROUP_ICON);
    QIcon icon;
    for (const QImage& image : ReadPictures(FileFromGroup(instance, group, kIconKind))) {
        icon.addPixmap(QPixmap::fromImage(image));
    }
    if (icon.isNull()) return std::nullopt;
    return icon;
}

std::optional<QCursor> ReadCursor(HINSTANCE instance, LPCSTR name) {
    const QByteArray group = ResourceBytes(instance, name, RT_GROUP_CURSOR);
    const QByteArray file = FileFromGroup(instance, group, kCursorKind);
    const QList<QImage> images = ReadPictures(file);
    if (images.isEmpty()) return std::nullopt;
    const int hot_x = WordAt(file, kGroupHeaderBytes + 4);
    const int hot_y = WordAt(file, kGroupHeaderBytes + 6);
    return QCursor(QPixmap::fromImage(images.first()), hot_x, hot_y);
}

} // namespace

QIcon IconBehind(HICON icon) {
    const QIcon* picture = ThePictures().icons.PictureOf(icon);
    return picture == nullptr ? QIcon() : *picture;
}

QCursor CursorBehind(HCURSOR cursor) {
    const QCursor* picture = ThePictures().cursors.PictureOf(cursor);
    return picture == nullptr ? QCursor(Qt::ArrowCursor) : *picture;
}

void ForgetPictures() {
    Pictures().reset();
}

} // namespace kelvo::desktop

HICON LoadIconA(HINSTANCE instance, LPCSTR name) {
    if (!OnUiThread() || name == nullptr) return nullptr;
    auto& icons = ThePictures().icons;
    const auto key = std::pair(instance, KeyName(name));
    if (const HICON known = icons.Find(key)) return known;
    if (instance == nullptr && name == IDI_APPLICATION) {
        return icons.Add(key, QApplication::style()->standardIcon(QStyle::SP_TitleBarMenuButton));
    }
    auto icon = ReadIcon(instance, name);
    return icon ? icons.Add(key, std::move(*icon)) : nullptr;
}

HCURSOR LoadCursorA(HINSTANCE instance, LPCSTR name) {
    if (!OnUiThread() || name == nullptr) return nullptr;
    auto& cursors = ThePictures().cursors;
    const auto key = std::pair(instance, KeyName(name));
    if (const HCURSOR known = cursors.Find(key)) return known;
    if (instance == nullptr && name == IDC_ARROW) return cursors.Add(key, QCursor(Qt::ArrowCursor));
    auto cursor = ReadCursor(instance, name);
    return cursor ? cursors.Add(key, std::move(*cursor)) : nullptr;
}
