#include "platform/typelib/invoke/invoke_argument.h"

#include <cstring>

#include "platform/typelib/record_array.h"

namespace velk::typelib {
namespace {

// The value behind a reference to a VARIANT, else the argument itself.
VARIANT& withoutVariantReference(VARIANT& argument) {
    bool const reference = argument.vt == (VT_BYREF | VT_VARIANT);
    require(!reference || argument.pvarVal, DISP_E_TYPEMISMATCH);
    return reference ? *argument.pvarVal : argument;
}

bool fits(VARTYPE given, VARTYPE wanted) {
    if (given == wanted) return true;
    // Types that differ in name only.
    auto const plain = [](VARTYPE type) -> VARTYPE {
        switch (type) {
            case VT_INT:
                return VT_I4;
            case VT_UINT:
                return VT_UI4;
            case VT_HRESULT:
                return VT_ERROR;
            case VT_INT_PTR:
                return VT_I8;
            case VT_UINT_PTR:
                return VT_UI8;
            default:
                return type;
        }
    };
    constexpr VARTYPE marks = VT_BYREF | VT_ARRAY;
    if ((given & marks) != (wanted & marks)) return false;
    return plain(given & ~marks) == plain(wanted & ~marks);
}

// A value's bits, read through the reference that it may be.
VARIANT dereferenced(VARIANT const& source) {
    if (!(source.vt & VT_BYREF)) return source;
    require(source.byref, DISP_E_TYPEMISMATCH);
    VARIANT value{};
    auto const type = static_cast<VARTYPE>(source.vt & ~VT_BYREF);
    auto const kind = nativeKindOf(type);
    require(kind && *kind != NativeKind::variant && *kind != NativeKind::nothing,
            DISP_E_TYPEMISMATCH);
    if (*kind == NativeKind::decimal) {
        value.decVal = *source.pdecVal;
    } else {
        std::memcpy(&value.llVal, source.byref, sizeOf(*kind));
    }
    value.vt = type;
    return value;
}

/// Gives up what a member will overwrite without a look at it.
void giveUpOld(VARTYPE type, void* place) {
    if (!place) return;
    if (type == VT_VARIANT) {
        check(VariantClear(static_cast<VARIANT*>(place)));
        return;
    }
    bool const owns =
        type == VT_BSTR || type == VT_DISPATCH || type == VT_UNKNOWN || (type & VT_ARRAY);
    if (!owns) return;
    Value old;
    old->vt = type;
    std::memcpy(&old->llVal, place, sizeof(void*));
    std::memset(place, 0, sizeof(void*));
}

IUnknown* objectIn(VARIANT const& value) {
    bool const object = value.vt == VT_DISPATCH || value.vt == VT_UNKNOWN;
    require(object, DISP_E_TYPEMISMATCH);
    return value.punkVal;
}

// An array of records has to be one of those that the member is declared with.
void requireElements(VARIANT const& source, TypeInfo& record) {
    auto const type = static_cast<VARTYPE>(source.vt & ~VT_BYREF);
    if (type != (VT_ARRAY | VT_RECORD)) return;
    SAFEARRAY* const array = dereferenced(source).parray;
    require(!array || hasElementsOf(*array, record.id()), DISP_E_TYPEMISMATCH);
}

}  // namespace

NativeValue InvokeArgument::bind(VARIANT& argument, InvokeType const& type, USHORT flags) {
    VARIANT& source = withoutVariantReference(argument);
    if (type.type == VT_RECORD) return bindRecord(argument, source, type, flags);
    require(type.pointers <= 1, DISP_E_BADVARTYPE);
    if (type.type == (VT_ARRAY | VT_RECORD)) requireElements(source, *type.record);
    return type.pointers == 0 ? bindValue(source, type)
                              : bindReference(argument, source, type, flags);
}

NativeValue InvokeArgument::bindValue(VARIANT& source, InvokeType const& type) {
    auto const kind = nativeKindOf(type.type);
    require(kind && *kind != NativeKind::nothing, DISP_E_BADVARTYPE);
    if (type.type == VT_VARIANT) return NativeValue::ofVariant(*kind, source);
    bool const same = fits(static_cast<VARTYPE>(source.vt & ~VT_BYREF), type.type);
    bool const specific = type.isInterface() && type.interfaceId != GUID_NULL;
    if (same && !specific) return NativeValue::ofVariant(*kind, dereferenced(source));
    convertInto(source, type);
    return NativeValue::ofVariant(*kind, *copy_.get());
}

void InvokeArgument::convertInto(VARIANT const& source, InvokeType const& type) {
    copyType_ = type.type;
    if (type.isInterface()) {
        IUnknown* const object = objectIn(dereferenced(source));
        copy_->vt = type.type;
        copy_->punkVal = nullptr;
        if (!object) return;
        GUID const& id = type.interfaceId != GUID_NULL ? type.interfaceId
                         : type.type == VT_DISPATCH    ? IID_IDispatch
                                                       : IID_IUnknown;
        void* found = nullptr;
        require(SUCCEEDED(object->QueryInterface(id, &found)), DISP_E_TYPEMISMATCH);
        copy_->punkVal = static_cast<IUnknown*>(found);
        return;
    }
    if (type.type & VT_ARRAY) {
        require(fits(static_cast<VARTYPE>(source.vt & ~VT_BYREF), type.type), DISP_E_TYPEMISMATCH);
        check(VariantCopyInd(copy_.get(), &source));
        return;
    }
    if (type.type == VT_VARIANT) {
        check(VariantCopyInd(copy_.get(), &source));
        return;
    }
    check(VariantChangeType(copy_.get(), &source, 0, type.type));
}

void* InvokeArgument::storage() {
    if (copyType_ == VT_VARIANT) return copy_.get();
    // A decimal number fills the whole value, its type included.
    if (copyType_ == VT_DECIMAL) return &copy_->decVal;
    return &copy_->llVal;
}

NativeValue InvokeArgument::bindReference(VARIANT& argument, VARIANT& source,
                                          InvokeType const& type, USHORT flags) {
    require(nativeKindOf(type.type).value_or(NativeKind::nothing) != NativeKind::nothing,
            DISP_E_BADVARTYPE);
    bool const isReference = argument.vt & VT_BYREF;
    bool const out = flags & PARAMFLAG_FOUT;
    bool const in = !out || (flags & PARAMFLAG_FIN);
    if (type.type == VT_VARIANT) {
        if (&source != &argument) {
            if (!in) giveUpOld(VT_VARIANT, &source);
            return NativeValue::ofPointer(&source);
        }
        // A member that only reads may see a reference as one.
        if (!out) return NativeValue::ofPointer(&argument);
    } else {
        bool const any = !type.isInterface() || type.interfaceId == GUID_NULL ||
                         type.interfaceId == IID_IDispatch || type.interfaceId == IID_IUnknown;
        auto const wanted = static_cast<VARTYPE>(type.type | VT_BYREF);
        if (any && fits(source.vt, wanted)) {
            if (!in) giveUpOld(type.type, source.byref);
            return NativeValue::ofPointer(source.byref);
        }
        // The value inside a referenced VARIANT is changed in its place.
        bool const inside = isReference && &source != &argument && fits(source.vt, type.type);
        if (any && inside && type.type != VT_DECIMAL) {
            if (!in) {
                giveUpOld(VT_VARIANT, &source);
                source.llVal = 0;
                source.vt = type.type;
            }
            return NativeValue::ofPointer(&source.llVal);
        }
    }
    if (in) {
        convertInto(source, type);
    } else {
        copyType_ = type.type;
        if (type.type != VT_VARIANT) copy_->vt = type.type;
    }
    if (out && isReference) target_ = &argument;
    return NativeValue::ofPointer(storage());
}

NativeValue InvokeArgument::bindResult(InvokeType const& type) {
    // A member hands out a pointer to what it returns.
    if (type.type == VT_RECORD && type.pointers == 1) return bindEmptyRecord(type);
    require(type.pointers == 1 && nativeKindOf(type.type), DISP_E_BADVARTYPE);
    copyType_ = type.type;
    return NativeValue::ofPointer(storage());
}

void InvokeArgument::takeResult(VARIANT& result) {
    if (copyType_ != VT_VARIANT) copy_->vt = copyType_;
    result = *copy_.get();
    VariantInit(copy_.get());
}

void InvokeArgument::writeBack() {
    if (!target_) return;
    if (copyType_ != VT_VARIANT) copy_->vt = copyType_;
    VARIANT& target = withoutVariantReference(*target_);
    if (&target != target_) {
        check(VariantCopy(&target, copy_.get()));
        return;
    }
    auto const type = static_cast<VARTYPE>(target.vt & ~VT_BYREF);
    Value converted;
    if (type == VT_DISPATCH || type == VT_UNKNOWN) {
        IUnknown* const object = objectIn(*copy_.get());
        converted->vt = type;
        converted->punkVal = nullptr;
        void* found = nullptr;
        if (object) {
            check(
                object->QueryInterface(type == VT_DISPATCH ? IID_IDispatch : IID_IUnknown, &found));
        }
        converted->punkVal = static_cast<IUnknown*>(found);
    } else {
        check(VariantChangeType(converted.get(), copy_.get(), 0, type));
    }
    // The old value goes the way of the converted one.
    VARIANT old = dereferenced(target);
    auto const kind = nativeKindOf(type).value_or(NativeKind::nothing);
    if (kind == NativeKind::decimal) {
        *target.pdecVal = converted->decVal;
    } else {
        std::memcpy(target.byref, &converted->llVal, sizeOf(kind));
    }
    *converted.get() = old;
}

}  // namespace velk::typelib
