#include "framework/base/FileBufferlum.h"

#include "framework/base/Bytes.h"
#include "framework/base/ChFile.h"

#include <algorithm>

namespace kelvo {
namespace {

/// How far behind the file's end the block is said to be while none is held.
constexpr std::int64_t kNoBlockDistance = 10;

} // namespace

bool FileBufferlum::Bind(ChFile& file, std::uint32_t block_size) {
    const std::int64_t length = file.Size();
    if (block_size == 0 || length < 0) return false;
    void* block = TryResizeBlock(nullptr, block_size);
    if (block == nullptr) return false;
    block_.reset(static_cast<std::uint8_t*>(block));
    file_length_ = length;
    block_size_ = block_size;
    block_start_ = length + kNoBlockDistance;
    block_length_ = 0;
    file_ = &file;
    return true;
}

const std::uint8_t* FileBufferlum::Load(std::int64_t position) {
    if (file_ == nullptr || position < 0 || position >= file_length_) return nullptr;
    const std::int64_t start = position / block_size_ * block_size_;
    const auto wanted =
        static_cast<std::size_t>(std::min<std::int64_t>(block_size_, file_length_ - start));
    std::size_t read = 0;
    if (file_->Seek(start)) read = file_->ReadSome(ByteSpan{block_.get(), wanted});
    block_start_ = start;
    block_length_ = static_cast<std::int64_t>(read);
    // A file that was cut meanwhile gives less than its length promised.
    return position - start < block_length_ ? block_.get() + (position - start) : nullptr;
}

} // namespace kelvo
