// Registering libraries, for the machine and for one user.

#include <algorithm>
#include <string>

#include "platform/typelib/loading/library_source.h"
#include "platform/typelib/registration/registry_key.h"
#include "platform/typelib/registration/registry_layout.h"

namespace velk::typelib {
namespace {

// The system's own marshallers: by type library, and of dispatch interfaces.
constexpr char16_t const* libraryMarshaller = u"{00020424-0000-0000-C000-000000000046}";
constexpr char16_t const* dispatchMarshaller = u"{00020420-0000-0000-C000-000000000046}";

// The classes of the machine or of the user, by the hive that is meant:
// HKEY_CLASSES_ROOT writes where a key happens to stand already.
class Classes {
  public:
    static Classes ofMachine() { return Classes(HKEY_LOCAL_MACHINE); }
    static Classes ofUser() { return Classes(HKEY_CURRENT_USER); }

    HKEY hive() const { return root_; }
    RegistryKey open(std::u16string const& name) const {
        return RegistryKey::open(root_, prefix + name);
    }
    RegistryKey create(std::u16string const& name) const {
        return RegistryKey::create(root_, prefix + name);
    }
    bool remove(std::u16string const& name) const { return deleteKeyTree(root_, prefix + name); }
    // Removes the key unless somebody has put something into it or below it.
    void removeEmpty(std::u16string const& name) const {
        if (open(name).isEmpty()) remove(name);
    }
    void removeText(std::u16string const& name, LPCWSTR value, std::u16string const& text) const {
        deleteText(root_, prefix + name, value, text);
    }

  private:
    explicit Classes(HKEY root) : root_(root) {}

    static constexpr char16_t const* prefix = u"Software\\Classes\\";
    HKEY root_;
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

std::u16string nameOf(ITypeInfo* type) {
    Bstr name;
    HRESULT const result =
        type->GetDocumentation(MEMBERID_NIL, name.out(), nullptr, nullptr, nullptr);
    return SUCCEEDED(result) ? std::u16string(name.view()) : std::u16string();
}

// Who marshals an interface; null for a type that is registered as none.
char16_t const* marshallerOf(TypeAttributes const& attributes) {
    bool const byLibrary = attributes->wTypeFlags & (TYPEFLAG_FOLEAUTOMATION | TYPEFLAG_FDUAL);
    if (attributes->typekind == TKIND_DISPATCH) {
        return byLibrary ? libraryMarshaller : dispatchMarshaller;
    }
    return attributes->typekind == TKIND_INTERFACE && byLibrary ? libraryMarshaller : nullptr;
}

void writeInterface(Classes const& classes, ITypeInfo* type, TypeAttributes const& attributes,
                    LibraryAttributes const& library) {
    auto const* const marshaller = marshallerOf(attributes);
    if (marshaller == nullptr) return;
    auto const key = classes.create(u"Interface\\" + guidText(attributes->guid));
    key.setText(nullptr, nameOf(type));
    writeText(key, u"ProxyStubClsid32", marshaller);
    auto const link = RegistryKey::create(key.get(), u"TypeLib");
    link.setText(nullptr, guidText(library->guid));
    link.setText(u"Version", versionText(library->wMajorVerNum, library->wMinorVerNum));
}

// Takes back what writeInterface wrote, and nothing that somebody else has put
// there, another library or version that took the interface over among them.
void removeInterface(Classes const& classes, ITypeInfo* type, TypeAttributes const& attributes,
                     std::u16string const& library, std::u16string const& version) {
    auto const* const marshaller = marshallerOf(attributes);
    if (marshaller == nullptr) return;
    auto const name = u"Interface\\" + guidText(attributes->guid);
    auto const link = name + u"\\TypeLib";
    auto const proxy = name + u"\\ProxyStubClsid32";
    auto const known = classes.open(link);
    if (known.text() != library || known.text(u"Version") != version) return;
    classes.removeText(link, nullptr, library);
    classes.removeText(link, u"Version", version);
    classes.removeText(proxy, nullptr, marshaller);
    classes.removeText(name, nullptr, nameOf(type));
    for (auto const& emptied : {link, proxy, name}) classes.removeEmpty(emptied);
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
    require(classes.remove(place), TYPE_E_REGISTRYACCESS);
    if (classes.open(language).subKeys().empty()) classes.remove(language);
    // Another language of the library has the same interfaces.
    if (hasLanguages(classes.open(version))) return;
    classes.remove(version);
    if (classes.open(library).subKeys().empty()) classes.remove(library);
    try {
        require(isAbsolutePath(*path), TYPE_E_CANTLOADLIBRARY);
        forEachType(
            loadLibraryFile(*path).get(), [&](ITypeInfo* type, TypeAttributes const& attributes) {
                removeInterface(classes, type, attributes, guidText(id), versionText(major, minor));
            });
    } catch (platform::Failure const&) {
        // The file is gone: its interfaces cannot be told any more.
    }
}

HRESULT registerLibrary(Classes const& classes, ITypeLib* library, LPCOLESTR path,
                        LPCOLESTR helpFolder) {
    if (!library || !path) return E_INVALIDARG;
    return guarded([&] {
        RegistryChange change(classes.hive());
        registerIn(classes, library, path, helpFolder);
        change.commit();
    });
}

HRESULT unregisterLibrary(Classes const& classes, REFGUID id, WORD major, WORD minor, LCID lcid,
                          SYSKIND system) {
    return guarded([&] {
        RegistryChange change(classes.hive());
        unregisterFrom(classes, id, major, minor, lcid, system);
        change.commit();
    });
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
    return velk::typelib::unregisterLibrary(Classes::ofMachine(), id, major, minor, lcid, system);
}

HRESULT UnRegisterTypeLibForUser(REFGUID id, WORD major, WORD minor, LCID lcid, SYSKIND system) {
    return velk::typelib::unregisterLibrary(Classes::ofUser(), id, major, minor, lcid, system);
}
