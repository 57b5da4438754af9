#include "platform/system/volume_map.h"

#include <vector>

#include <winreg.h>

#include "platform/system/boundary.h"
#include "platform/system/utf16.h"

namespace velk::platform {

namespace {

constexpr char16_t const* volumesKey = u"Software\\VelkCOMAdapter\\Volumes";
constexpr char16_t const* fileSystemsKey = u"Software\\VelkCOMAdapter\\Volumes\\FileSystems";

constexpr std::u16string_view separators = u"\\/";

bool isSeparator(char16_t unit) {
    return separators.find(unit) != separators.npos;
}

bool isLetter(char16_t unit) {
    char16_t const upper = upperAscii(unit);
    return upper >= u'A' && upper <= u'Z';
}

/// Takes the next name off the front; empty at the end of the path.
std::u16string_view nextName(std::u16string_view& path) {
    auto const begin = path.find_first_not_of(separators);
    path.remove_prefix(begin == path.npos ? path.size() : begin);
    auto const name = path.substr(0, path.find_first_of(separators));
    path.remove_prefix(name.size());
    return name;
}

/// `..` at the root stays there, as everywhere.
std::u16string cleaned(std::u16string_view path) {
    std::vector<std::u16string_view> names;
    for (auto name = nextName(path); !name.empty(); name = nextName(path)) {
        if (name == u"..") {
            if (!names.empty()) names.pop_back();
        } else if (name != u".") {
            names.push_back(name);
        }
    }
    std::u16string text;
    for (auto const name : names) text.append(text.empty() ? u"" : u"/").append(name);
    return text;
}

std::optional<std::u16string> textValue(HKEY hive, char16_t const* key, LPCWSTR name) {
    std::u16string text;
    DWORD size = 0;
    auto const read = [&](void* data) {
        return unlessOutOfMemory(
            RegGetValueW(hive, key, name, RRF_RT_REG_SZ, nullptr, data, &size));
    };
    LSTATUS status = read(nullptr);
    // Somebody may write a longer text between the two calls.
    for (int i = 0; i < 3 && (status == ERROR_SUCCESS || status == ERROR_MORE_DATA); ++i) {
        text.assign(size / sizeof(char16_t) + 1, u'\0');
        size = static_cast<DWORD>(text.size() * sizeof(char16_t));
        status = read(text.data());
        if (status == ERROR_SUCCESS) return text.c_str();
    }
    return std::nullopt;
}

std::optional<std::u16string> volumeValue(char16_t const* key, std::u16string const& root) {
    for (HKEY const hive : {HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE}) {
        auto text = textValue(hive, key, root.c_str());
        if (text && !text->empty()) return text;
    }
    return std::nullopt;
}

}  // namespace

std::optional<VolumePath> volumePathOf(std::u16string_view path) {
    if (path.substr(0, 4) == u"\\\\?\\") {
        path.remove_prefix(4);
        if (path.size() >= 4 && equalNoAsciiCase(path.substr(0, 3), u"UNC") &&
            isSeparator(path[3])) {
            path.remove_prefix(4);
            return volumePathOf(u"\\\\" + std::u16string(path));
        }
    }
    if (path.size() >= 2 && isLetter(path[0]) && path[1] == u':') {
        std::u16string root{upperAscii(path[0]), u':', u'\\'};
        return VolumePath{std::move(root), cleaned(path.substr(2)), false};
    }
    if (path.size() > 2 && isSeparator(path[0]) && isSeparator(path[1]) && !isSeparator(path[2])) {
        auto const computer = nextName(path);
        auto const share = nextName(path);
        auto root = u"\\\\" + std::u16string(computer) + u"\\";
        if (!share.empty()) root.append(share).append(u"\\");
        return VolumePath{std::move(root), cleaned(path), true};
    }
    return std::nullopt;
}

std::optional<std::string> folderOfVolume(std::u16string const& root) {
    auto const folder = volumeValue(volumesKey, root);
    if (!folder) return std::nullopt;
    return toFileName(*folder);
}

std::optional<std::u16string> fileSystemOfVolume(std::u16string const& root) {
    return volumeValue(fileSystemsKey, root);
}

}  // namespace velk::platform
