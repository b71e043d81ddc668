// CDialog: rich-text controls, and the streams between them and blocks of memory.

#include "framework/base/ChFile.h"
#include "framework/base/MemCheck.h"
#include "framework/window/CDialog.h"
#include "platform/desktop/controls.h"
#include "platform/desktop/dialogs.h"
#include "platform/desktop/messages.h"
#include "platform/desktop/rich_text.h"

#include <algorithm>
#include <cstring>

namespace kelvo {
namespace {

constexpr char kLibrary[] = "RICHED32.DLL";
constexpr std::int64_t kLongestDocument = 64 << 20;
constexpr std::int32_t kFirstRoom = 10000;

/// The whole file in a block of its own. @return false when it cannot be read
bool ReadDocument(LPCSTR file_name, CDialog::RTFEditInfoStruct& record) {
    ChFile file;
    if (!file.OpenReadOnly(file_name)) return false;
    const std::int64_t length = file.FileLength();
    if (length <= 0 || length > kLongestDocument) return false;
    record.size = static_cast<std::uint32_t>(length);
    record.data = static_cast<char*>(TryResizeBlock(nullptr, record.size));
    if (record.data == nullptr) return false;
    return file.ReadAll({reinterpret_cast<std::uint8_t*>(record.data), record.size});
}

void ReleaseRecord(CDialog::RTFEditInfoStruct& record) {
    MemRelease(record.data);
    record = {};
}

} // namespace

void CDialog::LoadRichEditSupport() {
    InitCommonControls();
    LoadLibraryA(kLibrary); // the classes then stay until the program ends
}

int CDialog::LoadRichText(int id, LPCSTR file_name) {
    RTFEditInfoStruct record;
    record.streams_in = 1;
    if (!ReadDocument(file_name, record) || rich_texts_.Add(record) == 0) {
        ReleaseRecord(record);
        return 0;
    }
    const std::int32_t place = rich_texts_.Count() - 1;
    SendDlgItemMessageA(Window(), id, EM_EXLIMITTEXT, 0, 0);
    EDITSTREAM stream{reinterpret_cast<DWORD_PTR>(&rich_texts_[place]), kEditStreamBadFormat,
                      &EditStreamCallback};
    SendDlgItemMessageA(Window(), id, EM_STREAMIN, SF_RTF, reinterpret_cast<LPARAM>(&stream));
    ReleaseRecord(rich_texts_[place]); // where the control did not read to the end
    rich_texts_.RemoveAt(place);
    return stream.dwError == kEditStreamBadFormat || stream.dwError == kEditStreamTooLong ? 0 : 1;
}

int CDialog::ReadRichText(int id, CString& text) {
    text.Clear();
    text.Reserve(kFirstRoom);
    RTFEditInfoStruct record;
    record.target = &text;
    if (rich_texts_.Add(record) == 0) return 0;
    const std::int32_t place = rich_texts_.Count() - 1;
    EDITSTREAM stream{reinterpret_cast<DWORD_PTR>(&rich_texts_[place]), 0, &EditStreamCallback};
    SendDlgItemMessageA(Window(), id, EM_STREAMOUT, SF_RTF, reinterpret_cast<LPARAM>(&stream));
    rich_texts_.RemoveAt(place);
    return 1;
}

DWORD CDialog::EditStreamCallback(DWORD_PTR cookie, BYTE* buffer, LONG count, LONG* moved) {
    auto& record = *reinterpret_cast<RTFEditInfoStruct*>(cookie);
    const auto room = static_cast<std::uint32_t>(std::max<LONG>(count, 0));
    std::uint32_t done = 0;
    if (record.streams_in != 0) {
        done = std::min(room, record.size - record.position);
        if (done > 0) {
            std::memcpy(buffer, record.data + record.position, done);
            record.position += done;
        } else if (record.position == record.size) {
            ReleaseRecord(record);
            record.streams_in = 1; // asked once more, it has nothing to give either
        }
    } else if (record.target != nullptr) {
        record.target->Append({reinterpret_cast<const char*>(buffer), room});
        done = room;
    }
    *moved = static_cast<LONG>(done);
    return done == 0 ? 1 : 0;
}

} // namespace kelvo
