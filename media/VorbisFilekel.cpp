#include "media/VorbisFilekel.h"

#include "container/AVDirectory.h"
#include "framework/base/ProgressDisplay.h"
#include "media/DamagedFilm.h"

#include <algorithm>
#include <climits>
#include <mutex>
#include <tuple>

namespace kelvo {

namespace {

constexpr char kNotOggText[] = "Input does not appear to be an Ogg bitstream";
constexpr char kFirstPageText[] = "Error reading first page of Ogg bitstream data";
constexpr char kInitialHeaderText[] = "Error reading initial header packet";
constexpr char kNotVorbisText[] = "This Ogg bitstream does not contain Vorbis audio data";
constexpr char kSecondaryHeaderText[] = "Corrupt secondary header.  Exiting";
constexpr char kHeadersEndEarlyText[] = "End of file before finding all Vorbis headers!";
constexpr char kDamagedText[] = "Corrupt or missing data in bitstream; continuing...";
constexpr char kPositioningTitle[] = "Attendere...";

constexpr std::uint32_t kClassId = 10100200;
constexpr std::uint32_t kProgressTotal = 10000;
/// Silence of the two sample widths, before the stream has given anything.
constexpr std::uint8_t kCentre8 = 127;

// Room for one sample of every channel is never missing behind a frame that is not full yet.
static_assert(kLargestVorbisFrame + 2 * VorbisDecoder::kInputStep <= VorbisFilekel::kPcmBufferSize);

const char* TextOf(VorbisFault fault) {
    switch (fault) {
    case VorbisFault::NotOgg:
        return kNotOggText;
    case VorbisFault::FirstPage:
        return kFirstPageText;
    case VorbisFault::InitialHeader:
        return kInitialHeaderText;
    case VorbisFault::NotVorbis:
        return kNotVorbisText;
    case VorbisFault::SecondaryHeader:
        return kSecondaryHeaderText;
    case VorbisFault::HeadersEndEarly:
        return kHeadersEndEarlyText;
    case VorbisFault::None:
    case VorbisFault::EmptyStream:
        break;
    }
    return nullptr;
}

/// The decoder of the whole process, and the track that it decodes at the moment.
struct SharedDecoder {
    std::mutex mutex; // guards both below; nothing is shown while it is held
    VorbisDecoder decoder;
    const VorbisFilekel* owner = nullptr;
};

SharedDecoder& TheDecoder() {
    static SharedDecoder shared;
    return shared;
}

class FileSource : public VorbisSource {
public:
    explicit FileSource(ChFile& file) : file_(file) {}
    std::size_t Read(ByteSpan room) override { return file_.ReadSome(room); }

private:
    ChFile& file_;
};

/// In a film, from now on only its sound is seen. Sound that a cut-off film has lost the end of is
/// seen as far as it is there.
bool EnterSound(ChFile& file, const CString& name) {
    if (!IsFilmName(name.View())) return true;
    std::array<std::uint8_t, AVDirectory::kBytes> bytes{};
    if (!file.ReadAll(bytes)) return false;
    const Result<AVDirectory> directory = ParseAVDirectory(bytes);
    const std::int64_t length = file.FileLength();
    if (!directory || length < 0) return false;
    const TrackWindow& window = directory.Value().audio;
    const Fault fault = CheckTrackWindow(window, static_cast<std::uint64_t>(length)).fault;
    const bool cut = fault == Fault::EndsEarly && window.start < length;
    if (fault != Fault::None && !cut) return false;
    return file.SetWindow(window.start, std::min<std::int64_t>(window.end, length));
}

bool ReadsSignature(ChFile& file) {
    std::array<std::uint8_t, kVorbisSignature.size()> bytes{};
    return file.ReadAll(bytes) && StartsWithVorbisSignature(bytes);
}

} // namespace

VorbisFilekel::VorbisFilekel() : CObj(kClassId) {}

VorbisFilekel::~VorbisFilekel() {
    Close();
}

bool VorbisFilekel::IsVorbisFile(const CString& name) {
    ChFile file;
    return file.OpenReadOnly(name) && EnterSound(file, name) && ReadsSignature(file);
}

bool VorbisFilekel::IsVorbisTrack(const CString& name, const TrackWindow& window) {
    ChFile file;
    return file.OpenReadOnly(name) && file.SetWindow(window.start, window.end) &&
           ReadsSignature(file);
}

bool VorbisFilekel::OpenForRead(const CString& name, std::uint32_t header_length,
                                const std::optional<TrackWindow>& window) {
    Close();
    last_error_ = {Fault::Missing, 0};
    if (!file_.OpenReadOnly(name)) return false;
    const bool entered =
        window ? file_.SetWindow(window->start, window->end) : EnterSound(file_, name);
    if (!entered || !ReadsSignature(file_)) {
        std::ignore = file_.CloseFile(); // nothing was written
        last_error_ = {Fault::BadValue, 0};
        return false;
    }
    last_error_ = ReadDescription(header_length);
    if (last_error_.fault != Fault::None) {
        std::ignore = file_.CloseFile(); // nothing was written
        return false;
    }
    const bool narrow = description_.BytesPerSample == 1;
    frame_buffer_.assign(description_.FrameBytes, narrow ? kCentre8 : std::uint8_t{0});
    for (PcmBuffer& buffer : pcm_) {
        buffer.bytes.resize(kPcmBufferSize);
    }
    current_frame_ = 0;
    last_frame_complete_ = true;
    stream_damaged_ = false;
    out_of_step_ = false;
    damage_shown_ = false;
    StartDecoder();
    return true;
}

Error VorbisFilekel::ReadDescription(std::uint32_t header_length) {
    header_length_ = header_length;
    description_ = {};
    header_buffer_.clear();
    std::array<std::uint8_t, VorbisDescription::kBytes> bytes{};
    if (!file_.ReadAll(bytes)) return {Fault::EndsEarly, kVorbisSignature.size()};
    description_ = ParseVorbisDescription(bytes).Value();
    if (header_length > file_.Remaining()) return {Fault::EndsEarly, kVorbisHeaderOffset};
    header_buffer_.resize(header_length);
    if (!file_.ReadAll(header_buffer_)) return {Fault::Unreadable, kVorbisHeaderOffset};
    return CheckVorbisDescription(description_);
}

bool VorbisFilekel::Close() {
    StopDecoder();
    std::ignore = file_.CloseFile(); // nothing was written
    for (PcmBuffer& buffer : pcm_) {
        buffer = {};
    }
    pending_ = 0;
    in_use_ = 0;
    setup_fault_ = VorbisFault::EmptyStream;
    return true;
}

int VorbisFilekel::FrameCount() const {
    return static_cast<int>(std::min<std::uint32_t>(description_.frame_count, INT_MAX));
}

int VorbisFilekel::CurrentFrame() const {
    return static_cast<int>(current_frame_);
}

// The decoder

void VorbisFilekel::StartDecoder() {
    ResetPcm();
    decoded_bytes_ = 0;
    {
        SharedDecoder& shared = TheDecoder();
        const std::lock_guard lock{shared.mutex};
        shared.owner = nullptr; // whatever the decoder was doing is over
        setup_fault_ = TakeDecoder();
        if (setup_fault_ == VorbisFault::None) {
            comments_ = "";
            for (const std::string& comment : shared.decoder.Comments()) {
                comments_ += std::string_view{comment};
            }
            vendor_ = std::string_view{shared.decoder.Vendor()};
            stream_channels_ = shared.decoder.Channels();
            stream_sample_rate_ = shared.decoder.SampleRate();
        }
    }
    end_of_stream_ = setup_fault_ != VorbisFault::None;
    if (const char* const text = TextOf(setup_fault_)) ErrorBox(text);
}

void VorbisFilekel::StopDecoder() {
    SharedDecoder& shared = TheDecoder();
    const std::lock_guard lock{shared.mutex};
    if (shared.owner == this) {
        shared.decoder.Clear();
        shared.owner = nullptr;
    }
    end_of_stream_ = true;
}

// With the mutex of the shared decoder held: makes it ours and brings it to decoded_bytes_.
VorbisFault VorbisFilekel::TakeDecoder() {
    SharedDecoder& shared = TheDecoder();
    if (shared.owner == this) return VorbisFault::None;
    shared.owner = nullptr;
    shared.decoder.Clear();
    if (!file_.Seek(static_cast<std::int64_t>(kVorbisHeaderOffset) + header_length_)) {
        return VorbisFault::EmptyStream;
    }
    FileSource source{file_};
    const VorbisFault fault = shared.decoder.SetUp(source);
    if (fault != VorbisFault::None) return fault;
    // The other buffer holds nothing that is still wanted.
    const ByteSpan scratch{pcm_[1 - in_use_].bytes};
    for (std::uint64_t passed = 0; passed < decoded_bytes_;) {
        const auto room = std::min<std::uint64_t>(scratch.size(), decoded_bytes_ - passed);
        const VorbisDecoder::Chunk chunk = shared.decoder.Decode(
            source, scratch.first(static_cast<std::size_t>(room)), description_.BytesPerSample);
        passed += chunk.written;
        if (!chunk.more) return VorbisFault::EmptyStream; // the file has become shorter
    }
    shared.owner = this;
    return VorbisFault::None;
}

std::size_t VorbisFilekel::DecodeChunk(PcmBuffer& buffer, std::size_t destination) {
    if (end_of_stream_) return 0;
    VorbisDecoder::Chunk chunk;
    {
        SharedDecoder& shared = TheDecoder();
        const std::lock_guard lock{shared.mutex};
        if (TakeDecoder() == VorbisFault::None) {
            FileSource source{file_};
            chunk = shared.decoder.Decode(source, ByteSpan{buffer.bytes}.subspan(destination),
                                          description_.BytesPerSample);
        }
        if (!chunk.more) shared.owner = nullptr;
    }
    decoded_bytes_ += chunk.written;
    if (!chunk.more) end_of_stream_ = true;
    if (chunk.damaged || chunk.out_of_step) stream_damaged_ = true;
    if (chunk.out_of_step) out_of_step_ = true;
    return chunk.written;
}

// PCM

void VorbisFilekel::ResetPcm() {
    in_use_ = 0;
    pending_ = 0;
    for (PcmBuffer& buffer : pcm_) {
        buffer.read_offset = 0;
    }
}

bool VorbisFilekel::DecodeMore() {
    if (end_of_stream_) return false;
    PcmBuffer& buffer = InUse();
    const std::size_t filled = buffer.read_offset + pending_;
    if (buffer.read_offset > kSwitchOffset ||
        buffer.bytes.size() - filled < VorbisDecoder::kInputStep) {
        PcmBuffer& other = pcm_[1 - in_use_];
        std::ranges::copy(ByteView{buffer.bytes}.subspan(buffer.read_offset, pending_),
                          other.bytes.begin());
        buffer.read_offset = 0;
        other.read_offset = 0;
        in_use_ = 1 - in_use_;
    }
    const std::size_t written = DecodeChunk(InUse(), InUse().read_offset + pending_);
    pending_ += written;
    return written > 0 || !end_of_stream_;
}

void VorbisFilekel::FillFrame() {
    while (pending_ < frame_buffer_.size()) {
        if (DecodeMore()) continue;
        std::ranges::copy(ByteView{InUse().bytes}.subspan(InUse().read_offset, pending_),
                          frame_buffer_.begin());
        ResetPcm();
        last_frame_complete_ = false;
        return;
    }
    const std::size_t count = frame_buffer_.size();
    std::ranges::copy(ByteView{InUse().bytes}.subspan(InUse().read_offset, count),
                      frame_buffer_.begin());
    InUse().read_offset += count;
    pending_ -= count;
    last_frame_complete_ = true;
}

// Before anything is touched: while the box is open windows answer, and they may read or close.
void VorbisFilekel::ShowDamageOnce() {
    if (!out_of_step_ || damage_shown_) return;
    damage_shown_ = true;
    if (DamagedFilmNotice::WasShownFor(file_.FileName())) return; // one box is enough
    ErrorBox(kDamagedText);
}

bool VorbisFilekel::ReadNextFrame() {
    ShowDamageOnce();
    if (!IsOpen() || positioning_ || current_frame_ >= static_cast<std::uint32_t>(FrameCount())) {
        return false;
    }
    FillFrame();
    ++current_frame_;
    return true;
}

// Positioning

bool VorbisFilekel::GoToFrame(int frame) {
    ShowDamageOnce();
    if (!IsOpen() || positioning_) return false;
    const auto wanted = static_cast<std::uint32_t>(std::clamp(frame, 0, FrameCount()));
    const std::uint64_t frame_bytes = frame_buffer_.size();
    if (wanted < current_frame_) {
        const std::uint64_t back = (current_frame_ - wanted) * frame_bytes;
        if (InUse().read_offset >= back) { // the bytes are still there
            InUse().read_offset -= static_cast<std::size_t>(back);
            pending_ += static_cast<std::size_t>(back);
            current_frame_ = wanted;
            return true;
        }
        StopDecoder();
        StartDecoder();
        current_frame_ = 0;
    }
    if (SkipBytes((wanted - current_frame_) * frame_bytes)) current_frame_ = wanted;
    return true;
}

// False when it was cancelled (the track is then at its start) or closed meanwhile.
bool VorbisFilekel::SkipBytes(std::uint64_t count) {
    if (pending_ >= count) {
        InUse().read_offset += static_cast<std::size_t>(count);
        pending_ -= static_cast<std::size_t>(count);
        return true;
    }
    if (end_of_stream_) { // nothing but what is pending can be passed over
        ResetPcm();
        return true;
    }
    const std::unique_ptr<ProgressDisplay> progress = ShowProgress(kPositioningTitle);
    std::uint64_t done = pending_;
    std::size_t chunk = 0;
    std::int32_t shown = -1;
    positioning_ = true; // the display lets windows answer, and they may ask for frames
    while (done < count && !end_of_stream_) {
        const auto share = static_cast<std::int32_t>(done * kProgressTotal / count);
        const bool go_on = share == shown || progress->Update(share, kProgressTotal);
        shown = share;
        if (!IsOpen() || !go_on) break;
        ResetPcm();
        chunk = DecodeChunk(pcm_[0], 0);
        done += chunk;
    }
    positioning_ = false;
    progress->Close();
    if (!IsOpen()) return false;
    if (done < count && !end_of_stream_) {
        StopDecoder();
        StartDecoder();
        current_frame_ = 0;
        return false;
    }
    ResetPcm();
    if (done >= count) {
        pending_ = static_cast<std::size_t>(done - count);
        pcm_[0].read_offset = chunk - pending_;
    }
    return true;
}

} // namespace kelvo
