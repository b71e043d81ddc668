#include "tools/kelvotool/exporting/PictureWalk.h"

#include "tools/kelvotool/report/StopSignal.h"

namespace kelvo::tool {

bool PictureWalk::ReadImage() {
    const auto record = static_cast<std::uint32_t>(spans_[span_].first + in_span_);
    const bool is_next = in_span_ > 0 || (span_ == 0 && record == 0);
    if (!(is_next ? reader_.ReadNext() : reader_.ReadByNumber(record))) {
        if (StopRequested()) return false;
        reporter_.Report(reader_.RecordProblem(record).value_or(reader_.Make(
            ProblemCode::RecordDamaged, "the record cannot be read", record, {}, kNotDone)));
        return false;
    }
    if (const auto problem = reader_.RecordProblem(record)) reporter_.Report(*problem);
    return true;
}

bool PictureWalk::Next(RgbImage& image, std::uint32_t& repeats) {
    repeats = 0;
    while (repeats == 0) {
        while (span_ < spans_.size() && in_span_ >= spans_[span_].Count()) {
            ++span_;
            in_span_ = 0;
        }
        if (span_ == spans_.size() || StopRequested() || !ReadImage()) return false;
        repeats = timing_.repeats[image_];
        ++in_span_;
        ++image_;
    }
    RgbImage& decoded = scale_ == 1 ? image : small_;
    TakeRecord(reader_.Record(), *reader_.Track().video, decoded);
    if (scale_ != 1) Enlarge(small_, scale_, image);
    return true;
}

} // namespace kelvo::tool
