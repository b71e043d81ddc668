#pragma once
// Writes a film's pictures or sound, or both, as something that other programs open.

#include "tools/kelvotool/exporting/ExportFormat.h"
#include "tools/kelvotool/film/FilmDescription.h"
#include "tools/kelvotool/film/ImageTiming.h"
#include "tools/kelvotool/film/Ranges.h"
#include "tools/kelvotool/film/TrackReader.h"
#include "tools/kelvotool/options/CommonOptions.h"
#include "tools/kelvotool/report/Reporter.h"
#include "tools/kelvotool/sound/SoundWalk.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kelvo::tool {

struct ExportOptions {
    std::string input = {};
    std::string output = {};
    std::string format = {}; ///< empty: the output's extension tells
    std::optional<TrackKind> track = {};
    std::vector<Range> ranges = {};
    std::optional<TimingRule> timing = {}; ///< none: Sync where sound goes with it, else Constant
    std::uint32_t scale = 1;
    std::string preset = {}; ///< of a foreign format; empty: its own default
};

class FilmExport {
public:
    FilmExport(const ExportOptions& options, const CommonOptions& common);
    /// Does it all. @return the exit code
    int Run();

private:
    bool ChooseFormat();
    bool FindFilm();
    bool ChooseTracks();
    bool OpenTrack(const TrackDescription& track, std::unique_ptr<TrackReader>& reader);
    bool PrepareImages();
    bool PrepareSound();

    void WriteSeries();
    void WriteImageFile();
    void WriteSoundFile();
    void WriteVorbisStream();
    void WriteForeign();

    int Code() const;
    int Tell() const;

    const ExportOptions& options_;
    const CommonOptions& common_;
    Reporter reporter_;        ///< of what is read
    Reporter output_reporter_; ///< of what is written
    const ExportFormat* format_ = nullptr;
    std::string input_name_; ///< full
    std::optional<FilmDescription> film_;
    const TrackDescription* picture_ = nullptr; ///< null: it is left out
    const TrackDescription* sound_ = nullptr;
    std::unique_ptr<TrackReader> picture_reader_;
    std::unique_ptr<TrackReader> sound_reader_;
    std::vector<Span> image_spans_;
    ImageTiming timing_;
    SoundFacts sound_facts_;
    std::vector<Span> sample_spans_;
    std::uint32_t sample_bytes_ = 0; ///< of what was written
};

} // namespace kelvo::tool
