#include "conformance/registry/registry_calls.h"

#include <algorithm>
#include <filesystem>
#include <functional>
#include <sstream>
#include <vector>

namespace velk::test {
namespace {

using Bytes = std::vector<BYTE>;

constexpr REGSAM numberOf(std::string_view right) {
    if (right == "write") return KEY_WRITE;
    if (right == "all") return KEY_ALL_ACCESS;
    return right == "most" ? REGSAM{MAXIMUM_ALLOWED} : REGSAM{KEY_READ};
}

std::string repeated(std::string word) {
    for (auto at = word.find('{'); at != word.npos && at > 0; at = word.find('{', at + 1)) {
        auto const end = word.find('}', at);
        auto const times = std::stoul(word.substr(at + 1, end - at - 1));
        word.replace(at - 1, end - at + 2, std::string(times, word[at - 1]));
    }
    return word;
}

/// The type and the bytes that a value's words mean.
std::pair<DWORD, Bytes> valueOf(std::string const& words) {
    auto const sign = words.find('=');
    if (sign == words.npos) {
        Text const text = wide(words);
        auto const* const begin = reinterpret_cast<BYTE const*>(text.c_str());
        return {REG_SZ, Bytes(begin, begin + (text.size() + 1) * sizeof(OLECHAR))};
    }
    Bytes bytes;
    for (auto at = sign + 1; at + 1 < words.size(); at += 2) {
        bytes.push_back(static_cast<BYTE>(std::stoul(words.substr(at, 2), nullptr, 16)));
    }
    return {static_cast<DWORD>(std::stoul(words)), bytes};
}

std::string wordsOf(DWORD type, Bytes const& bytes) {
    auto const* const units = reinterpret_cast<OLECHAR const*>(bytes.data());
    auto const count = bytes.size() / sizeof(OLECHAR);
    bool const isWhole = type == REG_SZ && bytes.size() % sizeof(OLECHAR) == 0 && count > 0 &&
                         std::find(units, units + count, 0) == units + count - 1;
    try {
        if (isWhole) return narrow(units);
    } catch (std::exception const&) {
        // Half a character has no other words.
    }
    std::ostringstream words;
    words << type << '=' << std::hex;
    for (BYTE const byte : bytes) words << byte / 16 << byte % 16;
    return words.str();
}

std::string valueAt(HKEY key, OLECHAR const* name) {
    DWORD type = 77, size = 0;
    LSTATUS status = RegQueryValueExW(key, name, nullptr, &type, nullptr, &size);
    Bytes bytes(size);
    if (status == ERROR_SUCCESS) {
        status = RegQueryValueExW(key, name, nullptr, nullptr, bytes.data(), &size);
    }
    return status == ERROR_SUCCESS ? wordsOf(type, bytes) : statusWord(status);
}

/// All names that one function gives, with their count and the greatest length.
template <typename Enumerate>
std::string namesFrom(Enumerate enumerate, DWORD& count, DWORD& longest) {
    std::string names;
    for (count = longest = 0;; ++count) {
        OLECHAR name[300];
        DWORD length = 300;
        LSTATUS const status = enumerate(count, name, &length);
        if (status == ERROR_NO_MORE_ITEMS) return names;
        if (status != ERROR_SUCCESS) throw status;
        longest = std::max(longest, length);
        names += (names.empty() ? "" : ",") + (length == 0 ? "-" : narrow(Text(name, length)));
    }
}

std::string listOf(HKEY key) {
    DWORD told[5] = {}, counted[5] = {};
    auto const below = namesFrom(
        [&](DWORD index, OLECHAR* name, DWORD* length) {
            return RegEnumKeyExW(key, index, name, length, nullptr, nullptr, nullptr, nullptr);
        },
        counted[0], counted[1]);
    auto const own = namesFrom(
        [&](DWORD index, OLECHAR* name, DWORD* length) {
            DWORD size = 0;
            LSTATUS const status =
                RegEnumValueW(key, index, name, length, nullptr, nullptr, nullptr, &size);
            counted[4] = std::max(counted[4], size);
            return status;
        },
        counted[2], counted[3]);
    RegQueryInfoKeyW(key, nullptr, nullptr, nullptr, &told[0], &told[1], nullptr, &told[2],
                     &told[3], &told[4], nullptr, nullptr);
    bool const agrees = std::equal(told, told + 5, counted);
    return below + '|' + own + (agrees ? "" : " and RegQueryInfoKeyW tells otherwise");
}

std::string classOf(HKEY key) {
    OLECHAR name[64];
    DWORD size = 64;
    LSTATUS const status = RegQueryInfoKeyW(key, name, &size, nullptr, nullptr, nullptr, nullptr,
                                            nullptr, nullptr, nullptr, nullptr, nullptr);
    return status == ERROR_SUCCESS ? narrow(Text(name, size)) : statusWord(status);
}

}  // namespace

Text wide(std::string const& text) {
    return std::filesystem::path(std::u8string(text.begin(), text.end())).string<OLECHAR>();
}

std::string narrow(Text const& text) {
    auto const bytes = std::filesystem::path(text).u8string();
    return {bytes.begin(), bytes.end()};
}

std::string statusWord(LSTATUS status) {
    static std::map<LSTATUS, char const*> const words = {{ERROR_SUCCESS, "ok"},
                                                         {ERROR_FILE_NOT_FOUND, "missing"},
                                                         {ERROR_ACCESS_DENIED, "denied"},
                                                         {ERROR_INVALID_HANDLE, "no handle"},
                                                         {ERROR_BUSY, "busy"},
                                                         {ERROR_INVALID_PARAMETER, "wrong"},
                                                         {ERROR_MORE_DATA, "more"},
                                                         {ERROR_NO_MORE_ITEMS, "no more"},
                                                         {ERROR_BADDB, "no registry"},
                                                         {ERROR_REGISTRY_CORRUPT, "corrupt"},
                                                         {ERROR_KEY_DELETED, "gone"},

                                                         {ERROR_BAD_PATHNAME, "bad path"},
                                                         {ERROR_UNSUPPORTED_TYPE, "other type"}};
    auto const word = words.find(status);
    return word != words.end() ? word->second : std::to_string(status);
}

struct RegistryCalls::Target {
    HKEY base = nullptr;
    Text path;
    OLECHAR const* orNull() const { return path.empty() ? nullptr : path.c_str(); }
};

RegistryCalls::Target RegistryCalls::target(std::string const& word) const {
    static std::map<std::string, HKEY> const roots = {{"C", HKEY_CLASSES_ROOT},
                                                      {"U", HKEY_CURRENT_USER},
                                                      {"M", HKEY_LOCAL_MACHINE},
                                                      {"S", HKEY_USERS},
                                                      {"G", HKEY_CURRENT_CONFIG}};
    auto const end = word.find('/');
    auto const first = word.substr(0, end);
    auto path = end == word.npos ? std::string() : word.substr(end + 1);
    for (char& sign : path) sign = sign == '/' ? '\\' : sign == '\\' ? '/' : sign;
    auto const root = roots.find(first);
    return {root != roots.end() ? root->second : HKEY(open_.at(first)), wide(path)};
}

std::string RegistryCalls::open(Target const& key, std::string const& right,
                                std::string const& name) {
    Key opened;
    LSTATUS const status =
        RegOpenKeyExW(key.base, key.orNull(), 0, numberOf(right), opened.target());
    if (status == ERROR_SUCCESS && !name.empty()) open_[name] = std::move(opened);
    return statusWord(status);
}

std::string RegistryCalls::answer(std::string const& call) try {
    std::istringstream words(call);
    std::string verb, word, name, rest;
    words >> verb >> word >> name;
    std::getline(words >> std::ws, rest);
    Target key = target(repeated(word));
    for (auto count = verb == "deep" ? std::stoi(name) : 0; count > 0; --count) {
        key.path += OLESTR("\\a");
    }
    Text const wideName = name == "-" ? Text() : wide(repeated(name));
    // Works on the key itself, opened with these rights.
    auto const at = [&](REGSAM rights, auto const& use) {
        if (key.path.empty()) return std::string(use(key.base));
        Key opened;
        LSTATUS const status =
            RegOpenKeyExW(key.base, key.path.c_str(), 0, rights, opened.target());
        return status == ERROR_SUCCESS ? std::string(use(opened)) : statusWord(status);
    };
    if (verb == "make" || verb == "deep") {
        Key made;
        DWORD disposition = 0;
        Text keyClass = verb == "make" ? wide(name) : Text();
        LSTATUS const status =
            RegCreateKeyExW(key.base, key.path.c_str(), 0, keyClass.data(), 0, KEY_ALL_ACCESS,
                            nullptr, made.target(), &disposition);
        if (status != ERROR_SUCCESS) return statusWord(status);
        return disposition == REG_CREATED_NEW_KEY ? "new" : "old";
    }
    if (verb == "open") return open(key, name, rest);
    if (verb == "close") return open_.erase(word), "ok";
    if (verb == "put") {
        auto const [type, bytes] = valueOf(repeated(rest));
        return at(KEY_WRITE, [&](HKEY opened) {
            return statusWord(RegSetValueExW(opened, wideName.c_str(), 0, type, bytes.data(),
                                             static_cast<DWORD>(bytes.size())));
        });
    }
    if (verb == "get") {
        return at(KEY_READ, [&](HKEY opened) { return valueAt(opened, wideName.c_str()); });
    }
    if (verb == "text") {
        OLECHAR text[256];
        DWORD size = sizeof text;
        LSTATUS const status = RegGetValueW(key.base, key.orNull(), wideName.c_str(), RRF_RT_REG_SZ,
                                            nullptr, text, &size);
        return status == ERROR_SUCCESS ? narrow(text) : statusWord(status);
    }
    if (verb == "drop") {
        return at(KEY_WRITE, [&](HKEY opened) {
            return statusWord(RegDeleteValueW(opened, wideName.c_str()));
        });
    }
    if (verb == "delete") return statusWord(RegDeleteKeyW(key.base, key.path.c_str()));
    if (verb == "tree") return statusWord(RegDeleteTreeW(key.base, key.orNull()));
    if (verb == "list") return at(KEY_READ, [](HKEY opened) { return listOf(opened); });
    if (verb == "class") return at(KEY_READ, [](HKEY opened) { return classOf(opened); });
    return "no such call: " + verb;
} catch (LSTATUS status) {
    return statusWord(status);
}

}  // namespace velk::test
