#include "tools/kelvotool/importing/ForeignStream.h"

#include "framework/base/ByteReader.h"

namespace kelvo::tool {

bool ForeignStream::Open(const std::string& name, Part part) {
    const bool wants_images = part == Part::Images;
    if (!program_.Start(MediaProgram::Task::Decode,
                        {name, "--track", wants_images ? "video" : "audio"}, reporter_)) {
        return false;
    }
    std::uint32_t tag = 0;
    ByteView bytes;
    bool understood = program_.ReadBlock(tag, bytes) && tag == media_stream::kStart &&
                      ByteReader{bytes}.ReadU32() == media_stream::kVersion;
    while (understood && program_.ReadBlock(tag, bytes) && tag != media_stream::kData) {
        if (tag == media_stream::kPicture) {
            const auto format = media_stream::ParsePicture(bytes);
            understood = format.Ok();
            if (format) picture_ = format.Value();
        } else if (tag == media_stream::kSound) {
            const auto format = media_stream::ParseSound(bytes);
            understood = format.Ok();
            if (format) sound_ = format.Value();
        }
    }
    if (understood && tag == media_stream::kData) return true;
    program_.Finish();
    reporter_.NotDone("kelvotool-media could not read it", ProblemCode::InputUnreadable);
    return false;
}

bool ForeignStream::Next(std::uint32_t wanted, ByteView& bytes) {
    std::uint32_t tag = 0;
    while (!ended_ && program_.ReadBlock(tag, bytes)) {
        if (tag == wanted) return true;
        if (tag != media_stream::kEnd) continue;
        ended_ = true;
        const int code = program_.Finish();
        if (code == kDamaged) {
            reporter_.Report({.code = ProblemCode::StreamDamaged,
                              .what = "parts of it are damaged or were left out"});
        }
        return false;
    }
    if (!ended_) reporter_.NotDone("it could not be read to its end", ProblemCode::InputUnreadable);
    ended_ = true;
    return false;
}

} // namespace kelvo::tool
