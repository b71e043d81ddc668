#pragma once
// Compiled resources made by hand, so that a test can damage them byte by byte.

#include "platform/base/resource_layout.h"
#include "platform/base/resources.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace kelvo::desktop {

struct ResourceForTest {
    WORD type = 0;
    std::string name; ///< empty: the number
    WORD number = 0;
    std::vector<std::uint8_t> data;
};

inline void Append32(std::vector<std::uint8_t>& bytes, std::uint32_t value) {
    for (int shift = 0; shift < 32; shift += 8) {
        bytes.push_back(static_cast<std::uint8_t>(value >> static_cast<unsigned>(shift)));
    }
}

/// A module of its own with these resources; it lives as long as the program, as every module does.
inline HMODULE ModuleWith(const std::vector<ResourceForTest>& resources) {
    namespace layout = platform::resource_layout;
    const std::size_t texts_at = layout::kHeaderSize + resources.size() * layout::kEntrySize;
    std::vector<std::uint8_t> texts;
    std::vector<std::uint32_t> names;
    for (const ResourceForTest& each : resources) {
        if (each.name.empty()) {
            names.push_back(each.number);
            continue;
        }
        names.push_back(static_cast<std::uint32_t>(texts_at + texts.size()) | layout::kIsText);
        texts.push_back(static_cast<std::uint8_t>(each.name.size()));
        texts.push_back(0);
        texts.insert(texts.end(), each.name.begin(), each.name.end());
    }
    const auto aligned = [](std::size_t size) { return (size + 7) / 8 * 8; };
    std::size_t data_at = aligned(texts_at + texts.size());
    std::vector<std::uint8_t> bytes;
    for (const std::uint32_t word :
         {layout::kMagic, layout::kVersion, static_cast<std::uint32_t>(resources.size()), 0U}) {
        Append32(bytes, word);
    }
    for (std::size_t i = 0; i < resources.size(); ++i) {
        Append32(bytes, resources[i].type);
        Append32(bytes, names[i]);
        Append32(bytes, 0);
        Append32(bytes, static_cast<std::uint32_t>(data_at));
        Append32(bytes, static_cast<std::uint32_t>(resources[i].data.size()));
        data_at = aligned(data_at + resources[i].data.size());
    }
    bytes.insert(bytes.end(), texts.begin(), texts.end());
    for (const ResourceForTest& each : resources) {
        bytes.resize(aligned(bytes.size()));
        bytes.insert(bytes.end(), each.data.begin(), each.data.end());
    }
    static std::vector<std::unique_ptr<std::vector<std::uint8_t>>> kept;
    kept.push_back(std::make_unique<std::vector<std::uint8_t>>(std::move(bytes)));
    const HMODULE module = platform::AddModule();
    return platform::RegisterResources(module, *kept.back()) ? module : nullptr;
}

} // namespace kelvo::desktop
