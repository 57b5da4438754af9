// Properties.
#include "servers/automation/giving.h"
#include "servers/automation/sample.h"

namespace velk::test::server {
namespace {

/// Runs what may fail by an exception.
template <typename Action>
HRESULT guarded(Action action) noexcept {
    try {
        return action();
    }
    VELK_COM_CATCH
}

/// Empty where there is none.
template <typename Map, typename Key>
HRESULT giveFound(VARIANT* result, Map const& map, Key const& key) {
    auto const found = map.find(key);
    return giveVariant(result, found != map.end() ? found->second.get() : VARIANT{});
}

Text keyText(VARIANT const& key) {
    com::Variant text;
    com::throwIfFailed(com::changeType(key, VT_BSTR, text));
    return Text(com::viewBstr(text.get().bstrVal));
}

/// A copy without references, so that it outlives the caller's value.
com::Variant kept(VARIANT const& value) {
    com::Variant copy;
    com::throwIfFailed(giveVariant(copy.address(), value));
    return copy;
}

}  // namespace

HRESULT Sample::get_Value(VARIANT* result) noexcept {
    std::lock_guard const guard(mutex_);
    return giveVariant(result, value_.get());
}
HRESULT Sample::put_Value(VARIANT value) noexcept {
    return guarded([&] {
        auto fresh = kept(value);
        std::lock_guard const guard(mutex_);
        std::swap(value_, fresh);
        return S_OK;
    });
}

HRESULT Sample::get_Name(BSTR* result) noexcept {
    std::lock_guard const guard(mutex_);
    return giveText(result, name_);
}
HRESULT Sample::put_Name(BSTR text) noexcept {
    return guarded([&] {
        std::lock_guard const guard(mutex_);
        name_ = com::viewBstr(text);
        return S_OK;
    });
}

HRESULT Sample::get_Count(LONG* result) noexcept {
    std::lock_guard const guard(mutex_);
    return give(result, static_cast<LONG>(items_.size() + cells_.size()));
}

HRESULT Sample::put_Secret(BSTR text) noexcept {
    return guarded([&] {
        std::lock_guard const guard(mutex_);
        secret_ = com::viewBstr(text);
        return S_OK;
    });
}
HRESULT Sample::RevealSecret(BSTR* result) noexcept {
    std::lock_guard const guard(mutex_);
    return giveText(result, secret_);
}

HRESULT Sample::get_Item(VARIANT key, VARIANT* result) noexcept {
    return guarded([&] {
        auto const text = keyText(key);
        std::lock_guard const guard(mutex_);
        return giveFound(result, items_, text);
    });
}
HRESULT Sample::put_Item(VARIANT key, VARIANT value) noexcept {
    return guarded([&] {
        auto const text = keyText(key);
        auto fresh = kept(value);
        std::lock_guard const guard(mutex_);
        std::swap(items_[text], fresh);
        return S_OK;
    });
}

HRESULT Sample::get_Cell(LONG row, LONG column, VARIANT* result) noexcept {
    return guarded([&] {
        std::lock_guard const guard(mutex_);
        return giveFound(result, cells_, std::pair(row, column));
    });
}
HRESULT Sample::put_Cell(LONG row, LONG column, VARIANT value) noexcept {
    return guarded([&] {
        auto fresh = kept(value);
        std::lock_guard const guard(mutex_);
        std::swap(cells_[{row, column}], fresh);
        return S_OK;
    });
}

HRESULT Sample::get_Peer(IDispatch** result) noexcept {
    std::lock_guard const guard(mutex_);
    return giveObject(result, peer_.get());
}
HRESULT Sample::putref_Peer(IDispatch* object) noexcept {
    com::ComPtr<IDispatch> fresh(object);
    std::lock_guard const guard(mutex_);
    std::swap(peer_, fresh);
    return S_OK;
}

HRESULT Sample::Keep(IDispatch* object) noexcept {
    com::ComPtr<IDispatch> fresh(object);
    std::lock_guard const guard(mutex_);
    std::swap(kept_, fresh);
    return S_OK;
}
HRESULT Sample::Kept(IDispatch** result) noexcept {
    std::lock_guard const guard(mutex_);
    return giveObject(result, kept_.get());
}

}  // namespace velk::test::server
