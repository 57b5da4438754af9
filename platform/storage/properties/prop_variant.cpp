// PropVariantClear, PropVariantCopy, FreePropVariantArray.
#include <algorithm>

#include <oleauto.h>

#include "platform/storage/properties/held_value.h"
#include "platform/storage/properties/value_type.h"
#include "platform/storage/storage_error.h"

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

template <typename Element>
Element* copyOfOne(Element const* source) {
    if (source == nullptr) return nullptr;
    auto made = taskArray<Element>(1);
    made[0] = *source;
    return made.release();
}

BYTE* copyOfBytes(BYTE const* source, std::size_t size) {
    if (source == nullptr) return nullptr;
    return taskBytes(std::as_bytes(std::span(source, size))).release();
}

BSTR copyOfBstr(BSTR source) {
    if (source == nullptr) return nullptr;
    BSTR const made =
        SysAllocStringByteLen(reinterpret_cast<LPCSTR>(source), SysStringByteLen(source));
    if (made == nullptr) throw std::bad_alloc();
    return made;
}

/// `target` is zero, or a copy of the source's numbers and pointers.
void copyPlace(Form form, void* target, void const* source) {
    switch (form) {
        case Form::byteText: {
            auto* const text = *static_cast<char* const*>(source);
            *static_cast<char**>(target) =
                text == nullptr ? nullptr : taskText(std::string_view(text)).release();
            return;
        }
        case Form::wideText: {
            auto* const text = *static_cast<char16_t* const*>(source);
            *static_cast<char16_t**>(target) =
                text == nullptr ? nullptr : taskText(std::u16string_view(text)).release();
            return;
        }
        case Form::classId:
            *static_cast<CLSID*>(target) = *static_cast<CLSID const*>(source);
            return;
        case Form::bstr:
            *static_cast<BSTR*>(target) = copyOfBstr(*static_cast<BSTR const*>(source));
            return;
        case Form::blob: {
            auto const& blob = *static_cast<BLOB const*>(source);
            *static_cast<BLOB*>(target) = {blob.cbSize, copyOfBytes(blob.pBlobData, blob.cbSize)};
            return;
        }
        case Form::clipboard: {
            auto const& data = *static_cast<CLIPDATA const*>(source);
            failIf(data.cbSize < sizeof data.ulClipFmt, STG_E_INVALIDPARAMETER);
            *static_cast<CLIPDATA*>(target) = {data.cbSize, data.ulClipFmt,
                                               copyOfBytes(data.pClipData, CBPCLIPDATA(data))};
            return;
        }
        case Form::object: {
            auto* const object = *static_cast<IUnknown* const*>(source);
            if (object != nullptr) object->AddRef();
            *static_cast<IUnknown**>(target) = object;
            return;
        }
        case Form::versioned: {
            auto* const copy = copyOfOne(*static_cast<VERSIONEDSTREAM* const*>(source));
            if (copy != nullptr && copy->pStream != nullptr) copy->pStream->AddRef();
            *static_cast<VERSIONEDSTREAM**>(target) = copy;
            return;
        }
        case Form::array: {
            SAFEARRAY* copy = nullptr;
            HRESULT const code = SafeArrayCopy(*static_cast<SAFEARRAY* const*>(source), &copy);
            failIf(FAILED(code), code);
            *static_cast<SAFEARRAY**>(target) = copy;
            return;
        }
        case Form::variant: {
            HRESULT const code = PropVariantCopy(static_cast<PROPVARIANT*>(target),
                                                 static_cast<PROPVARIANT const*>(source));
            failIf(FAILED(code), code);
            return;
        }
        case Form::fixed:
        case Form::unknown:
            return;
    }
}

void copyVector(PROPVARIANT& target, PROPVARIANT const& source) {
    ValueType const type = valueType(elementType(source.vt));
    std::size_t const size = type.elementSize;
    ULONG const count = source.cac.pElems == nullptr ? 0 : source.cac.cElems;
    target.vt = source.vt;
    target.cac = {count, taskArray<CHAR>(count * size).release()};
    auto const* const from = source.cac.pElems;
    auto* const to = target.cac.pElems;
    if (type.form == Form::fixed) {
        std::copy_n(from, count * size, to);
        return;
    }
    for (ULONG i = 0; i < count; ++i) copyPlace(type.form, to + i * size, from + i * size);
}

void copyAlone(PROPVARIANT& target, PROPVARIANT const& source) {
    Form const form = valueType(source.vt).form;
    if (form == Form::fixed) {
        target = source;
        return;
    }
    if (form == Form::classId) {
        target.puuid = copyOfOne(source.puuid);
    } else if (form != Form::clipboard) {
        copyPlace(form, &target.pszVal, &source.pszVal);
    } else if (source.pclipdata != nullptr) {
        auto copied = taskArray<CLIPDATA>(1);
        copyPlace(form, copied.get(), source.pclipdata);
        target.pclipdata = copied.release();
    }
    target.vt = source.vt;
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

HRESULT PropVariantCopy(PROPVARIANT* target, PROPVARIANT const* source) {
    using namespace velk::platform::storage;
    if (target == nullptr || source == nullptr) return E_POINTER;
    if (!isValueType(source->vt)) return DISP_E_BADVARTYPE;
    return answer([&] {
        HeldValue made;
        if (isVector(source->vt)) {
            copyVector(made.get(), *source);
        } else {
            copyAlone(made.get(), *source);
        }
        *target = made.release();
    });
}

HRESULT FreePropVariantArray(ULONG count, PROPVARIANT* values) {
    if (values == nullptr && count != 0) return E_INVALIDARG;
    HRESULT result = S_OK;
    for (ULONG i = 0; i < count; ++i) {
        HRESULT const code = PropVariantClear(&values[i]);
        if (FAILED(code)) result = code;
    }
    return result;
}
