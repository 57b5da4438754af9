/// What elements tell of themselves.
#pragma once

#include "platform/storage/compound/directory.h"
#include "platform/storage/shared_object.h"

namespace velk::platform::storage {

/// Fails with STG_E_INVALIDPOINTER or STG_E_INVALIDFLAG. The name is of
/// CoTaskMemAlloc unless `flags` says that none is wanted.
void describe(Entry const& entry, std::u16string_view name, DWORD mode, DWORD flags,
              STATSTG* status);

/// An element as an enumeration gives it.
struct ElementStatus {
    Entry entry;

    STATSTG give() const;
    static void takeBack(STATSTG& given) noexcept;
};
using ElementEnumerator = StatusEnumerator<IEnumSTATSTG, IID_IEnumSTATSTG, STATSTG, ElementStatus>;

/// The present time, as files keep it.
std::uint64_t presentFileTime();
std::uint64_t fromFileTime(FILETIME time);

}  // namespace velk::platform::storage
