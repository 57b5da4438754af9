#include "platform/typelib/record_types.h"

#include "platform/typelib/record_info.h"
#include "platform/typelib/invoke/vtable_call.h"

namespace velk::typelib {
namespace {

// One description of a type, given back at the end.
template <typename Published, auto get, auto release>
class Borrowed {
  public:
    template <typename... Position>
    explicit Borrowed(ITypeInfo& type, Position... position) : type_(type) {
        check((type.*get)(position..., &description_));
    }
    Borrowed(Borrowed const&) = delete;
    Borrowed& operator=(Borrowed const&) = delete;
    ~Borrowed() { (type_.*release)(description_); }

    Published const* operator->() const { return description_; }

  private:
    ITypeInfo& type_;
    Published* description_ = nullptr;
};
using Attributes = Borrowed<TYPEATTR, &ITypeInfo::GetTypeAttr, &ITypeInfo::ReleaseTypeAttr>;
using Variable = Borrowed<VARDESC, &ITypeInfo::GetVarDesc, &ITypeInfo::ReleaseVarDesc>;

// Counts one level of types within types for as long as it lives.
class Level {
  public:
    explicit Level(RecordBudget& budget) : budget_(budget) {
        require(budget.depth > 0, TYPE_E_CIRCULARTYPE);
        --budget_.depth;
    }
    Level(Level const&) = delete;
    Level& operator=(Level const&) = delete;
    ~Level() { ++budget_.depth; }

  private:
    RecordBudget& budget_;
};

Reference<ITypeInfo> referenced(ITypeInfo& owner, HREFTYPE reference) {
    Reference<ITypeInfo> type;
    check(owner.GetRefTypeInfo(reference, type.out()));
    require(bool(type), TYPE_E_INVDATAREAD);
    return type;
}

NativeShape shapeOf(NativeKind kind) {
    switch (kind) {
        case NativeKind::currency:
            return {{0, NativeKind::signed64}};
        case NativeKind::decimal:
            return {{0, NativeKind::unsigned64}, {8, NativeKind::unsigned64}};
        case NativeKind::variant:
            return {};
        default:
            return {{0, kind}};
    }
}

FieldType valueOfType(VARTYPE type) {
    auto const kind = nativeKindOf(type);
    require(kind && *kind != NativeKind::nothing, DISP_E_BADVARTYPE);
    FieldType result;
    result.type = type;
    result.size = static_cast<ULONG>(sizeOf(*kind));
    result.shape = shapeOf(*kind);
    return result;
}

// A pointer that no VARIANT can hold.
FieldType plainPointer() {
    FieldType result;
    result.size = sizeof(void*);
    result.shape = shapeOf(NativeKind::pointer);
    return result;
}

FieldType unionOf(ULONG size) {
    FieldType result;
    result.size = size;
    return result;
}

FieldType pointerToClass(ITypeInfo& coclass, TYPEATTR const& attributes);

FieldType pointerToInterface(ITypeInfo& type, TYPEATTR const& attributes) {
    bool const dispatch = attributes.typekind == TKIND_DISPATCH;
    bool const dual = attributes.wTypeFlags & (TYPEFLAG_FDUAL | TYPEFLAG_FDISPATCHABLE);
    if (attributes.typekind == TKIND_COCLASS) return pointerToClass(type, attributes);
    auto result = valueOfType(dispatch || dual ? VT_DISPATCH : VT_UNKNOWN);
    // What a plain dispatch interface is called by is IDispatch itself.
    if (!dispatch || dual) result.interfaceId = attributes.guid;
    return result;
}

// What an object of a class is used by is its default interface.
FieldType pointerToClass(ITypeInfo& coclass, TYPEATTR const& attributes) {
    for (UINT i = 0; i < attributes.cImplTypes; ++i) {
        INT flags = 0;
        check(coclass.GetImplTypeFlags(i, &flags));
        if ((flags & IMPLTYPEFLAG_FSOURCE) || !(flags & IMPLTYPEFLAG_FDEFAULT)) continue;
        HREFTYPE reference = 0;
        check(coclass.GetRefTypeOfImplType(i, &reference));
        auto const main = referenced(coclass, reference);
        Attributes const own(*main);
        require(own->typekind != TKIND_COCLASS, TYPE_E_CIRCULARTYPE);
        return pointerToInterface(*main, *own.operator->());
    }
    return valueOfType(VT_UNKNOWN);
}

// Pointers to anything but interfaces belong to whoever set them.
FieldType pointerTo(ITypeInfo& owner, TYPEDESC const& target, RecordBudget& budget) {
    Level const level(budget);
    if (target.vt != VT_USERDEFINED) return plainPointer();
    auto const type = referenced(owner, target.hreftype);
    Attributes const attributes(*type);
    switch (attributes->typekind) {
        case TKIND_ALIAS:
            return pointerTo(*type, attributes->tdescAlias, budget);
        case TKIND_INTERFACE:
        case TKIND_DISPATCH:
        case TKIND_COCLASS:
            return pointerToInterface(*type, *attributes.operator->());
        default:
            return plainPointer();
    }
}

FieldType resolveField(ITypeInfo& owner, TYPEDESC const& type, RecordBudget& budget);

FieldType userDefined(ITypeInfo& type, RecordBudget& budget) {
    Attributes const attributes(type);
    switch (attributes->typekind) {
        case TKIND_ENUM:
            return valueOfType(VT_I4);
        case TKIND_ALIAS:
            return resolveField(type, attributes->tdescAlias, budget);
        case TKIND_UNION:
            return unionOf(attributes->cbSizeInstance);
        case TKIND_RECORD: {
            FieldType result;
            result.type = VT_RECORD;
            result.size = attributes->cbSizeInstance;
            auto const info = makeRecordInfo(type, budget);
            result.shape = info->description().shape;
            result.record = Reference<IRecordInfo>(info.get());
            return result;
        }
        default:
            fail(DISP_E_BADVARTYPE);
    }
}

FieldType fixedArray(ITypeInfo& owner, ARRAYDESC const& array, RecordBudget& budget) {
    require(array.cDims > 0, DISP_E_BADVARTYPE);
    auto result = resolveField(owner, array.tdescElem, budget);
    require(result.size > 0, DISP_E_BADVARTYPE);
    // Arrays of arrays have the dimensions of both.
    result.bounds.insert(result.bounds.begin(), array.rgbounds, array.rgbounds + array.cDims);
    ULONGLONG count = 1;
    for (auto const& bound : result.bounds) {
        count *= bound.cElements;
        require(count <= 0x7fffffff, TYPE_E_SIZETOOBIG);
    }
    return result;
}

// Which record the elements of a SAFEARRAY are. The record is not described
// here, because it may be the one that contains the array.
std::optional<GUID> recordOfElement(ITypeInfo& owner, TYPEDESC const& element,
                                    RecordBudget& budget) {
    if (element.vt != VT_USERDEFINED) return std::nullopt;
    Level const level(budget);
    auto const type = referenced(owner, element.hreftype);
    Attributes const attributes(*type);
    if (attributes->typekind == TKIND_RECORD) return attributes->guid;
    if (attributes->typekind != TKIND_ALIAS) return std::nullopt;
    return recordOfElement(*type, attributes->tdescAlias, budget);
}

FieldType safeArray(ITypeInfo& owner, TYPEDESC const& element, RecordBudget& budget) {
    if (auto const id = recordOfElement(owner, element, budget)) {
        auto result = valueOfType(VT_ARRAY | VT_RECORD);
        result.elementId = *id;
        return result;
    }
    auto const inner = resolveField(owner, element, budget);
    bool const plain = !inner.isFixedArray() && inner.type != VT_EMPTY && !(inner.type & VT_ARRAY);
    require(plain, DISP_E_BADVARTYPE);
    return valueOfType(static_cast<VARTYPE>(VT_ARRAY | inner.type));
}

// A VARIANT names these by another type of the same bits.
VARTYPE variantTypeOf(VARTYPE type) {
    switch (type) {
        case VT_INT_PTR:
            return VT_I8;
        case VT_UINT_PTR:
            return VT_UI8;
        case VT_HRESULT:
            return VT_ERROR;
        default:
            return type;
    }
}

FieldType resolveField(ITypeInfo& owner, TYPEDESC const& type, RecordBudget& budget) {
    Level const level(budget);
    switch (type.vt) {
        case VT_USERDEFINED:
            return userDefined(*referenced(owner, type.hreftype), budget);
        case VT_PTR:
            return pointerTo(owner, *type.lptdesc, budget);
        case VT_CARRAY:
            return fixedArray(owner, *type.lpadesc, budget);
        case VT_SAFEARRAY:
            return safeArray(owner, *type.lptdesc, budget);
        case VT_LPSTR:
        case VT_LPWSTR:
            return plainPointer();
        default:
            return valueOfType(variantTypeOf(type.vt));
    }
}

Bstr nameOfField(ITypeInfo& type, MEMBERID member) {
    Bstr name;
    check(type.GetDocumentation(member, name.out(), nullptr, nullptr, nullptr));
    return name;
}

// The record itself, behind however many aliases.
Reference<ITypeInfo> withoutAliases(ITypeInfo& type, RecordBudget& budget) {
    Level const level(budget);
    Attributes const attributes(type);
    if (attributes->typekind == TKIND_RECORD) return Reference<ITypeInfo>(&type);
    bool const alias = attributes->typekind == TKIND_ALIAS;
    require(alias && attributes->tdescAlias.vt == VT_USERDEFINED, E_INVALIDARG);
    return withoutAliases(*referenced(type, attributes->tdescAlias.hreftype), budget);
}

// The numbers of a whole record, by those of its fields.
std::optional<NativeShape> shapeOf(RecordDescription const& record) {
    NativeShape shape;
    if (record.size > mostRegisterBytes) return shape;
    for (auto const& field : record.fields) {
        if (!field.type().shape) return std::nullopt;
        ULONG const elements = field.type().count();
        for (ULONG i = 0; i < elements; ++i) {
            for (auto const& leaf : *field.type().shape) {
                shape.push_back({field.offset() + i * field.type().size + leaf.offset, leaf.kind});
            }
        }
    }
    return shape;
}

}  // namespace

RecordDescription describeRecord(ITypeInfo& type, RecordBudget& budget) {
    Level const level(budget);
    RecordDescription record;
    record.type = withoutAliases(type, budget);
    Attributes const attributes(*record.type);
    record.id = attributes->guid;
    record.size = attributes->cbSizeInstance;
    require(record.size <= 0x7fffffff, TYPE_E_SIZETOOBIG);
    check(
        record.type->GetDocumentation(MEMBERID_NIL, record.name.out(), nullptr, nullptr, nullptr));
    ULONGLONG end = 0;
    for (UINT i = 0; i < attributes->cVars; ++i) {
        Variable const variable(*record.type, i);
        if (variable->varkind != VAR_PERINSTANCE) continue;
        require(budget.fields > 0, TYPE_E_SIZETOOBIG);
        --budget.fields;
        auto resolved = resolveField(*record.type, variable->elemdescVar.tdesc, budget);
        auto const& field =
            record.fields.emplace_back(nameOfField(*record.type, variable->memid).view(),
                                       variable->oInst, std::move(resolved));
        // Fields that overlap would release the same thing twice.
        bool const fits = variable->oInst >= end && field.end() <= record.size;
        require(fits, TYPE_E_INVDATAREAD);
        end = field.end();
    }
    record.shape = shapeOf(record);
    return record;
}

}  // namespace velk::typelib
