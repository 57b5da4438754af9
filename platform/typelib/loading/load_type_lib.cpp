// The published functions that load libraries.

#include "platform/typelib/loading/library_source.h"

namespace velk::typelib {
namespace {

bool isFullPath(std::u16string_view path) {
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

}  // namespace
}  // namespace velk::typelib

HRESULT LoadTypeLib(LPCOLESTR file, ITypeLib** library) {
    return LoadTypeLibEx(file, REGKIND_DEFAULT, library);
}

HRESULT LoadTypeLibEx(LPCOLESTR file, REGKIND kind, ITypeLib** library) {
    return velk::typelib::load(file, kind, library);
}
