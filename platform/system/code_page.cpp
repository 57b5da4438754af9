#include "platform/system/code_page.h"

#include <algorithm>
#include <array>
#include <cerrno>

#include <iconv.h>

namespace velk::platform {
namespace {

constexpr unsigned utf16Page = 1200;
constexpr unsigned utf8Page = 65001;
constexpr std::size_t unitSize = sizeof(char16_t);

struct PageName {
    unsigned number;
    char const* name;
};

// Pages that the C library knows by other names than "CP" and their number.
constexpr std::array pageNames = {
    PageName{1201, "UTF-16BE"},   PageName{1361, "JOHAB"},
    PageName{10000, "MACINTOSH"}, PageName{10007, "MAC-CYRILLIC"},
    PageName{10017, "MAC-UK"},    PageName{10029, "MAC-CENTRALEUROPE"},
    PageName{10079, "MAC-IS"},    PageName{20127, "US-ASCII"},
    PageName{20866, "KOI8-R"},    PageName{20932, "EUC-JP"},
    PageName{21866, "KOI8-U"},    PageName{51932, "EUC-JP"},
    PageName{51936, "EUC-CN"},    PageName{51949, "EUC-KR"},
    PageName{54936, "GB18030"},   PageName{utf8Page, "UTF-8"}};

std::string nameOf(unsigned number) {
    auto const known = std::find_if(pageNames.begin(), pageNames.end(),
                                    [&](PageName const& page) { return page.number == number; });
    if (known != pageNames.end()) return known->name;
    // 28591 to 28605 are the parts of one standard.
    if (number >= 28591 && number <= 28605) return "ISO-8859-" + std::to_string(number - 28590);
    return "CP" + std::to_string(number);
}

bool isAscii(std::string_view bytes) {
    return std::all_of(bytes.begin(), bytes.end(),
                       [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

bool isAscii(std::u16string_view text) {
    return std::all_of(text.begin(), text.end(), [](char16_t c) { return c < 0x80; });
}

/// One direction of the C library's conversion.
class Converter {
  public:
    Converter(std::string const& to, std::string const& from)
        : handle_(iconv_open(to.c_str(), from.c_str())) {}
    Converter(Converter const&) = delete;
    Converter& operator=(Converter const&) = delete;
    ~Converter() {
        if (isThere()) iconv_close(handle_);
    }

    bool isThere() const { return handle_ != reinterpret_cast<iconv_t>(-1); }

    /// Appends what it makes of `source`, which loses that much, to `target`.
    /// Stops at what it cannot convert, and answers whether it came to the end.
    bool convert(std::string_view& source, std::string& target) {
        // Some converters hold a letter back, which a mark behind it may change.
        bool const isDone = step(&source, target) == 0;
        return step(nullptr, target) == 0 && isDone;
    }

    /// Forgets what the conversion before has left.
    void reset() { iconv(handle_, nullptr, nullptr, nullptr, nullptr); }

  private:
    static constexpr auto failed = static_cast<std::size_t>(-1);

    /// Converts a source, or what is held back where there is none; 0, or the
    /// error that it stopped at.
    int step(std::string_view* source, std::string& target) {
        std::array<char, 512> part;
        for (;;) {
            auto* from = source != nullptr ? const_cast<char*>(source->data()) : nullptr;
            std::size_t left = source != nullptr ? source->size() : 0;
            char* to = part.data();
            std::size_t room = part.size();
            bool const isDone =
                iconv(handle_, source != nullptr ? &from : nullptr, &left, &to, &room) != failed;
            int const error = isDone ? 0 : errno;
            target.append(part.data(), part.size() - room);
            if (source != nullptr) source->remove_prefix(source->size() - left);
            if (error != E2BIG) return error;
        }
    }

    iconv_t handle_;
};

std::u16string unitsOf(std::string_view bytes) {
    std::u16string text(bytes.size() / unitSize, u'\0');
    std::copy_n(bytes.data(), text.size() * unitSize, reinterpret_cast<char*>(text.data()));
    return text;
}

std::string bytesOf(std::u16string_view text) {
    return {reinterpret_cast<char const*>(text.data()), text.size() * unitSize};
}

}  // namespace

struct CodePage::Converters {
    explicit Converters(std::string const& page)
        : toUtf16("UTF-16LE", page), fromUtf16(page, "UTF-16LE") {}

    Converter toUtf16;
    Converter fromUtf16;
};

CodePage::CodePage(unsigned number) : number_(number) {}
CodePage::CodePage(CodePage&&) noexcept = default;
CodePage& CodePage::operator=(CodePage&&) noexcept = default;
CodePage::~CodePage() = default;

bool CodePage::isUtf16() const noexcept {
    return number_ == utf16Page;
}

bool CodePage::isUtf8() const noexcept {
    return number_ == utf8Page;
}

CodePage::Converters& CodePage::converters() const {
    // Opened when the first text needs it: most texts are ASCII.
    if (!converters_) converters_ = std::make_unique<Converters>(nameOf(number_));
    return *converters_;
}

std::u16string CodePage::toText(std::string_view bytes) const {
    if (isUtf16()) return unitsOf(bytes);
    if (isAscii(bytes)) return {bytes.begin(), bytes.end()};
    std::string made;
    std::u16string const replacement = u"\uFFFD";
    auto& converter = converters().toUtf16;
    if (!converter.isThere()) {
        std::u16string text(bytes.begin(), bytes.end());
        std::replace_if(
            text.begin(), text.end(), [](char16_t c) { return c >= 0x80; }, u'\uFFFD');
        return text;
    }
    converter.reset();
    while (!converter.convert(bytes, made)) {
        made += bytesOf(replacement);
        if (bytes.empty()) break;
        bytes.remove_prefix(1);
    }
    return unitsOf(made);
}

std::optional<std::string> CodePage::toPageBytes(std::u16string_view text) const {
    if (isUtf16()) return bytesOf(text);
    if (isAscii(text)) return std::string(text.begin(), text.end());
    auto& converter = converters().fromUtf16;
    if (!converter.isThere()) return {};
    converter.reset();
    std::string const source = bytesOf(text);
    std::string_view left = source;
    std::string made;
    if (!converter.convert(left, made)) return {};
    return made;
}

}  // namespace velk::platform
