#include "framework/base/CBufferlum.h"

#include "framework/base/ByteReader.h"
#include "framework/base/ByteWriter.h"
#include "framework/base/ChFile.h"
#include "framework/base/XLanguageInfoClass.h"
#include "platform/base/message_boxes.h"

#include <cstddef>
#include <cstring>
#include <functional>
#include <limits>
#include <tuple>
#include <utility>

namespace kelvo {
namespace {

constexpr const char* kAllocationText = "CBufferlum::AllocSpace() - new returns 0!";
constexpr const char* kAllocationCaption = "ERRORE ALLOCAZIONE";
/// The caption has no number of its own, so no language file can supply it.
constexpr std::int32_t kNoStringId = -1;

constexpr std::uint32_t kMaxLength = std::numeric_limits<std::uint32_t>::max();

void ReportAllocationFailure() {
    MessageBoxA(nullptr, kAllocationText,
                XLanguageInfoClass::Translate(kNoStringId, kAllocationCaption), MB_OK);
}

std::size_t PutNumber(ByteSpan bytes, std::uint32_t offset, std::uint64_t value,
                      std::size_t width) {
    if (offset > bytes.size()) return 0;
    ByteWriter writer(bytes.subspan(offset));
    writer.WriteUnsigned(value, width);
    return writer.Ok() ? width : 0;
}

template <class T>
std::size_t GetNumber(ByteView bytes, std::uint32_t offset, T& value) {
    ByteReader reader(bytes);
    reader.Seek(offset);
    value = static_cast<T>(reader.ReadUnsigned(sizeof value));
    return reader.Ok() ? sizeof value : 0;
}

} // namespace

CBufferlum& CBufferlum::operator=(const CBufferlum& other) {
    if (this == &other) return *this;
    if (other.length_ > 0 && other.length_ >= capacity_) {
        // Bytes that are replaced need not be carried into a larger block.
        const std::uint32_t length = std::exchange(length_, 0);
        if (!AllocSpace(other.length_)) {
            length_ = length;
            return *this;
        }
    }
    length_ = 0;
    return Append(other.View());
}

CBufferlum& CBufferlum::Append(const CString& text) {
    const std::string_view view = text.View();
    return Append(ByteView{reinterpret_cast<const std::uint8_t*>(view.data()), view.size()});
}

CBufferlum& CBufferlum::Append(const char* text) {
    if (text == nullptr || *text == '\0') return *this;
    return Append(ByteView{reinterpret_cast<const std::uint8_t*>(text), std::strlen(text) + 1});
}

CBufferlum& CBufferlum::Append(ByteView bytes) {
    if (bytes.empty()) return *this;
    if (bytes.size() > kMaxLength) {
        ReportAllocationFailure();
        return *this;
    }
    // Bytes of its own may move with the block.
    const std::less<> before;
    const bool own =
        !before(bytes.data(), data_.get()) && before(bytes.data(), data_.get() + length_);
    const std::ptrdiff_t offset = own ? bytes.data() - data_.get() : 0;
    if (!Reserve(static_cast<std::uint32_t>(bytes.size()))) return *this;
    std::memcpy(data_.get() + length_, own ? data_.get() + offset : bytes.data(), bytes.size());
    length_ += static_cast<std::uint32_t>(bytes.size());
    return *this;
}

CBufferlum& CBufferlum::AppendUnsigned(std::uint64_t value, std::size_t width) {
    std::uint8_t bytes[8];
    PutNumber(bytes, 0, value, width);
    return Append(ByteView{bytes, width});
}

std::size_t CBufferlum::Put16(std::uint32_t offset, std::uint16_t value) {
    return PutNumber(Bytes(), offset, value, 2);
}

std::size_t CBufferlum::Put32(std::uint32_t offset, std::uint32_t value) {
    return PutNumber(Bytes(), offset, value, 4);
}

std::size_t CBufferlum::Put64(std::uint32_t offset, std::uint64_t value) {
    return PutNumber(Bytes(), offset, value, 8);
}

std::size_t CBufferlum::Get16(std::uint32_t offset, std::uint16_t& value) const {
    return GetNumber(View(), offset, value);
}

std::size_t CBufferlum::Get32(std::uint32_t offset, std::uint32_t& value) const {
    return GetNumber(View(), offset, value);
}

std::size_t CBufferlum::Get64(std::uint32_t offset, std::uint64_t& value) const {
    return GetNumber(View(), offset, value);
}

CBufferlum& CBufferlum::Insert(std::uint32_t offset, const CBufferlum& other) {
    if (offset > length_ || other.length_ == 0) return *this;
    if (&other == this) {
        const CBufferlum copy(other);
        return copy.length_ == 0 ? *this : Insert(offset, copy);
    }
    if (!Reserve(other.length_)) return *this;
    std::uint8_t* const place = data_.get() + offset;
    std::memmove(place + other.length_, place, length_ - offset);
    std::memcpy(place, other.data_.get(), other.length_);
    length_ += other.length_;
    return *this;
}

bool CBufferlum::ReadFrom(ChFile& file) {
    std::uint32_t length = 0;
    if (!file.ReadU32(length) || length > file.Remaining()) return false;
    CBufferlum fresh(growth_step_);
    if (length > 0) {
        if (!fresh.Reserve(length)) return false;
        if (!file.ReadAll(ByteSpan{fresh.data_.get(), length})) return false;
        fresh.length_ = length;
    }
    std::swap(data_, fresh.data_);
    length_ = fresh.length_;
    capacity_ = fresh.capacity_;
    return true;
}

bool CBufferlum::WriteTo(ChFile& file) const {
    return file.WriteU32(length_) && file.WriteAll(View());
}

void CBufferlum::Clear() {
    data_.reset();
    length_ = 0;
    capacity_ = 0;
}

bool CBufferlum::Reserve(std::uint32_t count) {
    if (capacity_ > length_ && count < capacity_ - length_) return true;
    return AllocSpace(count);
}

bool CBufferlum::AllocSpace(std::uint32_t count) {
    const std::uint64_t capacity = std::uint64_t{length_} + count + growth_step_;
    void* block = capacity > kMaxLength
                      ? nullptr
                      : TryResizeBlock(data_.get(), static_cast<std::size_t>(capacity));
    if (block == nullptr) {
        ReportAllocationFailure();
        return false;
    }
    std::ignore = data_.release(); // resized, or moved, into the block
    data_.reset(static_cast<std::uint8_t*>(block));
    capacity_ = static_cast<std::uint32_t>(capacity);
    return true;
}

} // namespace kelvo
