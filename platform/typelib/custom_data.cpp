#include "platform/typelib/custom_data.h"

#include "objbase.h"

namespace velk::typelib {

HRESULT copyCustomData(CustomData items, CUSTDATA* data) {
    require(data, E_INVALIDARG);
    *data = {};
    if (items.empty()) return S_OK;
    auto* copies = static_cast<CUSTDATAITEM*>(CoTaskMemAlloc(items.size() * sizeof(CUSTDATAITEM)));
    require(copies, E_OUTOFMEMORY);
    HRESULT result = S_OK;
    for (std::size_t i = 0; i < items.size(); ++i) {
        copies[i].guid = items[i].id;
        VariantInit(&copies[i].varValue);
        if (SUCCEEDED(result)) result = VariantCopy(&copies[i].varValue, &items[i].value);
    }
    data->cCustData = static_cast<DWORD>(items.size());
    data->prgCustData = copies;
    return result;
}

}  // namespace velk::typelib
