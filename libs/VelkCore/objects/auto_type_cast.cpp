#include "host/auto_type_cast.h"

#include "host/execute_exception.h"

namespace {

// A script variable stands for its value wherever a plain value is wanted.
template <typename Target>
bool readPlain(mzComVariantC const& source, bool convert, int type, Target& value) {
    if (!convert && source.skipVariable().getType() != type) {
        return false;
    }
    return source.getExt(value) == mzSuccess;
}

}  // namespace

bool proxyReadArgument(mzComVariantC const& source, bool convert, bool& value) {
    return readPlain(source, convert, mzTypeInteger, value);
}

bool proxyReadArgument(mzComVariantC const& source, bool convert, int& value) {
    return readPlain(source, convert, mzTypeInteger, value);
}

bool proxyReadArgument(mzComVariantC const& source, bool convert, double& value) {
    return readPlain(source, convert, mzTypeDouble, value);
}

bool proxyReadArgument(mzComVariantC const& source, bool convert, mzComStringC& value) {
    return readPlain(source, convert, mzTypeString, value);
}

bool proxyReadArgument(mzComVariantC const& source, bool, mzComVariantC& value) {
    value = source;
    return true;
}

bool proxyReadArgument(mzComVariantC const& source, bool, mzComPtrT<mzIUnknown>& value) {
    return source.getExt(value) == mzSuccess;
}

bool proxyReadArgument(mzComVariantC const& source, bool, mzComPtrT<mzIDispatch>& value) {
    mzComPtrT<mzIUnknown> object;
    if (source.getExt(object) != mzSuccess) {
        return false;
    }
    value = mzComPtrC(object.iface());
    // An empty reference is an empty pointer; an object of another kind is none.
    return value.isValid() || !object.isValid();
}

void proxyThrowUnreadable() {
    mzThrowAutoTypeCastException();
}
