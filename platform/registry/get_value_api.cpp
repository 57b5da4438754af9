/// RegGetValueW: a value of the wanted type, with its strings made whole.
#include <algorithm>
#include <cstring>

#include "platform/registry/key_view.h"
#include "platform/system/environment.h"

namespace velk::platform::registry {
namespace {

std::string bytesOf(std::u16string_view text) {
    return {reinterpret_cast<char const*>(text.data()), text.size() * sizeof(char16_t)};
}

/// The bits of RRF_RT_ANY are in the order of the type numbers.
bool isWanted(DWORD type, DWORD flags) {
    if ((flags & RRF_RT_ANY) == RRF_RT_ANY) return true;
    return type < 16 && (flags & (1U << type)) != 0;
}

/// Strings end in a zero, lists of strings in two, whatever was stored.
void terminate(ValueContent& value) {
    bool const list = value.type == REG_MULTI_SZ;
    if (!list && value.type != REG_SZ && value.type != REG_EXPAND_SZ) return;
    auto text = textOf(value.bytes);
    std::size_t const wanted = list ? 2 : 1;
    std::size_t zeros = 0;
    while (zeros < std::min(wanted, text.size()) && text[text.size() - 1 - zeros] == 0) ++zeros;
    text.append(wanted - zeros, u'\0');
    value.bytes = bytesOf(text);
}

void expand(ValueContent& value) {
    auto const text = textOf(value.bytes);
    auto const expanded = withVariables(text.c_str());
    failIf(!expanded, ERROR_INVALID_DATA);
    value.bytes = bytesOf(*expanded + u'\0');
    value.type = REG_SZ;
}

void checkNumberSize(ValueContent const& value, DWORD flags) {
    DWORD const types = flags & RRF_RT_ANY;
    bool const dword = types == RRF_RT_DWORD, qword = types == RRF_RT_QWORD;
    std::size_t const wanted = dword ? 4 : 8;
    failIf((dword || qword) && value.type == REG_BINARY && value.bytes.size() != wanted,
           ERROR_INVALID_DATA);
}

/// Reads and prepares the value; nothing is handed out yet.
ValueContent wantedValue(HKEY key, LPCWSTR subKey, LPCWSTR name, DWORD flags, LPDWORD type) {
    auto const base = openKey(key);
    auto const path = splitPath(subKey);
    if (path.empty()) base->require(KEY_QUERY_VALUE);
    auto value = atPath(base->view, path, [&] {
        auto const view = path.empty() ? std::optional(base->view) : findBelow(base->view, path);
        failIf(!view, ERROR_FILE_NOT_FOUND);
        return valueOf(*view, Name(name == nullptr ? u"" : name));
    });
    failIf(!value, ERROR_FILE_NOT_FOUND);
    bool const expands = value->type == REG_EXPAND_SZ && (flags & RRF_NOEXPAND) == 0;
    if (expands) expand(*value);
    if (type != nullptr) *type = value->type;
    failIf(!isWanted(value->type, flags), ERROR_UNSUPPORTED_TYPE);
    checkNumberSize(*value, flags);
    terminate(*value);
    return std::move(*value);
}

}  // namespace
}  // namespace velk::platform::registry

using namespace velk::platform::registry;

LSTATUS RegGetValueW(HKEY key, LPCWSTR subKey, LPCWSTR name, DWORD flags, LPDWORD type, PVOID data,
                     LPDWORD size) {
    if (data != nullptr && size == nullptr) return ERROR_INVALID_PARAMETER;
    bool const any = (flags & RRF_RT_ANY) == RRF_RT_ANY;
    bool const expandable = (flags & RRF_RT_REG_EXPAND_SZ) != 0;
    // What is expanded is no REG_EXPAND_SZ any more.
    if (expandable && !any && (flags & RRF_NOEXPAND) == 0) return ERROR_INVALID_PARAMETER;
    DWORD const room = size != nullptr ? *size : 0;
    LSTATUS const status = answer([&] {
        auto const value = wantedValue(key, subKey, name, flags, type);
        if (LSTATUS const outcome = handOut(value.bytes, data, size)) fail(outcome);
    });
    if (status != ERROR_SUCCESS && data != nullptr && (flags & RRF_ZEROONFAILURE) != 0) {
        std::memset(data, 0, room);
    }
    return status;
}
