#pragma once

#include <span>
#include <string_view>

#include "host/com_string.h"
#include "host/variant.h"

namespace velk::core {

/// A constant of a class: an integer, or a text.
struct ClassConstant {
    char const* name;
    int number = 0;
    char const* text = nullptr;

    mzComVariantC value() const { return text ? mzComVariantC(text) : mzComVariantC(number); }
};

/// The constants of a class that scripts know by a type name.
struct ConstantClass {
    char const* typeName;
    std::span<ClassConstant const> constants;

    /// Null without a constant of this name; ASCII case does not matter.
    ClassConstant const* find(mzComStringC const& name) const;
};

/// All classes that have constants.
std::span<ConstantClass const> constantClasses();

/// Null for an unknown type name; ASCII case does not matter.
ConstantClass const* constantClass(mzComStringC const& typeName);

}  // namespace velk::core
