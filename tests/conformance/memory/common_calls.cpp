#include "conformance/memory/common_calls.h"

#include <filesystem>

#include <objbase.h>

#include <oleauto.h>
#include <propidl.h>

#include "com/com_ptr.h"
#include "conformance/com/test_classes.h"

namespace velk::test {
namespace {

using com::ComPtr;

constexpr GUID shapesId = {
    0x3D1B5C02, 0x7A64, 0x4E0F, {0x9C, 0x53, 0x1F, 0x2A, 0x6B, 0x8E, 0x0D, 0x01}};
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

class Key {
  public:
    Key() = default;
    Key(Key const&) = delete;
    Key& operator=(Key const&) = delete;
    ~Key() {
        if (key != nullptr) RegCloseKey(key);
    }
    HKEY key = nullptr;
};

LSTATUS open(Key& opened, OLECHAR const* name = keyName) {
    return RegOpenKeyExW(HKEY_CURRENT_USER, name, 0, KEY_ALL_ACCESS, &opened.key);
}

LSTATUS create(OLECHAR const* name) {
    Key made;
    return RegCreateKeyExW(HKEY_CURRENT_USER, name, 0, nullptr, REG_OPTION_NON_VOLATILE,
                           KEY_ALL_ACCESS, nullptr, &made.key, nullptr);
}

LSTATUS setText(OLECHAR const* name) {
    Key opened;
    LSTATUS const status = open(opened);
    if (status != ERROR_SUCCESS) return status;
    return RegSetValueExW(opened.key, name, 0, REG_SZ, reinterpret_cast<BYTE const*>(someText),
                          sizeof someText);
}

/// What `use` makes of the key that stands open.
template <typename Use>
HRESULT withKey(Use use) {
    Key opened;
    LSTATUS const status = open(opened);
    return codeOf(status != ERROR_SUCCESS ? status : use(opened.key));
}

/// What `use` makes of the sample library.
template <typename Use>
HRESULT withLibrary(Use use) {
    ComPtr<ITypeLib> library;
    HRESULT const code = LoadTypeLibEx(shapesPath.c_str(), REGKIND_NONE, library.put());
    return FAILED(code) ? code : use(*library.get());
}

template <typename Use>
HRESULT withRecorderType(Use use) {
    return withLibrary([&](ITypeLib& library) {
        constexpr GUID recorder = {
            0x3D1B5C02, 0x7A64, 0x4E0F, {0x9C, 0x53, 0x1F, 0x2A, 0x6B, 0x8E, 0x0D, 0x05}};
        ComPtr<ITypeInfo> type;
        HRESULT const code = library.GetTypeInfoOfGuid(recorder, type.put());
        return FAILED(code) ? code : use(*type.get());
    });
}

HRESULT createPlain(ComPtr<IUnknown>& made) {
    return CoCreateInstance(plainClass, nullptr, CLSCTX_INPROC_SERVER, IID_IUnknown,
                            made.putVoid());
}

CommonCall const comCalls[] = {
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
    {"ProgIDFromCLSID",
     [] {
         LPOLESTR name = nullptr;
         HRESULT const code = ProgIDFromCLSID(plainClass, &name);
         CoTaskMemFree(name);
         return code;
     }},
    {"StringFromCLSID",
     [] {
         LPOLESTR name = nullptr;
         HRESULT const code = StringFromCLSID(plainClass, &name);
         CoTaskMemFree(name);
         return code;
     }},
    {"CoGetClassObject",
     [] {
         ComPtr<IClassFactory> factory;
         return CoGetClassObject(plainClass, CLSCTX_INPROC_SERVER, nullptr, IID_IClassFactory,
                                 factory.putVoid());
     }},
    {"CoCreateInstance",
     [] {
         ComPtr<IUnknown> made;
         return createPlain(made);
     }},
    {"CoFreeUnusedLibraries",
     [] {
         CoFreeUnusedLibrariesEx(0, 0);
         return S_OK;
     }},
    {"the global interface table",
     [] {
         ComPtr<IGlobalInterfaceTable> table;
         ComPtr<IUnknown> made, found;
         DWORD cookie = 0;
         HRESULT code =
             CoCreateInstance(CLSID_StdGlobalInterfaceTable, nullptr, CLSCTX_INPROC_SERVER,
                              IID_IGlobalInterfaceTable, table.putVoid());
         if (SUCCEEDED(code)) code = createPlain(made);
         if (SUCCEEDED(code)) {
             code = table->RegisterInterfaceInGlobal(made.get(), IID_IUnknown, &cookie);
         }
         if (FAILED(code)) return code;
         code = table->GetInterfaceFromGlobal(cookie, IID_IUnknown, found.putVoid());
         HRESULT const revoked = table->RevokeInterfaceFromGlobal(cookie);
         return FAILED(code) ? code : revoked;
     }},
    {"GetActiveObject",
     [] {
         ComPtr<IUnknown> made, found;
         DWORD registration = 0;
         HRESULT code = createPlain(made);
         if (SUCCEEDED(code)) code = RegisterActiveObject(made.get(), plainClass, 0, &registration);
         if (FAILED(code)) return code;
         code = GetActiveObject(plainClass, nullptr, found.put());
         HRESULT const revoked = RevokeActiveObject(registration, nullptr);
         return FAILED(code) ? code : revoked;
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
};

CommonCall const registryCalls[] = {
    {"RegOpenKeyExW", [] { return withKey([](HKEY) { return LSTATUS{ERROR_SUCCESS}; }); }},
    {"RegOpenKeyExW of a class",
     [] {
         Key opened;
         return codeOf(RegOpenKeyExW(HKEY_CLASSES_ROOT, progId, 0, KEY_READ, &opened.key));
     }},
    {"RegCreateKeyExW of an old key", [] { return codeOf(create(keyName)); }},
    {"RegCreateKeyExW of a new key", [] { return codeOf(create(branchName)); },
     [] { RegDeleteTreeW(HKEY_CURRENT_USER, branchName); }},
    {"RegSetValueExW", [] { return codeOf(setText(OLESTR("new"))); }},
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
};

CommonCall const typeCalls[] = {
    {"LoadTypeLib",
     [] {
         ComPtr<ITypeLib> library;
         return LoadTypeLib(shapesPath.c_str(), library.put());
     }},
    {"LoadRegTypeLib",
     [] {
         ComPtr<ITypeLib> library;
         return LoadRegTypeLib(shapesId, 1, 2, 0x0407, library.put());
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
         return withRecorderType([](ITypeInfo& type) {
             auto* name = const_cast<OLECHAR*>(OLESTR("Title"));
             MEMBERID id = 0;
             return type.GetIDsOfNames(&name, 1, &id);
         });
     }},
    {"ITypeInfo::GetFuncDesc",
     [] {
         return withRecorderType([](ITypeInfo& type) {
             FUNCDESC* function = nullptr;
             HRESULT const code = type.GetFuncDesc(0, &function);
             if (SUCCEEDED(code)) type.ReleaseFuncDesc(function);
             return code;
         });
     }},
    {"CreateStdDispatch",
     [] {
         return withRecorderType([](ITypeInfo& type) {
             ComPtr<IUnknown> made, dispatch;
             HRESULT const code = createPlain(made);
             if (FAILED(code)) return code;
             return CreateStdDispatch(nullptr, made.get(), &type, dispatch.put());
         });
     }},
    {"GetRecordInfoFromTypeInfo",
     [] {
         constexpr GUID point = {
             0x3D1B5C02, 0x7A64, 0x4E0F, {0x9C, 0x53, 0x1F, 0x2A, 0x6B, 0x8E, 0x0D, 0x03}};
         ComPtr<ITypeLib> library;
         HRESULT code = LoadRegTypeLib(shapesId, 1, 2, 0x0407, library.put());
         if (FAILED(code)) return code;
         ComPtr<ITypeInfo> type;
         code = library->GetTypeInfoOfGuid(point, type.put());
         if (FAILED(code)) return code;
         ComPtr<IRecordInfo> record;
         return GetRecordInfoFromTypeInfo(type.get(), record.put());
     }},
};

CommonCall const dataCalls[] = {
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
    {"StgCreateDocfile",
     [] {
         ComPtr<IStorage> root;
         return StgCreateDocfile(documentPath.c_str(),
                                 STGM_READWRITE | STGM_SHARE_EXCLUSIVE | STGM_CREATE, 0,
                                 root.put());
     }},
    {"StgOpenStorage",
     [] {
         ComPtr<IStorage> root;
         return StgOpenStorage(documentPath.c_str(), nullptr, STGM_READ | STGM_SHARE_EXCLUSIVE,
                               nullptr, 0, root.put());
     },
     [] {
         ComPtr<IStorage> root;
         StgCreateDocfile(documentPath.c_str(), STGM_READWRITE | STGM_SHARE_EXCLUSIVE | STGM_CREATE,
                          0, root.put());
     }},
    {"IPropertySetStorage::Create",
     [] {
         ComPtr<IStorage> root;
         ComPtr<IPropertySetStorage> sets;
         ComPtr<IPropertyStorage> set;
         constexpr DWORD mode = STGM_READWRITE | STGM_SHARE_EXCLUSIVE | STGM_CREATE;
         HRESULT code = StgCreateDocfile(documentPath.c_str(), mode, 0, root.put());
         if (SUCCEEDED(code)) {
             code = root->QueryInterface(IID_IPropertySetStorage, sets.putVoid());
         }
         if (FAILED(code)) return code;
         return sets->Create(FMTID_SummaryInformation, nullptr, PROPSETFLAG_DEFAULT, mode,
                             set.put());
     }},
};

}  // namespace

std::vector<CommonCall> const& commonCalls() {
    static auto const all = [] {
        std::vector<CommonCall> calls;
        calls.insert(calls.end(), std::begin(comCalls), std::end(comCalls));
        calls.insert(calls.end(), std::begin(registryCalls), std::end(registryCalls));
        calls.insert(calls.end(), std::begin(typeCalls), std::end(typeCalls));
        calls.insert(calls.end(), std::begin(dataCalls), std::end(dataCalls));
        return calls;
    }();
    return all;
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
    Key volumes;
    RegCreateKeyExW(HKEY_CURRENT_USER, OLESTR("Software\\VelkCOMAdapter\\Volumes"), 0, nullptr,
                    REG_OPTION_NON_VOLATILE, KEY_ALL_ACCESS, nullptr, &volumes.key, nullptr);
    constexpr OLECHAR folder[] = OLESTR("/");
    RegSetValueExW(volumes.key, OLESTR("C:\\"), 0, REG_SZ, reinterpret_cast<BYTE const*>(folder),
                   sizeof folder);
}

}  // namespace velk::test
