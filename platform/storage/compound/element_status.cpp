#include "platform/storage/compound/element_status.h"

#include <chrono>
#include <cstring>

#include <objbase.h>

#include "platform/system/boundary.h"

namespace velk::platform::storage {
namespace {

FILETIME toFileTime(std::uint64_t time) {
    return {static_cast<DWORD>(time), static_cast<DWORD>(time >> 32)};
}

LPOLESTR copied(std::u16string_view name) {
    auto* const text = static_cast<LPOLESTR>(CoTaskMemAlloc((name.size() + 1) * sizeof(OLECHAR)));
    require(text != nullptr, STG_E_INSUFFICIENTMEMORY);
    std::memcpy(text, name.data(), name.size() * sizeof(OLECHAR));
    text[name.size()] = 0;
    return text;
}

}  // namespace

void describe(Entry const& entry, std::u16string_view name, DWORD mode, DWORD flags,
              STATSTG* status) {
    require(status != nullptr, STG_E_INVALIDPOINTER);
    require(flags <= STATFLAG_NOOPEN, STG_E_INVALIDFLAG);
    *status = {};
    status->type = entry.isStorage() ? STGTY_STORAGE : STGTY_STREAM;
    status->cbSize.QuadPart = entry.isStorage() ? 0 : entry.size;
    status->mtime = toFileTime(entry.modified);
    status->ctime = toFileTime(entry.created);
    status->grfMode = mode;
    status->clsid = entry.classId;
    status->grfStateBits = entry.stateBits;
    if (flags != STATFLAG_NONAME) status->pwcsName = copied(name);
}

STATSTG ElementStatus::give() const {
    STATSTG given;
    describe(entry, entry.name, 0, STATFLAG_DEFAULT, &given);
    return given;
}

void ElementStatus::takeBack(STATSTG& given) noexcept {
    CoTaskMemFree(given.pwcsName);
}

std::uint64_t presentFileTime() {
    using Ticks = std::chrono::duration<std::uint64_t, std::ratio<1, 10'000'000>>;
    // From 1601, where file times begin, to 1970.
    constexpr std::uint64_t beforeUnix = 116'444'736'000'000'000;
    auto const now = std::chrono::system_clock::now().time_since_epoch();
    return beforeUnix + std::chrono::duration_cast<Ticks>(now).count();
}

std::uint64_t fromFileTime(FILETIME time) {
    return std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime;
}

}  // namespace velk::platform::storage
