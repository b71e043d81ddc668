#include "tests/container/codec/PlainLzss.h"

#include <algorithm>

namespace kelvo::yardstick {

void PlainLzss::InsertNode(int r) {
    const std::uint8_t* const key = &ring_[static_cast<std::size_t>(r)];
    auto at = [](auto& array, int index) -> auto& {
        return array[static_cast<std::size_t>(index)];
    };
    int comparison = 1;
    int p = kRing + 1 + key[0];
    at(left_, r) = kNil;
    at(right_, r) = kNil;
    match_length_ = 0;
    for (;;) {
        auto& sons = comparison >= 0 ? right_ : left_;
        if (at(sons, p) == kNil) {
            at(sons, p) = r;
            at(parent_, r) = p;
            return;
        }
        p = at(sons, p);
        int i = 1;
        for (; i < kLongest; ++i) {
            comparison = key[i] - at(ring_, p + i);
            if (comparison != 0) break;
        }
        if (i > match_length_) {
            match_position_ = p;
            match_length_ = i;
            if (i >= kLongest) break;
        }
    }
    at(parent_, r) = at(parent_, p);
    at(left_, r) = at(left_, p);
    at(right_, r) = at(right_, p);
    at(parent_, at(left_, p)) = r;
    at(parent_, at(right_, p)) = r;
    auto& sons = at(right_, at(parent_, p)) == p ? right_ : left_;
    at(sons, at(parent_, p)) = r;
    at(parent_, p) = kNil;
}

void PlainLzss::DeleteNode(int p) {
    auto at = [](auto& array, int index) -> auto& {
        return array[static_cast<std::size_t>(index)];
    };
    if (at(parent_, p) == kNil) return;
    int q = 0;
    if (at(right_, p) == kNil) {
        q = at(left_, p);
    } else if (at(left_, p) == kNil) {
        q = at(right_, p);
    } else {
        q = at(left_, p);
        if (at(right_, q) != kNil) {
            while (at(right_, q) != kNil) {
                q = at(right_, q);
            }
            at(right_, at(parent_, q)) = at(left_, q);
            at(parent_, at(left_, q)) = at(parent_, q);
            at(left_, q) = at(left_, p);
            at(parent_, at(left_, p)) = q;
        }
        at(right_, q) = at(right_, p);
        at(parent_, at(right_, p)) = q;
    }
    at(parent_, q) = at(parent_, p);
    auto& sons = at(right_, at(parent_, p)) == p ? right_ : left_;
    at(sons, at(parent_, p)) = q;
    at(parent_, p) = kNil;
}

std::size_t PlainLzss::Encode(std::span<const std::uint8_t> input, std::span<std::uint8_t> stream) {
    std::size_t written = 0;
    std::fill(right_.begin() + kRing + 1, right_.end(), kNil);
    std::fill(parent_.begin(), parent_.end() - 1, kNil);
    ring_.fill(0);
    int s = 0;
    int r = kRing - kLongest;
    std::fill_n(ring_.begin(), r, std::uint8_t{' '});
    std::size_t next = 0;
    int length = 0;
    for (; length < kLongest && next < input.size(); ++length) {
        ring_[static_cast<std::size_t>(r + length)] = input[next++];
    }
    if (length == 0) return 0;
    for (int i = 1; i <= kLongest; ++i) {
        InsertNode(r - i);
    }
    InsertNode(r);

    std::array<std::uint8_t, 17> group{};
    std::size_t used = 1;
    unsigned mask = 1;
    do {
        match_length_ = std::min(match_length_, length);
        if (match_length_ <= kThreshold) {
            match_length_ = 1;
            group[0] = static_cast<std::uint8_t>(group[0] | mask);
            group[used++] = ring_[static_cast<std::size_t>(r)];
        } else {
            group[used++] = static_cast<std::uint8_t>(match_position_);
            group[used++] = static_cast<std::uint8_t>(((match_position_ >> 4) & 0xF0) |
                                                      (match_length_ - (kThreshold + 1)));
        }
        mask = (mask << 1U) & 0xFFU;
        if (mask == 0) {
            std::copy_n(group.begin(), used, stream.begin() + static_cast<std::ptrdiff_t>(written));
            written += used;
            group[0] = 0;
            used = 1;
            mask = 1;
        }
        for (int coded = match_length_; coded > 0; --coded) {
            DeleteNode(s);
            if (next < input.size()) {
                const std::uint8_t byte = input[next++];
                ring_[static_cast<std::size_t>(s)] = byte;
                if (s < kLongest - 1) ring_[static_cast<std::size_t>(s + kRing)] = byte;
            } else {
                --length;
            }
            s = (s + 1) & (kRing - 1);
            r = (r + 1) & (kRing - 1);
            if (length > 0) InsertNode(r);
        }
    } while (length > 0);
    if (used > 1) {
        std::copy_n(group.begin(), used, stream.begin() + static_cast<std::ptrdiff_t>(written));
        written += used;
    }
    return written;
}

std::size_t PlainLzss::Decode(std::span<const std::uint8_t> stream,
                              std::span<std::uint8_t> output) {
    std::size_t written = 0;
    ring_.fill(0);
    int r = kRing - kLongest;
    std::fill_n(ring_.begin(), r, std::uint8_t{' '});
    auto put = [&](std::uint8_t byte) {
        output[written++] = byte;
        ring_[static_cast<std::size_t>(r)] = byte;
        r = (r + 1) & (kRing - 1);
    };
    std::size_t next = 0;
    unsigned flags = 0;
    for (;;) {
        flags >>= 1U;
        if ((flags & 0x100U) == 0) {
            if (next == stream.size()) return written;
            flags = stream[next++] | 0xFF00U;
        }
        if (next == stream.size()) return written;
        const std::uint8_t first = stream[next++];
        if ((flags & 1U) != 0) {
            put(first);
            continue;
        }
        if (next == stream.size()) return written;
        const std::uint8_t second = stream[next++];
        const int position = first | ((second & 0xF0) << 4);
        for (int k = 0; k < (second & 0x0F) + kThreshold + 1; ++k) {
            put(ring_[static_cast<std::size_t>((position + k) & (kRing - 1))]);
        }
    }
}

} // namespace kelvo::yardstick
