#include "platform/typelib/code_page.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <memory>

#include <iconv.h>

namespace velk::typelib {
namespace {

struct LanguagePage {
    WORD primaryLanguage;
    char const* page;
};

// Primary languages and the code pages that their systems use; all others
// write in Latin letters of the Western page.
constexpr std::array languagePages = {
    LanguagePage{0x01, "CP1256"}, LanguagePage{0x02, "CP1251"}, LanguagePage{0x04, "CP936"},
    LanguagePage{0x05, "CP1250"}, LanguagePage{0x08, "CP1253"}, LanguagePage{0x0d, "CP1255"},
    LanguagePage{0x0e, "CP1250"}, LanguagePage{0x11, "CP932"},  LanguagePage{0x12, "CP949"},
    LanguagePage{0x15, "CP1250"}, LanguagePage{0x18, "CP1250"}, LanguagePage{0x19, "CP1251"},
    LanguagePage{0x1a, "CP1250"}, LanguagePage{0x1b, "CP1250"}, LanguagePage{0x1c, "CP1250"},
    LanguagePage{0x1e, "CP874"},  LanguagePage{0x1f, "CP1254"}, LanguagePage{0x22, "CP1251"},
    LanguagePage{0x23, "CP1251"}, LanguagePage{0x24, "CP1250"}, LanguagePage{0x25, "CP1257"},
    LanguagePage{0x26, "CP1257"}, LanguagePage{0x27, "CP1257"}, LanguagePage{0x29, "CP1256"},
    LanguagePage{0x2a, "CP1258"}, LanguagePage{0x2f, "CP1251"}};

constexpr LCID chineseTaiwan = 0x0404;
constexpr LCID chineseHongKong = 0x0c04;

char const* pageOf(LCID lcid) {
    if ((lcid & 0xffff) == chineseTaiwan || (lcid & 0xffff) == chineseHongKong) return "CP950";
    auto const language = PRIMARYLANGID(lcid);
    auto const entry = std::find_if(languagePages.begin(), languagePages.end(),
                                    [&](auto const& e) { return e.primaryLanguage == language; });
    return entry == languagePages.end() ? "CP1252" : entry->page;
}

struct CloseConverter {
    void operator()(void* converter) const { iconv_close(static_cast<iconv_t>(converter)); }
};

std::u16string convert(std::string_view bytes, iconv_t converter) {
    std::u16string text(bytes.size() + 1, u'\0');
    auto* in = const_cast<char*>(bytes.data());
    std::size_t inLeft = bytes.size();
    auto* out = reinterpret_cast<char*>(text.data());
    std::size_t outLeft = text.size() * sizeof(char16_t);
    while (inLeft > 0 && outLeft >= sizeof(char16_t)) {
        if (iconv(converter, &in, &inLeft, &out, &outLeft) != static_cast<std::size_t>(-1)) break;
        if (errno == E2BIG || inLeft == 0 || outLeft < sizeof(char16_t)) break;
        *reinterpret_cast<char16_t*>(out) = u'\uFFFD';
        out += sizeof(char16_t);
        outLeft -= sizeof(char16_t);
        ++in;
        --inLeft;
    }
    text.resize(text.size() - outLeft / sizeof(char16_t));
    return text;
}

}  // namespace

std::u16string fromCodePage(std::string_view bytes, LCID lcid) {
    bool const plain = std::all_of(bytes.begin(), bytes.end(),
                                   [](char c) { return static_cast<unsigned char>(c) < 0x80; });
    if (plain) return {bytes.begin(), bytes.end()};
    iconv_t const raw = iconv_open("UTF-16LE", pageOf(lcid));
    if (raw == reinterpret_cast<iconv_t>(-1)) {
        // A system without conversion tables: the bytes as Latin-1.
        std::u16string text;
        for (char const c : bytes) text += static_cast<unsigned char>(c);
        return text;
    }
    std::unique_ptr<void, CloseConverter> const converter(raw);
    return convert(bytes, raw);
}

}  // namespace velk::typelib
