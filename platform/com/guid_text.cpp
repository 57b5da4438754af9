#include "platform/com/guid_text.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>

#include <objbase.h>
#include <sys/random.h>

#include "platform/com/prog_ids.h"

namespace velk::platform::com {
namespace {

// Where the bytes of the layout stand in the text: numbers are written with
// their highest byte first.
constexpr std::size_t byteOrder[] = {3, 2, 1, 0, 5, 4, 7, 6, 8, 9, 10, 11, 12, 13, 14, 15};

/// Whether a dash stands before the byte of this index in the text.
constexpr bool dashBefore(std::size_t index) {
    return index == 4 || index == 6 || index == 8 || index == 10;
}

int digitValue(char16_t digit) {
    if (digit >= u'0' && digit <= u'9') return digit - u'0';
    if (digit >= u'a' && digit <= u'f') return digit - u'a' + 10;
    if (digit >= u'A' && digit <= u'F') return digit - u'A' + 10;
    return -1;
}

/// The text as memory that the caller frees.
HRESULT handOut(std::u16string_view text, LPOLESTR* target) {
    auto* const copy = static_cast<LPOLESTR>(CoTaskMemAlloc((text.size() + 1) * sizeof(OLECHAR)));
    if (copy == nullptr) return E_OUTOFMEMORY;
    copy[text.copy(copy, text.size())] = 0;
    *target = copy;
    return S_OK;
}

}  // namespace

std::u16string textOfGuid(REFGUID id) {
    std::array<std::uint8_t, sizeof(GUID)> bytes;
    std::memcpy(bytes.data(), &id, sizeof id);
    std::u16string text = u"{";
    for (std::size_t index = 0; index < bytes.size(); ++index) {
        if (dashBefore(index)) text.push_back(u'-');
        auto const byte = bytes[byteOrder[index]];
        for (int const digit : {byte >> 4, byte & 15}) text.push_back(u"0123456789ABCDEF"[digit]);
    }
    text.push_back(u'}');
    return text;
}

std::optional<GUID> guidOfText(std::u16string_view text) {
    if (text.size() != guidTextLength || text.front() != u'{' || text.back() != u'}') {
        return std::nullopt;
    }
    std::array<std::uint8_t, sizeof(GUID)> bytes;
    std::size_t at = 1;
    for (std::size_t index = 0; index < bytes.size(); ++index) {
        if (dashBefore(index) && text[at++] != u'-') return std::nullopt;
        int const high = digitValue(text[at++]);
        int const low = digitValue(text[at++]);
        if (high < 0 || low < 0) return std::nullopt;
        bytes[byteOrder[index]] = static_cast<std::uint8_t>(high * 16 + low);
    }
    GUID id;
    std::memcpy(&id, bytes.data(), sizeof id);
    return id;
}

}  // namespace velk::platform::com

using namespace velk::platform::com;

HRESULT CoCreateGuid(GUID* id) {
    if (id == nullptr) return E_INVALIDARG;
    ssize_t got = 0;
    do {
        got = getrandom(id, sizeof *id, 0);
    } while (got < 0 && errno == EINTR);
    if (got != static_cast<ssize_t>(sizeof *id)) return E_UNEXPECTED;
    // The marks of a random identifier: version 4, variant 1.
    id->Data3 = static_cast<std::uint16_t>((id->Data3 & 0x0FFF) | 0x4000);
    id->Data4[0] = static_cast<std::uint8_t>((id->Data4[0] & 0x3F) | 0x80);
    return S_OK;
}

HRESULT CLSIDFromString(LPCOLESTR text, CLSID* id) {
    if (id == nullptr) return E_INVALIDARG;
    *id = CLSID_NULL;
    if (text == nullptr) return S_OK;
    if (auto const parsed = guidOfText(text)) {
        *id = *parsed;
        return S_OK;
    }
    return text[0] == u'{' ? CO_E_CLASSSTRING : CLSIDFromProgID(text, id);
}

HRESULT IIDFromString(LPCOLESTR text, IID* id) {
    if (id == nullptr) return E_INVALIDARG;
    if (text == nullptr) {
        *id = IID_NULL;
        return S_OK;
    }
    std::u16string_view const whole = text;
    if (whole.size() != guidTextLength) return E_INVALIDARG;
    auto const parsed = guidOfText(whole);
    if (!parsed) return CO_E_IIDSTRING;
    *id = *parsed;
    return S_OK;
}

HRESULT StringFromCLSID(REFCLSID id, LPOLESTR* text) {
    if (text == nullptr) return E_INVALIDARG;
    *text = nullptr;
    try {
        return handOut(textOfGuid(id), text);
    } catch (...) {
        return E_OUTOFMEMORY;
    }
}

HRESULT StringFromIID(REFIID id, LPOLESTR* text) {
    return StringFromCLSID(id, text);
}

INT StringFromGUID2(REFGUID id, LPOLESTR text, INT capacity) {
    constexpr auto needed = static_cast<INT>(guidTextLength + 1);
    if (text == nullptr || capacity < needed) return 0;
    try {
        text[textOfGuid(id).copy(text, guidTextLength)] = 0;
        return needed;
    } catch (...) {
        return 0;
    }
}

HRESULT CLSIDFromProgID(LPCOLESTR progId, CLSID* id) {
    if (progId == nullptr || id == nullptr) return E_INVALIDARG;
    *id = CLSID_NULL;
    try {
        auto const found = classOfProgId(progId);
        if (!found) return CO_E_CLASSSTRING;
        *id = *found;
        return S_OK;
    } catch (RegistryUnreadable const&) {
        return REGDB_E_READREGDB;
    } catch (...) {
        return E_OUTOFMEMORY;
    }
}

HRESULT ProgIDFromCLSID(REFCLSID id, LPOLESTR* progId) {
    if (progId == nullptr) return E_INVALIDARG;
    *progId = nullptr;
    try {
        auto const found = progIdOfClass(id);
        return found ? handOut(*found, progId) : REGDB_E_CLASSNOTREG;
    } catch (RegistryUnreadable const&) {
        return REGDB_E_READREGDB;
    } catch (...) {
        return E_OUTOFMEMORY;
    }
}
