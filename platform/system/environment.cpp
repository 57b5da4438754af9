#include "platform/system/environment.h"

#include <cstdlib>
#include <vector>

#include <pwd.h>
#include <sys/auxv.h>
#include <unistd.h>

#include "platform/system/utf16.h"

namespace velk::platform {

bool isPrivileged() noexcept {
    return getauxval(AT_SECURE) != 0;
}

char const* environment(char const* name) noexcept {
    return secure_getenv(name);
}

std::string pathVariable(char const* name) {
    char const* const value = environment(name);
    return value != nullptr && value[0] == '/' ? value : "";
}

std::string homeFolder() {
    if (auto home = pathVariable("HOME"); !home.empty()) return home;
    std::vector<char> buffer(1 << 14);
    passwd entry{};
    passwd* found = nullptr;
    getpwuid_r(geteuid(), &entry, buffer.data(), buffer.size(), &found);
    return found != nullptr ? found->pw_dir : "";
}

std::optional<std::u16string> withVariables(std::u16string_view text) {
    constexpr std::size_t longest = 32767;
    if (text.size() > longest) return std::nullopt;
    std::u16string result;
    while (result.size() <= longest) {
        auto const begin = text.find(u'%');
        auto const end = begin == text.npos ? text.npos : text.find(u'%', begin + 1);
        if (end == text.npos) {
            if (result.append(text).size() <= longest) return result;
            break;
        }
        auto const name = toBytes(text.substr(begin + 1, end - begin - 1));
        if (char const* const value = environment(name.c_str())) {
            result.append(text.substr(0, begin)).append(toUtf16(value));
            text.remove_prefix(end + 1);
        } else {
            // The second sign may begin a name of its own.
            result.append(text.substr(0, end));
            text.remove_prefix(end);
        }
    }
    return std::nullopt;
}

}  // namespace velk::platform
