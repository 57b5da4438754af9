/// Registry scripts of any bytes: read, carried out and taken back on a
/// registry in memory.
///
/// An input is one byte of flags, one byte with the length of a replacement's
/// value, that value (one byte a character), and the bytes of the script.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "com/registration/registrar.h"
#include "com/registration/script.h"
#include "memory_registry.h"

namespace {

using velk::com::Error;
using velk::com::Registrar;
using velk::com::test::MemoryRegistry;
using Text = std::basic_string<OLECHAR>;

void require(bool condition) {
    if (!condition) std::abort();
}

enum class Outcome { done, mistake, refused };

template <typename Action>
Outcome outcomeOf(Action const& action) {
    try {
        action();
        return Outcome::done;
    } catch (Error const& error) {
        if (error.code() == E_ACCESSDENIED) return Outcome::refused;
        require(error.code() == HRESULT_FROM_WIN32(ERROR_INVALID_DATA));
        require(error.what()[0] != '\0');
        return Outcome::mistake;
    }
}

struct Input {
    bool perUser;
    bool refuse;
    unsigned allowed;
    Text replacement;
    std::string script;
};

Input split(std::uint8_t const* data, std::size_t size) {
    Input input{
        (data[0] & 1) != 0, (data[0] & 2) != 0, static_cast<unsigned>(data[0]) >> 2U, {}, {}};
    std::size_t const length = std::min<std::size_t>(data[1], size - 2);
    for (std::size_t i = 0; i < length; ++i) input.replacement.push_back(data[2 + i]);
    input.script.assign(reinterpret_cast<char const*>(data) + 2 + length, size - 2 - length);
    return input;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    if (size < 2) return 0;
    Input const input = split(data, size);
    Text script;
    if (outcomeOf([&] { script = velk::com::decodeScript(input.script); }) != Outcome::done) {
        return 0;
    }
    MemoryRegistry registry;
    Registrar registrar(registry);
    registrar.setPerUser(input.perUser);
    registrar.addReplacement(OLESTR("MODULE"), velk::com::doubleQuotes(input.replacement));
    registrar.addReplacement(OLESTR("RAW"), input.replacement);
    auto const install = [&] { registrar.registerScript(script); };
    auto const remove = [&] { registrar.unregisterScript(script); };

    Outcome const first = outcomeOf(install);
    require(first != Outcome::refused);
    // A mistake is found before anything is written, by both directions.
    if (first == Outcome::mistake) {
        require(outcomeOf(remove) == Outcome::mistake);
        require(registry.writes == 0);
        return 0;
    }
    auto const once = registry.table();
    require(outcomeOf(install) == Outcome::done);
    require(registry.table() == once);
    if (input.refuse) registry.allowed = input.allowed;
    require(outcomeOf(remove) == Outcome::done || input.refuse);
    require(outcomeOf(install) == Outcome::done || input.refuse);
    return 0;
}
