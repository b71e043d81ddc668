#include "platform/desktop/clipboard.h"

#include "platform/base/memory.h"
#include "platform/desktop/Dib.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QImage>
#include <QMimeData>
#include <QPainter>
#include <QThread>

#include <cstring>
#include <optional>
#include <utility>

using namespace kelvo::desktop;

namespace {

/// Between OpenClipboard and CloseClipboard; UI thread only.
struct OpenedClipboard {
    HWND owner = nullptr;
    bool is_emptied = false;
    HGLOBAL given_out = nullptr; ///< by GetClipboardData
    HGLOBAL taken_in = nullptr;  ///< by SetClipboardData
};

std::optional<OpenedClipboard>& Opened() {
    static std::optional<OpenedClipboard> opened;
    return opened;
}

QClipboard* DesktopClipboard() {
    const auto* application = qobject_cast<QGuiApplication*>(QCoreApplication::instance());
    const bool may_ask =
        application != nullptr && application->thread() == QThread::currentThread();
    return may_ask ? QGuiApplication::clipboard() : nullptr;
}

// Bottom-up, 24 bits, without a palette: the form that every reader of pictures knows.
HGLOBAL PackedDibFrom(const QImage& picture) {
    if (picture.isNull()) return nullptr;
    // What is transparent is shown on white, as paper would.
    QImage opaque(picture.size(), QImage::Format_RGB32);
    if (opaque.isNull()) return nullptr;
    opaque.fill(Qt::white);
    QPainter(&opaque).drawImage(0, 0, picture);
    const QImage rows = opaque.convertToFormat(QImage::Format_BGR888);
    const auto width = static_cast<std::size_t>(rows.width());
    const auto height = static_cast<std::size_t>(rows.height());
    const std::size_t stride = (width * 24 + 31) / 32 * 4;
    const std::size_t length = stride * height;
    if (rows.isNull() || length > 0x7FFFFFFF - sizeof(BITMAPINFOHEADER)) return nullptr;
    const HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, sizeof(BITMAPINFOHEADER) + length);
    auto* bytes = static_cast<std::uint8_t*>(GlobalLock(block));
    if (bytes == nullptr) return nullptr;
    BITMAPINFOHEADER header{};
    header.biSize = sizeof(header);
    header.biWidth = rows.width();
    header.biHeight = rows.height();
    header.biPlanes = 1;
    header.biBitCount = 24;
    header.biSizeImage = static_cast<DWORD>(length);
    std::memcpy(bytes, &header, sizeof(header));
    std::uint8_t* row = bytes + sizeof(header);
    for (int y = rows.height() - 1; y >= 0; --y, row += stride) {
        std::memcpy(row, rows.constScanLine(y), width * 3);
    }
    GlobalUnlock(block);
    return block;
}

QImage PictureFrom(HGLOBAL block) {
    const auto* bytes = static_cast<const std::uint8_t*>(GlobalLock(block));
    if (bytes == nullptr) return {};
    QImage picture;
    if (const auto dib = ViewPackedDib({bytes, GlobalSize(block)})) {
        picture = QImage(dib->width, dib->height, QImage::Format_RGB32);
        for (int y = 0; y < picture.height(); ++y) {
            ExpandPixels(*dib, dib->Row(y), 0, dib->width,
                         reinterpret_cast<std::uint32_t*>(picture.scanLine(y)));
        }
    }
    GlobalUnlock(block);
    return picture;
}

} // namespace

BOOL OpenClipboard(HWND owner) {
    if (Opened() || DesktopClipboard() == nullptr) return FALSE;
    Opened() = OpenedClipboard{owner};
    return TRUE;
}

BOOL CloseClipboard() {
    if (!Opened()) return FALSE;
    const OpenedClipboard closing = *std::exchange(Opened(), std::nullopt);
    if (closing.given_out != nullptr) GlobalFree(closing.given_out);
    QClipboard* clipboard = DesktopClipboard();
    if (closing.taken_in != nullptr) {
        if (clipboard != nullptr) clipboard->setImage(PictureFrom(closing.taken_in));
        GlobalFree(closing.taken_in);
    } else if (closing.is_emptied && clipboard != nullptr) {
        clipboard->clear();
    }
    return TRUE;
}

BOOL IsClipboardFormatAvailable(UINT format) {
    const QClipboard* clipboard = DesktopClipboard();
    const QMimeData* offered = clipboard != nullptr ? clipboard->mimeData() : nullptr;
    return format == CF_DIB && offered != nullptr && offered->hasImage() ? TRUE : FALSE;
}

HANDLE GetClipboardData(UINT format) {
    if (!Opened() || format != CF_DIB) return nullptr;
    OpenedClipboard& opened = *Opened();
    if (opened.taken_in != nullptr) return opened.taken_in;
    if (opened.given_out == nullptr && !opened.is_emptied) {
        const QClipboard* clipboard = DesktopClipboard();
        if (clipboard != nullptr) opened.given_out = PackedDibFrom(clipboard->image());
    }
    return opened.given_out;
}

BOOL EmptyClipboard() {
    if (!Opened()) return FALSE;
    OpenedClipboard& opened = *Opened();
    opened.is_emptied = true;
    for (HGLOBAL* block : {&opened.given_out, &opened.taken_in}) {
        if (*block != nullptr) GlobalFree(std::exchange(*block, nullptr));
    }
    return TRUE;
}

HANDLE SetClipboardData(UINT format, HANDLE block) {
    if (!Opened() || !Opened()->is_emptied || format != CF_DIB) return nullptr;
    if (PictureFrom(block).isNull()) return nullptr;
    OpenedClipboard& opened = *Opened();
    if (opened.taken_in != nullptr) GlobalFree(opened.taken_in);
    opened.taken_in = block;
    return block;
}
