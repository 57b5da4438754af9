#include "VelkCOMFileProperties/file_properties.h"

#include <string_view>

#include <propidl.h>

#include "VelkCOMFileProperties/property_dictionary.h"
#include "host/proxy_member.h"
#include "proxyobj/prxPathNameC.h"

using scripting::proxyobj::prxPathNameC;

namespace {

// Unit and lines as member descriptors publish them: constants of the class, no
// places in this file.
constexpr char const* sourceUnit = "VelkCOMFileProperties";

/// Root of the volume that holds a path, or empty when the path has none.
mzComStringC volumeRoot(prxPathNameC const& path) {
    if (path.hasDrive()) return path.Drive() + ":\\";
    if (path.hasComputerName() && path.hasShareName()) {
        return "\\\\" + path.ComputerName() + "\\" + path.ShareName() + "\\";
    }
    return {};
}

bool isNtfs(mzComStringC const& root) {
    constexpr std::basic_string_view<OLECHAR> ntfs = OLESTR("NTFS");
    OLECHAR fileSystem[20]{};
    GetVolumeInformationW(root.oleText(), nullptr, 0xFFFFFFFF, nullptr, nullptr, nullptr,
                          fileSystem, 20);
    // The terminating zero counts too.
    return std::basic_string_view<OLECHAR>(fileSystem, ntfs.size() + 1) ==
           std::basic_string_view<OLECHAR>(ntfs.data(), ntfs.size() + 1);
}

}  // namespace

prxFilePropertiesC::prxFilePropertiesC() {
    setThreadSafe();
}

int prxFilePropertiesC::Open(mzComStringC const& path) {
    return Open(path, false);
}

int prxFilePropertiesC::Open(mzComStringC const& path, bool writable) {
    {
        mzCriticalAutoSectionRefC const guard(&section_);
        path_ = path;
        readOnly_ = !writable;
    }
    prxPathNameC const name(scripting::createNew);
    name.append(path);
    mzComStringC const root = volumeRoot(name);
    if (root.isEmpty() || !isNtfs(root)) return 0;
    return name.exists() ? 1 : 0;
}

mzComPtrT<mzIDispatch> prxFilePropertiesC::propertySet(REFFMTID formatId) {
    QString path;
    bool readOnly = true;
    {
        mzCriticalAutoSectionRefC const guard(&section_);
        path = path_;
        readOnly = readOnly_;
    }
    return mzComPtrT<mzIDispatch>(new prxFilePropDictionaryObjC(path, readOnly, formatId));
}

mzComPtrT<mzIDispatch> prxFilePropertiesC::SummaryInformation() {
    return propertySet(FMTID_SummaryInformation);
}

mzComPtrT<mzIDispatch> prxFilePropertiesC::DocSummaryInformation() {
    return propertySet(FMTID_DocSummaryInformation);
}

mzComPtrT<mzIDispatch> prxFilePropertiesC::MediaFileSummaryInfo() {
    return propertySet(FMTID_MediaFileSummaryInformation);
}

mzComPtrT<mzIDispatch> prxFilePropertiesC::Custom() {
    return propertySet(FMTID_UserDefinedProperties);
}

proxyMemberDescListS const* prxFilePropertiesC::getStaticProxyTypeInfo() {
    using Self = prxFilePropertiesC;
    static proxyMemberDescS const members[] = {
        proxyMethod<static_cast<int (Self::*)(mzComStringC const&)>(&Self::Open)>("Open",
                                                                                  sourceUnit, 644),
        proxyMethod<static_cast<int (Self::*)(mzComStringC const&, bool)>(&Self::Open)>(
            "Open", sourceUnit, 645),
        proxyPropertyGet<&Self::SummaryInformation>("SummaryInformation", sourceUnit, 647),
        proxyPropertyGet<&Self::DocSummaryInformation>("DocSummaryInformation", sourceUnit, 648),
        proxyPropertyGet<&Self::MediaFileSummaryInfo>("MediaFileSummaryInfo", sourceUnit, 649),
        proxyPropertyGet<&Self::Custom>("Custom", sourceUnit, 650),
        proxyMembersEnd()};
    static proxyMemberDescListS const* const bases[] = {proxyObjectC::getStaticProxyTypeInfo(),
                                                        nullptr};
    static proxyMemberDescListS const record = {
        "prxFilePropertiesC", &proxyCastTo<Self>, bases, members, "qxttools.fileproperties", 0,
        &proxyCreate<Self>,   sourceUnit,         634};
    return &record;
}
