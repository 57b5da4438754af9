#include "conformance/memory/common_calls.h"

#include <filesystem>

#include <objbase.h>

#include <oleauto.h>
#include <propidl.h>

#include "com/com_ptr.h"
#include "conformance/com/test_classes.h"
#include "support/mapped_volume.h"

namespace velk::test {
namespace {

using com::ComPtr;

constexpr GUID shapesId = {
    0x3D1B5C02, 0x7A64, 0x4E0F, {0x9C, 0x53, 0x1F, 0x2A, 0x6B, 0x8E, 0x0D, 0x01}};
constexpr GUID recorderId = {
    0x3D1B5C02, 0x7A64, 0x4E0F, {0x9C, 0x53, 0x1F, 0x2A, 0x6B, 0x8E, 0x0D, 0x05}};
constexpr GUID pointId = {
    0x3D1B5C02, 0x7A64, 0x4E0F, {0x9C, 0x53, 0x1F, 0x2A, 0x6B, 0x8E, 0x0D, 0x03}};
constexpr OLECHAR progId[] = OLESTR("VelkTest.Common");
constexpr OLECHAR keyName[] = OLESTR("Software\\VelkCommonCalls");
constexpr OLECHAR branchName[] = OLESTR("Software\\VelkCommonCalls\\Branch");
constexpr OLECHAR someText[] = OLESTR("a text that is too long for any short string to hold it");

HRESULT codeOf(LSTATUS status) {
    return HRESULT_FROM_WIN32(static_cast<DWORD>(status));
}

HRESULT codeOf(bool made) {
    return made ? S_OK : HRESULT_FROM_WIN32(GetLastError());
}

// Made before any call, which shall be the only one to run out of memory.
Text const shapesPath = std::filesystem::path(VELK_SHAPES_TLB).u16string();
Text const documentPath = (std::filesystem::current_path() / "common_calls.doc").u16string();
Text const classesPath = serverPath(OLESTR("velktest_classes"));

/// What opens a key, and what is done with it then.
template <typename Use>
HRESULT withKey(Use use, HKEY root = HKEY_CURRENT_USER, OLECHAR const* name = keyName) {
    HKEY key = nullptr;
    LSTATUS status = RegOpenKeyExW(root, name, 0, KEY_ALL_ACCESS, &key);
    if (status == ERROR_SUCCESS) {
        status = use(key);
        RegCloseKey(key);
    }
    return codeOf(status);
}

LSTATUS noUse(HKEY) {
    return ERROR_SUCCESS;
}

HRESULT create(OLECHAR const* name) {
    HKEY key = nullptr;
    LSTATUS const status =
        RegCreateKeyExW(HKEY_CURRENT_USER, name, 0, nullptr, REG_OPTION_NON_VOLATILE,
                        KEY_ALL_ACCESS, nullptr, &key, nullptr);
    if (status == ERROR_SUCCESS) RegCloseKey(key);
    return codeOf(status);
}

HRESULT setText(OLECHAR const* name) {
    return withKey([&](HKEY key) {
        return RegSetValueExW(key, name, 0, REG_SZ, reinterpret_cast<BYTE const*>(someText),
                              sizeof someText);
    });
}

/// What `make` makes into an owner of its own.
template <typename Interface, typename Make>
HRESULT made(Make make) {
    ComPtr<Interface> object;
    return make(object);
}

/// What `use` makes of the sample library.
template <typename Use>
HRESULT withLibrary(Use use) {
    ComPtr<ITypeLib> library;
    HRESULT const code = LoadTypeLibEx(shapesPath.c_str(), REGKIND_NONE, library.put());
    return FAILED(code) ? code : use(*library.get());
}

template <typename Use>
HRESULT withType(REFGUID id, Use use) {
    return withLibrary([&](ITypeLib& library) {
        ComPtr<ITypeInfo> type;
        HRESULT const code = library.GetTypeInfoOfGuid(id, type.put());
        return FAILED(code) ? code : use(*type.get());
    });
}

HRESULT createPlain(ComPtr<IUnknown>& made) {
    return CoCreateInstance(plainClass, nullptr, CLSCTX_INPROC_SERVER, IID_IUnknown,
                            made.putVoid());
}

template <typename Use>
HRESULT withPlain(Use use) {
    ComPtr<IUnknown> plain;
    HRESULT const code = createPlain(plain);
    return FAILED(code) ? code : use(*plain.get());
}

constexpr DWORD createMode = STGM_READWRITE | STGM_SHARE_EXCLUSIVE | STGM_CREATE;

HRESULT createDocument(ComPtr<IStorage>& root) {
    return StgCreateDocfile(documentPath.c_str(), createMode, 0, root.put());
}

CommonCall const calls[] = {
    {"CoInitializeEx",
     [] {
         HRESULT const code = CoInitializeEx(nullptr, COINIT_MULTITHREADED);
         if (SUCCEEDED(code)) CoUninitialize();
         return SUCCEEDED(code) ? S_OK : code;
     }},
    {"CLSIDFromProgID",
     [] {
         CLSID id;
         return CLSIDFromProgID(progId, &id);
     }},
    {"CoGetClassObject",
     [] {
         return made<IClassFactory>([](auto& factory) {
             return CoGetClassObject(plainClass, CLSCTX_INPROC_SERVER, nullptr, IID_IClassFactory,
                                     factory.putVoid());
         });
     }},
    {"CoCreateInstance", [] { return made<IUnknown>(createPlain); }},
    {"CoFreeUnusedLibraries", [] { return CoFreeUnusedLibraries(), S_OK; }},
    {"the global interface table",
     [] {
         return withPlain([](IUnknown& plain) {
             ComPtr<IGlobalInterfaceTable> table;
             DWORD cookie = 0;
             HRESULT code =
                 CoCreateInstance(CLSID_StdGlobalInterfaceTable, nullptr, CLSCTX_INPROC_SERVER,
                                  IID_IGlobalInterfaceTable, table.putVoid());
             if (SUCCEEDED(code)) {
                 code = table->RegisterInterfaceInGlobal(&plain, IID_IUnknown, &cookie);
             }
             if (FAILED(code)) return code;
             code = made<IUnknown>([&](auto& found) {
                 return table->GetInterfaceFromGlobal(cookie, IID_IUnknown, found.putVoid());
             });
             HRESULT const revoked = table->RevokeInterfaceFromGlobal(cookie);
             return FAILED(code) ? code : revoked;
         });
     }},
    {"GetActiveObject",
     [] {
         return withPlain([](IUnknown& plain) {
             DWORD registration = 0;
             HRESULT code = RegisterActiveObject(&plain, plainClass, 0, &registration);
             if (FAILED(code)) return code;
             code = made<IUnknown>(
                 [](auto& found) { return GetActiveObject(plainClass, nullptr, found.put()); });
             HRESULT const revoked = RevokeActiveObject(registration, nullptr);
             return FAILED(code) ? code : revoked;
         });
     }},
    {"LoadLibraryW",
     [] {
         HMODULE const module = LoadLibraryW(classesPath.c_str());
         HRESULT const code = codeOf(module != nullptr);
         if (module != nullptr) FreeLibrary(module);
         return code;
     }},
    {"GetModuleFileNameW",
     [] {
         OLECHAR path[1024];
         return codeOf(GetModuleFileNameW(GetModuleHandleW(nullptr), path, 1024) != 0);
     }},
    {"GetVolumeInformationW",
     [] {
         DWORD serial = 0;
         return codeOf(GetVolumeInformationW(OLESTR("C:\\"), nullptr, 0, &serial, nullptr, nullptr,
                                             nullptr, 0) != FALSE);
     }},
    {"RegOpenKeyExW", [] { return withKey(noUse); }},
    {"RegOpenKeyExW of a class", [] { return withKey(noUse, HKEY_CLASSES_ROOT, progId); }},
    {"RegCreateKeyExW of an old key", [] { return create(keyName); }},
    {"RegCreateKeyExW of a new key", [] { return create(branchName); },
     [] { RegDeleteTreeW(HKEY_CURRENT_USER, branchName); }},
    {"RegSetValueExW", [] { return setText(OLESTR("new")); }},
    {"RegQueryValueExW",
     [] {
         return withKey([](HKEY key) {
             BYTE data[1024];
             DWORD size = sizeof data;
             return RegQueryValueExW(key, OLESTR("text"), nullptr, nullptr, data, &size);
         });
     }},
    {"RegGetValueW",
     [] {
         BYTE data[1024];
         DWORD size = sizeof data;
         return codeOf(RegGetValueW(HKEY_CURRENT_USER, keyName, OLESTR("text"), RRF_RT_REG_SZ,
                                    nullptr, data, &size));
     }},
    {"RegEnumKeyExW",
     [] {
         OLECHAR name[256];
         DWORD size = 256;
         return codeOf(
             RegEnumKeyExW(HKEY_CURRENT_USER, 0, name, &size, nullptr, nullptr, nullptr, nullptr));
     }},
    {"RegEnumValueW",
     [] {
         return withKey([](HKEY key) {
             OLECHAR name[256];
             DWORD size = 256;
             return RegEnumValueW(key, 0, name, &size, nullptr, nullptr, nullptr, nullptr);
         });
     }},
    {"RegQueryInfoKeyW",
     [] {
         return withKey([](HKEY key) {
             DWORD keys = 0;
             return RegQueryInfoKeyW(key, nullptr, nullptr, nullptr, &keys, nullptr, nullptr,
                                     nullptr, nullptr, nullptr, nullptr, nullptr);
         });
     }},
    {"RegDeleteValueW",
     [] { return withKey([](HKEY key) { return RegDeleteValueW(key, OLESTR("passing")); }); },
     [] { setText(OLESTR("passing")); }},
    {"RegDeleteKeyW", [] { return codeOf(RegDeleteKeyW(HKEY_CURRENT_USER, branchName)); },
     [] { create(branchName); }},
    {"RegDeleteTreeW", [] { return codeOf(RegDeleteTreeW(HKEY_CURRENT_USER, branchName)); },
     [] { create(branchName); }},
    {"LoadTypeLib",
     [] {
         return made<ITypeLib>(
             [](auto& library) { return LoadTypeLib(shapesPath.c_str(), library.put()); });
     }},
    {"LoadRegTypeLib",
     [] {
         return made<ITypeLib>(
             [](auto& library) { return LoadRegTypeLib(shapesId, 1, 2, 0x0407, library.put()); });
     }},
    {"RegisterTypeLib",
     [] {
         return withLibrary([](ITypeLib& library) {
             return RegisterTypeLib(&library, shapesPath.c_str(), nullptr);
         });
     }},
    {"UnRegisterTypeLibForUser",
     [] { return UnRegisterTypeLibForUser(shapesId, 1, 2, 0x0407, SYS_WIN64); },
     [] {
         withLibrary([](ITypeLib& library) {
             return RegisterTypeLibForUser(&library, const_cast<OLECHAR*>(shapesPath.c_str()),
                                           nullptr);
         });
     }},
    {"ITypeInfo::GetIDsOfNames",
     [] {
         return withType(recorderId, [](ITypeInfo& type) {
             auto* name = const_cast<OLECHAR*>(OLESTR("Title"));
             MEMBERID id = 0;
             return type.GetIDsOfNames(&name, 1, &id);
         });
     }},
    {"ITypeInfo::GetFuncDesc",
     [] {
         return withType(recorderId, [](ITypeInfo& type) {
             FUNCDESC* function = nullptr;
             HRESULT const code = type.GetFuncDesc(0, &function);
             if (SUCCEEDED(code)) type.ReleaseFuncDesc(function);
             return code;
         });
     }},
    {"CreateStdDispatch",
     [] {
         return withType(recorderId, [](ITypeInfo& type) {
             return withPlain([&](IUnknown& plain) {
                 return made<IUnknown>([&](auto& dispatch) {
                     return CreateStdDispatch(nullptr, &plain, &type, dispatch.put());
                 });
             });
         });
     }},
    {"GetRecordInfoFromTypeInfo",
     [] {
         return withType(pointId, [](ITypeInfo& type) {
             return made<IRecordInfo>(
                 [&](auto& record) { return GetRecordInfoFromTypeInfo(&type, record.put()); });
         });
     }},
    {"SysAllocString",
     [] {
         BSTR const text = SysAllocString(someText);
         SysFreeString(text);
         return text != nullptr ? S_OK : E_OUTOFMEMORY;
     }},
    {"SafeArrayCreateVector",
     [] {
         SAFEARRAY* const array = SafeArrayCreateVector(VT_VARIANT, 0, 100);
         SafeArrayDestroy(array);
         return array != nullptr ? S_OK : E_OUTOFMEMORY;
     }},
    {"VariantChangeType",
     [] {
         VARIANT value{}, text{};
         value.vt = VT_R8;
         value.dblVal = 1.5;
         HRESULT const code = VariantChangeType(&text, &value, 0, VT_BSTR);
         VariantClear(&text);
         return code;
     }},
    {"StgCreateDocfile", [] { return made<IStorage>(createDocument); }},
    {"StgOpenStorage",
     [] {
         return made<IStorage>([](auto& root) {
             return StgOpenStorage(documentPath.c_str(), nullptr, STGM_READ | STGM_SHARE_EXCLUSIVE,
                                   nullptr, 0, root.put());
         });
     },
     [] { made<IStorage>(createDocument); }},
    {"IPropertySetStorage::Create",
     [] {
         ComPtr<IStorage> root;
         ComPtr<IPropertySetStorage> sets;
         HRESULT code = createDocument(root);
         if (SUCCEEDED(code)) {
             code = root->QueryInterface(IID_IPropertySetStorage, sets.putVoid());
         }
         if (FAILED(code)) return code;
         return made<IPropertyStorage>([&](auto& set) {
             return sets->Create(FMTID_SummaryInformation, nullptr, PROPSETFLAG_DEFAULT, createMode,
                                 set.put());
         });
     }},
};

}  // namespace

std::span<CommonCall const> commonCalls() {
    return calls;
}

void installForCalls() {
    Text const key = OLESTR("CLSID\\") + idText(plainClass);
    setClassesText(key + OLESTR("\\InprocServer32"), nullptr, classesPath);
    setClassesText(key + OLESTR("\\ProgID"), nullptr, progId);
    setClassesText(Text(progId) + OLESTR("\\CLSID"), nullptr, idText(plainClass));
    create(keyName);
    setText(OLESTR("text"));
    withLibrary(
        [](ITypeLib& library) { return RegisterTypeLib(&library, shapesPath.c_str(), nullptr); });
    // This process ends without destroying it.
    static MappedVolume const mapped(OLESTR("C:\\"), "/");
}

}  // namespace velk::test
