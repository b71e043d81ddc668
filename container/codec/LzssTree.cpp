#include "container/codec/LzssTree.h"

#include "container/codec/WideWords.h"

#include <algorithm>
#include <cstring>

namespace kelvo::codec {

namespace {

/// Bytes 1 to 16 of a string; byte 0 chose the tree, byte 17 is looked at when these are equal.
struct Bytes16 {
    std::uint64_t first;
    std::uint64_t second;
};

Bytes16 Load16(const std::uint8_t* from) {
    return {LoadLittleWord(from), LoadLittleWord(from + 8)};
}

__extension__ using Wide = unsigned __int128;

/// A number that compares as the bytes do.
Wide InOrder(Bytes16 bytes) {
    return (static_cast<Wide>(__builtin_bswap64(bytes.first)) << 64U) |
           __builtin_bswap64(bytes.second);
}

} // namespace

std::size_t LzssTree::Encode(ByteView input, std::uint8_t* stream) {
    Begin(input);
    LzssItemWriter items(stream);
    std::size_t place = kLzssFirstPosition; // of the string that is coded next
    const std::size_t end = place + input.size();
    for (std::size_t back = 1; back <= kLzssLongestMatch; ++back) {
        Insert<Find::No>(static_cast<std::uint32_t>(place - back));
    }
    LzssMatch match = Insert<Find::Longest>(static_cast<std::uint32_t>(place));
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
            if (coded == 1) {
                match = Insert<Find::Longest>(static_cast<std::uint32_t>(place % kNodes));
            } else {
                Insert<Find::No>(static_cast<std::uint32_t>(place % kNodes));
            }
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

template <LzssTree::Find kFind>
LzssMatch LzssTree::Insert(std::uint32_t node) {
    const std::uint8_t* const key = text_.data() + node;
    const Bytes16 key_bytes = Load16(key + 1);
    const Wide key_order = InOrder(key_bytes);
    std::uint32_t slot = kFirstRoot + key[0];
    std::uint32_t other = child_[slot];
    std::uint32_t best = 0; // length above, node below
    while (other != kNil) {
        const std::uint8_t* const text = text_.data() + other;
        const std::uint32_t left_child = child_[Left(other)];
        const std::uint32_t child_bits = left_child ^ child_[Right(other)];
        const Bytes16 other_bytes = Load16(text + 1);
        const std::uint64_t first = key_bytes.first ^ other_bytes.first;
        const std::uint64_t second = key_bytes.second ^ other_bytes.second;
        std::uint32_t length = kLzssLongestMatch - 1;
        std::uint32_t right = 0; // all bits or none
        if ((first | second) == 0) [[unlikely]] {
            if (key[length] == text[length]) {
                Replace(other, node);
                return {static_cast<std::uint32_t>(other % kLzssRing), kLzssLongestMatch};
            }
            right = key[length] > text[length] ? ~0U : 0;
        } else {
            if constexpr (kFind == Find::Longest) {
                const std::uint64_t differing = first != 0 ? first : second;
                const std::uint32_t before = first != 0 ? 1 : 9;
                length = before + static_cast<std::uint32_t>(__builtin_ctzll(differing)) / 8;
            }
            right = 0U - static_cast<std::uint32_t>(key_order > InOrder(other_bytes));
        }
        // No branch in either choice: both ways are as likely. The first of equal lengths stays.
        if constexpr (kFind == Find::Longest) {
            const std::uint32_t longer = 0U - static_cast<std::uint32_t>(length > best >> 16U);
            best ^= (best ^ (length << 16U | other)) & longer;
        }
        slot = 2 * other - right;
        other = left_child ^ (right & child_bits);
    }
    child_[slot] = static_cast<std::uint16_t>(node);
    parent_[node] = static_cast<std::uint16_t>(slot);
    child_[Left(node)] = static_cast<std::uint16_t>(kNil);
    child_[Right(node)] = static_cast<std::uint16_t>(kNil);
    return {static_cast<std::uint32_t>(best % kLzssRing), best >> 16U};
}

void LzssTree::Replace(std::uint32_t old_node, std::uint32_t new_node) {
    const std::uint16_t slot = parent_[old_node];
    const std::uint16_t left = child_[Left(old_node)];
    const std::uint16_t right = child_[Right(old_node)];
    parent_[new_node] = slot;
    child_[slot] = static_cast<std::uint16_t>(new_node);
    child_[Left(new_node)] = left;
    child_[Right(new_node)] = right;
    parent_[left] = static_cast<std::uint16_t>(Left(new_node));
    parent_[right] = static_cast<std::uint16_t>(Right(new_node));
    parent_[old_node] = kNoSlot;
}

void LzssTree::Delete(std::uint32_t node) {
    const std::uint16_t slot = parent_[node];
    if (slot == kNoSlot) return; // replaced by its twin
    const std::uint16_t left = child_[Left(node)];
    const std::uint16_t right = child_[Right(node)];
    std::uint16_t heir = left;
    if (left == kNil || right == kNil) {
        heir = static_cast<std::uint16_t>(left ^ right ^ kNil);
    } else {
        if (child_[Right(heir)] != kNil) {
            do {
                heir = child_[Right(heir)];
            } while (child_[Right(heir)] != kNil);
            const std::uint16_t heir_slot = parent_[heir];
            const std::uint16_t orphan = child_[Left(heir)];
            child_[heir_slot] = orphan;
            parent_[orphan] = heir_slot;
            child_[Left(heir)] = left;
            parent_[left] = static_cast<std::uint16_t>(Left(heir));
        }
        child_[Right(heir)] = right;
        parent_[right] = static_cast<std::uint16_t>(Right(heir));
    }
    child_[slot] = heir;
    parent_[heir] = slot;
}

} // namespace kelvo::codec
