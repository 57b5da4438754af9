/// Values as arguments. They own nothing unless they say so.
#pragma once

#include "servers/automation/giving.h"
#include "servers/automation/value_description.h"

namespace velk::test {

inline VARIANT number(LONG value) {
    VARIANT result{};
    result.vt = VT_I4;
    result.lVal = value;
    return result;
}
inline VARIANT object(IDispatch* value) {
    VARIANT result{};
    result.vt = VT_DISPATCH;
    result.pdispVal = value;
    return result;
}
/// A reference to `place`, whose type is `type`.
inline VARIANT reference(VARTYPE type, void* place) {
    VARIANT result{};
    result.vt = static_cast<VARTYPE>(VT_BYREF | type);
    result.byref = place;
    return result;
}
/// A text, which is the owner's.
inline com::Variant text(char const* ascii) {
    return server::textVariant(server::textOf(ascii));
}
/// A value of any type, read from its English text; the owner's.
inline com::Variant valueOf(VARTYPE type, char const* ascii) {
    constexpr LCID english = 0x0409;
    auto source = text(ascii);
    com::Variant value;
    com::throwIfFailed(VariantChangeTypeEx(value.address(), source.address(), english, 0, type));
    return value;
}

}  // namespace velk::test
