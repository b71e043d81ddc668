#include "tools/kelvotool/picture/Waveform.h"

#include "framework/base/ByteReader.h"

#include <algorithm>
#include <array>

namespace kelvo::tool {

namespace {

constexpr std::array<std::uint8_t, 3> kGround{16, 18, 24};
constexpr std::array<std::uint8_t, 3> kWave{96, 200, 255};

} // namespace

Waveform::Waveform(std::uint32_t columns, std::uint64_t samples)
    : columns_(columns), total_(std::max<std::uint64_t>(samples, 1)) {}

void Waveform::Add(ByteView samples) {
    ByteReader reader{samples};
    while (reader.Remaining() >= 2) {
        const auto sample = static_cast<std::int16_t>(reader.ReadU16());
        const std::uint64_t at = std::min(added_, total_ - 1) * columns_.size() / total_;
        Column& column = columns_[at];
        column.lowest = std::min(column.lowest, sample);
        column.highest = std::max(column.highest, sample);
        ++added_;
    }
}

void Waveform::Draw(RgbImage& image) const {
    for (std::uint32_t y = 0; y < image.height; ++y)
        for (std::uint32_t x = 0; x < image.width; ++x)
            std::ranges::copy(kGround, image.Row(y) + std::size_t{x} * 3);
    const auto row_of = [&](std::int16_t sample) {
        const std::int64_t from_top = 32767 - std::int64_t{sample};
        return static_cast<std::uint32_t>(from_top * (image.height - 1) / 65535);
    };
    for (std::uint32_t x = 0; x < image.width; ++x) {
        const Column& column = columns_[std::uint64_t{x} * columns_.size() / image.width];
        for (std::uint32_t y = row_of(column.highest); y <= row_of(column.lowest); ++y)
            std::ranges::copy(kWave, image.Row(y) + std::size_t{x} * 3);
    }
}

} // namespace kelvo::tool
