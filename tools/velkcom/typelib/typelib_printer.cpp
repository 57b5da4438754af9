#include "typelib/typelib_printer.h"

#include <exception>

#include "text/names.h"
#include "typelib/attribute_text.h"
#include "typelib/member_text.h"
#include "typelib/type_text.h"
#include "typelib/value_text.h"

namespace velk::velkcom {
namespace {

std::string versionText(unsigned major, unsigned minor) {
    return "version(" + std::to_string(major) + "." + std::to_string(minor) + ")";
}

char const* kindName(TYPEKIND kind) {
    static constexpr char const* names[] = {"enum",          "struct",  "module", "interface",
                                            "dispinterface", "coclass", "alias",  "union"};
    return kind >= TKIND_ENUM && kind < TKIND_MAX ? names[kind] : "unknown";
}

char const* systemName(SYSKIND kind) {
    static constexpr char const* names[] = {"win16", "win32", "mac", "win64"};
    return kind >= SYS_WIN16 && kind <= SYS_WIN64 ? names[kind] : "unknown";
}

AttributeList typeAttributeList(ITypeInfo* type, TYPEATTR const& attributes) {
    AttributeList list{"uuid(" + guidText(attributes.guid) + ")",
                       versionText(attributes.wMajorVerNum, attributes.wMinorVerNum)};
    for (auto& flag : typeFlagNames(attributes.wTypeFlags)) list.push_back(std::move(flag));
    addDocumentation(list, type, MEMBERID_NIL);
    addCustomData<ITypeInfo2>(list, type, IID_ITypeInfo2, [](ITypeInfo2& extended, CUSTDATA* data) {
        return extended.GetAllCustData(data);
    });
    return list;
}

void printOneView(ITypeInfo* type, TYPEATTR const& attributes, std::ostream& out) {
    std::string const indent = "        ";
    out << "    "
        << "[" << joined(typeAttributeList(type, attributes)) << "]\n    "
        << kindName(attributes.typekind) << " " << typeName(type);
    if (attributes.typekind == TKIND_ALIAS) out << " = " << typeText(type, attributes.tdescAlias);
    out << " {  // size " << attributes.cbSizeInstance << ", alignment " << attributes.cbAlignment
        << ", vtable " << attributes.cbSizeVft << "\n";
    for (UINT i = 0; i < attributes.cImplTypes; ++i) out << implementedText(type, i, indent);
    for (UINT i = 0; i < attributes.cVars; ++i) out << variableText(type, i, indent);
    for (UINT i = 0; i < attributes.cFuncs; ++i) out << functionText(type, i, indent);
    out << "    };\n";
}

// A dual interface hands out its other view as implemented type -1.
void printOtherView(ITypeInfo* type, std::ostream& out) {
    HREFTYPE reference = 0;
    com::ComPtr<ITypeInfo> view;
    if (FAILED(type->GetRefTypeOfImplType(static_cast<UINT>(-1), &reference))) return;
    if (FAILED(type->GetRefTypeInfo(reference, view.put()))) return;
    auto const attributes = attributesOf(view.get());
    if (!attributes) return;
    out << "    // its other view\n";
    printOneView(view.get(), *attributes, out);
}

void printType(ITypeLib* library, UINT index, std::ostream& out) {
    out << "\n    // type " << index << "\n";
    com::ComPtr<ITypeInfo> type;
    HRESULT const result = library->GetTypeInfo(index, type.put());
    if (FAILED(result)) {
        out << "    // unreadable: " << hexadecimal(static_cast<unsigned>(result), 8) << "\n";
        return;
    }
    auto const attributes = attributesOf(type.get());
    if (!attributes) return;
    printOneView(type.get(), *attributes, out);
    if (attributes->wTypeFlags & TYPEFLAG_FDUAL) printOtherView(type.get(), out);
}

AttributeList libraryAttributeList(ITypeLib* library, TLIBATTR const& attributes) {
    AttributeList list{"uuid(" + guidText(attributes.guid) + ")",
                       versionText(attributes.wMajorVerNum, attributes.wMinorVerNum),
                       "lcid(" + hexadecimal(attributes.lcid, 4) + ")"};
    for (auto& flag : libraryFlagNames(attributes.wLibFlags)) list.push_back(std::move(flag));
    addDocumentation(list, library);
    addCustomData<ITypeLib2>(list, library, IID_ITypeLib2, [](ITypeLib2& extended, CUSTDATA* data) {
        return extended.GetAllCustData(data);
    });
    return list;
}

}  // namespace

void printTypeLibrary(ITypeLib* library, std::ostream& out) {
    auto const attributes = attributesOf(library);
    com::Bstr name;
    if (FAILED(library->GetDocumentation(-1, name.put(), nullptr, nullptr, nullptr))) {
        out << "// the library has no readable name\n";
    }
    if (attributes) {
        out << "[" << joined(libraryAttributeList(library, *attributes)) << "]\nlibrary "
            << nameText(com::viewBstr(name)) << " {  // " << systemName(attributes->syskind)
            << "\n";
    }
    UINT const count = library->GetTypeInfoCount();
    for (UINT i = 0; i < count; ++i) printType(library, i, out);
    out << "};\n";
}

int printTypeLibrary(std::filesystem::path const& file, std::ostream& out, std::ostream& errors) {
    try {
        auto const native = file.string<OLECHAR>();
        com::ComPtr<ITypeLib> library;
        HRESULT const result = LoadTypeLibEx(native.c_str(), REGKIND_NONE, library.put());
        if (FAILED(result) || !library) {
            errors << "velkcom: cannot load the type library " << file.string() << ": "
                   << hexadecimal(static_cast<unsigned>(result), 8) << "\n";
            return 1;
        }
        printTypeLibrary(library.get(), out);
        return 0;
    } catch (std::exception const& error) {
        errors << "velkcom: cannot print the type library: " << error.what() << "\n";
        return 1;
    }
}

}  // namespace velk::velkcom
