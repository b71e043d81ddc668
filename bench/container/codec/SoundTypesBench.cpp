// The sound types that end in cmprs, whole ("all") and without that stage ("coder"), on records of
// a tenth of a second at 22050 Hz: plain and fast, which give the same bytes. Bytes are those of
// the record.

#include "container/codec/BlockTransform.h"
#include "container/codec/Lzss.h"
#include "container/codec/SampleDifference.h"
#include "tests/container/codec/PlainLzss.h"
#include "tests/container/codec/PlainSoundCodecs.h"
#include "tests/container/codec/SoundSignals.h"

#include <benchmark/benchmark.h>

#include <memory>
#include <string>
#include <vector>

namespace {

using namespace kelvo;
using yardstick::Bytes;

constexpr std::size_t kRecord = 2205;
constexpr std::size_t kRoom = 4 * kRecord;

struct SoundType {
    int id;
    codec::TransformBlocks rule; ///< of types 20 to 25
};

constexpr SoundType kTypes[] = {
    {16, {}},
    {18, {}},
    {19, {}},
    {20, {.block = 512, .divisor = 10.0, .two_pass = true}},
    {21, {.block = 512, .divisor = 5.0, .two_pass = true}},
    {22, {.block = 512, .divisor = 2.5, .two_pass = true}},
    {23, {.block = 512, .divisor = 1.25, .two_pass = true}},
    {24, {.block = 1024, .divisor = 1.25, .two_pass = false}},
    {25, {.block = 256, .divisor = 5.0, .two_pass = false}},
    {30, {}},
};

/// Encodes and decodes records of one type with what was made beforehand.
class Coder {
public:
    explicit Coder(const SoundType& type) : type_(type) {}
    virtual ~Coder() = default;
    virtual std::size_t Encode(const Bytes& record, bool cmprs) = 0;
    virtual std::size_t Decode(const Bytes& stored, bool cmprs) = 0;

protected:
    const SoundType& type_;
};

class PlainCoder : public Coder {
public:
    using Coder::Coder;

    std::size_t Encode(const Bytes& record, bool cmprs) override {
        const Bytes coded = EncodeStage(record);
        return cmprs ? lzss_->Encode(coded, stored_) : coded.size();
    }
    std::size_t Decode(const Bytes& stored, bool cmprs) override {
        if (!cmprs) return DecodeStage(stored).size();
        Bytes coded(kRoom);
        coded.resize(lzss_->Decode(stored, coded));
        return DecodeStage(coded).size();
    }
    Bytes EncodeStage(const Bytes& record) const {
        if (type_.id == 16 || type_.id == 18) {
            Bytes differences(record.size());
            for (std::size_t i = 0; i < record.size(); ++i) {
                const int before = i == 0 ? 127 : record[i - 1];
                differences[i] = static_cast<std::uint8_t>(record[i] - before + 127);
            }
            return type_.id == 16 ? differences : yardstick::PlainPackNibbles(differences);
        }
        if (type_.id == 19) return yardstick::PlainEncodeWhole(record);
        if (type_.id == 30) return yardstick::PlainEncodeVariable(record);
        const codec::TransformBlocks& rule = type_.rule;
        return yardstick::PlainEncodeBlocks(record, rule.block, rule.divisor, rule.two_pass);
    }
    const Bytes& Stored() const { return stored_; }

private:
    Bytes DecodeStage(const Bytes& coded) const {
        if (type_.id == 16) {
            Bytes samples(coded.size());
            int last = 127;
            for (std::size_t i = 0; i < coded.size(); ++i) {
                last = (coded[i] + last + 129) % 256;
                samples[i] = static_cast<std::uint8_t>(last);
            }
            return samples;
        }
        if (type_.id == 18) return yardstick::PlainUnpackNibbles(coded);
        if (type_.id == 19) return yardstick::PlainDecodeWhole(coded, kRecord);
        if (type_.id == 30) return yardstick::PlainDecodeVariable(coded);
        return yardstick::PlainDecodeBlocks(coded, type_.rule.block);
    }

    std::unique_ptr<yardstick::PlainLzss> lzss_ = std::make_unique<yardstick::PlainLzss>();
    Bytes stored_ = Bytes(2 * kRoom);
};

class FastCoder : public Coder {
public:
    using Coder::Coder;

    std::size_t Encode(const Bytes& record, bool cmprs) override {
        const std::size_t length = EncodeStage(record);
        return cmprs ? lzss_.Encode(ByteView{coded_}.first(length), stored_) : length;
    }
    std::size_t Decode(const Bytes& stored, bool cmprs) override {
        if (!cmprs) return DecodeStage(stored);
        const std::size_t length = codec::DecodeLzss(stored, coded_).written;
        return DecodeStage(ByteView{coded_}.first(length));
    }

private:
    std::size_t EncodeStage(const Bytes& record) {
        switch (type_.id) {
        case 16:
            codec::EncodeDifferences(record, coded_);
            return record.size();
        case 18:
            codec::EncodeDifferences(record, record_);
            return codec::PackNibbles(record_, coded_);
        case 19:
            return codec::EncodeWholeTransform(record, coded_, array_);
        case 30:
            return codec::EncodeVariableBlocks(record, coded_, array_);
        default:
            return codec::EncodeTransformBlocks(record, coded_, array_, type_.rule);
        }
    }
    std::size_t DecodeStage(ByteView coded) {
        switch (type_.id) {
        case 16:
            codec::DecodeDifferences(coded, record_);
            return coded.size();
        case 18:
            return codec::UnpackNibblesToSamples(coded, record_).written;
        case 19:
            return codec::DecodeWholeTransform(coded, record_, array_).written;
        case 30:
            return codec::DecodeVariableBlocks(coded, record_, array_).written;
        default:
            return codec::DecodeTransformBlocks(coded, record_, array_, type_.rule).written;
        }
    }

    codec::LzssEncoder lzss_;
    Bytes coded_ = Bytes(kRoom);
    Bytes stored_ = Bytes(2 * kRoom);
    Bytes record_ = Bytes(kRecord);
    std::vector<float> array_ = std::vector<float>(codec::VariableBlocksArray(kRecord));
};

std::vector<Bytes> Records() {
    const Bytes sound = sound::Make(sound::Signal::Speech, 100 * kRecord);
    std::vector<Bytes> records;
    for (auto at = sound.begin(); at != sound.end(); at += kRecord) {
        records.emplace_back(at, at + kRecord);
    }
    return records;
}

std::vector<Bytes> StoredRecords(const SoundType& type, bool cmprs) {
    PlainCoder coder{type};
    std::vector<Bytes> all;
    for (const Bytes& record : Records()) {
        if (cmprs) {
            const auto length = static_cast<std::ptrdiff_t>(coder.Encode(record, true));
            all.emplace_back(coder.Stored().begin(), coder.Stored().begin() + length);
        } else {
            all.push_back(coder.EncodeStage(record));
        }
    }
    return all;
}

template <class AnyCoder>
void Register(const SoundType& type, const std::string& speed) {
    for (const bool cmprs : {true, false}) {
        const std::string name = "Type" + std::to_string(type.id) + (cmprs ? "/all/" : "/coder/");
        const auto run = [&type, cmprs](benchmark::State& state, bool encode) {
            AnyCoder coder{type};
            const auto inputs = encode ? Records() : StoredRecords(type, cmprs);
            for (auto _ : state) {
                for (const Bytes& input : inputs) {
                    benchmark::DoNotOptimize(encode ? coder.Encode(input, cmprs)
                                                    : coder.Decode(input, cmprs));
                }
            }
            state.SetBytesProcessed(state.iterations() *
                                    static_cast<std::int64_t>(inputs.size() * kRecord));
        };
        benchmark::RegisterBenchmark((name + "encode/" + speed).c_str(),
                                     [run](benchmark::State& state) { run(state, true); });
        benchmark::RegisterBenchmark((name + "decode/" + speed).c_str(),
                                     [run](benchmark::State& state) { run(state, false); });
    }
}

const bool kRegistered = [] {
    for (const SoundType& type : kTypes) {
        Register<PlainCoder>(type, "plain");
        Register<FastCoder>(type, "fast");
    }
    return true;
}();

} // namespace
