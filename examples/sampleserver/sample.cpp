// Items, events, and what the object tells of itself.
#include "sample.h"

#include "com/type_info_holder.h"

namespace sampleserver {

using namespace velk;

namespace {

com::TypeInfoHolder classInformation({&sampleClass, &sampleLibrary, 1, 0});

Text keyText(VARIANT const& key) {
    com::Variant text;
    com::throwIfFailed(com::changeType(key, VT_BSTR, text));
    return Text(com::viewBstr(text.get().bstrVal));
}

}  // namespace

HRESULT Sample::finalConstruct() noexcept {
    com::CComObject<EventSource>* source = nullptr;
    HRESULT const code = com::newObject<com::CComObject<EventSource>>(nullptr, source);
    if (FAILED(code)) return code;
    events_ = com::ComPtr<EventSource>(source);
    events_->setOwner(this);
    return S_OK;
}

void Sample::finalRelease() noexcept {
    events_->setOwner(nullptr);
}

HRESULT Sample::get_Item(VARIANT key, VARIANT* result) noexcept {
    if (!result) return E_POINTER;
    VariantInit(result);
    try {
        auto const text = keyText(key);
        std::lock_guard const guard(mutex_);
        auto const found = items_.find(text);
        return found == items_.end() ? S_OK : com::copyVariant(found->second.get(), *result);
    }
    VELK_COM_CATCH
}

HRESULT Sample::put_Item(VARIANT key, VARIANT value) noexcept {
    try {
        auto const text = keyText(key);
        com::Variant fresh;
        com::throwIfFailed(com::copyReferredTo(value, fresh));
        if (!mayChange(text, fresh.get())) return S_OK;
        // The former value goes after the lock.
        std::lock_guard const guard(mutex_);
        std::swap(items_[text], fresh);
        return S_OK;
    }
    VELK_COM_CATCH
}

bool Sample::mayChange(Text const& key, VARIANT const& value) {
    auto const name = com::makeBstr(key);
    VARIANT_BOOL cancel = VARIANT_FALSE;
    // Arguments stand in the reverse order.
    std::vector<VARIANT> arguments(3);
    arguments[2].vt = VT_BSTR;
    arguments[2].bstrVal = name.get();
    arguments[1] = value;
    arguments[0].vt = VT_BYREF | VT_BOOL;
    arguments[0].pboolVal = &cancel;
    events_->raise(changingEvent, arguments);
    return cancel == VARIANT_FALSE;
}

HRESULT Sample::get_Count(LONG* result) noexcept {
    if (!result) return E_POINTER;
    std::lock_guard const guard(mutex_);
    *result = static_cast<LONG>(items_.size());
    return S_OK;
}

HRESULT Sample::get__NewEnum(IUnknown** result) noexcept {
    if (!result) return E_POINTER;
    *result = nullptr;
    try {
        std::vector<Text> keys;
        {
            std::lock_guard const guard(mutex_);
            for (auto const& [key, value] : items_) keys.push_back(key);
        }
        *result = KeyList::make(std::move(keys)).detach();
        return S_OK;
    }
    VELK_COM_CATCH
}

HRESULT Sample::GetClassInfo(ITypeInfo** type) noexcept {
    return com::getTypeInfo(classInformation, 0, LOCALE_USER_DEFAULT, type);
}

HRESULT Sample::EnumConnectionPoints(IEnumConnectionPoints** out) noexcept {
    if (!out) return E_POINTER;
    *out = nullptr;
    return E_NOTIMPL;
}

HRESULT Sample::FindConnectionPoint(REFIID id, IConnectionPoint** out) noexcept {
    if (!out) return E_POINTER;
    *out = nullptr;
    constexpr HRESULT noConnection = static_cast<HRESULT>(0x80040200U);
    if (!IsEqualGUID(id, sampleEvents)) return noConnection;
    *out = com::ComPtr<IConnectionPoint>(events_.get()).detach();
    return S_OK;
}

}  // namespace sampleserver
