// PropVariantClear.
#include <objbase.h>
#include <oleauto.h>

#include "platform/storage/properties/value_type.h"

namespace velk::platform::storage {
namespace {

// Elements of vectors by their form. Values alone are held the same way, but
// for class ids and the clipboard's, which a pointer leads to.
void clearPlace(Form form, void* place) noexcept;

void clearVector(PROPVARIANT& value) noexcept {
    ValueType const type = valueType(elementType(value.vt));
    auto* const elements = reinterpret_cast<std::byte*>(value.cac.pElems);
    for (ULONG i = 0; elements != nullptr && i < value.cac.cElems; ++i) {
        clearPlace(type.form, elements + i * type.elementSize);
    }
    CoTaskMemFree(elements);
}

void clearPlace(Form form, void* place) noexcept {
    switch (form) {
        case Form::byteText:
        case Form::wideText:
            CoTaskMemFree(*static_cast<void**>(place));
            return;
        case Form::bstr:
            SysFreeString(*static_cast<BSTR*>(place));
            return;
        case Form::blob:
            CoTaskMemFree(static_cast<BLOB*>(place)->pBlobData);
            return;
        case Form::clipboard:
            CoTaskMemFree(static_cast<CLIPDATA*>(place)->pClipData);
            return;
        case Form::object:
            if (auto* const object = *static_cast<IUnknown**>(place)) object->Release();
            return;
        case Form::versioned:
            if (auto* const versioned = *static_cast<VERSIONEDSTREAM**>(place)) {
                if (versioned->pStream != nullptr) versioned->pStream->Release();
                CoTaskMemFree(versioned);
            }
            return;
        case Form::array:
            SafeArrayDestroy(*static_cast<SAFEARRAY**>(place));
            return;
        case Form::variant:
            PropVariantClear(static_cast<PROPVARIANT*>(place));
            return;
        case Form::fixed:
        case Form::classId:
        case Form::unknown:
            return;
    }
}

void clearAlone(PROPVARIANT& value) noexcept {
    Form const form = valueType(value.vt).form;
    bool const isLedTo = form == Form::classId || form == Form::clipboard;
    if (!isLedTo) return clearPlace(form, &value.pszVal);
    if (value.puuid == nullptr) return;
    clearPlace(form, value.puuid);
    CoTaskMemFree(value.puuid);
}

}  // namespace
}  // namespace velk::platform::storage

HRESULT PropVariantClear(PROPVARIANT* value) {
    using namespace velk::platform::storage;
    if (value == nullptr || value->vt == VT_EMPTY) return S_OK;
    bool const isKnown = isValueType(value->vt);
    if (isKnown && isVector(value->vt)) clearVector(*value);
    if (isKnown && !isVector(value->vt)) clearAlone(*value);
    *value = {};
    return isKnown ? S_OK : STG_E_INVALIDPARAMETER;
}
