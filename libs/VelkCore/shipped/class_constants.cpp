#include "class_constants.h"

#include <algorithm>

namespace velk::core {

namespace {

/// Single bits, so that any of them can come together.
constexpr ClassConstant hostManager[] = {
    {"registerFlags_zero", 0x00},      {"registerFlags_locked", 0x01},
    {"registerFlags_strong", 0x02},    {"registerFlags_killonend", 0x04},
    {"registerFlags_host_free", 0x10}, {"registerFlags_host_host", 0x20},
    {"registerFlags_host_exe", 0x40},
};

/// The published attributes of files.
constexpr ClassConstant fileOrFolder[] = {
    {"Attribute_Normal", 0}, {"Attribute_ReadOnly", 1}, {"Attribute_Hidden", 2},
    {"Attribute_System", 4}, {"Attribute_Volume", 8},   {"Attribute_Directory", 16},
};

constexpr ClassConstant configuration[] = {
    {"Flag_Inactive", 1},
    {"Flag_MergeAlways", 2},
    {"Flag_MergeDelete", 4},
    {"Flag_MergeProtected", 8},
};

constexpr ClassConstant conversion[] = {
    {"FullType", 0, "kq.Conversion_1"},
    {"TypeDisplayName", 0, "Conversion"},
};

constexpr ClassConstant conversionData[] = {
    {"FullType", 0, "kq.ConversionData_1"},
    {"TypeDisplayName", 0, "ConversionData"},
};

constexpr ClassConstant conversionInfo[] = {
    {"FullType", 0, "kq.ConversionInfo_1"},
    {"TypeDisplayName", 0, "ConversionInfo"},
};

constexpr ConstantClass classes[] = {
    {"proxyobj.prxconversion_1", conversion},
    {"proxyobj.prxconversiondata_1", conversionData},
    {"proxyobj.prxconversioninfo_1", conversionInfo},
    {"proxyobj.prxdllhostmgrc", hostManager},
    {"proxyobj.prxfilefolderbaseobjc", fileOrFolder},
    {"proxyobj.prxrwconfigc", configuration},
};

}  // namespace

ClassConstant const* ConstantClass::find(mzComStringC const& name) const {
    auto const place =
        std::find_if(constants.begin(), constants.end(), [&](ClassConstant const& constant) {
            return name.compare(constant.name, caseCompareAsciiInsensitive) == 0;
        });
    return place == constants.end() ? nullptr : &*place;
}

std::span<ConstantClass const> constantClasses() {
    return classes;
}

ConstantClass const* constantClass(mzComStringC const& typeName) {
    auto const* const place =
        std::find_if(std::begin(classes), std::end(classes), [&](ConstantClass const& candidate) {
            return typeName.compare(candidate.typeName, caseCompareAsciiInsensitive) == 0;
        });
    return place == std::end(classes) ? nullptr : place;
}

}  // namespace velk::core
