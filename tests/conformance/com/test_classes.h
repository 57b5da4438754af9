/// Putting the test servers into the registry, finding their files, and what the
/// tests of classes and objects share.
#pragma once

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include <windows.h>

#include <objbase.h>

#include "servers/com/class_server.h"

namespace velk::test {

using Text = std::basic_string<OLECHAR>;

/// The path of a test server's file, which stands beside the test programs.
inline Text serverPath(Text const& name) {
    OLECHAR buffer[1024];
    DWORD const length = GetModuleFileNameW(nullptr, buffer, 1024);
    Text const program(buffer, length);
    auto const folder = program.substr(0, program.find_last_of(OLESTR("/\\")) + 1);
    return folder + OLESTR("servers/") + name + VELK_MODULE_SUFFIX;
}

/// The module that has this address; null when none has.
inline HMODULE moduleOf(void const* address) {
    HMODULE module = nullptr;
    GetModuleHandleExW(
        GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
        static_cast<LPCWSTR>(address), &module);
    return module;
}

inline Text idText(REFGUID id) {
    OLECHAR buffer[64];
    StringFromGUID2(id, buffer, 64);
    return buffer;
}

/// Sets the default value of a key below HKEY_LOCAL_MACHINE\Software\Classes,
/// or of another root; makes the key when it is missing.
inline LSTATUS setClassesText(Text const& key, OLECHAR const* name, Text const& value,
                              HKEY root = HKEY_LOCAL_MACHINE, DWORD type = REG_SZ) {
    HKEY made = nullptr;
    LSTATUS status =
        RegCreateKeyExW(root, (OLESTR("Software\\Classes\\") + key).c_str(), 0, nullptr,
                        REG_OPTION_NON_VOLATILE, KEY_WRITE, nullptr, &made, nullptr);
    if (status != ERROR_SUCCESS) return status;
    status = RegSetValueExW(made, name, 0, type, reinterpret_cast<BYTE const*>(value.c_str()),
                            static_cast<DWORD>((value.size() + 1) * sizeof(OLECHAR)));
    RegCloseKey(made);
    return status;
}

inline void deleteClassesKey(Text const& key, HKEY root = HKEY_LOCAL_MACHINE) {
    RegDeleteTreeW(root, (OLESTR("Software\\Classes\\") + key).c_str());
}

/// A class that is registered as long as this lives.
class RegisteredClass {
  public:
    RegisteredClass(REFCLSID id, Text const& path, Text const& model = OLESTR("Apartment"),
                    HKEY root = HKEY_LOCAL_MACHINE, DWORD type = REG_SZ)
        : key_(OLESTR("CLSID\\") + idText(id)), root_(root) {
        Text const server = key_ + OLESTR("\\InprocServer32");
        setClassesText(server, nullptr, path, root, type);
        setClassesText(server, OLESTR("ThreadingModel"), model, root);
    }
    RegisteredClass(RegisteredClass const&) = delete;
    RegisteredClass& operator=(RegisteredClass const&) = delete;
    ~RegisteredClass() { deleteClassesKey(key_, root_); }

  private:
    Text key_;
    HKEY root_;
};

/// An object that tells how many references others hold to it: a test owns it,
/// whatever its count. Answers for IUnknown and IClassFactory.
class CountedObject : public IClassFactory {
  public:
    std::atomic<ULONG> references{0};

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** object) override {
        bool const known = riid == IID_IUnknown || riid == IID_IClassFactory;
        // What a caller shall not take for an object.
        *object = known ? this : reinterpret_cast<void*>(0x20);
        if (known) ++references;
        return known ? S_OK : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
    ULONG STDMETHODCALLTYPE Release() override { return --references; }
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown*, REFIID, void**) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return E_NOTIMPL; }
};

/// An object that a call is to give, given back with this.
class Found {
  public:
    Found() = default;
    Found(Found const&) = delete;
    Found& operator=(Found const&) = delete;
    ~Found() { clear(); }
    /// The place for the next one, with what a failure shall not leave there.
    template <typename Interface = void>
    Interface** place() {
        clear();
        object_ = rubbish();
        return reinterpret_cast<Interface**>(&object_);
    }
    void* get() const { return object_; }
    template <typename Interface>
    Interface* as() const {
        return static_cast<Interface*>(object_);
    }

  private:
    static void* rubbish() { return reinterpret_cast<void*>(0x20); }
    void clear() {
        if (object_ != nullptr && object_ != rubbish()) as<IUnknown>()->Release();
        object_ = nullptr;
    }
    void* object_ = nullptr;
};

/// Runs `work` with the number of each thread.
template <typename Work>
void onThreads(int count, Work work) {
    std::vector<std::thread> threads;
    for (int number = 0; number < count; ++number) threads.emplace_back(work, number);
    for (auto& thread : threads) thread.join();
}

/// Whether classes may be asked for here: what comes of one that is not there.
inline HRESULT classesHere() {
    Found found;
    return CoGetClassObject(CLSID_NULL, CLSCTX_INPROC_SERVER, nullptr, IID_IUnknown, found.place());
}

inline HRESULT create(REFCLSID id, Found& object, IUnknown* outer = nullptr,
                      DWORD context = CLSCTX_INPROC_SERVER, REFIID riid = IID_IUnknown) {
    return CoCreateInstance(id, outer, context, riid, object.place());
}

/// The calling thread's stay in an apartment.
class ApartmentStay {
  public:
    explicit ApartmentStay(DWORD flags) : result_(CoInitializeEx(nullptr, flags)) {}
    ApartmentStay(ApartmentStay const&) = delete;
    ApartmentStay& operator=(ApartmentStay const&) = delete;
    ~ApartmentStay() {
        if (SUCCEEDED(result_)) CoUninitialize();
    }
    HRESULT result() const { return result_; }

  private:
    HRESULT result_;
};

}  // namespace velk::test
