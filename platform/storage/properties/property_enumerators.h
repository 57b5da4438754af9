/// Enumerations of properties and of property sets.
#pragma once

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include <propidl.h>

#include "platform/storage/properties/held_value.h"
#include "platform/storage/shared_object.h"
#include "platform/storage/storage_error.h"

namespace velk::platform::storage {

/// What an enumeration tells of a property.
struct PropertyStatus {
    PROPID id = 0;
    VARTYPE type = VT_EMPTY;
    std::optional<std::u16string> name;

    STATPROPSTG give() const {
        STATPROPSTG given{};
        given.propid = id;
        given.vt = type;
        if (name) given.lpwstrName = taskText(std::u16string_view(*name)).release();
        return given;
    }
    static void takeBack(STATPROPSTG& given) noexcept { CoTaskMemFree(given.lpwstrName); }
};

/// What an enumeration tells of a property set.
struct PropertySetStatus {
    STATPROPSETSTG status{};

    STATPROPSETSTG give() const { return status; }
    static void takeBack(STATPROPSETSTG&) noexcept {}
};

/// Gives what was there when it was made. `Interface` is the enumeration's,
/// `Given` what its clients get, `Status` what that is made of. One thread at a
/// time may use it.
template <typename Interface, IID const& id, typename Given, typename Status>
class StatusEnumerator final : public SharedObject<Interface, id> {
  public:
    explicit StatusEnumerator(std::vector<Status> all) : all_(std::move(all)) {}

    HRESULT STDMETHODCALLTYPE Next(ULONG count, Given* given, ULONG* done) noexcept override {
        if (done != nullptr) *done = 0;
        if (given == nullptr) return STG_E_INVALIDPOINTER;
        if (done == nullptr && count != 1) return STG_E_INVALIDPARAMETER;
        ULONG made = 0;
        HRESULT const code = answer([&] {
            for (; made < count && at_ + made < all_.size(); ++made) {
                given[made] = all_[at_ + made].give();
            }
        });
        if (FAILED(code)) {
            for (ULONG i = 0; i < made; ++i) Status::takeBack(given[i]);
            return code;
        }
        at_ += made;
        if (done != nullptr) *done = made;
        return made == count ? S_OK : S_FALSE;
    }
    HRESULT STDMETHODCALLTYPE Skip(ULONG count) noexcept override {
        auto const skipped = std::min<std::size_t>(count, all_.size() - at_);
        at_ += skipped;
        return skipped == count ? S_OK : S_FALSE;
    }
    HRESULT STDMETHODCALLTYPE Reset() noexcept override {
        at_ = 0;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Clone(Interface** clone) noexcept override {
        if (clone == nullptr) return STG_E_INVALIDPOINTER;
        *clone = nullptr;
        return answer([&] {
            auto* const copy = new StatusEnumerator(all_);
            copy->at_ = at_;
            *clone = copy;
        });
    }

  private:
    std::vector<Status> const all_;
    std::size_t at_ = 0;
};

using PropertyEnumerator =
    StatusEnumerator<IEnumSTATPROPSTG, IID_IEnumSTATPROPSTG, STATPROPSTG, PropertyStatus>;
using PropertySetEnumerator = StatusEnumerator<IEnumSTATPROPSETSTG, IID_IEnumSTATPROPSETSTG,
                                               STATPROPSETSTG, PropertySetStatus>;

}  // namespace velk::platform::storage
