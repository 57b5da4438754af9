#include <optional>

#include "com/error.h"
#include "com/registration/script.h"
#include "com/utf.h"

namespace velk::com {
namespace {

constexpr std::string_view utf16Mark = "\xFF\xFE";
constexpr std::string_view utf8Mark = "\xEF\xBB\xBF";

std::basic_string<OLECHAR> decodeUtf16(std::string_view bytes) {
    if (bytes.size() % sizeof(OLECHAR) != 0) {
        throw Error(HRESULT_FROM_WIN32(ERROR_INVALID_DATA),
                    "the script is UTF-16 with half a character at its end");
    }
    std::basic_string<OLECHAR> text;
    text.reserve(bytes.size() / sizeof(OLECHAR));
    for (std::size_t i = 0; i < bytes.size(); i += sizeof(OLECHAR)) {
        text.push_back(static_cast<OLECHAR>(static_cast<unsigned char>(bytes[i]) |
                                            static_cast<unsigned char>(bytes[i + 1]) << 8));
    }
    return text;
}

[[noreturn]] void throwMissing(WORD id) {
    std::string const what = "cannot load the registry script in resource " + std::to_string(id);
    throwIfError(static_cast<LSTATUS>(GetLastError()), what);
    throw Error(HRESULT_FROM_WIN32(ERROR_RESOURCE_NAME_NOT_FOUND), what);
}

}  // namespace

std::basic_string<OLECHAR> decodeScript(std::string_view bytes) {
    if (bytes.starts_with(utf16Mark)) return decodeUtf16(bytes.substr(utf16Mark.size()));
    if (bytes.starts_with(utf8Mark)) bytes.remove_prefix(utf8Mark.size());
    auto text = fromUtf8(bytes);
    if (!text) {
        throw Error(HRESULT_FROM_WIN32(ERROR_INVALID_DATA), "the script is not valid UTF-8");
    }
    return *std::move(text);
}

std::basic_string<OLECHAR> loadScript(HMODULE module, WORD id) {
    HRSRC const resource = FindResourceW(module, MAKEINTRESOURCEW(id), OLESTR("REGISTRY"));
    if (resource == nullptr) throwMissing(id);
    HGLOBAL const loaded = LoadResource(module, resource);
    auto const* bytes =
        loaded != nullptr ? static_cast<char const*>(LockResource(loaded)) : nullptr;
    if (bytes == nullptr) throwMissing(id);
    return decodeScript({bytes, SizeofResource(module, resource)});
}

}  // namespace velk::com
