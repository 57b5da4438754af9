#include "platform/typelib/registration/registry_layout.h"

#include "platform/typelib/owners.h"

namespace velk::typelib {
namespace {

void appendHexadecimal(std::u16string& text, unsigned value, int digits) {
    for (int shift = 4 * (digits - 1); shift >= 0; shift -= 4) {
        text += u"0123456789ABCDEF"[value >> shift & 0xf];
    }
}

}  // namespace

std::u16string guidText(REFGUID id) {
    std::u16string text = u"{";
    appendHexadecimal(text, id.Data1, 8);
    text += u'-';
    appendHexadecimal(text, id.Data2, 4);
    text += u'-';
    appendHexadecimal(text, id.Data3, 4);
    text += u'-';
    for (int i = 0; i < 8; ++i) {
        if (i == 2) text += u'-';
        appendHexadecimal(text, id.Data4[i], 2);
    }
    return text + u"}";
}

std::u16string hexadecimalText(unsigned value) {
    std::u16string text;
    do {
        text.insert(text.begin(), u"0123456789abcdef"[value & 0xf]);
        value >>= 4;
    } while (value);
    return text;
}

std::u16string versionText(WORD major, WORD minor) {
    return hexadecimalText(major) + u"." + hexadecimalText(minor);
}

std::u16string systemText(SYSKIND system) {
    switch (system) {
        case SYS_WIN16:
            return u"win16";
        case SYS_WIN32:
            return u"win32";
        case SYS_MAC:
            return u"mac";
        case SYS_WIN64:
            return u"win64";
    }
    return {};
}

std::u16string libraryKeyName(REFGUID id) {
    return u"TypeLib\\" + guidText(id);
}

}  // namespace velk::typelib
