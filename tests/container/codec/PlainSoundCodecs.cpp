#include "tests/container/codec/PlainSoundCodecs.h"

#include "tests/container/codec/PlainRealTransform.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace kelvo::yardstick {

namespace {

template <class Number>
void Append(Bytes& bytes, Number number) {
    std::uint8_t raw[sizeof number];
    std::memcpy(raw, &number, sizeof number);
    bytes.insert(bytes.end(), raw, raw + sizeof number);
}

template <class Number>
Number ReadAt(const Bytes& bytes, std::size_t at) {
    Number number;
    std::memcpy(&number, bytes.data() + at, sizeof number);
    return number;
}

/// Closes a run of zeros whose mark and count byte stand at the end of the codes.
void CloseRun(Bytes& codes, int& run) {
    if (run == 1) {
        codes.pop_back();
        codes.back() = 0;
    } else if (run > 1) {
        codes.back() = static_cast<std::uint8_t>(run);
    }
    run = 0;
}

struct CodedBlock {
    double scale = 1.0;
    Bytes codes;
};

CodedBlock EncodeBlock(const Bytes& samples, std::size_t begin, std::size_t count, std::size_t size,
                       double divisor) {
    std::vector<float> values(std::max<std::size_t>(size, 2), 0.0F);
    for (std::size_t i = 0; i < count; ++i) {
        values[i] = static_cast<float>(samples[begin + i] - 127);
    }
    if (size >= 2) PlainRealTransform(values, 1);
    float largest = 0.0F;
    for (std::size_t i = 0; i < count; ++i) {
        largest = std::max(largest, std::abs(values[i]));
    }
    CodedBlock block;
    if (largest >= 1.0F) block.scale = static_cast<double>(largest * (1.0L / 124.0L));
    const double threshold = block.scale * divisor;
    int run = 0;
    for (std::size_t i = 0; i < count; ++i) {
        if (std::abs(values[i]) > threshold) {
            CloseRun(block.codes, run);
            block.codes.push_back(
                static_cast<std::uint8_t>(static_cast<int>(values[i] / block.scale)));
            continue;
        }
        if (run == 0) {
            block.codes.push_back(0x7E);
            block.codes.push_back(0);
        }
        if (++run == 255) CloseRun(block.codes, run);
    }
    CloseRun(block.codes, run);
    return block;
}

void DecodeBlock(const std::uint8_t* codes, std::size_t length, double scale, std::size_t size,
                 Bytes& samples) {
    std::vector<float> values(std::max<std::size_t>(size, 2), 0.0F);
    std::size_t index = 0;
    for (std::size_t i = 0; i < length; ++i) {
        if (codes[i] == 0x7E) {
            index += codes[++i];
        } else {
            values[index++] = static_cast<float>(static_cast<std::int8_t>(codes[i]) * scale);
        }
    }
    if (size >= 2) {
        PlainRealTransform(values, -1);
    } else {
        values[0] *= 0.5F;
    }
    for (std::size_t i = 0; i < index; ++i) {
        const double sample = values[i] * (2.0 / static_cast<double>(size)) + 127.0;
        samples.push_back(static_cast<std::uint8_t>(static_cast<int>(sample)));
    }
}

std::size_t PowerNotBelow(std::size_t length) {
    std::size_t size = 1;
    while (size < length) {
        size *= 2;
    }
    return size;
}

double VariableDivisor(std::size_t size) {
    if (size == 64 || size == 128) return 2.0;
    if (size == 256 || size == 512) return 4.0;
    if (size == 1024 || size == 2048) return 5.0;
    return 3.0;
}

} // namespace

Bytes PlainByteGroups(const Bytes& samples) {
    Bytes stream;
    std::size_t header = 0;
    int repeats = 0; // 0: no group is open
    int literals = 0;
    std::uint8_t last = 0;
    const auto open = [&](std::uint8_t x) {
        header = stream.size();
        stream.push_back(0);
        stream.push_back(x);
        repeats = literals = 1;
        last = x;
    };
    const auto close = [&](int value) {
        stream[header] = static_cast<std::uint8_t>(value);
        repeats = 0;
    };
    for (const std::uint8_t x : samples) {
        if (repeats == 0) {
            open(x);
        } else if (x == last && literals <= 1) {
            if (++repeats == 190) close(190);
        } else if (x == last) {
            stream[header] = static_cast<std::uint8_t>(190 + literals - 1);
            header = stream.size() - 1;
            stream.push_back(x);
            repeats = 2;
            literals = 1;
        } else if (repeats >= 2) {
            close(repeats);
            open(x);
        } else {
            stream.push_back(x);
            last = x;
            if (++literals == 65) close(190 + 65);
        }
    }
    if (repeats != 0) close(literals >= 2 ? 190 + literals : repeats);
    return stream;
}

Bytes PlainPackNibbles(const Bytes& differences) {
    Bytes packed;
    bool high = true;
    for (const std::uint8_t difference : differences) {
        const int x = difference - 127;
        const bool escapes = std::abs(x) >= 8;
        const int nibble = escapes ? 8 : x < 0 ? 8 - x : x;
        if (high) {
            packed.push_back(static_cast<std::uint8_t>(nibble << 4));
        } else {
            packed.back() = static_cast<std::uint8_t>(packed.back() | nibble);
        }
        high = !high;
        if (escapes) {
            packed.push_back(difference);
            high = true;
        }
    }
    if (!high) packed.back() = static_cast<std::uint8_t>(packed.back() | 8);
    return packed;
}

Bytes PlainUnpackNibbles(const Bytes& packed) {
    Bytes samples;
    std::size_t at = 0;
    bool high = true;
    int sum = 127;
    while (at < packed.size()) {
        const int nibble = high ? packed[at] >> 4 : packed[at] & 15;
        int x = nibble > 8 ? 8 - nibble : nibble;
        const bool moves_on = !high || nibble == 8;
        high = moves_on;
        if (moves_on) ++at;
        if (nibble == 8) {
            if (at >= packed.size()) break;
            x = packed[at++] - 127;
        }
        sum += x;
        samples.push_back(static_cast<std::uint8_t>(sum));
    }
    return samples;
}

Bytes PlainEncodeWhole(const Bytes& samples) {
    const auto count = static_cast<std::uint32_t>(samples.size());
    const CodedBlock block = EncodeBlock(samples, 0, count, PowerNotBelow(count), 10.0);
    Bytes coded;
    Append(coded, block.scale);
    Append(coded, count);
    Append(coded, count / 5);
    coded.insert(coded.end(), block.codes.begin(), block.codes.end());
    return coded;
}

Bytes PlainDecodeWhole(const Bytes& coded, std::size_t record_length) {
    Bytes samples;
    DecodeBlock(coded.data() + 16, coded.size() - 16, ReadAt<double>(coded, 0),
                PowerNotBelow(record_length), samples);
    samples.resize(ReadAt<std::uint32_t>(coded, 8));
    return samples;
}

Bytes PlainEncodeBlocks(const Bytes& samples, std::size_t block, double divisor, bool two_pass) {
    Bytes coded;
    for (std::size_t at = 0; at < samples.size(); at += block) {
        const std::size_t count = std::min(block, samples.size() - at);
        const CodedBlock one = EncodeBlock(samples, at, count, block, divisor);
        Append(coded, one.scale);
        Append(coded, static_cast<std::uint32_t>(one.codes.size()));
        coded.insert(coded.end(), one.codes.begin(), one.codes.end());
    }
    if (!two_pass) return coded;
    return PlainEncodeBlocks(PlainDecodeBlocks(coded, block), block, divisor, false);
}

Bytes PlainDecodeBlocks(const Bytes& coded, std::size_t block) {
    Bytes samples;
    for (std::size_t at = 0; at < coded.size();) {
        const auto length = ReadAt<std::uint32_t>(coded, at + 8);
        DecodeBlock(coded.data() + at + 12, length, ReadAt<double>(coded, at), block, samples);
        at += 12 + length;
    }
    return samples;
}

Bytes PlainEncodeVariable(const Bytes& samples) {
    Bytes coded;
    for (std::size_t at = 0; at < samples.size();) {
        const std::size_t rest = samples.size() - at;
        std::size_t best = 64;
        double best_ratio = 0.0;
        for (std::size_t size = 64; size < rest; size *= 2) {
            const CodedBlock trial = EncodeBlock(samples, at, size, size, VariableDivisor(size));
            const double ratio =
                static_cast<double>(size) / static_cast<double>(trial.codes.size() + 16);
            if (ratio > best_ratio) {
                best = size;
                best_ratio = ratio;
            }
        }
        const std::size_t count = std::min(best, rest);
        const CodedBlock block = EncodeBlock(samples, at, count, best, VariableDivisor(best));
        Append(coded, block.scale);
        Append(coded, static_cast<std::uint32_t>(block.codes.size()));
        Append(coded, static_cast<std::uint32_t>(best));
        coded.insert(coded.end(), block.codes.begin(), block.codes.end());
        at += count;
    }
    return coded;
}

Bytes PlainDecodeVariable(const Bytes& coded) {
    Bytes samples;
    for (std::size_t at = 0; at < coded.size();) {
        const auto length = ReadAt<std::uint32_t>(coded, at + 8);
        DecodeBlock(coded.data() + at + 16, length, ReadAt<double>(coded, at),
                    ReadAt<std::uint32_t>(coded, at + 12), samples);
        at += 16 + length;
    }
    return samples;
}

} // namespace kelvo::yardstick
