#include "tools/kelvotool/importing/ImageSource.h"

#include "tools/kelvotool/files/FileNames.h"
#include "tools/kelvotool/files/SeriesNames.h"
#include "tools/kelvotool/importing/ForeignStream.h"
#include "tools/kelvotool/picture/BmpFile.h"
#include "tools/kelvotool/picture/PngFile.h"
#include "tools/kelvotool/report/Console.h"
#include "tools/kelvotool/report/StopSignal.h"

#include <fmt/format.h>

#include <cstdio>

namespace kelvo::tool {

namespace {

// What a picture of the largest sides takes uncompressed is beyond what anybody films.
constexpr long kLargestPictureFile = 1L << 30;

bool ReadWholeFile(const std::string& name, std::vector<std::uint8_t>& bytes) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(name.c_str(), "rbe"),
                                                               std::fclose);
    if (!file || std::fseek(file.get(), 0, SEEK_END) != 0) return false;
    const long size = std::ftell(file.get());
    if (size < 0 || size > kLargestPictureFile) return false;
    std::rewind(file.get());
    bytes.resize(static_cast<std::size_t>(size));
    return std::fread(bytes.data(), 1, bytes.size(), file.get()) == bytes.size();
}

class SeriesSource : public ImageSource {
public:
    SeriesSource(std::vector<std::string> files, Reporter& reporter)
        : files_(std::move(files)), reporter_(reporter) {}

    /// Looks at the first picture.
    bool Begin() {
        if (!Read(files_.front())) return false;
        facts_.width = picture_.image.width;
        facts_.height = picture_.image.height;
        facts_.count = files_.size();
        facts_.has_five_bits = picture_.has_five_bits;
        if (picture_.lost_transparency) facts_.loss = "what is transparent becomes black";
        if (picture_.lost_depth) facts_.loss = "16 bits a channel become 8";
        return true;
    }

    bool Next(RgbImage& image, std::uint32_t& lasts) override {
        lasts = 1;
        if (next_ == files_.size() || StopRequested() || !Read(files_[next_])) return false;
        ++next_;
        image.width = picture_.image.width;
        image.height = picture_.image.height;
        image.bytes.swap(picture_.image.bytes);
        return true;
    }

private:
    bool Read(const std::string& name) {
        if (!ReadWholeFile(name, bytes_)) return Refuse(name, "it cannot be read");
        auto picture = ExtensionOf(name) == ".bmp" ? DecodeBmp(bytes_, kLargestImageSide)
                                                   : DecodePng(bytes_, kLargestImageSide);
        if (!picture && picture.Why().fault == Fault::BadValue) {
            picture = DecodeBmp(bytes_, kLargestImageSide); // by another name
        }
        if (!picture) {
            return Refuse(name, picture.Why().fault == Fault::TooLarge
                                    ? "it is wider or higher than 32767 pixels"
                                    : "it is no picture that can be read, or is damaged");
        }
        picture_ = std::move(picture.Value());
        return true;
    }

    bool Refuse(const std::string& name, const std::string& what) {
        reporter_.NotDone(fmt::format("{}: {}", Printable(name), what),
                          ProblemCode::InputUnreadable);
        return false;
    }

    std::vector<std::string> files_;
    Reporter& reporter_;
    std::size_t next_ = 0;
    ReadPicture picture_;
    std::vector<std::uint8_t> bytes_; // serves every file
};

class Y4mSource : public ImageSource {
public:
    explicit Y4mSource(Reporter& reporter) : reporter_(reporter) {}

    bool Begin(const std::string& name) {
        if (!reader_.Open(name, kLargestImageSide)) {
            reporter_.NotDone("it is no .y4m file of 8 bits", ProblemCode::InputUnreadable);
            return false;
        }
        const Y4mFormat& format = reader_.Format();
        facts_ = {.width = format.width,
                  .height = format.height,
                  .rate_numerator = format.rate_numerator,
                  .rate_denominator = format.rate_denominator,
                  .count = reader_.Count()};
        return true;
    }

    bool Next(RgbImage& image, std::uint32_t& lasts) override {
        lasts = 1;
        if (StopRequested()) return false;
        if (reader_.Next(image)) {
            ++read_;
            return true;
        }
        if (!reader_.AtEnd()) {
            reporter_.Report({.code = ProblemCode::RecordDamaged,
                              .what = "it is cut off or damaged here",
                              .record = static_cast<std::uint32_t>(read_)});
        }
        return false;
    }

private:
    Y4mReader reader_;
    Reporter& reporter_;
    std::uint64_t read_ = 0;
};

class ForeignImages : public ImageSource {
public:
    explicit ForeignImages(Reporter& reporter) : stream_(reporter) {}

    /// @return false when there are none, or after it was reported why not
    bool Begin(const std::string& name) {
        if (!stream_.Open(name, ForeignStream::Part::Images) || !stream_.Picture()) return false;
        const media_stream::PictureFormat& format = *stream_.Picture();
        facts_ = {.width = format.width,
                  .height = format.height,
                  .rate_numerator = format.ticks_numerator,
                  .rate_denominator = format.ticks_denominator,
                  .count = format.count,
                  .has_five_bits = format.significant_bits == 5};
        return true;
    }

    bool Next(RgbImage& image, std::uint32_t& lasts) override {
        ByteView bytes;
        while (stream_.Next(media_stream::kImage, bytes)) {
            const auto head = media_stream::ParseImageHead(bytes);
            const std::size_t length = stream_.Picture()->ImageBytes();
            if (!head || bytes.size() != media_stream::ImageHead::kBytes + length) break;
            image.Resize(facts_.width, facts_.height);
            const ByteView pixels = bytes.subspan(media_stream::ImageHead::kBytes);
            image.bytes.assign(pixels.begin(), pixels.end());
            lasts = head.Value().duration;
            return true;
        }
        return false;
    }

private:
    ForeignStream stream_;
};

} // namespace

std::unique_ptr<ImageSource> OpenImages(const std::string& given, Reporter& reporter) {
    if (ExtensionOf(given) == ".y4m") {
        const auto name = InputName(given, reporter);
        auto source = std::make_unique<Y4mSource>(reporter);
        if (!name || !source->Begin(*name)) return nullptr;
        return source;
    }
    std::vector<std::string> files{given};
    if (!ParsePattern(given) && ExtensionOf(given) != "") {
        const auto name = InputName(given, reporter);
        if (!name) return nullptr;
        files = {*name};
    } else {
        const auto listed = ListSeries(given, reporter);
        if (!listed) return nullptr;
        files = *listed;
    }
    auto source = std::make_unique<SeriesSource>(std::move(files), reporter);
    if (!source->Begin()) return nullptr;
    return source;
}

std::unique_ptr<ImageSource> OpenForeignImages(const std::string& name, Reporter& reporter) {
    auto source = std::make_unique<ForeignImages>(reporter);
    if (!source->Begin(name)) return nullptr;
    return source;
}

} // namespace kelvo::tool
