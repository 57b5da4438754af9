#include "platform/com/identifiers.h"

#include <array>
#include <cerrno>
#include <climits>
#include <cstring>

#include <objbase.h>
#include <sys/random.h>
#include <winreg.h>

#include "platform/system/boundary.h"
#include "platform/system/utf16.h"

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

// A version that names another as the current one, and so on, may run in a circle.
constexpr int longestVersionChain = 8;

/// A text below HKEY_CLASSES_ROOT, with the environment's variables put in.
/// Nothing when there is none, or one that is longer than any path.
std::optional<std::u16string> classesText(std::u16string const& key,
                                          char16_t const* name = nullptr) {
    std::u16string buffer(PATH_MAX, u'\0');
    auto size = static_cast<DWORD>(buffer.size() * sizeof(WCHAR));
    LSTATUS const status = unlessOutOfMemory(RegGetValueW(
        HKEY_CLASSES_ROOT, key.c_str(), name, RRF_RT_REG_SZ, nullptr, buffer.data(), &size));
    switch (status) {
        case ERROR_SUCCESS:
            return std::u16string(buffer.c_str());
        case ERROR_FILE_NOT_FOUND:
        case ERROR_UNSUPPORTED_TYPE:
        case ERROR_MORE_DATA:
        case ERROR_INVALID_DATA:
        case ERROR_INVALID_PARAMETER:
            return std::nullopt;
        default:
            fail(REGDB_E_READREGDB);
    }
}

/// The class of a programmatic id, or of the current version that it names.
std::optional<CLSID> classOfProgId(std::u16string_view progId) {
    std::u16string version(progId);
    for (int step = 0; step < longestVersionChain; ++step) {
        // A separator would lead to some other key.
        if (version.empty() || version.find(u'\\') != version.npos) return std::nullopt;
        if (auto const text = classesText(version + u"\\CLSID")) return guidOfText(*text);
        auto const current = classesText(version + u"\\CurVer");
        if (!current) return std::nullopt;
        version = *current;
    }
    return std::nullopt;
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

std::optional<ModuleOfClass> moduleOfClass(REFCLSID id) {
    auto const key = u"CLSID\\" + textOfGuid(id) + u"\\InprocServer32";
    auto path = classesText(key);
    if (!path || path->empty()) return std::nullopt;
    auto const model = classesText(key, u"ThreadingModel").value_or(std::u16string());
    bool const free = equalNoAsciiCase(model, u"Both") || equalNoAsciiCase(model, u"Free") ||
                      equalNoAsciiCase(model, u"Neutral");
    return ModuleOfClass{std::move(*path), !free};
}

}  // namespace velk::platform::com

using namespace velk::platform;
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

INT StringFromGUID2(REFGUID id, LPOLESTR text, INT capacity) {
    constexpr auto needed = static_cast<INT>(guidTextLength + 1);
    if (text == nullptr || capacity < needed) return 0;
    HRESULT const code = guarded([&] { text[textOfGuid(id).copy(text, guidTextLength)] = 0; });
    return SUCCEEDED(code) ? needed : 0;
}

HRESULT CLSIDFromProgID(LPCOLESTR progId, CLSID* id) {
    if (progId == nullptr || id == nullptr) return E_INVALIDARG;
    *id = CLSID_NULL;
    return guarded([&] {
        auto const found = classOfProgId(progId);
        require(found.has_value(), CO_E_CLASSSTRING);
        *id = *found;
    });
}
