#include "type_text.h"

#include "owners.h"
#include "value_text.h"

namespace velk::tools {
namespace {

// Deeper nesting than any compiler writes: a description that refers to
// itself ends here.
constexpr int deepest = 32;

InterfaceOwner<ITypeLib> libraryOf(ITypeInfo* type) {
    ITypeLib* library = nullptr;
    UINT index = 0;
    if (FAILED(type->GetContainingTypeLib(&library, &index))) library = nullptr;
    return InterfaceOwner<ITypeLib>(library);
}

std::string libraryName(ITypeLib* library) {
    TextOwner name;
    if (FAILED(library->GetDocumentation(-1, name.out(), nullptr, nullptr, nullptr))) return {};
    return nameText(name.view());
}

bool sameLibrary(ITypeLib* left, ITypeLib* right) {
    if (left == right) return true;
    auto const first = attributesOf(left);
    auto const second = attributesOf(right);
    return first && second && IsEqualGUID(first->guid, second->guid);
}

std::string basicName(VARTYPE type) {
    switch (type) {
        case VT_EMPTY:
            return "empty";
        case VT_NULL:
            return "null";
        case VT_I2:
            return "short";
        case VT_I4:
            return "long";
        case VT_R4:
            return "float";
        case VT_R8:
            return "double";
        case VT_CY:
            return "CURRENCY";
        case VT_DATE:
            return "DATE";
        case VT_BSTR:
            return "BSTR";
        case VT_DISPATCH:
            return "IDispatch*";
        case VT_ERROR:
            return "SCODE";
        case VT_BOOL:
            return "VARIANT_BOOL";
        case VT_VARIANT:
            return "VARIANT";
        case VT_UNKNOWN:
            return "IUnknown*";
        case VT_DECIMAL:
            return "DECIMAL";
        case VT_I1:
            return "char";
        case VT_UI1:
            return "unsigned char";
        case VT_UI2:
            return "unsigned short";
        case VT_UI4:
            return "unsigned long";
        case VT_I8:
            return "hyper";
        case VT_UI8:
            return "unsigned hyper";
        case VT_INT:
            return "int";
        case VT_UINT:
            return "unsigned int";
        case VT_VOID:
            return "void";
        case VT_HRESULT:
            return "HRESULT";
        case VT_LPSTR:
            return "LPSTR";
        case VT_LPWSTR:
            return "LPWSTR";
        case VT_INT_PTR:
            return "INT_PTR";
        case VT_UINT_PTR:
            return "UINT_PTR";
        case VT_FILETIME:
            return "FILETIME";
        default:
            return "type(" + hexadecimal(type) + ")";
    }
}

std::string typeText(ITypeInfo* type, TYPEDESC const& description, int depth);

std::string arrayText(ITypeInfo* type, ARRAYDESC const& array, int depth) {
    std::string text = typeText(type, array.tdescElem, depth);
    for (USHORT i = 0; i < array.cDims; ++i) {
        auto const& bound = array.rgbounds[i];
        text += "[";
        if (bound.lLbound != 0) text += std::to_string(bound.lLbound) + "..+";
        text += std::to_string(bound.cElements) + "]";
    }
    return text;
}

std::string typeText(ITypeInfo* type, TYPEDESC const& description, int depth) {
    if (depth > deepest) return "...";
    switch (description.vt) {
        case VT_PTR:
            return description.lptdesc ? typeText(type, *description.lptdesc, depth + 1) + "*"
                                       : "void*";
        case VT_SAFEARRAY:
            return description.lptdesc
                       ? "SAFEARRAY(" + typeText(type, *description.lptdesc, depth + 1) + ")"
                       : "SAFEARRAY";
        case VT_CARRAY:
            return description.lpadesc ? arrayText(type, *description.lpadesc, depth + 1) : "array";
        case VT_USERDEFINED:
            return referenceName(type, description.hreftype);
        default:
            return basicName(description.vt);
    }
}

}  // namespace

std::string referenceName(ITypeInfo* type, HREFTYPE reference) {
    ITypeInfo* raw = nullptr;
    HRESULT const result = type->GetRefTypeInfo(reference, &raw);
    if (FAILED(result) || !raw) {
        return "<" + hexadecimal(static_cast<unsigned>(result), 8) + ">";
    }
    InterfaceOwner<ITypeInfo> const target(raw);
    auto const own = libraryOf(type);
    auto const other = libraryOf(target.get());
    std::string name = typeName(target.get());
    if (!own || !other || sameLibrary(own.get(), other.get())) return name;
    return libraryName(other.get()) + "." + name;
}

std::string typeText(ITypeInfo* type, TYPEDESC const& description) {
    return typeText(type, description, 0);
}

std::string typeName(ITypeInfo* type) {
    TextOwner name;
    if (FAILED(type->GetDocumentation(MEMBERID_NIL, name.out(), nullptr, nullptr, nullptr))) {
        return {};
    }
    return nameText(name.view());
}

}  // namespace velk::tools
