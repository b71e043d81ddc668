#include "tools/media/Palette.h"

#include <algorithm>
#include <span>

namespace kelvo::media_tool {

namespace {

constexpr std::size_t kCells = 32768; ///< colours of five bits a channel
constexpr std::uint32_t kOpaque = 0xFF000000;

/// A colour of five bits a channel, and how many pixels have it.
struct Cell {
    std::array<std::uint8_t, 3> channels{};
    std::uint32_t pixels = 0;
};

std::size_t CellOf(std::uint8_t red, std::uint8_t green, std::uint8_t blue) {
    return static_cast<std::size_t>(red >> 3U) << 10U |
           static_cast<std::size_t>(green >> 3U) << 5U | static_cast<std::size_t>(blue >> 3U);
}

std::uint32_t Widened(std::uint32_t five_bits) {
    return five_bits << 3U | five_bits >> 2U;
}

/// Cells that will share a colour.
using Box = std::span<Cell>;

/// The channel in which the box is widest, and how wide.
std::pair<std::size_t, int> WidestChannel(Box box) {
    std::pair<std::size_t, int> widest{0, -1};
    for (std::size_t channel = 0; channel < 3; ++channel) {
        const auto [least, most] = std::ranges::minmax(
            box, {}, [channel](const Cell& cell) { return cell.channels[channel]; });
        const int width = most.channels[channel] - least.channels[channel];
        if (width > widest.second) widest = {channel, width};
    }
    return widest;
}

std::uint64_t PixelsOf(Box box) {
    std::uint64_t pixels = 0;
    for (const Cell& cell : box)
        pixels += cell.pixels;
    return pixels;
}

/// Cuts where half of the pixels are on either side. @return the first cell of the upper half
std::size_t Halve(Box box) {
    const std::size_t channel = WidestChannel(box).first;
    std::ranges::sort(box, {}, [channel](const Cell& cell) { return cell.channels[channel]; });
    const std::uint64_t half = PixelsOf(box) / 2;
    std::uint64_t below = 0;
    std::size_t cut = 0;
    while (cut + 1 < box.size() && (cut == 0 || below + box[cut].pixels <= half))
        below += box[cut++].pixels;
    return cut;
}

std::uint32_t MeanOf(Box box) {
    std::array<std::uint64_t, 3> sums{};
    for (const Cell& cell : box) {
        for (std::size_t channel = 0; channel < 3; ++channel)
            sums[channel] += std::uint64_t{Widened(cell.channels[channel])} * cell.pixels;
    }
    const std::uint64_t pixels = PixelsOf(box);
    std::uint32_t colour = 0xFF;
    for (const std::uint64_t sum : sums)
        colour = colour << 8U | static_cast<std::uint32_t>((sum + pixels / 2) / pixels);
    return colour;
}

} // namespace

bool Palette::Choose(ByteView pixels) {
    exact_ = TakeOwnColours(pixels);
    if (!exact_) CutBoxes(pixels);
    return exact_;
}

bool Palette::TakeOwnColours(ByteView pixels) {
    own_.clear();
    std::uint32_t last = 0;
    for (std::size_t i = 0; i + 2 < pixels.size(); i += 3) {
        const std::uint32_t colour = kOpaque | static_cast<std::uint32_t>(pixels[i]) << 16U |
                                     static_cast<std::uint32_t>(pixels[i + 1]) << 8U |
                                     pixels[i + 2];
        if (colour == last) continue;
        last = colour;
        const auto place = std::ranges::lower_bound(own_, colour);
        if (place != own_.end() && *place == colour) continue;
        if (own_.size() == kPaletteColours) return false;
        own_.insert(place, colour);
    }
    colours_.fill(kOpaque);
    std::ranges::copy(own_, colours_.begin());
    return true;
}

void Palette::CutBoxes(ByteView pixels) {
    std::vector<std::uint32_t> counts(kCells);
    for (std::size_t i = 0; i + 2 < pixels.size(); i += 3)
        ++counts[CellOf(pixels[i], pixels[i + 1], pixels[i + 2])];
    std::vector<Cell> cells;
    for (std::size_t i = 0; i < kCells; ++i) {
        if (counts[i] == 0) continue;
        cells.push_back(
            {{static_cast<std::uint8_t>(i >> 10U & 31U), static_cast<std::uint8_t>(i >> 5U & 31U),
              static_cast<std::uint8_t>(i & 31U)},
             counts[i]});
    }
    std::vector<Box> boxes{Box(cells)};
    while (boxes.size() < kPaletteColours) {
        // What is wide and has many pixels gains most by being cut.
        const auto worth = [](const Box& box) {
            return static_cast<std::uint64_t>(WidestChannel(box).second) * PixelsOf(box);
        };
        const auto largest = std::ranges::max_element(boxes, {}, worth);
        if (worth(*largest) == 0) break;
        const std::size_t cut = Halve(*largest);
        const Box upper = largest->subspan(cut);
        *largest = largest->first(cut);
        boxes.push_back(upper);
    }
    colours_.fill(kOpaque);
    indices_.assign(kCells, 0);
    for (std::size_t i = 0; i < boxes.size(); ++i) {
        colours_[i] = MeanOf(boxes[i]);
        for (const Cell& cell : boxes[i]) {
            const auto& channels = cell.channels;
            indices_[static_cast<std::size_t>(channels[0]) << 10U |
                     static_cast<std::size_t>(channels[1]) << 5U | channels[2]] =
                static_cast<std::uint8_t>(i);
        }
    }
}

std::uint8_t Palette::IndexOf(std::uint8_t red, std::uint8_t green, std::uint8_t blue) const {
    if (!exact_) return indices_[CellOf(red, green, blue)];
    const std::uint32_t colour = kOpaque | static_cast<std::uint32_t>(red) << 16U |
                                 static_cast<std::uint32_t>(green) << 8U | blue;
    return static_cast<std::uint8_t>(std::ranges::lower_bound(own_, colour) - own_.begin());
}

} // namespace kelvo::media_tool
