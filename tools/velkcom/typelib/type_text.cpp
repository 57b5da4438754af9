#include "typelib/type_text.h"

#include "text/names.h"

namespace velk::velkcom {
namespace {

// Deeper nesting than any compiler writes: a description that refers to
// itself ends here.
constexpr int deepest = 32;

com::ComPtr<ITypeLib> libraryOf(ITypeInfo* type) {
    com::ComPtr<ITypeLib> library;
    UINT index = 0;
    if (FAILED(type->GetContainingTypeLib(library.put(), &index))) return {};
    return library;
}

/// Fills a description where the call that hands it out succeeds.
template <typename Description, typename Lender, typename Ask>
Description lentBy(Lender* lender, Ask const& ask) {
    Description description(lender);
    if (FAILED(ask(description.put()))) *description.put() = nullptr;
    return description;
}

std::string libraryName(ITypeLib* library) {
    com::Bstr name;
    if (FAILED(library->GetDocumentation(-1, name.put(), nullptr, nullptr, nullptr))) return {};
    return nameText(com::viewBstr(name));
}

bool sameLibrary(ITypeLib* left, ITypeLib* right) {
    if (left == right) return true;
    auto const first = attributesOf(left);
    auto const second = attributesOf(right);
    return first && second && IsEqualGUID(first->guid, second->guid);
}

std::string basicName(VARTYPE type) {
    char const* const declared = namesOf(type).declared;
    return declared != nullptr ? declared : "type(" + hexadecimal(type) + ")";
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

com::LibraryAttributes attributesOf(ITypeLib* library) {
    return lentBy<com::LibraryAttributes>(
        library, [&](TLIBATTR** place) { return library->GetLibAttr(place); });
}

com::TypeAttributes attributesOf(ITypeInfo* type) {
    return lentBy<com::TypeAttributes>(type,
                                       [&](TYPEATTR** place) { return type->GetTypeAttr(place); });
}

com::FunctionDescription functionOf(ITypeInfo* type, UINT index) {
    return lentBy<com::FunctionDescription>(
        type, [&](FUNCDESC** place) { return type->GetFuncDesc(index, place); });
}

com::VariableDescription variableOf(ITypeInfo* type, UINT index) {
    return lentBy<com::VariableDescription>(
        type, [&](VARDESC** place) { return type->GetVarDesc(index, place); });
}

std::string referenceName(ITypeInfo* type, HREFTYPE reference) {
    com::ComPtr<ITypeInfo> target;
    HRESULT const result = type->GetRefTypeInfo(reference, target.put());
    if (FAILED(result) || !target) {
        return "<" + hexadecimal(static_cast<unsigned>(result), 8) + ">";
    }
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
    com::Bstr name;
    if (FAILED(type->GetDocumentation(MEMBERID_NIL, name.put(), nullptr, nullptr, nullptr))) {
        return {};
    }
    return nameText(com::viewBstr(name));
}

}  // namespace velk::velkcom
