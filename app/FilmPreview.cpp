// What a film shows before it is opened: its first image.

#include "app/PreviewDecoder.h"
#include "container/UndoFile.h"
#include "media/AudioFilekel.h"
#include "media/VideoFilekel.h"
#include "media/VorbisFilekel.h"
#include "platform/base/durable_files.h"
#include "platform/base/file_names.h"
#include "platform/base/message_boxes.h"

namespace kelvo {
namespace {

constexpr int kFewestImages = 2;

bool CanBeRead(const CString& path) {
    ChFile file;
    return file.OpenReadOnly(path);
}

/// Opening such a film would undo the edit: to look at it must change nothing, nor be in the way of
/// the player, who may be opening it at the same time.
bool IsBeingEdited(const CString& path) {
    const auto found = platform::ExistingFileName(path.View());
    return found && UndoFile::IsLeftBeside(platform::WithoutLinks(*found));
}

/// What the name's track is when it holds no pictures. Only the head of a Vorbis track is looked
/// at: the one decoder of the program may be playing.
bool IsSound(const CString& path) {
    if (VorbisFilekel::IsVorbisFile(path)) return true;
    AudioFilekel sound;
    return sound.OpenForRead(path);
}

Preview::Kind KindWithoutPicture(const VideoFilekel& track, const CString& path) {
    const Fault fault = track.LastError().fault;
    if (fault == Fault::Missing || fault == Fault::Busy) return Preview::Kind::Nothing;
    // A film whose picture does not open is damaged, whatever its sound is.
    const bool is_sound = !IsFilmName(path.View()) && IsSound(path);
    return is_sound ? Preview::Kind::Nothing : Preview::Kind::Damaged;
}

Preview PreviewOf(const CString& path) {
    VideoFilekel track;
    if (!track.OpenForRead(path)) return {KindWithoutPicture(track, path), {}};
    if (track.FrameCount() < kFewestImages) return {};
    FrameSide side;
    Preview preview{Preview::Kind::Damaged, {}};
    if (!track.ReadFrame(0, side) || track.RecordIsDamaged()) return preview;
    if (preview.picture.SetByInfoAndBits(track.BitmapInfoBytes(), track.FrameBits())) {
        preview.kind = Preview::Kind::Picture;
    }
    return preview;
}

} // namespace

Preview DecodePreview(const CString& path) {
    const platform::ThreadBoxCollector boxes;
    if (path.IsEmpty() || !CanBeRead(path) || IsBeingEdited(path)) return {};
    Preview preview = PreviewOf(path);
    if (boxes.Boxes().empty()) return preview;
    return {Preview::Kind::Damaged, {}};
}

} // namespace kelvo
