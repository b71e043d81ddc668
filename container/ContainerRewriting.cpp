// Rewriting a container: into a complete new file, which then takes the old one's place.

#include "container/RecordCopying.h"
#include "container/RewriteTarget.h"
#include "container/ZFilekel.h"
#include "container/codec/CompressionTypes.h"
#include "framework/base/ProgressDisplay.h"
#include "platform/base/durable_files.h"
#include "platform/base/file_calls.h"

#include <sys/stat.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace kelvo {

namespace {

constexpr char kDeleteFailed[] = "!DeleteFile()";
constexpr char kMoveFailed[] = "!MoveFile()";
constexpr char kClosingTitle[] = "Ricompressione in chiusura...";

constexpr char kFile[] = "Il file [";
constexpr char kTooLong[] = "] supera i 2147483648 bytes!";
constexpr char kTemporaryInUse[] = "] è in uso da un'altra operazione!";
constexpr char kTemporaryExists[] = "] esiste già!";
constexpr char kCannotBeWritten[] = "] non può essere scritto!";
constexpr char kHasOddRecords[] = "] ha records di lunghezza dispari!";
constexpr char kCannotBeRead[] = "] non può essere letto per intero!";
constexpr char kCancelled[] = "\r\n\r\nImpossibile procedere - Processo di compressione annullato!";

constexpr std::uint32_t kOwnerInterval = 5;
constexpr std::uint32_t kDialogInterval = 10;

CString CancelledText(const CString& name, const char* what) {
    return CString(kFile) + PathFileName(name) + what + kCancelled;
}

/// What a person is told when a rewrite cannot be finished.
CString FailureText(Fault fault, const CString& file, const CString& temporary) {
    switch (fault) {
    case Fault::TooLarge:
        return CancelledText(file, kTooLong);
    case Fault::Busy:
        return CancelledText(temporary, kTemporaryInUse);
    case Fault::Mismatch:
        return CancelledText(temporary, kTemporaryExists);
    case Fault::Unwritable:
        return CancelledText(temporary, kCannotBeWritten);
    case Fault::Stopped:
    case Fault::BadValue:
        return {}; // the person knows, or has been told in a box
    default:
        return CancelledText(file, kCannotBeRead);
    }
}

ContainerHeader Changed(ContainerHeader header, const RewriteParameters& parameters) {
    const auto change = [](std::uint32_t& value, std::uint32_t given) {
        if (given != 0) value = given;
    };
    change(header.UserHeaderSize, parameters.user_header_size);
    change(header.CompressionType, parameters.compression_type);
    change(header.KeyInterval, parameters.key_interval);
    change(header.CreatorValue, parameters.creator_value);
    return header;
}

/// The picture types code whole pixels of two bytes and leave the last byte of an odd record out.
bool LosesBytes(const ContainerHeader& header) {
    const codec::CompressionType& type =
        codec::CodingType(static_cast<int>(header.CompressionType));
    return type.codes_video && !type.codes_audio && header.RecordLength % 2 != 0;
}

bool Exists(const std::string& name) {
    struct stat status{};
    return platform::CurrentFileCalls().lstat(name.c_str(), &status) == 0;
}

} // namespace

/// An owner is notified before the first record and after every fifth one.
ZFilekel::RewriteProgress ZFilekel::ProgressOf(ProgressOwner* owner, std::uint32_t record_count,
                                               const RewriteTarget& target) {
    const auto notify = [owner, record_count, &target](std::uint32_t done) {
        if (owner == nullptr) return true;
        const RewriteInformation info{record_count, static_cast<std::uint32_t>(target.Size())};
        return owner->ProgressNotify(kRewriteProgress, static_cast<int>(done), info) == 0;
    };
    return {.begin = [notify] { return notify(0); },
            .step =
                [notify](std::uint32_t record) {
                    return record == 0 || record % kOwnerInterval != 0 || notify(record);
                }};
}

/// The whole new file, finished but not yet in place.
Error ZFilekel::WriteRewritten(RewriteTarget& target, const RewriteParameters& parameters,
                               const RewriteProgress& progress) {
    // Whoever edits this file at the moment would lose the edit.
    if (!platform::TryLock(Handle())) return {Fault::Busy, 0};
    const ContainerHeader header = Changed(header_, parameters);
    if (RecordCount() > 0 && LosesBytes(header) && !LosesBytes(header_)) {
        ErrorBox(CancelledText(FileName(), kHasOddRecords));
        return {Fault::BadValue, 0};
    }
    const ByteView user_header =
        parameters.user_header_size == 0 ? ByteView{user_header_.View()} : parameters.user_header;
    const auto kind = film_ ? RewriteTarget::Kind::Film : RewriteTarget::Kind::Track;
    if (const Error error = target.Begin(system_name_, kind); error.fault != Fault::None) {
        return error;
    }
    // From here on nobody else replaces the file; but somebody may have, since it was opened.
    if (!platform::NameMeans(system_name_, Handle())) return {Fault::Busy, 0};
    const Error error = film_ ? WriteRewrittenFilm(target, header, user_header, progress)
                              : WriteRewrittenTrack(target, header, user_header, progress);
    return error.fault != Fault::None ? error : target.Finish();
}

Error ZFilekel::WriteRewrittenTrack(RewriteTarget& target, const ContainerHeader& header,
                                    ByteView user_header, const RewriteProgress& progress) {
    Error error = target.BeginContainer(header, user_header);
    if (error.fault == Fault::None && !progress.begin()) error = {Fault::Stopped, 0};
    if (error.fault == Fault::None) {
        error = CopyRecords(*this, target, header.CompressionType, DamagedRecords::KeepStored,
                            progress.step);
    }
    return error.fault == Fault::None ? target.EndContainer() : error;
}

/// A track of a film is rewritten with the film around it: directory, sound, picture, in this
/// order.
Error ZFilekel::WriteRewrittenFilm(RewriteTarget& target, const ContainerHeader& header,
                                   ByteView user_header, const RewriteProgress& progress) {
    const AVDirectory old = film_->directory;
    const TrackWindow* rewritten = &old.Of(film_->selector);
    AVDirectory directory;
    for (const auto track : {&AVDirectory::audio, &AVDirectory::video}) {
        const TrackWindow& window = old.*track;
        if (window.Absent()) continue;
        // A film that is cut off in its other track would be cut off for ever.
        const Error damage = CheckTrackWindow(window, static_cast<std::uint64_t>(FileLength()));
        if (damage.fault != Fault::None) return damage;
        const auto start = static_cast<std::uint32_t>(target.Size());
        const bool is_rewritten = &window == rewritten;
        target.ReserveBehind(&window == &old.audio ? old.video.Size() : 0);
        const Error error = is_rewritten
                                ? WriteRewrittenTrack(target, header, user_header, progress)
                                : target.CopyWindow(Handle(), window);
        if (error.fault != Fault::None) return error;
        directory.*track = {start, static_cast<std::uint32_t>(target.Size())};
    }
    return target.PutDirectory(directory);
}

/// Tells what is to be told; nothing of the rewrite is left.
bool ZFilekel::FailRewrite(RewriteTarget& target, const Error& error) {
    const CString temporary(std::string_view{TemporaryNameFor(system_name_)});
    const CString text = FailureText(error.fault, FileName(), temporary);
    if (!text.IsEmpty()) ErrorBox(text);
    target.Discard();
    last_error_ = error;
    return false;
}

/// @return false when the new file could not take the old one's place and stays under its own name
bool ZFilekel::PutInPlace(RewriteTarget& target, const std::string& name) {
    if (target.PutInPlace()) return true;
    if (Exists(name)) ErrorBox(kDeleteFailed);
    if (target.PutInPlace()) return true;
    ErrorBox(kMoveFailed);
    target.Keep();
    Fail(Fault::Unwritable);
    return false;
}

/// Closes the old file, as it was when it was opened, and puts the new one in its place.
void ZFilekel::ReplaceBy(RewriteTarget& target) {
    // A new file is not deleted, as abandoning would: its records are all in the other one.
    if (mode_ != Mode::New) GiveChangesUp();
    UndoFile undo = std::move(undo_);
    const std::string name = system_name_;
    Shut(true);
    if (PutInPlace(target, name)) undo.Remove();
}

bool ZFilekel::RecompressOnClose(bool with_dialog) {
    if (mode_ == Mode::Closed) return false;
    std::unique_ptr<ProgressDisplay> dialog;
    const auto count = static_cast<std::int32_t>(RecordCount());
    const RewriteProgress progress{.begin =
                                       [&] {
                                           if (with_dialog) dialog = ShowProgress(kClosingTitle);
                                           return true;
                                       },
                                   .step =
                                       [&](std::uint32_t record) {
                                           return !dialog || record % kDialogInterval != 0 ||
                                                  dialog->Update(static_cast<std::int32_t>(record),
                                                                 count);
                                       }};
    RewriteTarget target;
    const Error error = WriteRewritten(target, {}, progress);
    dialog.reset();
    if (error.fault != Fault::None) {
        FailRewrite(target, error);
        // Records that were written since the opening lie where the old index was.
        AbandonChanges();
        last_error_ = error;
        return false;
    }
    last_error_ = {};
    ReplaceBy(target);
    return true;
}

bool ZFilekel::Recompress(const RewriteParameters& parameters, ProgressOwner* owner) {
    if (mode_ == Mode::Closed) return false;
    last_error_ = {};
    if (salvaged_) return Fail(Fault::Mismatch); // what is lost now could never be found again
    RewriteTarget target;
    const Error error =
        WriteRewritten(target, parameters, ProgressOf(owner, RecordCount(), target));
    if (error.fault != Fault::None) return FailRewrite(target, error);

    const CString name = FileName();
    const std::optional<FilmTrack> film = film_;
    const std::uint32_t type = Changed(header_, parameters).CompressionType;
    ReplaceBy(target);
    if (film) return OpenForRead(name, film->selector);
    const bool differential = codec::CodingType(static_cast<int>(type)).differential;
    return differential ? OpenForRead(name) : OpenExisting(name);
}

bool ZFilekel::RecompressFile(const CString& name, const RewriteParameters& parameters,
                              ProgressOwner* owner, char selector) {
    if (!OpenForRead(name, selector)) return false;
    RewriteTarget target;
    const Error error =
        WriteRewritten(target, parameters, ProgressOf(owner, RecordCount(), target));
    if (error.fault != Fault::None) {
        FailRewrite(target, error);
        return Shut(false);
    }
    last_error_ = {};
    ReplaceBy(target);
    return true;
}

} // namespace kelvo
