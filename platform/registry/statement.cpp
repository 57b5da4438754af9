#include <chrono>
#include <cstring>

#include "platform/registry/hive_database.h"

namespace velk::platform::registry {

void check(int result) {
    switch (result & 0xFF) {
        case SQLITE_OK:
            return;
        case SQLITE_NOTADB:
            fail(ERROR_BADDB);
        case SQLITE_CORRUPT:
            fail(ERROR_REGISTRY_CORRUPT);
        case SQLITE_FULL:
            fail(ERROR_DISK_FULL);
        case SQLITE_NOMEM:
        case SQLITE_TOOBIG:
            fail(ERROR_NOT_ENOUGH_MEMORY);
        default:
            fail(ERROR_REGISTRY_IO_FAILED);
    }
}

std::int64_t currentFileTime() {
    using Ticks = std::chrono::duration<std::int64_t, std::ratio<1, 10'000'000>>;
    // From 1 January 1601 to 1 January 1970.
    constexpr std::int64_t toUnixEpoch = 116'444'736'000'000'000;
    auto const now = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration_cast<Ticks>(now).count() + toUnixEpoch;
}

Statement::~Statement() {
    sqlite3_reset(prepared_);
    sqlite3_clear_bindings(prepared_);
}

Statement& Statement::bind(std::int64_t number) {
    check(sqlite3_bind_int64(prepared_, next_++, number));
    return *this;
}

Statement& Statement::bind(std::string_view bytes) {
    // A null address would bind a null; an empty block is something else.
    char const* const begin = bytes.empty() ? "" : bytes.data();
    check(sqlite3_bind_blob64(prepared_, next_++, begin, bytes.size(), SQLITE_TRANSIENT));
    return *this;
}

Statement& Statement::bind(std::u16string_view text) {
    return bind(std::string_view(reinterpret_cast<char const*>(text.data()),
                                 text.size() * sizeof(char16_t)));
}

bool Statement::step() {
    int const result = sqlite3_step(prepared_);
    if (result == SQLITE_ROW) return true;
    if (result == SQLITE_DONE) return false;
    check(sqlite3_extended_errcode(database_));
    return false;
}

void Statement::run() {
    while (step()) {
    }
}

std::int64_t Statement::number(int column) const {
    return sqlite3_column_int64(prepared_, column);
}

std::string_view Statement::bytes(int column) const {
    auto const* const begin = static_cast<char const*>(sqlite3_column_blob(prepared_, column));
    auto const size = static_cast<std::size_t>(sqlite3_column_bytes(prepared_, column));
    return begin == nullptr ? std::string_view() : std::string_view(begin, size);
}

std::u16string Statement::text(int column) const {
    auto const raw = bytes(column);
    std::u16string text(raw.size() / sizeof(char16_t), u'\0');
    if (!text.empty()) std::memcpy(text.data(), raw.data(), text.size() * sizeof(char16_t));
    return text;
}

}  // namespace velk::platform::registry
