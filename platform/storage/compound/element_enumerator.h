/// IEnumSTATSTG over the elements of a storage.
#pragma once

#include <vector>

#include "platform/storage/compound/format.h"
#include "platform/storage/shared_object.h"

namespace velk::platform::storage {

/// Gives the elements that were there when it was made.
class ElementEnumerator final : public SharedObject<IEnumSTATSTG, IID_IEnumSTATSTG> {
  public:
    explicit ElementEnumerator(std::vector<Entry> elements) : elements_(std::move(elements)) {}

    HRESULT STDMETHODCALLTYPE Next(ULONG count, STATSTG* elements, ULONG* done) noexcept override;
    HRESULT STDMETHODCALLTYPE Skip(ULONG count) noexcept override;
    HRESULT STDMETHODCALLTYPE Reset() noexcept override;
    HRESULT STDMETHODCALLTYPE Clone(IEnumSTATSTG** clone) noexcept override;

  private:
    std::vector<Entry> const elements_;
    std::size_t at_ = 0;
};

}  // namespace velk::platform::storage
