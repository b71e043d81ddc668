// One picture that tells what a film is, or a sheet of many.

#include "tools/kelvotool/commands/Commands.h"
#include "tools/kelvotool/exporting/FilmPictures.h"
#include "tools/kelvotool/files/ByteOutput.h"
#include "tools/kelvotool/options/CommandLine.h"
#include "tools/kelvotool/picture/PngFile.h"
#include "tools/kelvotool/picture/TinyLetters.h"
#include "tools/kelvotool/report/StopSignal.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kelvo::tool {

namespace {

constexpr std::uint32_t kLargestSide = 16384;

struct PictureOptions {
    std::string film;
    std::string output;
    std::uint32_t pixels = 256; ///< of the longer side of a thumbnail
    std::optional<RangeBound> at;
    std::uint32_t columns = 4;
    std::uint32_t rows = 4;
    std::uint32_t width = 1024; ///< of a sheet
};

int WritePicture(const PictureOptions& options, const FilmPictures& film, const RgbImage& image,
                 unsigned significant_bits, bool force, Reporter& reporter) {
    Reporter output_reporter(options.output);
    ByteOutput output;
    std::vector<std::uint8_t> file;
    if (!output.Begin(options.output, film.Name(), force, output_reporter)) {
        return std::max(reporter.Code(), output_reporter.Code());
    }
    if (EncodePng(image, significant_bits, file) && !StopRequested()) {
        output.Append(file);
        output.Finish(output_reporter);
    }
    return std::max(reporter.Code(), output_reporter.Code());
}

/// The size with that longer side, and the same shape.
void FitInto(std::uint32_t longer, std::uint32_t& width, std::uint32_t& height) {
    const std::uint64_t side = std::max(width, height);
    const auto scaled = [&](std::uint32_t value) {
        return std::max<std::uint32_t>(
            1, static_cast<std::uint32_t>((std::uint64_t{value} * longer + side / 2) / side));
    };
    const std::uint32_t new_width = scaled(width);
    height = scaled(height);
    width = new_width;
}

int RunThumbnail(const PictureOptions& options, const CommonOptions& common) {
    SetTask("thumbnail " + options.film);
    Reporter reporter(options.film);
    FilmPictures film(reporter);
    if (!film.Open(options.film)) return reporter.Code();
    RgbImage picture;
    if (!film.HasImages()) {
        const std::uint32_t height = std::max(1U, options.pixels / 4);
        if (!film.DrawSound(options.pixels, height, picture)) return reporter.Code();
        return WritePicture(options, film, picture, 8, common.force, reporter);
    }
    RgbImage image;
    std::uint32_t number = 0;
    if (options.at) {
        const std::uint64_t last = film.ImageCount() - 1;
        number =
            static_cast<std::uint32_t>(std::min(PositionOf(*options.at, film.Images(), 0), last));
        if (!film.Take(number, image)) return std::max<int>(reporter.Code(), kNotDone);
    } else if (!film.TakeTelling(image, number)) {
        return std::max<int>(reporter.Code(), kNotDone);
    }
    std::uint32_t width = image.width;
    std::uint32_t height = image.height;
    FitInto(options.pixels, width, height);
    Resample(image, width, height, picture);
    return WritePicture(options, film, picture, 8, common.force, reporter);
}

void Paste(const RgbImage& from, RgbImage& to, std::uint32_t x, std::uint32_t y) {
    for (std::uint32_t row = 0; row < from.height; ++row)
        std::copy_n(from.Row(row), std::size_t{from.width} * 3,
                    to.Row(y + row) + std::size_t{x} * 3);
}

bool DrawSheet(const PictureOptions& options, FilmPictures& film, RgbImage& sheet) {
    constexpr std::uint32_t kGap = 4;
    const std::uint32_t cell_width =
        std::max(8U, (options.width - std::min(options.width, kGap * (options.columns + 1))) /
                         options.columns);
    const std::uint32_t cell_height = std::max<std::uint32_t>(
        1, static_cast<std::uint32_t>(std::uint64_t{cell_width} * film.Height() / film.Width()));
    const std::uint32_t rows =
        std::min(options.rows, (film.ImageCount() + options.columns - 1) / options.columns);
    const std::uint64_t height = std::uint64_t{rows} * (cell_height + kGap) + kGap;
    if (height > kLargestSide) return false;
    sheet.Resize(options.columns * (cell_width + kGap) + kGap, static_cast<std::uint32_t>(height));
    std::ranges::fill(sheet.bytes, std::uint8_t{32});
    const std::uint32_t cells = std::min(rows * options.columns, film.ImageCount());
    const std::uint32_t dot = std::max(1U, cell_width / 96);
    RgbImage image;
    RgbImage cell;
    for (std::uint32_t i = 0; i < cells && !StopRequested(); ++i) {
        const auto number =
            static_cast<std::uint32_t>(std::uint64_t{i} * film.ImageCount() / cells);
        if (!film.Take(number, image)) continue;
        Resample(image, cell_width, cell_height, cell);
        DrawLetters(cell, dot, cell_height > 9 * dot ? cell_height - 8 * dot : 0,
                    TimeText(double(number) / film.ImagesPerSecond()), dot);
        Paste(cell, sheet, kGap + i % options.columns * (cell_width + kGap),
              kGap + i / options.columns * (cell_height + kGap));
    }
    return true;
}

void DrawSoundTimes(const FilmPictures& film, std::uint32_t columns, RgbImage& sheet) {
    const std::uint32_t dot = std::max(1U, sheet.width / 512);
    for (std::uint32_t i = 0; i < columns; ++i)
        DrawLetters(sheet, i * sheet.width / columns, sheet.height - 8 * dot,
                    TimeText(film.Seconds() * i / columns), dot);
}

int RunSheet(const PictureOptions& options, const CommonOptions& common) {
    SetTask("sheet " + options.film);
    Reporter reporter(options.film);
    FilmPictures film(reporter);
    if (!film.Open(options.film)) return reporter.Code();
    RgbImage sheet;
    if (!film.HasImages()) {
        const std::uint32_t height = std::max(64U, options.width / 4);
        if (!film.DrawSound(options.width, height, sheet)) return reporter.Code();
        DrawSoundTimes(film, options.columns, sheet);
    } else if (!DrawSheet(options, film, sheet)) {
        reporter.NotDone("the sheet would be higher than 16384 pixels", ProblemCode::NotPossible);
        return reporter.Code();
    }
    return WritePicture(options, film, sheet, 8, common.force, reporter);
}

CLI::App& AddPictureCommand(CommandLine& line, const std::string& name,
                            const std::string& description, PictureOptions& options) {
    CLI::App& command = line.AddCommand(name, description, kUsesForce);
    command.add_option("FILM", options.film, "a .kva, .kvf or .kaf file")->required();
    command.add_option("OUT", options.output, "the picture (.png); - is standard output")
        ->required();
    return command;
}

} // namespace

void AddThumbnail(CommandLine& line) {
    const auto options = std::make_shared<PictureOptions>();
    CLI::App& command = AddPictureCommand(
        line, "thumbnail",
        "Make one picture that tells what a film is: neither black nor flat; of a sound its "
        "waveform",
        *options);
    command.add_option("-s,--size", options->pixels, "of the longer side")
        ->check(CLI::Range(1U, kLargestSide))
        ->type_name("PIXELS");
    command
        .add_option_function<std::string>(
            "--at",
            [options](const std::string& text) {
                const auto bound = ParseBound(text);
                if (!bound) {
                    throw CLI::ValidationError("--at", "\"" + text +
                                                           "\" is no time as 1:02.5 or "
                                                           "300f");
                }
                options->at = bound.Value();
            },
            "the image at this time, or of this number (300f)")
        ->type_name("T");
    line.WhenChosen(
        command, [options](const CommonOptions& common) { return RunThumbnail(*options, common); });
}

void AddSheet(CommandLine& line) {
    constexpr std::uint32_t kMostCells = 64;
    const auto options = std::make_shared<PictureOptions>();
    CLI::App& command = AddPictureCommand(
        line, "sheet", "Make a sheet of a film's images with their times; of a sound its waveform",
        *options);
    command.add_option("--columns", options->columns, "images side by side")
        ->check(CLI::Range(1U, kMostCells))
        ->type_name("N");
    command.add_option("--rows", options->rows, "images one below the other")
        ->check(CLI::Range(1U, kMostCells))
        ->type_name("N");
    command.add_option("--width", options->width, "of the whole sheet, about")
        ->check(CLI::Range(64U, kLargestSide))
        ->type_name("PIXELS");
    line.WhenChosen(command,
                    [options](const CommonOptions& common) { return RunSheet(*options, common); });
}

} // namespace kelvo::tool
