#pragma once
// What a pipeline makes of records: their fingerprints, or records coded in another type together
// with the fingerprint of what a decoder will make of them.

#include "container/ContainerHeader.h"
#include "framework/base/Bytes.h"
#include "tools/kelvotool/film/RecordPipeline.h"
#include "tools/kelvotool/film/Sha256.h"

#include <cstdint>
#include <functional>
#include <memory>

namespace kelvo::tool {

/// What is kept of a record until it is read again: a part of the hashes of its bytes and its side
/// block. Never kNotComparable.
using Fingerprint = std::uint64_t;
inline constexpr Fingerprint kNotComparable = 0;
Fingerprint FingerprintOf(Sha256& sha256, ByteView record, ByteView side);

using StageFactory = std::function<std::unique_ptr<RecordStage>()>;

/// Only fingerprints.
StageFactory MakeFingerprints();

/// Records coded in the header's type: `made` is the stored payload, the fingerprint that of the
/// decoded new record. A sound without side blocks gets empty ones.
/// @param header  of the new container; its record numbers are those of the source
StageFactory MakeCoded(const ContainerHeader& header);

/// Where a stage that codes in the header's type may begin anew: see PipelinePlan::chain.
std::uint32_t ChainOf(const ContainerHeader& header);

} // namespace kelvo::tool
