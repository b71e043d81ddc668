#include "container/codec/LzssTree.h"

#include "container/codec/WideWords.h"

#include <algorithm>
#include <cstring>

namespace kelvo::codec {

namespace {

/// Bytes 1 to 16 of a string as one number that compares as the bytes do.
__extension__ using Wide = unsigned __int128;

Wide LoadWide(const std::uint8_t* from) {
    return (static_cast<Wide>(LoadBigWord(from)) << 64U) | LoadBigWord(from + 8);
}

/// Equal leading bytes of two numbers whose difference, as xor, is given; not for 0.
std::uint32_t EqualBytes(Wide difference) {
    const auto high = static_cast<std::uint64_t>(difference >> 64U);
    const auto low = static_cast<std::uint64_t>(difference);
    const std::uint64_t word = high != 0 ? high : low;
    const std::uint32_t before = high != 0 ? 0 : 8;
    return before + static_cast<std::uint32_t>(__builtin_clzll(word)) / 8;
}

} // namespace

std::size_t LzssTree::Encode(ByteView input, std::uint8_t* stream) {
    Begin(input);
    LzssItemWriter items(stream);
    std::size_t place = kLzssFirstPosition; // of the string that is coded next
    const std::size_t end = place + input.size();
    for (std::size_t back = 1; back <= kLzssLongestMatch; ++back) {
        Insert(static_cast<std::uint32_t>(place - back));
    }
    LzssMatch match = Insert(static_cast<std::uint32_t>(place));
    while (place < end) {
        std::size_t coded = std::min<std::size_t>(match.length, end - place);
        if (coded < kLzssShortestMatch) {
            coded = 1;
            items.WriteLiteral(text_[place % kNodes]);
        } else {
            items.WriteMatch({match.position, static_cast<std::uint32_t>(coded)});
        }
        for (; coded > 0; --coded) {
            const std::size_t leaving = place - kLzssFirstPosition;
            if (leaving >= kLzssFirstPosition - kLzssLongestMatch) { // those before never came in
                Delete(static_cast<std::uint32_t>(leaving % kNodes));
            }
            if (++place == end) break;
            if (place + kLzssLongestMatch > filled_) FillText();
            match = Insert(static_cast<std::uint32_t>(place % kNodes));
        }
    }
    return items.Finish();
}

void LzssTree::Begin(ByteView input) {
    input_ = input;
    std::fill(child_.begin() + kFirstRoot, child_.end(), static_cast<std::uint16_t>(kNil));
    std::memset(text_.data(), ' ', kLzssFirstPosition);
    filled_ = kLzssFirstPosition;
    FillText();
}

void LzssTree::FillText() {
    const std::size_t read = filled_ - kLzssFirstPosition;
    const std::size_t at = filled_ % kNodes;
    const std::size_t step = kFillStep - filled_ % kFillStep;
    const std::size_t fresh = std::min(step, input_.size() - std::min(read, input_.size()));
    if (fresh > 0) std::memcpy(text_.data() + at, input_.data() + read, fresh);
    // Behind the input the ring still holds what was there one lap before.
    for (std::size_t i = fresh; i < step; ++i) {
        text_[at + i] = text_[(at + i + kNodes - kLzssRing) % kNodes];
    }
    if (at == 0) std::memcpy(text_.data() + kNodes, text_.data(), kMirror);
    filled_ += step;
}

LzssMatch LzssTree::Insert(std::uint32_t node) {
    const std::uint8_t* const key = text_.data() + node;
    const Wide key_bytes = LoadWide(key + 1);
    std::uint32_t slot = kFirstRoot + key[0];
    std::uint32_t best_node = 0;
    std::uint32_t best_length = 0;
    for (;;) {
        const std::uint32_t other = child_[slot];
        if (other == kNil) break;
        const std::uint8_t* const text = text_.data() + other;
        const Wide other_bytes = LoadWide(text + 1);
        const Wide difference = key_bytes ^ other_bytes;
        std::uint32_t length = kLzssLongestMatch - 1;
        std::uint32_t right = 0;
        if (difference == 0) [[unlikely]] {
            if (key[length] == text[length]) {
                Replace(other, node);
                return {static_cast<std::uint32_t>(other % kLzssRing), kLzssLongestMatch};
            }
            right = key[length] > text[length] ? 1 : 0;
        } else {
            length = 1 + EqualBytes(difference);
            right = key_bytes > other_bytes ? 1 : 0;
        }
        // The first of equals stays. No branch: both ways are as likely.
        best_node = length > best_length ? other : best_node;
        best_length = std::max(length, best_length);
        slot = 2 * other + right;
    }
    child_[slot] = static_cast<std::uint16_t>(node);
    parent_[node] = static_cast<std::uint16_t>(slot);
    child_[2 * node] = static_cast<std::uint16_t>(kNil);
    child_[2 * node + 1] = static_cast<std::uint16_t>(kNil);
    return {static_cast<std::uint32_t>(best_node % kLzssRing), best_length};
}

void LzssTree::Replace(std::uint32_t old_node, std::uint32_t new_node) {
    const std::uint16_t slot = parent_[old_node];
    const std::uint16_t left = child_[2 * old_node];
    const std::uint16_t right = child_[2 * old_node + 1];
    parent_[new_node] = slot;
    child_[slot] = static_cast<std::uint16_t>(new_node);
    child_[2 * new_node] = left;
    child_[2 * new_node + 1] = right;
    parent_[left] = static_cast<std::uint16_t>(2 * new_node);
    parent_[right] = static_cast<std::uint16_t>(2 * new_node + 1);
    parent_[old_node] = kNoSlot;
}

void LzssTree::Delete(std::uint32_t node) {
    const std::uint16_t slot = parent_[node];
    if (slot == kNoSlot) return; // replaced by its twin
    const std::uint16_t left = child_[2 * node];
    const std::uint16_t right = child_[2 * node + 1];
    std::uint16_t heir = left;
    if (right == kNil) {
        heir = left;
    } else if (left == kNil) {
        heir = right;
    } else {
        if (child_[2 * heir + 1] != kNil) {
            do {
                heir = child_[2 * heir + 1];
            } while (child_[2 * heir + 1] != kNil);
            const std::uint16_t heir_slot = parent_[heir];
            const std::uint16_t orphan = child_[2 * heir];
            child_[heir_slot] = orphan;
            parent_[orphan] = heir_slot;
            child_[2 * heir] = left;
            parent_[left] = static_cast<std::uint16_t>(2 * heir);
        }
        child_[2 * heir + 1] = right;
        parent_[right] = static_cast<std::uint16_t>(2 * heir + 1);
    }
    child_[slot] = heir;
    parent_[heir] = slot;
}

} // namespace kelvo::codec
