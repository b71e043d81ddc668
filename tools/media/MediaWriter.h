#pragma once
// The file that encode writes: coded packets in, a whole file at its place or nothing at all.

#include "platform/base/durable_files.h"
#include "tools/media/Libraries.h"
#include "tools/media/Report.h"

#include <cstdint>
#include <string>

namespace kelvo::media_tool {

class MediaWriter {
public:
    explicit MediaWriter(Report& report) : report_(report) {}
    ~MediaWriter();
    MediaWriter(const MediaWriter&) = delete;
    MediaWriter& operator=(const MediaWriter&) = delete;

    /// Takes a temporary beside the file. @return false after it was reported why not
    bool Open(const std::string& name, const char* muxer);
    /// A new stream, before Begin.
    AVStream* AddStream();
    bool NeedsGlobalHeaders() const { return (context_->oformat->flags & AVFMT_GLOBALHEADER) != 0; }
    /// What the file says of itself.
    void Describe(const std::string& key, const std::string& value);

    bool Begin();
    /// @param packet  with times in `time_base`; it is empty afterwards
    bool Write(AVPacket* packet, const AVStream& stream, AVRational time_base);
    /// Ends the file, syncs it and puts it at its place.
    bool Finish(bool replace);

private:
    static int WritePiece(void* self, std::uint8_t* bytes, int count);
    static std::int64_t Seek(void* self, std::int64_t offset, int whence);
    /// @return false after it was reported
    bool Check(int result);

    Report& report_;
    std::string name_;
    platform::DurableTemporary file_;
    std::uint64_t position_ = 0;
    bool disk_failed_ = false;
    AVFormatContext* context_ = nullptr;
};

} // namespace kelvo::media_tool
