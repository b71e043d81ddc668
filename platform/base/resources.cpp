#include "platform/base/resources.h"

#include "platform/base/Immortal.h"
#include "platform/base/file_names.h"
#include "platform/base/paths.h"
#include "platform/base/resource_layout.h"

#include <charconv>
#include <cstring>
#include <deque>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace {

using ResourceName = std::variant<WORD, std::string>;

constexpr WORD kItalian = 0x10;
constexpr WORD kPrimaryMask = 0x3FF;

} // namespace

struct ResourceObject {
    ResourceName type;
    ResourceName name;
    WORD language = 0;
    std::span<const std::uint8_t> data;
};

struct ModuleObject {
    std::deque<ResourceObject> resources; ///< never moved: HRSRCs point at them
};

namespace {

// Modules are never unloaded, and what is registered stays.
struct ModuleTable {
    std::mutex mutex; ///< guards all below
    ModuleObject program;
    std::deque<ModuleObject> others;

    bool Has(HMODULE module) {
        if (module == &program) return true;
        for (ModuleObject& other : others) {
            if (&other == module) return true;
        }
        return false;
    }
};

ModuleTable& Modules() {
    static kelvo::platform::Immortal<ModuleTable> modules;
    return *modules;
}

HMODULE ProgramFor(HMODULE module) {
    return module != nullptr ? module : &Modules().program;
}

ResourceName NameFrom(LPCSTR name) {
    if (IS_INTRESOURCE(name)) return static_cast<WORD>(reinterpret_cast<UINT_PTR>(name));
    const std::string_view text = name;
    WORD number = 0;
    const char* const end = text.data() + text.size();
    if (text.starts_with('#')) {
        const auto [stop, failure] = std::from_chars(text.data() + 1, end, number);
        if (failure == std::errc{} && stop == end) return number;
    }
    return std::string{text};
}

bool SameName(const ResourceName& a, const ResourceName& b) {
    if (a.index() != b.index()) return false;
    if (std::holds_alternative<WORD>(a)) return a == b;
    return kelvo::platform::EqualWithoutCase(std::get<std::string>(a), std::get<std::string>(b));
}

// The smaller, the better it fits the language that is asked for.
int LanguageRank(WORD language, WORD wanted) {
    if (language == wanted) return 0;
    const WORD primary = language & kPrimaryMask;
    if (wanted != 0 && primary == (wanted & kPrimaryMask)) return 1;
    if (language == 0) return 2;
    return primary == kItalian ? 3 : 4;
}

HRSRC Find(HMODULE module, const ResourceName& type, const ResourceName& name, WORD language) {
    ModuleTable& modules = Modules();
    const std::scoped_lock lock{modules.mutex};
    if (!modules.Has(module)) {
        SetLastError(ERROR_INVALID_HANDLE);
        return nullptr;
    }
    const ResourceObject* best = nullptr;
    bool type_known = false;
    for (const ResourceObject& resource : module->resources) {
        if (!SameName(resource.type, type)) continue;
        type_known = true;
        if (!SameName(resource.name, name)) continue;
        if (best == nullptr ||
            LanguageRank(resource.language, language) < LanguageRank(best->language, language)) {
            best = &resource;
        }
    }
    if (best == nullptr) {
        SetLastError(type_known ? ERROR_RESOURCE_NAME_NOT_FOUND : ERROR_RESOURCE_TYPE_NOT_FOUND);
    }
    return best;
}

// The resource if it is one of the module's, else null and the error.
const ResourceObject* Own(HMODULE module, HRSRC wanted) {
    ModuleTable& modules = Modules();
    const std::scoped_lock lock{modules.mutex};
    if (modules.Has(module)) {
        for (const ResourceObject& resource : module->resources) {
            if (&resource == wanted) return wanted;
        }
    }
    SetLastError(ERROR_INVALID_HANDLE);
    return nullptr;
}

// Reads compiled resources; every place it is told of is checked to lie inside them.
class CompiledReader {
public:
    explicit CompiledReader(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}

    std::optional<std::vector<ResourceObject>> ReadAll() const {
        using namespace kelvo::platform::resource_layout;
        if (bytes_.size() < kHeaderSize || Number32(0) != kMagic || Number32(4) != kVersion) {
            return std::nullopt;
        }
        const std::size_t count = Number32(8);
        if (count > (bytes_.size() - kHeaderSize) / kEntrySize) return std::nullopt;
        std::vector<ResourceObject> resources;
        resources.reserve(count);
        for (std::size_t i = 0; i < count; ++i) {
            auto resource = ReadEntry(kHeaderSize + i * kEntrySize);
            if (!resource) return std::nullopt;
            resources.push_back(std::move(*resource));
        }
        return resources;
    }

private:
    bool Has(std::size_t offset, std::size_t length) const {
        return offset <= bytes_.size() && length <= bytes_.size() - offset;
    }
    std::uint32_t Number32(std::size_t offset) const {
        std::uint32_t value = 0;
        std::memcpy(&value, bytes_.data() + offset, sizeof value);
        return value;
    }
    std::uint16_t Number16(std::size_t offset) const {
        std::uint16_t value = 0;
        std::memcpy(&value, bytes_.data() + offset, sizeof value);
        return value;
    }

    std::optional<ResourceObject> ReadEntry(std::size_t entry) const {
        const auto type = ReadName(Number32(entry));
        const auto name = ReadName(Number32(entry + 4));
        const std::uint32_t language = Number32(entry + 8);
        const std::size_t offset = Number32(entry + 12);
        const std::size_t length = Number32(entry + 16);
        if (!type || !name || language > 0xFFFF || !Has(offset, length)) return std::nullopt;
        if (offset % kelvo::platform::resource_layout::kDataAlignment != 0) return std::nullopt;
        return ResourceObject{*type, *name, static_cast<WORD>(language),
                              bytes_.subspan(offset, length)};
    }

    std::optional<ResourceName> ReadName(std::uint32_t stored) const {
        constexpr std::uint32_t kIsText = kelvo::platform::resource_layout::kIsText;
        if ((stored & kIsText) == 0) {
            if (stored > 0xFFFF) return std::nullopt;
            return static_cast<WORD>(stored);
        }
        const std::size_t offset = stored & ~kIsText;
        if (!Has(offset, 2)) return std::nullopt;
        const std::size_t length = Number16(offset);
        if (!Has(offset + 2, length)) return std::nullopt;
        const auto text = bytes_.subspan(offset + 2, length);
        return std::string{text.begin(), text.end()};
    }

    std::span<const std::uint8_t> bytes_;
};

std::string_view TitleOf(std::string_view file) {
    const std::size_t last = file.find_last_of("/\\");
    return last == std::string_view::npos ? file : file.substr(last + 1);
}

bool IsProgramName(std::string_view name) {
    const std::string_view wanted = TitleOf(name);
    const std::string_view title = TitleOf(kelvo::platform::ProgramFile());
    if (kelvo::platform::EqualWithoutCase(wanted, title)) return true;
    const std::size_t dot = wanted.rfind('.');
    return dot != std::string_view::npos &&
           kelvo::platform::EqualWithoutCase(wanted.substr(0, dot), title);
}

} // namespace

HMODULE GetModuleHandleA(LPCSTR name) {
    if (name == nullptr || IsProgramName(name)) return &Modules().program;
    SetLastError(ERROR_MOD_NOT_FOUND);
    return nullptr;
}

HRSRC FindResourceA(HMODULE module, LPCSTR name, LPCSTR type) {
    return Find(ProgramFor(module), NameFrom(type), NameFrom(name), 0);
}

HRSRC FindResourceExA(HMODULE module, LPCSTR type, LPCSTR name, WORD language) {
    return Find(ProgramFor(module), NameFrom(type), NameFrom(name), language);
}

HGLOBAL LoadResource(HMODULE module, HRSRC resource) {
    const ResourceObject* const own = Own(ProgramFor(module), resource);
    // The data itself: nothing needs to be brought in from anywhere. Nobody may write there.
    return own != nullptr ? const_cast<std::uint8_t*>(own->data.data()) : nullptr;
}

LPVOID LockResource(HGLOBAL loaded) {
    return loaded;
}

DWORD SizeofResource(HMODULE module, HRSRC resource) {
    const ResourceObject* const own = Own(ProgramFor(module), resource);
    return own != nullptr ? static_cast<DWORD>(own->data.size()) : 0;
}

namespace kelvo::platform {

bool RegisterResources(HMODULE module, std::span<const std::uint8_t> bytes) {
    auto resources = CompiledReader{bytes}.ReadAll();
    if (!resources) return false;
    ModuleTable& modules = Modules();
    const HMODULE target = ProgramFor(module);
    const std::scoped_lock lock{modules.mutex};
    if (!modules.Has(target)) return false;
    // In front of the earlier ones, in their own order; growing at an end moves no element.
    for (auto resource = resources->rbegin(); resource != resources->rend(); ++resource) {
        target->resources.push_front(std::move(*resource));
    }
    return true;
}

std::span<const std::uint8_t> ResourceBytesAt(const void* first) {
    ModuleTable& modules = Modules();
    const std::scoped_lock lock{modules.mutex};
    const auto find_in = [first](const ModuleObject& module) {
        for (const ResourceObject& resource : module.resources) {
            if (resource.data.data() == first) return resource.data;
        }
        return std::span<const std::uint8_t>{};
    };
    std::span<const std::uint8_t> bytes = find_in(modules.program);
    for (const ModuleObject& other : modules.others) {
        if (bytes.empty()) bytes = find_in(other);
    }
    return bytes;
}

HMODULE AddModule() {
    ModuleTable& modules = Modules();
    const std::scoped_lock lock{modules.mutex};
    return &modules.others.emplace_back();
}

} // namespace kelvo::platform
