#include "platform/desktop/Stretch.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <span>
#include <vector>

namespace kelvo::desktop {

namespace {

// Buffers that grow to the widest picture and then serve every further one of their thread.
struct Scratch {
    std::vector<std::uint32_t> row;
    std::vector<int> columns;
};

Scratch& ThreadScratch() {
    thread_local Scratch scratch;
    return scratch;
}

/// One direction of a placement.
struct Axis {
    int target_first;
    int target_length;
    int source_first;
    int source_length;
    int picture_length;
    bool mirrored;

    // The source pixel under the centre of a target pixel; may lie outside of the picture.
    std::int64_t SourceOf(int target) const {
        std::int64_t i = std::int64_t{target} - target_first;
        if (mirrored) i = target_length - 1 - i;
        return source_first + (2 * i + 1) * source_length / (2 * std::int64_t{target_length});
    }
    bool HasSource(int target) const {
        const std::int64_t source = SourceOf(target);
        return source >= 0 && source < picture_length;
    }
    // Shrinks [first, last] to the target pixels that have a source: these are neighbours, because
    // the source moves in one direction only.
    void Trim(int& first, int& last) const {
        while (first <= last && !HasSource(first))
            ++first;
        while (first <= last && !HasSource(last))
            --last;
    }
};

Axis HorizontalAxis(const Placement& placement, const DibView& source) {
    return {placement.target.x(), placement.target.width(),
            placement.source_x,   placement.source_width,
            source.width,         placement.mirror_x};
}

Axis VerticalAxis(const Placement& placement, const DibView& source) {
    return {placement.target.y(), placement.target.height(),
            placement.source_y,   placement.source_height,
            source.height,        placement.mirror_y};
}

std::uint32_t* TargetRow(QImage& image, int x, int y) {
    return reinterpret_cast<std::uint32_t*>(image.scanLine(y)) + x;
}

/// Draws the columns of one row, always the same ones.
class RowPainter {
public:
    RowPainter(const DibView& source, const Axis& axis, int first, int last)
        : source_(source), count_(last - first + 1) {
        const auto [low, high] = std::minmax({axis.SourceOf(first), axis.SourceOf(last)});
        source_first_ = static_cast<int>(low);
        source_count_ = static_cast<int>(high - low + 1);
        if (axis.source_length == axis.target_length && !axis.mirrored) return;
        Scratch& scratch = ThreadScratch();
        scratch.row.resize(static_cast<std::size_t>(source_count_));
        scratch.columns.resize(static_cast<std::size_t>(count_));
        for (int i = 0; i < count_; ++i) {
            scratch.columns[static_cast<std::size_t>(i)] =
                static_cast<int>(axis.SourceOf(first + i)) - source_first_;
        }
        row_ = scratch.row;
        columns_ = scratch.columns;
    }

    void Paint(const std::uint8_t* source_row, std::uint32_t* target) const {
        if (columns_.empty())
            return ExpandPixels(source_, source_row, source_first_, count_, target);
        ExpandPixels(source_, source_row, source_first_, source_count_, row_.data());
        const std::uint32_t* const row = row_.data();
        const int* const columns = columns_.data();
        for (int i = 0; i < count_; ++i)
            target[i] = row[columns[i]];
    }

private:
    const DibView& source_;
    int count_;
    int source_first_ = 0;
    int source_count_ = 0;
    std::span<std::uint32_t> row_; ///< the source pixels that are needed
    std::span<const int> columns_; ///< which of them each target pixel takes; empty: in order
};

void StretchNearest(QImage& target, const QRect& drawn, const Axis& horizontal,
                    const Axis& vertical, const DibView& source) {
    const RowPainter painter(source, horizontal, drawn.left(), drawn.right());
    const std::uint32_t* painted = nullptr;
    std::int64_t painted_source = -1;
    for (int y = drawn.top(); y <= drawn.bottom(); ++y) {
        std::uint32_t* row = TargetRow(target, drawn.x(), y);
        const std::int64_t source_y = vertical.SourceOf(y);
        if (source_y == painted_source) {
            std::memcpy(row, painted, static_cast<std::size_t>(drawn.width()) * sizeof(*row));
            continue;
        }
        painter.Paint(source.Row(static_cast<int>(source_y)), row);
        painted = row;
        painted_source = source_y;
    }
}

/// How much the source pixels [first, first + weights.size()) add to one target pixel.
struct Blend {
    int first;
    std::vector<float> weights;
};

// Where the picture shrinks, a target pixel is the average of the source that it covers; where it
// grows, it lies between the two nearest source pixels. Both are a triangle or a box around the
// centre; the picture's edge pixels stand for what would lie outside.
Blend BlendFor(const Axis& axis, int target) {
    const double scale = static_cast<double>(axis.source_length) / axis.target_length;
    double i = static_cast<double>(target) - axis.target_first;
    if (axis.mirrored) i = axis.target_length - 1 - i;
    double from = axis.source_first + i * scale;
    double to = from + scale;
    if (scale < 1.0) { // a box of one source pixel's width around the centre: linear in between
        const double centre = (from + to) / 2;
        from = centre - 0.5;
        to = centre + 0.5;
    }
    const double first = std::floor(from + 1e-9);
    const double last = std::max(first, std::ceil(to - 1e-9) - 1);
    const int highest = axis.picture_length - 1;
    Blend blend{static_cast<int>(std::clamp(first, 0.0, static_cast<double>(highest))), {}};
    const int clamped_last = static_cast<int>(std::clamp(last, 0.0, static_cast<double>(highest)));
    blend.weights.assign(static_cast<std::size_t>(clamped_last - blend.first + 1), 0.0F);
    for (int k = blend.first; k <= clamped_last; ++k) {
        const double begin = k == blend.first ? from : std::max(from, static_cast<double>(k));
        const double end = k == clamped_last ? to : std::min(to, k + 1.0);
        blend.weights[static_cast<std::size_t>(k - blend.first)] =
            static_cast<float>(std::max(0.0, end - begin) / (to - from));
    }
    return blend;
}

// Blue, green, red and unused: one pixel's channels side by side.
using FourBytes [[gnu::vector_size(4)]] = std::uint8_t;
using FourNumbers [[gnu::vector_size(16)]] = std::int32_t;
using Channels [[gnu::vector_size(16)]] = float;

// Adds a source row, weighted, to the sums.
void AddRow(std::span<const std::uint32_t> row, float weight, std::span<Channels> sums) {
    for (std::size_t i = 0; i < row.size(); ++i) {
        FourBytes bytes;
        std::memcpy(&bytes, &row[i], sizeof(bytes));
        const auto numbers = __builtin_convertvector(bytes, FourNumbers);
        sums[i] += weight * __builtin_convertvector(numbers, Channels);
    }
}

std::uint32_t BlendPixel(const Blend& blend, int sums_first, std::span<const Channels> sums) {
    Channels channels{0.5F, 0.5F, 0.5F, 0.5F}; // to the nearest
    std::size_t at = static_cast<std::size_t>(blend.first - sums_first);
    for (const float weight : blend.weights)
        channels += weight * sums[at++];
    // The weights of a pixel add up to 1, but for rounding: 255.5 at most, and a little.
    std::uint32_t pixel = 0xFF000000U;
    for (unsigned i = 0; i < 3; ++i) {
        const auto value = static_cast<std::uint32_t>(std::min(channels[i], 255.0F));
        pixel |= value << (8U * i);
    }
    return pixel;
}

void StretchSmooth(QImage& target, const QRect& drawn, const Axis& horizontal, const Axis& vertical,
                   const DibView& source) {
    std::vector<Blend> columns;
    for (int x = drawn.left(); x <= drawn.right(); ++x)
        columns.push_back(BlendFor(horizontal, x));
    int first = columns.front().first;
    int end = 0;
    for (const Blend& column : columns) {
        first = std::min(first, column.first);
        end = std::max(end, column.first + static_cast<int>(column.weights.size()));
    }
    std::vector<std::uint32_t> row(static_cast<std::size_t>(end - first));
    std::vector<Channels> sums(row.size());
    for (int y = drawn.top(); y <= drawn.bottom(); ++y) {
        const Blend rows = BlendFor(vertical, y);
        std::ranges::fill(sums, Channels{});
        int source_y = rows.first;
        for (const float weight : rows.weights) {
            ExpandPixels(source, source.Row(source_y++), first, end - first, row.data());
            AddRow(row, weight, sums);
        }
        std::uint32_t* out = TargetRow(target, drawn.x(), y);
        for (const Blend& column : columns)
            *out++ = BlendPixel(column, first, sums);
    }
}

} // namespace

QRect StretchInto(QImage& target, const QRect& clip, const Placement& placement,
                  const DibView& source, Sampling sampling) {
    const QRect visible = placement.target & clip;
    if (visible.isEmpty() || placement.source_width <= 0 || placement.source_height <= 0) return {};
    const Axis horizontal = HorizontalAxis(placement, source);
    const Axis vertical = VerticalAxis(placement, source);
    int left = visible.left();
    int right = visible.right();
    int top = visible.top();
    int bottom = visible.bottom();
    horizontal.Trim(left, right);
    vertical.Trim(top, bottom);
    if (left > right || top > bottom) return {};
    const QRect drawn(QPoint(left, top), QPoint(right, bottom));
    const bool is_scaled = horizontal.source_length != horizontal.target_length ||
                           vertical.source_length != vertical.target_length;
    if (sampling == Sampling::Smooth && is_scaled) {
        StretchSmooth(target, drawn, horizontal, vertical, source);
    } else {
        StretchNearest(target, drawn, horizontal, vertical, source);
    }
    return drawn;
}

} // namespace kelvo::desktop
