/// Values of both sides in the cells of tables.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "VelkQXTProxy/wrapper_interfaces.h"
#include "support/recording_object.h"
#include "support/value_notation.h"

namespace velk::test {

/// A host value from `empty`, `true`, `null` (a reference to no object), 5, 2.5
/// or `"text"`.
inline mzComVariantC hostValue(std::string const& cell) {
    mzComVariantC value;
    if (cell == "true") return true;
    if (cell == "null") value.set(mzComPtrT<mzIUnknown>());
    if (cell == "empty" || cell == "null") return value;
    if (cell[0] == '"') {
        auto const text = wide(cell.substr(1, cell.size() - 2));
        return mzComStringC(
            QString(reinterpret_cast<QChar const*>(text.data()), static_cast<int>(text.size())));
    }
    if (cell.find('.') != std::string::npos) return std::stod(cell);
    return std::stoi(cell);
}

/// A host value in the same notation, the empty text as `no text`. `wrapped` and a type in
/// hexadecimal for what wraps a native value, `native object` for what wraps an object.
inline std::string described(mzComVariantC const& value) {
    mzComStringC text;
    unsigned type = 0;
    mzComPtrC const object(value.getType() == mzTypeObject ? objectIn(value) : nullptr);
    mzComPtrT<mzIComVariantWrapper> const wrapper{object};
    switch (value.getType()) {
        case mzTypeEmpty:
            return "empty";
        case mzTypeString:
            value.get(text);
            if (text.isEmpty()) return "no text";
            return '"' + narrow(text.oleText(), static_cast<std::size_t>(text.length())) + '"';
        case mzTypeObject:
            if (wrapper.isValid()) {
                wrapper->getVartype(type);
                return "wrapped " + mzComStringC::fromInt(static_cast<int>(type), 16).toUtf8();
            }
            if (mzComPtrT<mzIComDispatchWrapper>(object).isValid()) return "native object";
            return object.isValid() ? "object" : "null";
        default:
            value.getExt(text);
            return text.toUtf8();
    }
}

/// The parts of a cell that stand between separators.
inline std::vector<std::string> partsOf(std::string_view cell, std::string_view separator = ", ") {
    std::vector<std::string> parts;
    while (!cell.empty()) {
        auto const end = std::min(cell.find(separator), cell.size());
        parts.emplace_back(cell.substr(0, end));
        cell.remove_prefix(std::min(end + separator.size(), cell.size()));
    }
    return parts;
}

}  // namespace velk::test
