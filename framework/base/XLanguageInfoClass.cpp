#include "framework/base/XLanguageInfoClass.h"

#include "framework/base/CObj.h"
#include "framework/base/ChFile.h"
#include "framework/base/FilePaths.h"
#include "framework/base/LanguageFile.h"
#include "framework/base/MemCheck.h"

#include <algorithm>
#include <string_view>

namespace kelvo {
namespace {

constexpr const char* kOverlapText = "Codici lingua errati! (Intersezione fra intervalli codici)";

/// A directory shorter than this counts as none.
constexpr std::int32_t kShortestDirectory = 2;

struct LanguageTable {
    CArray<XLanguageInfoClass::LinguaFile> files;
    CString directory;
};

LanguageTable& Table() {
    static LanguageTable table;
    return table;
}

/// Reads and parses the file at the path; false when it cannot be read or is no language file.
bool ReadLanguageFile(const CString& path, XLanguageInfoClass::LinguaFile& file) {
    ChFile source;
    if (!source.OpenReadOnly(path)) return false;
    const std::int64_t length = source.Size();
    if (length < 1) return false;
    const auto bytes = static_cast<std::size_t>(length);
    const MemBlock content(static_cast<std::uint8_t*>(TryResizeBlock(nullptr, bytes)));
    if (content == nullptr || !source.ReadAll(ByteSpan{content.get(), bytes})) return false;
    return ParseLanguageFile({reinterpret_cast<const char*>(content.get()), bytes}, file);
}

bool Intersects(const XLanguageInfoClass::LinguaFile& a, const XLanguageInfoClass::LinguaFile& b) {
    return a.first_id <= b.last_id && b.first_id <= a.last_id;
}

} // namespace

const char* XLanguageInfoClass::Translate(std::int32_t string_id, const char* fallback) {
    if (string_id < 0) return fallback;
    const CArray<LinguaFile>& files = Table().files;
    const auto* file = std::ranges::find_if(files.Items(), [string_id](const LinguaFile& each) {
                           return each.first_id <= string_id && string_id <= each.last_id;
                       }).base();
    if (file == files.end()) return fallback;
    const std::int32_t index = string_id - file->first_id;
    if (index >= file->texts.Count() || file->texts[index].IsEmpty()) return fallback;
    return file->texts[index].Text();
}

bool XLanguageInfoClass::SetLanguageDirectory(const CString& directory) {
    CString& stored = Table().directory;
    if (directory.Length() < kShortestDirectory) {
        stored.Clear();
        return true;
    }
    stored = directory;
    const char last = stored[stored.Length() - 1];
    if (last != '\\' && last != '/') stored += '\\';
    return true;
}

void XLanguageInfoClass::AddLanguageFile(const CString& file_name) {
    LanguageTable& table = Table();
    LinguaFile file;
    file.path =
        table.directory.Length() < kShortestDirectory ? ProgramDirectory() : table.directory;
    file.path += file_name;
    file.name = PathTitle(file.path) + "." + PathExtension(file.path);
    const auto same_name = [&file](const LinguaFile& each) { return each.name == file.name; };
    if (std::ranges::any_of(table.files, same_name)) return;
    if (!ReadLanguageFile(file.path, file)) return;
    const auto meets = [&file](const LinguaFile& each) { return Intersects(file, each); };
    if (std::ranges::any_of(table.files, meets)) {
        CObj::ErrorBox(kOverlapText);
        return;
    }
    table.files.Add(file);
}

std::int32_t XLanguageInfoClass::LanguageFileCount() {
    return Table().files.Count();
}

void XLanguageInfoClass::Reset() {
    Table().files.Clear();
    Table().directory.Clear();
}

} // namespace kelvo
