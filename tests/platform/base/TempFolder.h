#pragma once
// A folder of a test's own, gone with everything in it when the test ends.

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <system_error>

class TempFolder : public testing::Test {
protected:
    TempFolder() {
        std::string pattern =
            (std::filesystem::temp_directory_path() / "kelvo-test-XXXXXX").string();
        folder_ = mkdtemp(pattern.data());
    }
    ~TempFolder() override {
        std::error_code failure;
        std::filesystem::remove_all(folder_, failure);
    }

    std::string Path(const std::string& name) const { return folder_ + '/' + name; }

    std::string Make(const std::string& name, const std::string& content = "") const {
        const std::string path = Path(name);
        std::filesystem::create_directories(std::filesystem::path{path}.parent_path());
        std::ofstream{path, std::ios::binary} << content;
        return path;
    }

    static std::string Content(const std::string& path) {
        std::ifstream stream{path, std::ios::binary};
        return {std::istreambuf_iterator<char>{stream}, {}};
    }

    std::string folder_;
};
