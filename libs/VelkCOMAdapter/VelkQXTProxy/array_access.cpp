#include "VelkQXTProxy/array_access.h"

#include <array>
#include <limits>
#include <utility>
#include <vector>

#include "VelkQXTProxy/call_failure.h"
#include "VelkQXTProxy/script_values.h"
#include "com/com_ptr.h"
#include "com/error.h"
#include "conversion/conversions.h"
#include "host/single_thread_use.h"

namespace velk::adapter {
namespace {

// Bounds of the system: an array has at most this many dimensions.
constexpr int mostDimensions = std::numeric_limits<USHORT>::max();

/// Keeps the elements of an array where they are.
class Lock {
  public:
    explicit Lock(SAFEARRAY* array) noexcept
        : array_(SUCCEEDED(SafeArrayLock(array)) ? array : nullptr) {}
    ~Lock() {
        if (array_) SafeArrayUnlock(array_);
    }
    Lock(Lock const&) = delete;
    Lock& operator=(Lock const&) = delete;
    bool holds() const noexcept { return array_ != nullptr; }

  private:
    SAFEARRAY* const array_;
};

/// The indices of one element, in the order of the dimensions.
class Indices {
  public:
    /// Reads the first `count` arguments; `ok` tells whether all are integers.
    Indices(mzComVariantArrayC const& args, int count) {
        if (count > usualCount) large_.resize(static_cast<std::size_t>(count));
        for (int i = 0; ok_ && i < count; ++i) {
            mzComVariantC const& argument = args.at(i);
            int index = argument.getInt();
            ok_ = argument.getType() == mzTypeInteger || argument.getExt(index) == mzSuccess;
            get()[i] = index;
        }
    }
    bool ok() const noexcept { return ok_; }
    LONG* get() noexcept { return large_.empty() ? usual_.data() : large_.data(); }

  private:
    static constexpr int usualCount = 4;

    std::array<LONG, usualCount> usual_{};
    std::vector<LONG> large_;
    bool ok_ = true;
};

unsigned bound(MemberCall const& call, SAFEARRAY* array,
               HRESULT(STDAPICALLTYPE* read)(SAFEARRAY*, UINT, LONG*)) {
    int dimension = 0;
    if (call.count() == 1 && call.args.at(0).getExt(dimension) != mzSuccess) return mzFailure;
    if (!array) return raise("The underlying variant is not valid", call.exception);
    LONG value = 0;
    if (dimension < 0 || dimension >= mostDimensions ||
        FAILED(read(array, static_cast<UINT>(dimension) + 1, &value))) {
        return raise(invalidParameter(0), call.exception);
    }
    call.result.set(static_cast<int>(value));
    return mzSuccess;
}

/// Too many indices fail; too few do so with a text.
std::optional<unsigned> refuseCount(MemberCall const& call, SAFEARRAY* array, int count) {
    int const dimensions = static_cast<int>(SafeArrayGetDim(array));
    if (count > dimensions) return mzFailure;
    if (count < dimensions) return raise("Invalid parameter count", call.exception);
    return std::nullopt;
}

/// Where the value of an element stands, as `SafeArrayPutElement` takes it.
void* elementIn(VARIANT* value, VARTYPE type) {
    switch (type) {
        case VT_VARIANT:
            return value;
        case VT_BSTR:
            return value->bstrVal;
        case VT_DISPATCH:
            return value->pdispVal;
        case VT_UNKNOWN:
            return value->punkVal;
        case VT_DECIMAL:
            return &value->decVal;
        case VT_RECORD:
            return value->pvRecord;
        default:
            return &value->llVal;
    }
}

/// Whether there are elements: an array can have bounds without any.
bool hasElements(SAFEARRAY* array) {
    return array && array->pvData;
}

/// Has the value be the interface that the elements of the array are, where
/// they are one that is named. Throws com::Error where it has none such.
void takeInterfaceOf(SAFEARRAY* array, VARIANT& value) {
    IID id{};
    if (!(array->fFeatures & FADF_HAVEIID) || !value.punkVal) return;
    com::throwIfFailed(SafeArrayGetIID(array, &id));
    com::ComPtr<IUnknown> const object(value.punkVal);
    HRESULT code = S_OK;
    auto asked = object.query<IUnknown>(id, &code);
    com::throwIfFailed(code);
    com::ComPtr<IUnknown> const former(std::exchange(value.punkVal, asked.detach()), com::adopt);
}

bool isInterface(VARTYPE type) {
    return type == VT_DISPATCH || type == VT_UNKNOWN;
}

/// Whether a record may become an element: the array copies it by its own type.
bool isRecordOf(SAFEARRAY* array, VARIANT const& value) {
    com::ComPtr<IRecordInfo> expected;
    return SUCCEEDED(SafeArrayGetRecordInfo(array, expected.put())) && expected && value.pRecInfo &&
           value.pvRecord && expected->IsMatchingType(value.pRecInfo);
}

unsigned putElement(MemberCall const& call, SAFEARRAY* array) {
    int const count = call.count() - 1;
    if (auto const refused = refuseCount(call, array, count)) return *refused;
    Indices indices(call.args, count);
    if (!indices.ok() || !hasElements(array)) return mzFailure;
    Converted value(call.args.at(count));
    if (value.isInUse()) return raise(mzInUseText, call.exception);
    if (!value.succeeded()) return mzFailure;
    VARTYPE type = VT_EMPTY;
    if (FAILED(SafeArrayGetVartype(array, &type))) return mzFailure;
    if (type != VT_VARIANT) value.coerce(type);
    if (isInterface(type)) takeInterfaceOf(array, *value.address());
    if (type == VT_RECORD && !isRecordOf(array, value.get())) return mzFailure;
    HRESULT const code =
        SafeArrayPutElement(array, indices.get(), elementIn(value.address(), type));
    return SUCCEEDED(code) ? mzSuccess : mzFailure;
}

unsigned getElement(MemberCall const& call, SAFEARRAY* array) {
    if (auto const refused = refuseCount(call, array, call.count())) return *refused;
    Indices indices(call.args, call.count());
    if (!indices.ok() || !hasElements(array)) return mzFailure;
    VARTYPE type = VT_EMPTY;
    if (FAILED(SafeArrayGetVartype(array, &type))) return mzFailure;
    Lock const lock(array);
    VARIANT element{};
    if (!lock.holds() || FAILED(SafeArrayPtrOfIndex(array, indices.get(), &element.byref))) {
        return mzFailure;
    }
    element.vt = VT_BYREF | type;
    com::ComPtr<IRecordInfo> record;
    if (type == VT_RECORD) {
        if (FAILED(SafeArrayGetRecordInfo(array, record.put()))) return mzFailure;
        element.pRecInfo = record.get();
    }
    return convertMSCOMVariant2MZCOMVariant(element, call.result, true, true) ? mzSuccess
                                                                              : mzFailure;
}

constexpr int firstDimension = 2;

/// One bound for each count; a single empty dimension without any.
std::optional<std::vector<SAFEARRAYBOUND>> boundsIn(mzComVariantArrayC const& args) {
    std::vector<SAFEARRAYBOUND> bounds;
    for (int i = firstDimension; i < args.size(); ++i) {
        int count = 0;
        if (args.at(i).getExt(count) != mzSuccess || count < 0) return std::nullopt;
        bounds.push_back({static_cast<ULONG>(count), 0});
    }
    if (bounds.empty()) bounds.push_back({0, 0});
    return bounds;
}

}  // namespace

SAFEARRAY* arrayIn(VARIANT const& value) {
    return (value.vt & VT_ARRAY) && !(value.vt & VT_BYREF) ? value.parray : nullptr;
}

std::optional<unsigned> accessArray(MemberCall const& call, VARIANT const& value) {
    SAFEARRAY* const array = arrayIn(value);
    if (!call.hasDefaultName()) {
        if (!call.isMethod()) return std::nullopt;
        if (call.names("lbound") && call.count() <= 1) {
            return bound(call, array, &SafeArrayGetLBound);
        }
        if (call.names("ubound")) return bound(call, array, &SafeArrayGetUBound);
        return std::nullopt;
    }
    if (call.count() == 0) return std::nullopt;
    if (call.isPut()) return putElement(call, array);
    if (call.isMethod()) return getElement(call, array);
    return std::nullopt;
}

unsigned createArray(MemberCall const& call, HeldValue& held) {
    if (call.count() < firstDimension) return mzFailure;
    auto const element = typeCode(call.args.at(1));
    if (!element) return mzFailure;
    auto bounds = boundsIn(call.args);
    if (!bounds) return mzFailure;
    if (*element == VT_EMPTY) return mzSuccess;
    VARIANT value{};
    value.vt = VT_ARRAY | *element;
    value.parray = SafeArrayCreate(*element, static_cast<UINT>(bounds->size()), bounds->data());
    bool const made = value.parray != nullptr;
    // An array that cannot be made still leaves its type, without one.
    held.replace(com::Variant(value));
    return made ? mzSuccess : mzFailure;
}

}  // namespace velk::adapter
