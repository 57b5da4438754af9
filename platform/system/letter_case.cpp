#include "platform/system/letter_case.h"

#include <clocale>
#include <cwctype>

#include "platform/system/utf16.h"

namespace velk::platform {

char16_t upperCase(char16_t unit) {
    if (unit < 0x80) return upperAscii(unit);
    static locale_t const everywhere = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    if (everywhere == nullptr) return unit;
    auto const upper = towupper_l(unit, everywhere);
    return upper <= 0xFFFF ? static_cast<char16_t>(upper) : unit;
}

}  // namespace velk::platform
