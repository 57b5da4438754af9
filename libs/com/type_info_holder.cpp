#include "com/type_info_holder.h"

#include "com/error.h"
#include "com/module.h"

namespace velk::com {
namespace {

// English (United States), the locale of the libraries that modules carry.
constexpr LCID libraryLocale = 0x0409;

}  // namespace

HRESULT TypeInfoHolder::get(LCID lcid, ComPtr<ITypeInfo>& out) noexcept {
    out.reset();
    try {
        {
            std::lock_guard<std::mutex> const guard(mutex_);
            out = held_;
        }
        if (out) return S_OK;
        // Loading reaches the registry and files: not under the lock.
        HRESULT const code = load(lcid, out);
        return FAILED(code) ? code : keep(out);
    }
    VELK_COM_CATCH
}

HRESULT TypeInfoHolder::load(LCID lcid, ComPtr<ITypeInfo>& out) const noexcept {
    ComPtr<ITypeLib> library;
    auto const find = [&](LCID locale) {
        return LoadRegTypeLib(*source_.libraryId, source_.major, source_.minor, locale,
                              library.put());
    };
    HRESULT code = find(lcid);
    // Not every system takes another language when there is none of that
    // locale, and clients ask with whatever theirs is.
    if (FAILED(code) && lcid != libraryLocale && SUCCEEDED(find(libraryLocale))) code = S_OK;
    if (SUCCEEDED(code)) code = library->GetTypeInfoOfGuid(*source_.interfaceId, out.put());
    return code;
}

HRESULT TypeInfoHolder::keep(ComPtr<ITypeInfo>& type) {
    DllModule* const module = currentModule();
    // With no module there is no end to keep it until.
    if (module == nullptr) return S_OK;
    std::lock_guard<std::mutex> const guard(mutex_);
    if (held_) {
        // Another thread was faster: everyone gets the same object.
        type = held_;
        return S_OK;
    }
    HRESULT const code = module->addTermFunction(
        [](void* holder) noexcept { static_cast<TypeInfoHolder*>(holder)->held_.reset(); }, this);
    if (SUCCEEDED(code)) held_ = type;
    return S_OK;
}

}  // namespace velk::com
