#include "platform/storage/properties/array_values.h"

#include <algorithm>
#include <array>
#include <limits>
#include <memory>

#include <oleauto.h>

#include "platform/storage/properties/held_value.h"
#include "platform/storage/properties/value_type.h"

namespace velk::platform::storage {
namespace {

// As published for the header of an array.
constexpr ULONG mostDimensions = 31;

struct DestroyArray {
    void operator()(SAFEARRAY* array) const noexcept { SafeArrayDestroy(array); }
};
using HeldArray = std::unique_ptr<SAFEARRAY, DestroyArray>;

/// The elements of an array while they are locked.
class LockedElements {
  public:
    explicit LockedElements(SAFEARRAY& array) : array_(array) {
        HRESULT const code = SafeArrayAccessData(&array_, &data_);
        check(code);
    }
    LockedElements(LockedElements const&) = delete;
    LockedElements& operator=(LockedElements const&) = delete;
    ~LockedElements() { SafeArrayUnaccessData(&array_); }

    std::byte* data() const noexcept { return static_cast<std::byte*>(data_); }

  private:
    SAFEARRAY& array_;
    void* data_ = nullptr;
};

bool canBeInVariant(VARTYPE type) {
    return type <= VT_UINT && type != VT_DISPATCH && type != VT_UNKNOWN && type != VT_VARIANT;
}

/// Form::unknown for elements that arrays cannot have.
ValueType arrayElement(VARTYPE type) {
    ValueType const known = valueType(type);
    bool const isKept = type == VT_VARIANT || (canBeInVariant(type) && type > VT_NULL);
    return isKept ? known : ValueType{};
}

std::size_t elementCount(SAFEARRAY const& array) {
    std::size_t count = 1;
    for (USHORT i = 0; i < array.cDims; ++i) count *= array.rgsabound[i].cElements;
    return count;
}

HeldArray makeArray(VARTYPE type, ByteReader& from, std::size_t smallestElement) {
    auto const dimensions = from.read<ULONG>();
    require(dimensions != 0 && dimensions <= mostDimensions, malformedSet);
    std::array<SAFEARRAYBOUND, mostDimensions> bounds{};
    for (ULONG i = 0; i < dimensions; ++i) {
        bounds[i].cElements = from.read<ULONG>();
        bounds[i].lLbound = from.read<LONG>();
    }
    std::size_t most = from.left() / smallestElement;
    for (ULONG i = 0; i < dimensions; ++i) {
        require(bounds[i].cElements <= most, malformedSet);
        if (bounds[i].cElements != 0) most /= bounds[i].cElements;
    }
    HeldArray made(SafeArrayCreate(type, dimensions, bounds.data()));
    if (!made) throw std::bad_alloc();
    return made;
}

void readVariant(ArrayElements& elements, VARIANT& target) {
    HeldValue value;
    elements.typedValue(value.get());
    require(canBeInVariant(value.get().vt), malformedSet);
    // The types that both can have are laid out alike.
    PROPVARIANT const taken = value.release();
    std::memcpy(&target, &taken, sizeof target);
}

}  // namespace

SAFEARRAY* readArray(VARTYPE type, ByteReader& from, ArrayElements& elements) {
    auto const element = static_cast<VARTYPE>(type & VT_TYPEMASK);
    ValueType const known = arrayElement(element);
    require(known.form != Form::unknown, HRESULT_FROM_WIN32(ERROR_NOT_SUPPORTED));
    require(from.read<ULONG>() == element, malformedSet);
    bool const isFixed = known.form == Form::fixed;
    HeldArray array = makeArray(element, from, isFixed ? known.size : sizeof(ULONG));
    std::size_t const count = elementCount(*array);
    {
        LockedElements const locked(*array);
        auto* const data = locked.data();
        if (isFixed) {
            std::ranges::copy(from.take(count * known.size), data);
        } else if (known.form == Form::bstr) {
            for (std::size_t i = 0; i < count; ++i) {
                reinterpret_cast<BSTR*>(data)[i] = elements.bstr();
            }
        } else {
            for (std::size_t i = 0; i < count; ++i) {
                readVariant(elements, reinterpret_cast<VARIANT*>(data)[i]);
            }
        }
    }
    return array.release();
}

void writeArray(VARTYPE type, SAFEARRAY* array, ByteWriter& to, ArrayWriting& elements) {
    auto const element = static_cast<VARTYPE>(type & VT_TYPEMASK);
    ValueType const known = arrayElement(element);
    require(known.form != Form::unknown, HRESULT_FROM_WIN32(ERROR_NOT_SUPPORTED));
    VARTYPE actual = VT_EMPTY;
    bool const isSuch = array != nullptr && SUCCEEDED(SafeArrayGetVartype(array, &actual)) &&
                        actual == element && array->cDims <= mostDimensions;
    require(isSuch, STG_E_INVALIDPARAMETER);
    to.write(ULONG{element});
    to.write(ULONG{array->cDims});
    for (USHORT i = array->cDims; i > 0; --i) {
        // The descriptor has the last dimension first.
        to.write(array->rgsabound[i - 1].cElements);
        to.write(array->rgsabound[i - 1].lLbound);
    }
    std::size_t const count = elementCount(*array);
    LockedElements const locked(*array);
    auto* const data = locked.data();
    if (known.form == Form::fixed) {
        to.write(Bytes(data, count * known.size));
        return;
    }
    for (std::size_t i = 0; i < count; ++i) {
        if (known.form == Form::bstr) {
            elements.bstr(reinterpret_cast<BSTR const*>(data)[i]);
            continue;
        }
        auto const& value = reinterpret_cast<VARIANT const*>(data)[i];
        require(canBeInVariant(value.vt), HRESULT_FROM_WIN32(ERROR_NOT_SUPPORTED));
        PROPVARIANT same;
        std::memcpy(&same, &value, sizeof same);
        elements.typedValue(same);
    }
}

}  // namespace velk::platform::storage
