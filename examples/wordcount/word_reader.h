/// Words of a text file.
#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace wordcount {

/// Calls `take` with every word of the file in its order: each longest run of
/// the letters A to Z, in lower case. Bytes outside ASCII are no letters.
/// Throws std::runtime_error when the file cannot be read to its end.
void readWords(std::string const& path, std::function<void(std::string_view)> const& take);

}  // namespace wordcount
