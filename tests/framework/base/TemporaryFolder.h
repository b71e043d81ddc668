#pragma once
// A folder of its own for each test, gone when the test is.

#include "framework/base/CString.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

namespace kelvo {

class TemporaryFolder {
public:
    TemporaryFolder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "kelvo-XXXXXX").string();
        path_ = mkdtemp(pattern.data()) == nullptr ? "" : pattern;
        EXPECT_FALSE(path_.empty());
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    /// Ends with a separator.
    CString Directory() const { return CString(std::string_view(path_ + '/')); }
    CString File(const char* name) const { return Directory() + name; }

    CString Write(const char* name, std::string_view content) const {
        const CString path = File(name);
        std::ofstream(path.c_str(), std::ios::binary) << content;
        return path;
    }
    static std::string Content(const CString& path) {
        std::ifstream file(path.c_str(), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

private:
    std::string path_;
};

} // namespace kelvo
