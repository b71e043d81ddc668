#include "framework/base/CString.h"

#include "framework/base/ByteReader.h"
#include "framework/base/ByteWriter.h"
#include "framework/base/CArray.h"
#include "framework/base/MemCheck.h"
#include "framework/base/Stream.h"
#include "platform/base/message_boxes.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <functional>
#include <limits>
#include <utility>

namespace kelvo {
namespace {

constexpr const char* kAllocationText = "CString::AllocSpace() - new returns 0!";
constexpr const char* kAllocationCaption = "- ERRORE ALLOCAZIONE -";

constexpr std::string_view kDelimiters = ";.:,\"()[]{}*/+!?=^\r\n\t\b ";
static_assert(kDelimiters.size() == 23);

constexpr std::size_t kFormatScratchBytes = 8192;
/// A double has no more significant digits that mean anything.
constexpr int kDoubleDigits = 17;

constexpr std::int32_t kMaxLength = std::numeric_limits<std::int32_t>::max();

constexpr bool IsLower(char c) {
    return c >= 'a' && c <= 'z';
}
constexpr bool IsUpper(char c) {
    return c >= 'A' && c <= 'Z';
}
constexpr bool IsLetter(char c) {
    return IsLower(c) || IsUpper(c);
}
constexpr char ToUpper(char c) {
    return IsLower(c) ? static_cast<char>(c - 32) : c;
}
constexpr char ToLower(char c) {
    return IsUpper(c) ? static_cast<char>(c + 32) : c;
}

void ReportAllocationFailure() {
    MessageBoxA(nullptr, kAllocationText, kAllocationCaption, MB_OK);
}

/// The end of a range for case conversion.
std::int32_t RangeEnd(std::int32_t from, std::int32_t to, std::int32_t length) {
    return to < from || to >= length ? length : to;
}

std::int32_t IndexOrNone(std::size_t index) {
    return index == std::string_view::npos ? -1 : static_cast<std::int32_t>(index);
}

} // namespace

CString::~CString() {
    MemRelease(data_);
}

bool CString::Load(Stream& stream) {
    Clear();
    std::uint8_t prefix[4];
    const std::int64_t start = stream.Position();
    if (stream.Read(prefix, sizeof prefix) - start != sizeof prefix) return false;
    const std::uint32_t length = ByteReader(prefix).ReadU32();
    if (length == 0) return true;
    if (length > static_cast<std::uint32_t>(kMaxLength) || length > stream.Remaining())
        return false;
    if (!Reserve(static_cast<std::int32_t>(length))) return false;
    const std::int64_t before = stream.Position();
    if (stream.Read(data_, length) - before != length) {
        Clear();
        return false;
    }
    length_ = static_cast<std::int32_t>(length);
    data_[length_] = '\0';
    return true;
}

bool CString::Save(Stream& stream) const {
    const auto length = static_cast<std::uint32_t>(length_);
    std::uint8_t prefix[4];
    ByteWriter(prefix).WriteU32(length);
    const std::int64_t start = stream.Position();
    if (stream.Write(prefix, sizeof prefix) - start != sizeof prefix) return false;
    return length == 0 || stream.Write(data_, length) - start - 4 == length;
}

CString& CString::operator=(const CString& other) {
    return this == &other ? *this : Assign(other.View());
}

CString& CString::operator=(CString&& other) noexcept {
    if (this != &other) {
        Clear();
        Swap(other);
    }
    return *this;
}

CString& CString::Assign(std::string_view text) {
    if (Overlaps(text)) {
        CString copy(text);
        std::swap(copy.growth_, growth_);
        Swap(copy);
        return *this;
    }
    Clear();
    return Append(text);
}

CString& CString::AssignFormat(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    AssignFormatList(format, arguments);
    va_end(arguments);
    return *this;
}

CString& CString::AssignFormatList(const char* format, std::va_list arguments) {
    // The arguments may be texts of this very string.
    CString formatted;
    formatted.AppendFormatList(format, arguments);
    std::swap(formatted.growth_, growth_);
    Swap(formatted);
    return *this;
}

CString CString::Formatted(const char* format, ...) {
    CString result;
    std::va_list arguments;
    va_start(arguments, format);
    result.AppendFormatList(format, arguments);
    va_end(arguments);
    return result;
}

CString& CString::Append(std::string_view text) {
    if (text.empty()) return *this;
    const bool own = Overlaps(text);
    const std::ptrdiff_t offset = own ? text.data() - data_ : 0;
    if (text.size() > static_cast<std::size_t>(kMaxLength)) {
        ReportAllocationFailure();
        return *this;
    }
    if (!Reserve(static_cast<std::int32_t>(text.size()))) return *this;
    std::memmove(data_ + length_, own ? data_ + offset : text.data(), text.size());
    length_ += static_cast<std::int32_t>(text.size());
    data_[length_] = '\0';
    return *this;
}

CString& CString::AppendFormat(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    AppendFormatList(format, arguments);
    va_end(arguments);
    return *this;
}

CString& CString::AppendFormatList(const char* format, std::va_list arguments) {
    const std::size_t scratch_bytes = 2 * std::strlen(format) + kFormatScratchBytes;
    const MemBlock scratch(static_cast<std::uint8_t*>(TryResizeBlock(nullptr, scratch_bytes)));
    if (scratch == nullptr) {
        ReportAllocationFailure();
        return *this;
    }
    char* const text = reinterpret_cast<char*>(scratch.get());
    const int written = std::vsnprintf(text, scratch_bytes, format, arguments);
    if (written < 0) return *this;
    return Append({text, std::min(static_cast<std::size_t>(written), scratch_bytes - 1)});
}

CString& CString::operator+=(double number) {
    char digits[48];
    const auto end = std::to_chars(digits, digits + sizeof digits, number,
                                   std::chars_format::general, kDoubleDigits);
    return Append({digits, static_cast<std::size_t>(end.ptr - digits)});
}

CString& CString::AppendSigned(std::int64_t number) {
    char digits[24];
    const auto end = std::to_chars(digits, digits + sizeof digits, number);
    return Append({digits, static_cast<std::size_t>(end.ptr - digits)});
}

CString& CString::AppendUnsigned(std::uint64_t number) {
    char digits[24];
    const auto end = std::to_chars(digits, digits + sizeof digits, number);
    return Append({digits, static_cast<std::size_t>(end.ptr - digits)});
}

const char* CString::Text() const {
    if (data_ == nullptr) return "";
    const void* zero = std::memchr(data_, 0, static_cast<std::size_t>(length_));
    if (zero != nullptr)
        length_ = static_cast<std::int32_t>(static_cast<const char*>(zero) - data_);
    return data_;
}

const char* CString::TextFrom(std::int32_t offset) const {
    return data_ == nullptr || offset < 0 || offset > length_ ? "" : data_ + offset;
}

char* CString::RawBuffer(std::int32_t count) {
    static char empty_text[1] = {};
    if (count <= 0) return empty_text;
    Clear();
    if (!Reserve(count)) return nullptr;
    std::memset(data_, 0, static_cast<std::size_t>(count) + 1);
    length_ = count;
    return data_;
}

bool CString::Reserve(std::int32_t count) {
    if (count < 1) return true;
    if (count < capacity_ - length_) return true;
    return AllocSpace(count);
}

bool CString::AllocSpace(std::int32_t count) {
    const std::int64_t size = std::int64_t{length_} + count + growth_;
    void* block =
        size > kMaxLength ? nullptr : TryResizeBlock(data_, static_cast<std::size_t>(size));
    if (block == nullptr) {
        ReportAllocationFailure();
        return false;
    }
    data_ = static_cast<char*>(block);
    capacity_ = static_cast<std::int32_t>(size);
    data_[length_] = '\0';
    return true;
}

bool CString::Overlaps(std::string_view text) const {
    const std::less<> before;
    return data_ != nullptr && !text.empty() && !before(text.data(), data_) &&
           before(text.data(), data_ + capacity_);
}

void CString::Clear() {
    MemRelease(data_);
    data_ = nullptr;
    length_ = 0;
    capacity_ = 0;
}

void CString::Truncate(std::int32_t count) {
    if (count >= length_) return;
    length_ = std::max(count, 0);
    data_[length_] = '\0';
}

void CString::DeleteFirst(std::int32_t count) {
    if (count < 1) return;
    if (count >= length_) {
        Clear();
        return;
    }
    length_ -= count;
    std::memmove(data_, data_ + count, static_cast<std::size_t>(length_) + 1);
}

bool CString::Insert(std::int32_t position, std::string_view text) {
    if (text.empty()) return true;
    if (Overlaps(text)) {
        const CString copy(text);
        return !copy.IsEmpty() && Insert(position, copy.View());
    }
    if (text.size() > static_cast<std::size_t>(kMaxLength)) {
        ReportAllocationFailure();
        return false;
    }
    const auto count = static_cast<std::int32_t>(text.size());
    if (!Reserve(count)) return false;
    char* const place = data_ + std::clamp(position, 0, length_);
    std::memmove(place + count, place, static_cast<std::size_t>(data_ + length_ - place) + 1);
    std::memcpy(place, text.data(), text.size());
    length_ += count;
    return true;
}

CString& CString::Fill(char character, std::int32_t count) {
    Clear();
    if (count < 1 || !Reserve(count)) return *this;
    std::memset(data_, character, static_cast<std::size_t>(count));
    length_ = count;
    data_[length_] = '\0';
    return *this;
}

CString& CString::Fill(const char* pattern, std::int32_t count) {
    const CString copy(pattern); // the pattern may be this string's own text
    Clear();
    if (count < 1 || copy.IsEmpty()) return *this;
    const std::int64_t total = std::int64_t{copy.length_} * count;
    if (total > kMaxLength) {
        ReportAllocationFailure();
        return *this;
    }
    if (!Reserve(static_cast<std::int32_t>(total))) return *this;
    for (std::int32_t i = 0; i < count; ++i) {
        Append(copy.View());
    }
    return *this;
}

void CString::RemoveLeading(char character) {
    const std::size_t first = View().find_first_not_of(character);
    DeleteFirst(first == std::string_view::npos ? length_ : static_cast<std::int32_t>(first));
}

CString CString::WithoutLeadingSpaces() const {
    CString result(*this);
    result.RemoveLeading(' ');
    return result;
}

CString CString::PaddedRight(std::int32_t width, char pad) const {
    CString result(*this);
    if (width > length_ && result.length_ == length_ && result.Reserve(width - length_)) {
        std::memset(result.data_ + length_, pad, static_cast<std::size_t>(width - length_));
        result.length_ = width;
        result.data_[width] = '\0';
    }
    return result;
}

CString CString::Replaced(char from, char to) const {
    CString result(*this);
    if (!result.IsEmpty()) std::replace(result.data_, result.data_ + result.length_, from, to);
    return result;
}

CString CString::Substring(std::int32_t start, std::int32_t count) const {
    if (start < 0 || start >= length_) return {};
    const std::string_view rest = View().substr(static_cast<std::size_t>(start));
    return CString(count < 0 ? rest : rest.substr(0, static_cast<std::size_t>(count)));
}

void CString::UpperCase(std::int32_t from, std::int32_t to) {
    from = std::max(from, 0);
    const std::int32_t end = RangeEnd(from, to, length_);
    for (std::int32_t i = from; i < end; ++i) {
        data_[i] = ToUpper(data_[i]);
    }
}

void CString::LowerCase(std::int32_t from, std::int32_t to) {
    from = std::max(from, 0);
    const std::int32_t end = RangeEnd(from, to, length_);
    for (std::int32_t i = from; i < end; ++i) {
        data_[i] = ToLower(data_[i]);
    }
}

CString CString::CutTo(std::int32_t width, char pad, Abbreviate abbreviate) const {
    if (length_ <= width) return PaddedRight(width, pad);
    CString result = Substring(0, std::max(width, 0));
    const bool cuts_word = width > 2 && IsLetter(data_[width - 2]) && IsLetter(data_[width - 1]) &&
                           IsLetter(data_[width]);
    if (abbreviate == Abbreviate::Yes && cuts_word && result.length_ == width) {
        result.data_[width - 1] = '.';
    }
    return result;
}

std::int32_t CString::Find(char character, std::int32_t start) const {
    return IndexOrNone(View().find(character, static_cast<std::size_t>(std::max(start, 0))));
}

std::int32_t CString::Find(const CString& pattern, std::int32_t start) const {
    if (pattern.IsEmpty()) return -1;
    return IndexOrNone(View().find(pattern.View(), static_cast<std::size_t>(std::max(start, 0))));
}

std::int32_t CString::FirstIndexOf(char character) const {
    const std::int32_t index = Find(character);
    return index < 0 ? length_ : index;
}

std::int32_t CString::LastIndexOf(char character) const {
    return IndexOrNone(View().rfind(character));
}

std::int32_t CString::CountOf(char character) const {
    return static_cast<std::int32_t>(std::ranges::count(View(), character));
}

int CString::Compare(const CString& other) const {
    return std::strcmp(Text(), other.Text());
}

int CString::CompareWithoutCase(const CString& other) const {
    const char* left = Text();
    const char* right = other.Text();
    while (*left != '\0' && ToLower(*left) == ToLower(*right)) {
        ++left;
        ++right;
    }
    return static_cast<unsigned char>(ToLower(*left)) - static_cast<unsigned char>(ToLower(*right));
}

bool CString::IsDelimiter(char character) {
    return kDelimiters.find(character) != std::string_view::npos;
}

void CString::Swap(CString& other) noexcept {
    std::swap(data_, other.data_);
    std::swap(length_, other.length_);
    std::swap(capacity_, other.capacity_);
    std::swap(growth_, other.growth_);
}

void SortStrings(CArray<CString>& strings) {
    std::sort(strings.begin(), strings.end());
}

} // namespace kelvo
