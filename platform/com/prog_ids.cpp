#include "platform/com/prog_ids.h"

#include <climits>

#include <winreg.h>

#include "platform/com/guid_text.h"
#include "platform/system/memory_failure.h"
#include "platform/system/utf16.h"

namespace velk::platform::com {
namespace {

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
            throw RegistryUnreadable();
    }
}

std::u16string classKey(REFCLSID id, std::u16string_view below) {
    return u"CLSID\\" + textOfGuid(id) + u"\\" + std::u16string(below);
}

}  // namespace

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

std::optional<std::u16string> progIdOfClass(REFCLSID id) {
    return classesText(classKey(id, u"ProgID"));
}

std::optional<ModuleOfClass> moduleOfClass(REFCLSID id) {
    auto const key = classKey(id, u"InprocServer32");
    auto path = classesText(key);
    if (!path || path->empty()) return std::nullopt;
    auto const model = classesText(key, u"ThreadingModel").value_or(std::u16string());
    bool const free = equalNoAsciiCase(model, u"Both") || equalNoAsciiCase(model, u"Free") ||
                      equalNoAsciiCase(model, u"Neutral");
    return ModuleOfClass{std::move(*path), !free};
}

}  // namespace velk::platform::com
