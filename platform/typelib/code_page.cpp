#include "platform/typelib/code_page.h"

#include <algorithm>
#include <array>

#include "platform/system/code_page.h"

namespace velk::typelib {
namespace {

struct LanguagePage {
    WORD primaryLanguage;
    unsigned page;
};

// Primary languages and the code pages that their systems use; all others
// write in Latin letters of the Western page.
constexpr std::array languagePages = {
    LanguagePage{0x01, 1256}, LanguagePage{0x02, 1251}, LanguagePage{0x04, 936},
    LanguagePage{0x05, 1250}, LanguagePage{0x08, 1253}, LanguagePage{0x0d, 1255},
    LanguagePage{0x0e, 1250}, LanguagePage{0x11, 932},  LanguagePage{0x12, 949},
    LanguagePage{0x15, 1250}, LanguagePage{0x18, 1250}, LanguagePage{0x19, 1251},
    LanguagePage{0x1a, 1250}, LanguagePage{0x1b, 1250}, LanguagePage{0x1c, 1250},
    LanguagePage{0x1e, 874},  LanguagePage{0x1f, 1254}, LanguagePage{0x22, 1251},
    LanguagePage{0x23, 1251}, LanguagePage{0x24, 1250}, LanguagePage{0x25, 1257},
    LanguagePage{0x26, 1257}, LanguagePage{0x27, 1257}, LanguagePage{0x29, 1256},
    LanguagePage{0x2a, 1258}, LanguagePage{0x2f, 1251}};

constexpr LCID chineseTaiwan = 0x0404;
constexpr LCID chineseHongKong = 0x0c04;

unsigned pageOf(LCID lcid) {
    if ((lcid & 0xffff) == chineseTaiwan || (lcid & 0xffff) == chineseHongKong) return 950;
    auto const language = PRIMARYLANGID(lcid);
    auto const entry = std::find_if(languagePages.begin(), languagePages.end(),
                                    [&](auto const& e) { return e.primaryLanguage == language; });
    return entry == languagePages.end() ? 1252 : entry->page;
}

}  // namespace

std::u16string fromCodePage(std::string_view bytes, LCID lcid) {
    return platform::CodePage(pageOf(lcid)).toText(bytes);
}

}  // namespace velk::typelib
