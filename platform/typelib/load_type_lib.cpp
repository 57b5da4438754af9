// The published functions that load libraries and hash names.

#include "platform/typelib/library_source.h"
#include "platform/typelib/names.h"
#include "platform/typelib/type_info.h"

namespace velk::typelib {
namespace {

bool isFullPath(Text path) {
    if (path.empty()) return false;
    return path[0] == u'/' || path[0] == u'\\' || (path.size() > 1 && path[1] == u':');
}

HRESULT load(LPCOLESTR file, REGKIND kind, ITypeLib** library) {
    if (!file || !library) return E_INVALIDARG;
    *library = nullptr;
    return guarded([&] {
        auto const loaded = loadLibraryFile(file);
        // A library that was found by its bare name is registered, so that it is
        // found again from elsewhere.
        bool const registers =
            kind == REGKIND_REGISTER || (kind == REGKIND_DEFAULT && !isFullPath(file));
        if (registers) {
            HRESULT const result = RegisterTypeLib(loaded.get(), loaded->path().c_str(), nullptr);
            if (FAILED(result)) return result;
        }
        *library = Reference<TypeLibrary>(loaded).release();
        return S_OK;
    });
}

// FNV-1a over the folded name. The value is the layer's own; it only ever
// comes back to the layer's own binders.
constexpr ULONG hashStart = 0x811c9dc5;
constexpr ULONG hashFactor = 0x01000193;

}  // namespace
}  // namespace velk::typelib

HRESULT LoadTypeLib(LPCOLESTR file, ITypeLib** library) {
    return LoadTypeLibEx(file, REGKIND_DEFAULT, library);
}

HRESULT LoadTypeLibEx(LPCOLESTR file, REGKIND kind, ITypeLib** library) {
    return velk::typelib::load(file, kind, library);
}

ULONG LHashValOfNameSys(SYSKIND, LCID, OLECHAR const* name) {
    if (!name) return 0;
    using namespace velk::typelib;
    ULONG hash = hashStart;
    HRESULT const result = guarded([&] {
        for (char16_t const unit : folded(name)) hash = (hash ^ unit) * hashFactor;
    });
    return SUCCEEDED(result) ? hash : 0;
}

HRESULT DispGetIDsOfNames(ITypeInfo* type, LPOLESTR* names, UINT count, DISPID* ids) {
    return type ? type->GetIDsOfNames(names, count, ids) : E_INVALIDARG;
}

HRESULT DispInvoke(void* instance, ITypeInfo* type, DISPID member, WORD flags,
                   DISPPARAMS* parameters, VARIANT* result, EXCEPINFO* exception,
                   UINT* argumentError) {
    if (!type || !parameters) return E_INVALIDARG;
    return type->Invoke(instance, member, flags, parameters, result, exception, argumentError);
}
