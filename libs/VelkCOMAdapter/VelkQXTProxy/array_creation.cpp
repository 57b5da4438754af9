#include "VelkQXTProxy/array_creation.h"

#include <vector>

#include "VelkQXTProxy/script_values.h"

namespace velk::adapter {
namespace {

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
