// The two forms in which compiled resources leave the compiler; declared in ResourceScript.h.

#include "tools/resource_compiler/ResourceScript.h"
#include "tools/resource_compiler/TemplateBytes.h"

#include "platform/base/resource_layout.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>

namespace kelvo::resource_compiler {

namespace {

namespace layout = platform::resource_layout;

constexpr std::size_t kWordsInLine = 5;

constexpr const char* kSourceHead = R"(// Made by the resource compiler.

#include "platform/base/resources.h"

#include <bit>
#include <cstdint>

namespace {

static_assert(std::endian::native == std::endian::little);

alignas(8) constexpr std::uint64_t kWords[] = {
)";

constexpr const char* kSourceTail = R"(};

[[maybe_unused]] const bool kRegistered = kelvo::platform::RegisterResources(
    nullptr, {reinterpret_cast<const std::uint8_t*>(kWords), sizeof kWords});

} // namespace
)";

std::size_t Aligned(std::size_t offset) {
    return (offset + layout::kDataAlignment - 1) / layout::kDataAlignment * layout::kDataAlignment;
}

// Numbers stand in the entry itself; texts are collected behind the entries.
class TextPool {
public:
    explicit TextPool(std::size_t start) : start_(start) {}

    std::uint32_t Place(const NumberOrText& value) {
        if (const auto* const number = std::get_if<std::uint16_t>(&value)) return *number;
        const auto& text = std::get<std::string>(value);
        const auto offset = static_cast<std::uint32_t>(start_ + bytes_.Size());
        bytes_.AddU16(static_cast<std::uint16_t>(text.size()));
        bytes_.AddBytes({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
        return offset | layout::kIsText;
    }
    std::size_t End() const { return start_ + bytes_.Size(); }
    std::vector<std::uint8_t> Finish() { return bytes_.Finish(); }

private:
    std::size_t start_;
    TemplateBytes bytes_;
};

} // namespace

std::vector<std::uint8_t> PackResources(const std::vector<CompiledResource>& resources) {
    TextPool texts{layout::kHeaderSize + resources.size() * layout::kEntrySize};
    std::vector<std::array<std::uint32_t, 2>> names;
    for (const CompiledResource& resource : resources) {
        names.push_back({texts.Place(resource.type), texts.Place(resource.name)});
    }
    TemplateBytes packed;
    packed.AddU32(layout::kMagic);
    packed.AddU32(layout::kVersion);
    packed.AddU32(static_cast<std::uint32_t>(resources.size()));
    packed.AddU32(0);
    std::size_t offset = Aligned(texts.End());
    for (std::size_t i = 0; i < resources.size(); ++i) {
        packed.AddU32(names[i][0]);
        packed.AddU32(names[i][1]);
        packed.AddU32(resources[i].language);
        packed.AddU32(static_cast<std::uint32_t>(offset));
        packed.AddU32(static_cast<std::uint32_t>(resources[i].data.size()));
        offset = Aligned(offset + resources[i].data.size());
    }
    packed.AddBytes(texts.Finish());
    for (const CompiledResource& resource : resources) {
        packed.AlignTo(layout::kDataAlignment);
        packed.AddBytes(resource.data);
    }
    packed.AlignTo(layout::kDataAlignment);
    return packed.Finish();
}

// Words of eight bytes, because a compiler takes an eighth of the time for them.
std::string SourceFileFor(const std::vector<std::uint8_t>& packed) {
    std::string source = kSourceHead;
    for (std::size_t offset = 0; offset < packed.size(); offset += sizeof(std::uint64_t)) {
        std::uint64_t word = 0;
        std::memcpy(&word, packed.data() + offset, std::min(sizeof word, packed.size() - offset));
        std::array<char, 16> digits{};
        const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), word, 16).ptr;
        const bool starts_line = offset / sizeof word % kWordsInLine == 0;
        source += starts_line ? "    0x" : " 0x";
        source.append(digits.data(), end);
        const bool ends_line = offset / sizeof word % kWordsInLine == kWordsInLine - 1;
        source += ends_line ? ",\n" : ",";
    }
    return source + kSourceTail;
}

} // namespace kelvo::resource_compiler
