#include "host/variant.h"

#include <limits>

#include "host/dispatch_client.h"

namespace {

bool fitsInt(double value) {
    return value >= std::numeric_limits<int>::min() && value <= std::numeric_limits<int>::max();
}

}  // namespace

void mzComVariantC::releaseContent() noexcept {
    // Marked empty first: giving up an object can run any code, this included.
    int const type = std::exchange(type_, mzTypeEmpty);
    if (type == mzTypeString) {
        content_.text.~mzComStringC();
        return;
    }
    // What is no number has content, which the analyzer does not see.
    // NOLINTNEXTLINE(clang-analyzer-core.uninitialized.Assign)
    mzIUnknown* const object = content_.object;
    if (object) object->release();
}

void mzComVariantC::set(long value) noexcept {
    auto const number = static_cast<double>(value);
    *this = fitsInt(number) ? mzComVariantC(static_cast<int>(value)) : mzComVariantC(number);
}

void mzComVariantC::set(QVariant const& value) {
    switch (value.userType()) {
        case QMetaType::UnknownType:
        case QMetaType::Nullptr:
            clear();
            return;
        case QMetaType::Bool:
            set(value.toBool());
            return;
        case QMetaType::Double:
        case QMetaType::Float:
            set(value.toDouble());
            return;
        case QMetaType::Char:
        case QMetaType::SChar:
        case QMetaType::UChar:
        case QMetaType::Short:
        case QMetaType::UShort:
        case QMetaType::Int:
        case QMetaType::UInt:
        case QMetaType::Long:
        case QMetaType::ULong:
        case QMetaType::LongLong:
        case QMetaType::ULongLong:
            if (fitsInt(value.toDouble())) {
                set(value.toInt());
            } else {
                set(value.toDouble());
            }
            return;
        default:
            break;
    }
    if (value.canConvert<QString>()) {
        set(value.toString());
    } else {
        clear();
    }
}

unsigned mzComVariantC::intSet(mzComPtrT<mzIUnknown> const& object) {
    mzComVariantC value;
    value.type_ = mzTypeObject;
    value.content_.object = object.iface();
    if (value.content_.object) value.content_.object->addRef();
    *this = std::move(value);
    return mzSuccess;
}

unsigned mzComVariantC::intGet(mzComPtrT<mzIUnknown>& object) const {
    object = type_ == mzTypeObject ? content_.object : nullptr;
    return object.isValid() ? mzSuccess : mzFailure;
}

unsigned mzComVariantC::intGetExt(mzComPtrT<mzIUnknown>& object) const {
    return skipVariable().intGet(object);
}

bool mzComVariantC::isIDispatch() const {
    return toDispatch().isValid();
}

mzIDispatchC mzComVariantC::toDispatch() const {
    return mzIDispatchC(type_ == mzTypeObject ? content_.object : nullptr);
}
