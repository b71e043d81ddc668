#pragma once
// Makes the preview of a film: its first image, decoded on a thread of its own, so that a slow disk
// or a great film holds nobody up. Who asks goes on at once and gets a message when it is there; a
// newer question makes older ones worthless.

#include "framework/base/CString.h"
#include "media/NewCBitmaplum.h"
#include "platform/base/types.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

namespace kelvo {

/// What a file shows before it is opened.
struct Preview {
    enum class Kind : std::uint8_t {
        Picture, ///< the first image
        Nothing, ///< a sound, a single image, a folder: healthy, but nothing to show
        Damaged, ///< damaged or of an unknown kind
    };
    Kind kind = Kind::Nothing;
    NewCBitmaplum picture;
};

/// Looks at one file. Shows no boxes: what the opening would tell counts as damage. Any thread.
Preview DecodePreview(const CString& path);

class PreviewDecoder {
public:
    using Decode = std::function<Preview(const CString& path)>;

    /// At most so many files are decoded at once; a further one waits until one is done.
    static constexpr int kMostThreads = 4;

    explicit PreviewDecoder(Decode decode);
    PreviewDecoder(const PreviewDecoder&) = delete;
    PreviewDecoder& operator=(const PreviewDecoder&) = delete;
    /// Waits for nothing: what is still being decoded ends by itself and is dropped.
    ~PreviewDecoder();

    /// Asks for a file's preview and drops what was asked before. UI thread only.
    /// @param window   gets the message once it is there, with the question's number as wParam
    /// @return the question's number
    std::uint32_t Ask(const CString& path, HWND window, UINT message);
    /// Drops what was asked. UI thread only.
    void Forget();
    /// The answer to the question of that number; none when a newer one was asked meanwhile, or
    /// when it was taken already. UI thread only.
    std::optional<Preview> Take(std::uint32_t number);

    /// Threads of all decoders that are still at work. Any thread.
    static int WorkingThreads();

private:
    struct Shared;

    const std::shared_ptr<Shared> shared_;
};

} // namespace kelvo
