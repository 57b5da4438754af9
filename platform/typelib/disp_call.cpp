// DispCallFunc: calls by address or slot, with the types told by the caller.

#include <deque>

#include "platform/typelib/invoke/native_structure.h"
#include "platform/typelib/record_info.h"

namespace velk::typelib {
namespace {

struct Arguments {
    UINT count;
    VARTYPE const* types;
    VARIANTARG** values;
};

// The native forms of the arguments, with what records by value are made of.
class NativeArguments {
  public:
    explicit NativeArguments(Arguments const& given) {
        for (UINT i = 0; i < given.count; ++i) {
            require(given.values[i], E_INVALIDARG);
            add(given.types[i], *given.values[i]);
        }
    }

    std::vector<NativeValue>& values() { return values_; }

  private:
    void add(VARTYPE type, VARIANTARG const& value) {
        if (type == VT_RECORD) {
            addRecord(value);
            return;
        }
        auto const kind = nativeKindOf(type);
        require(kind && *kind != NativeKind::nothing, DISP_E_BADVARTYPE);
        values_.push_back(NativeValue::ofVariant(*kind, value));
    }

    void addRecord(VARIANTARG const& value) {
        require(value.pvRecord && value.pRecInfo, DISP_E_TYPEMISMATCH);
        Reference<ITypeInfo> type;
        check(value.pRecInfo->GetTypeInfo(type.out()));
        require(bool(type), DISP_E_TYPEMISMATCH);
        RecordBudget budget;
        auto const info = makeRecordInfo(*type, budget);
        // Another system may have laid out what it describes in its own way.
        require(info->IsMatchingType(value.pRecInfo), DISP_E_TYPEMISMATCH);
        auto const& record = info->description();
        structures_.emplace_back(record.size, record.shape);
        values_.push_back(nativeStructure(structures_.back(), value.pvRecord));
    }

    std::vector<NativeValue> values_;
    std::deque<NativeStructure> structures_;
};

void call(void* instance, ULONG_PTR place, VARTYPE returnType, Arguments const& given,
          VARIANT& result) {
    auto const kind = nativeKindOf(returnType);
    require(kind.has_value(), DISP_E_BADVARTYPE);
    NativeArguments arguments(given);
    NativeValue returned;
    returned.kind = *kind;
    if (instance) {
        callSlot(instance, place, arguments.values(), returned);
    } else {
        require(place != 0, E_INVALIDARG);
        callFunction(reinterpret_cast<void*>(place), arguments.values(), returned);
    }
    returned.store(returnType, result);
}

}  // namespace
}  // namespace velk::typelib

HRESULT DispCallFunc(void* instance, ULONG_PTR place, CALLCONV convention, VARTYPE returnType,
                     UINT count, VARTYPE* types, VARIANTARG** arguments, VARIANT* result) {
    using namespace velk::typelib;
    bool const callable = convention == CC_STDCALL || convention == CC_CDECL;
    if (!callable || (count > 0 && (!types || !arguments))) return E_INVALIDARG;
    return guarded([&] {
        Value returned;
        call(instance, place, returnType, {count, types, arguments}, *returned.get());
        // Nobody else would release what no one takes.
        if (result) *result = std::exchange(*returned.get(), VARIANT{});
    });
}
