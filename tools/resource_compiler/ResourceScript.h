#pragma once
// Compiles a resource script into resources, and these into the bytes that the program registers.

#include "tools/resource_compiler/ScriptTokens.h"
#include "tools/resource_compiler/TokenCursor.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kelvo::resource_compiler {

struct CompiledResource {
    NumberOrText type;
    NumberOrText name;
    std::uint16_t language = 0;
    std::vector<std::uint8_t> data;
};

struct CompiledScript {
    std::vector<CompiledResource> resources;
    std::vector<std::string> files; ///< the script, and all that it names
    std::optional<ScriptError> error;
};

/// With an error, what came before it.
[[nodiscard]] CompiledScript CompileScript(const std::string& file, const ScriptOptions& options);

/// The layout of platform/base/resource_layout.h.
[[nodiscard]] std::vector<std::uint8_t>
PackResources(const std::vector<CompiledResource>& resources);

/// A source file that holds these bytes and registers them with the program's module before its
/// entry runs. It must be linked by itself, not out of an archive, where nothing asks for it.
[[nodiscard]] std::string SourceFileFor(const std::vector<std::uint8_t>& packed);

} // namespace kelvo::resource_compiler
