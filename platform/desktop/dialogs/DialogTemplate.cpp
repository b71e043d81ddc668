#include "platform/desktop/dialogs/DialogTemplate.h"

#include "platform/desktop/controls.h"
#include "platform/desktop/dialogs.h"

#include <QString>
#include <QtEndian>

namespace kelvo::desktop {

namespace {

constexpr WORD kNumberFollows = 0xFFFF;
constexpr WORD kExtendedVersion = 1;
constexpr WORD kExtendedMark = 0xFFFF;
constexpr std::size_t kLeastControlBytes = 18; ///< of the smaller of the two layouts
constexpr int kMostPoints = 200;

/// Sticky: after the end it gives zeros and is no longer Ok.
class TemplateReader {
public:
    explicit TemplateReader(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}

    bool Ok() const { return ok_; }
    std::size_t Remaining() const { return bytes_.size() - offset_; }

    std::uint8_t ReadByte() { return Claim(1) ? bytes_[offset_++] : std::uint8_t{0}; }
    WORD ReadWord() { return ReadNumber<quint16>(); }
    DWORD ReadDword() { return ReadNumber<quint32>(); }
    void Skip(std::size_t count) {
        if (Claim(count)) offset_ += count;
    }
    void AlignToDword() { Skip((4 - offset_ % 4) % 4); }

    TemplatePlace ReadPlace() {
        TemplatePlace place;
        for (std::int16_t* side : {&place.x, &place.y, &place.width, &place.height}) {
            *side = static_cast<std::int16_t>(ReadWord());
        }
        return place;
    }
    /// UTF-16 up to a 0.
    std::string ReadText() { return ReadTextFrom(ReadWord()); }
    std::string ReadNumberOrText() {
        const WORD first = ReadWord();
        return first == kNumberFollows ? "#" + std::to_string(ReadWord()) : ReadTextFrom(first);
    }
    std::string ReadClass() {
        const WORD first = ReadWord();
        return first == kNumberFollows ? StandardClass(ReadWord()) : ReadTextFrom(first);
    }

private:
    template <class Number>
    Number ReadNumber() {
        if (!Claim(sizeof(Number))) return 0;
        const auto value = qFromLittleEndian<Number>(bytes_.data() + offset_);
        offset_ += sizeof(Number);
        return value;
    }
    std::string ReadTextFrom(WORD letter) {
        QString text;
        for (; letter != 0 && ok_; letter = ReadWord())
            text.append(QChar(static_cast<char16_t>(letter)));
        return text.toStdString();
    }
    std::string StandardClass(WORD number) {
        constexpr const char* kNames[] = {WC_BUTTON,  WC_EDIT,      WC_STATIC,
                                          WC_LISTBOX, WC_SCROLLBAR, WC_COMBOBOX};
        constexpr WORD kFirst = 0x80;
        if (number >= kFirst && number < kFirst + std::size(kNames)) return kNames[number - kFirst];
        ok_ = false;
        return {};
    }
    bool Claim(std::size_t count) {
        if (count > Remaining()) ok_ = false;
        return ok_;
    }

    std::span<const std::uint8_t> bytes_;
    std::size_t offset_ = 0;
    bool ok_ = true;
};

enum class Layout : bool { Plain, Extended };

Layout LayoutOf(std::span<const std::uint8_t> bytes) {
    TemplateReader reader(bytes);
    const WORD version = reader.ReadWord();
    const WORD mark = reader.ReadWord();
    return version == kExtendedVersion && mark == kExtendedMark ? Layout::Extended : Layout::Plain;
}

TemplateFont ReadFont(TemplateReader& reader, Layout layout) {
    TemplateFont font;
    // Sizes that nobody can read, or that fill the screen with one letter, are nobody's wish.
    font.points = std::min<int>(reader.ReadWord(), kMostPoints);
    if (layout == Layout::Extended) {
        font.weight = reader.ReadWord();
        font.italic = reader.ReadByte() != 0;
        reader.Skip(1); // the character set: texts are Unicode
    }
    font.face = reader.ReadText();
    return font;
}

TemplateControl ReadControl(TemplateReader& reader, Layout layout) {
    TemplateControl control;
    reader.AlignToDword();
    if (layout == Layout::Extended) {
        reader.Skip(4); // the help number
        control.extended_style = reader.ReadDword();
        control.style = reader.ReadDword();
        control.place = reader.ReadPlace();
        control.id = static_cast<int>(reader.ReadDword());
    } else {
        control.style = reader.ReadDword();
        control.extended_style = reader.ReadDword();
        control.place = reader.ReadPlace();
        control.id = reader.ReadWord();
        // -1, the number of what nobody asks for, in 16 bits.
        if (control.id == 0xFFFF) control.id = -1;
    }
    control.window_class = reader.ReadClass();
    control.title = reader.ReadNumberOrText();
    // Creation data: no class of this program expects bytes of a template.
    reader.Skip(reader.ReadWord());
    return control;
}

} // namespace

std::optional<DialogTemplate> ReadDialogTemplate(std::span<const std::uint8_t> bytes) {
    const Layout layout = LayoutOf(bytes);
    TemplateReader reader(bytes);
    DialogTemplate read;
    if (layout == Layout::Extended) {
        reader.Skip(8); // version, mark, help number
        read.extended_style = reader.ReadDword();
        read.style = reader.ReadDword();
    } else {
        read.style = reader.ReadDword();
        read.extended_style = reader.ReadDword();
    }
    const std::size_t count = reader.ReadWord();
    read.place = reader.ReadPlace();
    read.menu = reader.ReadNumberOrText();
    read.window_class = reader.ReadNumberOrText();
    read.title = reader.ReadText();
    if ((read.style & DS_SETFONT) != 0) read.font = ReadFont(reader, layout);
    if (!reader.Ok() || count > reader.Remaining() / kLeastControlBytes) return std::nullopt;
    read.controls.reserve(count);
    while (read.controls.size() < count && reader.Ok())
        read.controls.push_back(ReadControl(reader, layout));
    if (!reader.Ok()) return std::nullopt;
    return read;
}

} // namespace kelvo::desktop
