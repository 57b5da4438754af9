/// Property sets for tests.
#pragma once

#include <map>
#include <optional>

#include <windows.h>

#include <propidl.h>

#include "com/owned.h"
#include "com/owners.h"
#include "conformance/storage/storage_file.h"

namespace velk::test {

using PropertySets = com::ComPtr<IPropertySetStorage>;
using PropertySet = com::ComPtr<IPropertyStorage>;

inline void closePropVariant(PROPVARIANT& value) noexcept {
    PropVariantClear(&value);
}
using PropVariant = com::Owned<PROPVARIANT, closePropVariant>;

/// A set that is none of the known ones.
inline constexpr FMTID ownSet = {
    0x8D06BE37, 0x1234, 0x4321, {0x90, 0x91, 0x92, 0x93, 0x94, 0x95, 0x96, 0x97}};
// The published ids; some systems' libraries lack one or another of them.
inline constexpr FMTID summarySet = {
    0xF29F85E0, 0x4FF9, 0x1068, {0xAB, 0x91, 0x08, 0x00, 0x2B, 0x27, 0xB3, 0xD9}};
inline constexpr FMTID documentSet = {
    0xD5CDD502, 0x2E9C, 0x101B, {0x93, 0x97, 0x08, 0x00, 0x2B, 0x2C, 0xF9, 0xAE}};
inline constexpr FMTID customSet = {
    0xD5CDD505, 0x2E9C, 0x101B, {0x93, 0x97, 0x08, 0x00, 0x2B, 0x2C, 0xF9, 0xAE}};

inline PropertySets setsOf(Storage const& storage) {
    auto sets = storage.query<IPropertySetStorage>(IID_IPropertySetStorage);
    EXPECT_TRUE(sets);
    return sets;
}

inline PropertySet createSet(Storage const& storage, REFFMTID id, DWORD flags = 0) {
    PropertySet set;
    EXPECT_EQ(setsOf(storage)->Create(id, nullptr, flags, change | STGM_CREATE, set.put()), S_OK);
    return set;
}

inline PropertySet openSet(Storage const& storage, REFFMTID id, DWORD mode = look) {
    PropertySet set;
    EXPECT_EQ(setsOf(storage)->Open(id, mode, set.put()), S_OK);
    return set;
}

inline PROPSPEC byId(PROPID id) {
    PROPSPEC specifier{};
    specifier.ulKind = PRSPEC_PROPID;
    specifier.propid = id;
    return specifier;
}

inline PROPSPEC byName(OLECHAR const* name) {
    PROPSPEC specifier{};
    specifier.ulKind = PRSPEC_LPWSTR;
    specifier.lpwstr = const_cast<OLECHAR*>(name);
    return specifier;
}

inline PROPVARIANT number(LONG value) {
    PROPVARIANT made{};
    made.vt = VT_I4;
    made.lVal = value;
    return made;
}

/// Of sets that could not be opened, E_POINTER.
inline HRESULT put(PropertySet const& set, PROPSPEC const& specifier, PROPVARIANT const& value) {
    if (!set) return E_POINTER;
    return set->WriteMultiple(1, &specifier, &value, PID_FIRST_USABLE);
}

/// S_FALSE when there is none.
inline HRESULT get(PropertySet const& set, PROPSPEC const& specifier, PropVariant& value) {
    if (!set) return E_POINTER;
    return set->ReadMultiple(1, &specifier, value.put());
}

struct Listed {
    VARTYPE type = VT_EMPTY;
    std::optional<Text> name;
};

/// What an enumeration of the set shows.
inline std::map<PROPID, Listed> listing(PropertySet const& set) {
    com::ComPtr<IEnumSTATPROPSTG> all;
    EXPECT_EQ(set->Enum(all.put()), S_OK);
    std::map<PROPID, Listed> found;
    STATPROPSTG entry{};
    ULONG done = 0;
    while (all && all->Next(1, &entry, &done) == S_OK) {
        com::TaskMemory const name(entry.lpwstrName);
        found[entry.propid].type = entry.vt;
        if (entry.lpwstrName != nullptr) found[entry.propid].name = entry.lpwstrName;
    }
    return found;
}

}  // namespace velk::test
