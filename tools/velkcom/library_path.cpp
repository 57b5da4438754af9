#include "library_path.h"

#include <algorithm>

#include "system.h"

namespace velk::velkcom {

std::filesystem::path libraryPath(std::string const& text) {
    auto path = pathFromUtf8(text);
    auto const number = path.filename().native();
    bool const isNumber =
        std::ranges::all_of(number, [](auto unit) { return unit >= '0' && unit <= '9'; });
    auto module = path.parent_path();
    std::error_code error;
    if (number.empty() || !isNumber || !std::filesystem::is_regular_file(module, error)) {
        return path;
    }
    // LoadTypeLib knows the backslash only, on every system.
    module += '\\';
    module += number;
    return module;
}

}  // namespace velk::velkcom
