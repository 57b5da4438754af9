// Records: their information, and the members that make them.
#include "servers/automation/sample_records.h"

#include "servers/automation/arrays.h"
#include "servers/automation/giving.h"
#include "servers/automation/sample.h"

namespace velk::test::server {
namespace {

constexpr LCID libraryLocale = 0x0409;

com::SafeArray numbersFromOne(ULONG count) {
    auto numbers = makeVector(VT_I4, count);
    for (ULONG i = 0; i < count; ++i) elementsOf<LONG>(numbers)[i] = static_cast<LONG>(i + 1);
    return numbers;
}

/// Hands out the value that `make` returns.
template <typename Make>
HRESULT giveMade(VARIANT* out, Make make) noexcept {
    if (!out) return E_POINTER;
    VariantInit(out);
    try {
        *out = make().release();
        return S_OK;
    }
    VELK_COM_CATCH
}

com::Variant pointsUpTo(LONG count) {
    com::throwIfFailed(count < 0 ? E_INVALIDARG : S_OK);
    auto const info = recordInfo(pointId);
    SAFEARRAYBOUND bound{static_cast<ULONG>(count), 0};
    com::SafeArray points(SafeArrayCreateEx(VT_RECORD, 1, &bound, info.get()));
    if (!points.get()) throw com::Error(E_OUTOFMEMORY);
    for (LONG i = 0; i < count; ++i) elementsOf<Point>(points)[i] = {i, -i};
    com::Variant value;
    value.address()->vt = VT_ARRAY | VT_RECORD;
    value.address()->parray = points.release();
    return value;
}

}  // namespace

com::ComPtr<IRecordInfo> recordInfo(GUID const& id) {
    com::ComPtr<ITypeLib> library;
    com::throwIfFailed(LoadRegTypeLib(testLibrary, 1, 0, libraryLocale, library.put()),
                       "loading the test library");
    com::ComPtr<ITypeInfo> type;
    com::throwIfFailed(library->GetTypeInfoOfGuid(id, type.put()), "looking for a record");
    com::ComPtr<IRecordInfo> info;
    com::throwIfFailed(GetRecordInfoFromTypeInfo(type.get(), info.put()), "describing a record");
    return info;
}

com::Variant makeRecord(GUID const& id) {
    auto info = recordInfo(id);
    PVOID const record = info->RecordCreate();
    if (!record) throw com::Error(E_OUTOFMEMORY);
    com::Variant value;
    value.address()->vt = VT_RECORD;
    value.address()->pvRecord = record;
    value.address()->pRecInfo = info.detach();
    return value;
}

Point& pointIn(VARIANT& value) {
    bool const record = (value.vt & ~VT_BYREF) == VT_RECORD && value.pvRecord && value.pRecInfo;
    GUID id{};
    if (!record || FAILED(value.pRecInfo->GetGuid(&id)) || id != pointId) {
        throw com::Error(DISP_E_TYPEMISMATCH);
    }
    return *static_cast<Point*>(value.pvRecord);
}

HRESULT Sample::MakePoint(LONG x, LONG y, VARIANT* result) noexcept {
    return giveMade(result, [=] {
        auto value = makeRecord(pointId);
        *static_cast<Point*>(value.get().pvRecord) = {x, y};
        return value;
    });
}

HRESULT Sample::MakePerson(BSTR name, VARIANT* result) noexcept {
    return giveMade(result, [=] {
        auto value = makeRecord(personId);
        auto& person = *static_cast<Person*>(value.get().pvRecord);
        person.name = com::makeBstr(com::viewBstr(name)).release();
        person.home = {1, 2};
        person.data = numberVariant(7).release();
        person.numbers = numbersFromOne(3).release();
        return value;
    });
}

HRESULT Sample::MakePoints(LONG count, VARIANT* result) noexcept {
    return giveMade(result, [=] { return pointsUpTo(count); });
}

HRESULT Sample::SumLoose(Loose* loose, LONG* result) noexcept {
    return loose ? give(result, loose->x + loose->y) : E_POINTER;
}

}  // namespace velk::test::server
