// Registering libraries, for the machine and for one user.

#include <algorithm>
#include <string>

#include "platform/typelib/library_source.h"
#include "platform/typelib/registry_key.h"
#include "platform/typelib/registry_layout.h"

namespace velk::typelib {
namespace {

// The system's own marshallers: by type library, and of dispatch interfaces.
constexpr char16_t const* libraryMarshaller = u"{00020424-0000-0000-C000-000000000046}";
constexpr char16_t const* dispatchMarshaller = u"{00020420-0000-0000-C000-000000000046}";

// The classes of the machine or of the user.
class Classes {
  public:
    static Classes ofMachine() { return Classes(HKEY_CLASSES_ROOT, u""); }
    static Classes ofUser() { return Classes(HKEY_CURRENT_USER, u"Software\\Classes\\"); }

    RegistryKey open(std::u16string const& name) const {
        return RegistryKey::open(root_, prefix_ + name);
    }
    RegistryKey create(std::u16string const& name) const {
        return RegistryKey::create(root_, prefix_ + name);
    }
    bool remove(std::u16string const& name) const { return deleteKeyTree(root_, prefix_ + name); }

  private:
    Classes(HKEY root, std::u16string prefix) : root_(root), prefix_(std::move(prefix)) {}

    HKEY root_;
    std::u16string prefix_;
};

class LibraryAttributes {
  public:
    explicit LibraryAttributes(ITypeLib* library) : library_(library) {
        HRESULT const result = library->GetLibAttr(&attributes_);
        if (FAILED(result)) fail(result);
    }
    LibraryAttributes(LibraryAttributes const&) = delete;
    LibraryAttributes& operator=(LibraryAttributes const&) = delete;
    ~LibraryAttributes() { library_->ReleaseTLibAttr(attributes_); }
    TLIBATTR const* operator->() const { return attributes_; }

  private:
    ITypeLib* library_;
    TLIBATTR* attributes_ = nullptr;
};

class TypeAttributes {
  public:
    explicit TypeAttributes(ITypeInfo* type) : type_(type) {
        HRESULT const result = type->GetTypeAttr(&attributes_);
        if (FAILED(result)) fail(result);
    }
    TypeAttributes(TypeAttributes const&) = delete;
    TypeAttributes& operator=(TypeAttributes const&) = delete;
    ~TypeAttributes() { type_->ReleaseTypeAttr(attributes_); }
    TYPEATTR const* operator->() const { return attributes_; }

  private:
    ITypeInfo* type_;
    TYPEATTR* attributes_ = nullptr;
};

void writeText(RegistryKey const& parent, std::u16string const& name, std::u16string const& text) {
    RegistryKey::create(parent.get(), name).setText(nullptr, text);
}

std::u16string folderOf(std::u16string const& path) {
    std::size_t const end = path.find_last_of(u"\\/");
    return end == std::u16string::npos ? std::u16string() : path.substr(0, end);
}

void writeInterface(Classes const& classes, ITypeInfo* type, TypeAttributes const& attributes,
                    LibraryAttributes const& library) {
    bool const byLibrary = attributes->wTypeFlags & (TYPEFLAG_FOLEAUTOMATION | TYPEFLAG_FDUAL);
    bool const dispatch = attributes->typekind == TKIND_DISPATCH;
    bool const isInterface = attributes->typekind == TKIND_INTERFACE;
    if (!dispatch && !(isInterface && byLibrary)) return;
    auto const key = classes.create(u"Interface\\" + guidText(attributes->guid));
    Bstr name;
    if (SUCCEEDED(type->GetDocumentation(MEMBERID_NIL, name.out(), nullptr, nullptr, nullptr))) {
        key.setText(nullptr, std::u16string(name.view()));
    }
    writeText(key, u"ProxyStubClsid32", byLibrary ? libraryMarshaller : dispatchMarshaller);
    auto const link = RegistryKey::create(key.get(), u"TypeLib");
    link.setText(nullptr, guidText(library->guid));
    link.setText(u"Version", versionText(library->wMajorVerNum, library->wMinorVerNum));
}

template <typename Action>
void forEachType(ITypeLib* library, Action action) {
    for (UINT i = 0; i < library->GetTypeInfoCount(); ++i) {
        Reference<ITypeInfo> type;
        if (FAILED(library->GetTypeInfo(i, type.out()))) continue;
        action(type.get(), TypeAttributes(type.get()));
    }
}

void registerIn(Classes const& classes, ITypeLib* library, std::u16string const& path,
                LPCOLESTR helpFolder) {
    LibraryAttributes const attributes(library);
    auto const version =
        classes.create(libraryKeyName(attributes->guid) + u"\\" +
                       versionText(attributes->wMajorVerNum, attributes->wMinorVerNum));
    Bstr help;
    HRESULT const result = library->GetDocumentation(-1, nullptr, help.out(), nullptr, nullptr);
    if (FAILED(result)) fail(result);
    version.setText(nullptr, std::u16string(help.view()));
    auto const place = hexadecimalText(attributes->lcid) + u"\\" + systemText(attributes->syskind);
    writeText(version, place, path);
    // That the library came from a file is no property of the file.
    unsigned const flags = attributes->wLibFlags & ~LIBFLAG_FHASDISKIMAGE;
    std::string const decimal = std::to_string(flags);
    writeText(version, u"FLAGS", std::u16string(decimal.begin(), decimal.end()));
    writeText(version, u"HELPDIR", helpFolder ? std::u16string(helpFolder) : folderOf(path));
    forEachType(library, [&](ITypeInfo* type, TypeAttributes const& typeAttributes) {
        writeInterface(classes, type, typeAttributes, attributes);
    });
}

void removeInterfaces(Classes const& classes, ITypeLib* library, REFGUID id) {
    forEachType(library, [&](ITypeInfo*, TypeAttributes const& attributes) {
        auto const name = u"Interface\\" + guidText(attributes->guid);
        auto const link = classes.open(name + u"\\TypeLib").text();
        // Another library may have taken the interface over.
        if (link && *link == guidText(id)) classes.remove(name);
    });
}

// Languages and systems are keys whose names are hexadecimal numbers; what
// else stands below a version describes it.
bool hasLanguages(RegistryKey const& version) {
    auto const names = version.subKeys();
    return std::any_of(names.begin(), names.end(),
                       [](auto const& name) { return name != u"FLAGS" && name != u"HELPDIR"; });
}

void unregisterFrom(Classes const& classes, REFGUID id, WORD major, WORD minor, LCID lcid,
                    SYSKIND system) {
    auto const library = libraryKeyName(id);
    auto const version = library + u"\\" + versionText(major, minor);
    auto const language = version + u"\\" + hexadecimalText(lcid);
    auto const place = language + u"\\" + systemText(system);
    require(!systemText(system).empty(), TYPE_E_REGISTRYACCESS);
    auto const path = classes.open(place).text();
    require(path.has_value(), TYPE_E_REGISTRYACCESS);
    try {
        require(isAbsolutePath(*path), TYPE_E_CANTLOADLIBRARY);
        removeInterfaces(classes, loadLibraryFile(*path).get(), id);
    } catch (ResultError const&) {
        // The file is gone: its interfaces cannot be told any more.
    }
    require(classes.remove(place), TYPE_E_REGISTRYACCESS);
    if (classes.open(language).subKeys().empty()) classes.remove(language);
    if (!hasLanguages(classes.open(version))) classes.remove(version);
    if (classes.open(library).subKeys().empty()) classes.remove(library);
}

HRESULT registerLibrary(Classes const& classes, ITypeLib* library, LPCOLESTR path,
                        LPCOLESTR helpFolder) {
    if (!library || !path) return E_INVALIDARG;
    return guarded([&] { registerIn(classes, library, path, helpFolder); });
}

}  // namespace
}  // namespace velk::typelib

using velk::typelib::Classes;

HRESULT RegisterTypeLib(ITypeLib* library, LPCOLESTR path, LPCOLESTR helpFolder) {
    return velk::typelib::registerLibrary(Classes::ofMachine(), library, path, helpFolder);
}

HRESULT RegisterTypeLibForUser(ITypeLib* library, LPOLESTR path, LPOLESTR helpFolder) {
    return velk::typelib::registerLibrary(Classes::ofUser(), library, path, helpFolder);
}

HRESULT UnRegisterTypeLib(REFGUID id, WORD major, WORD minor, LCID lcid, SYSKIND system) {
    return velk::typelib::guarded([&] {
        velk::typelib::unregisterFrom(Classes::ofMachine(), id, major, minor, lcid, system);
    });
}

HRESULT UnRegisterTypeLibForUser(REFGUID id, WORD major, WORD minor, LCID lcid, SYSKIND system) {
    return velk::typelib::guarded(
        [&] { velk::typelib::unregisterFrom(Classes::ofUser(), id, major, minor, lcid, system); });
}
