#pragma once
// The lookup of every text that the framework shows with a number: the loaded language files, each
// covering one interval of string ids, else the Italian text that the caller brings.

#include "framework/base/CArray.h"
#include "framework/base/CString.h"

#include <cstdint>

namespace kelvo {

class XLanguageInfoClass {
public:
    /// One loaded file.
    struct LinguaFile {
        CArray<CString> texts; ///< index 0 is the text of first_id; empty where the file has none
        std::int32_t first_id = 0;
        std::int32_t last_id = 0;
        CString path;
        CString name; ///< title, ".", extension
    };

    /// The text of the first file whose interval holds the id, or the fallback. Any thread, once
    /// the files are loaded; the text lives as long as the table, or is the fallback itself.
    static const char* Translate(std::int32_t string_id, const char* fallback);
    /// Fewer than 2 characters empty it; a final separator is added where it is missing.
    static bool SetLanguageDirectory(const CString& directory);
    /// Reads a file of the language directory, or of the program's while there is none. A file of a
    /// known name, a missing and a damaged one change nothing; one whose interval meets another's
    /// is refused with a box. Texts that Translate gave before are no longer valid.
    static void AddLanguageFile(const CString& file_name);

    static std::int32_t LanguageFileCount();
    /// Forgets every file and the directory.
    static void Reset();
};

} // namespace kelvo
