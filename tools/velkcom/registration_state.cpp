#include "registration_state.h"

#include "com/com_ptr.h"
#include "com/owners.h"

namespace velk::velkcom {
namespace {

using Text = std::basic_string<OLECHAR>;

bool hasKey(HKEY hive, OLECHAR const* parent, GUID const& id) {
    constexpr int guidCapacity = 39;
    OLECHAR name[guidCapacity];
    StringFromGUID2(id, name, guidCapacity);
    Text const key = OLESTR("Software\\Classes\\") + Text(parent) + OLESTR("\\") + name;
    com::RegistryKey open;
    return RegOpenKeyExW(hive, key.c_str(), 0, KEY_READ, open.put()) == ERROR_SUCCESS;
}

bool isRegisteredClass(ITypeLib* library, UINT index, HKEY hive) {
    com::ComPtr<ITypeInfo> type;
    if (FAILED(library->GetTypeInfo(index, type.put()))) return false;
    com::TypeAttributes attributes(type.get());
    return SUCCEEDED(type->GetTypeAttr(attributes.put())) &&
           attributes->typekind == TKIND_COCLASS && hasKey(hive, OLESTR("CLSID"), attributes->guid);
}

}  // namespace

std::optional<bool> isRegistered(Text const& module, HKEY hive) {
    com::ComPtr<ITypeLib> library;
    if (FAILED(LoadTypeLibEx(module.c_str(), REGKIND_NONE, library.put()))) return std::nullopt;
    com::LibraryAttributes attributes(library.get());
    if (FAILED(library->GetLibAttr(attributes.put()))) return std::nullopt;
    if (hasKey(hive, OLESTR("TypeLib"), attributes->guid)) return true;
    UINT const count = library->GetTypeInfoCount();
    for (UINT index = 0; index < count; ++index) {
        if (isRegisteredClass(library.get(), index, hive)) return true;
    }
    return false;
}

}  // namespace velk::velkcom
