/// The enumeration of the sample's keys.
#pragma once

#include <string>
#include <vector>

#include "com/class_factory.h"
#include "com/owners.h"

namespace sampleserver {

using Text = std::basic_string<OLECHAR>;

/// The keys as they were when the enumeration was asked for. One thread's at a time.
class KeyList : public velk::com::CComObjectRootEx<velk::com::CComMultiThreadModel>,
                public IEnumVARIANT {
  public:
    VELK_COM_MAP(KeyList, VELK_COM_INTERFACE(IEnumVARIANT, IID_IEnumVARIANT))

    /// A list with its first reference. Throws com::Error.
    static velk::com::ComPtr<IEnumVARIANT> make(std::vector<Text> keys, std::size_t next = 0);

    HRESULT STDMETHODCALLTYPE Next(ULONG count, VARIANT* values, ULONG* fetched) noexcept override;
    HRESULT STDMETHODCALLTYPE Skip(ULONG count) noexcept override;
    HRESULT STDMETHODCALLTYPE Reset() noexcept override;
    HRESULT STDMETHODCALLTYPE Clone(IEnumVARIANT** out) noexcept override;

  protected:
    KeyList() = default;
    ~KeyList() = default;

  private:
    std::vector<Text> keys_;
    std::size_t next_ = 0;
};

}  // namespace sampleserver
