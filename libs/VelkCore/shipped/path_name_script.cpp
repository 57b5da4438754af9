#include "host/auto_register.h"
#include "host/proxy_member.h"

#include "path_name.h"

namespace velk::core {

proxyMemberDescListS const* PathName::getStaticProxyTypeInfo() {
    constexpr char const* file = "path_name.h";
    using P = PathName;
    static proxyMemberDescS const members[] = {
        proxyPropertyGet<&P::absoluteFilePath>("absoluteFilePath", file, __LINE__),
        proxyPropertyGet<&P::canonicalFilePath>("canonicalFilePath", file, __LINE__),
        proxyPropertyGet<&P::canonicalPath>("canonicalPath", file, __LINE__),
        proxyPropertyGet<&P::computerName>("ComputerName", file, __LINE__),
        proxyPropertyGet<&P::drive>("Drive", file, __LINE__),
        proxyPropertyPut<&P::setDrive>("Drive", file, __LINE__),
        proxyPropertyGet<&P::exists>("exists", file, __LINE__),
        proxyPropertyGet<&P::extension>("Ext", file, __LINE__),
        proxyPropertyPut<&P::setExtension>("Ext", file, __LINE__),
        proxyPropertyGet<&P::fileSize>("FileSize", file, __LINE__),
        proxyPropertyGet<&P::hasComputerName>("hasComputerName", file, __LINE__),
        proxyPropertyGet<&P::hasDrive>("hasDrive", file, __LINE__),
        proxyPropertyGet<&P::hasExtension>("hasExt", file, __LINE__),
        proxyPropertyGet<&P::hasShareName>("hasShareName", file, __LINE__),
        proxyPropertyGet<&P::isAbsolute>("isAbsolute", file, __LINE__),
        proxyPropertyGet<&P::isComputerName>("isComputerName", file, __LINE__),
        proxyPropertyGet<&P::isDirectory>("isDir", file, __LINE__),
        proxyPropertyGet<&P::isDrive>("isDrive", file, __LINE__),
        proxyPropertyGet<&P::isEmptyDirectory>("isEmptyDir", file, __LINE__),
        proxyPropertyGet<&P::isEmptyFile>("isEmptyFile", file, __LINE__),
        proxyPropertyGet<&P::isFile>("isFile", file, __LINE__),
        proxyPropertyGet<&P::isNull>("isNull", file, __LINE__),
        proxyPropertyGet<&P::isReadable>("isReadable", file, __LINE__),
        proxyPropertyGet<&P::isShareName>("isShareName", file, __LINE__),
        proxyPropertyGet<&P::isWritable>("isWritable", file, __LINE__),
        proxyPropertyGet<&P::name>("Name", file, __LINE__),
        proxyPropertyGet<&P::native>("native", file, __LINE__),
        proxyPropertyPut<&P::setNative>("native", file, __LINE__),
        proxyPropertyGet<&P::folder>("Path", file, __LINE__),
        proxyPropertyGet<&P::shareName>("ShareName", file, __LINE__),
        proxyPropertyGet<&P::standard>("standard", file, __LINE__),
        proxyMethod<&P::append>("append", file, __LINE__),
        proxyMethod<&P::createDirectory>("createDir", file, __LINE__),
        proxyMethod<&P::createFile>("createFile", file, __LINE__),
        proxyMethod<&P::createTempDirectory>("createTempDirectoryName", file, __LINE__),
        proxyMethod<&P::createTempFile>("createTempFileName", file, __LINE__),
        proxyMethod<&P::existsBelow>("exists", file, __LINE__),
        proxyMethod<&P::localPathFromUncPath>("getLocalPathFromUncPath", file, __LINE__),
        proxyMethod<&P::isEqual>("isEqual", file, __LINE__),
        proxyMethod<&P::isHidden>("isHidden", file, __LINE__),
        proxyMethod<&P::isSubDirectoryOf>("isSubDirOf", file, __LINE__),
        proxyMethod<&P::minus>("minus", file, __LINE__),
        proxyMethod<&P::optimize>("optimize", file, __LINE__),
        proxyMethod<&P::plus>("plus", file, __LINE__),
        proxyMethod<&P::refresh>("refresh", file, __LINE__),
        proxyMethod<&P::renameTo>("renameTo", file, __LINE__),
        proxyMethod<&P::resolve>("resolve", file, __LINE__),
        proxyMethod<&P::resolved>("resolved", file, __LINE__),
        proxyMethod<&P::setWritable>("setWritable", file, __LINE__),
        proxyMethod<&P::unlink>("unlink", file, __LINE__),
        proxyMethod<&P::unlinkContents>("unlinkContents", file, __LINE__),
        proxyMethod<&P::unlinkFiles>("unlinkFiles", file, __LINE__),
        proxyMethod<&P::unlinkRecursive>("unlinkRecursive", file, __LINE__),
        proxyMembersEnd()};
    static proxyMemberDescListS const* const bases[] = {proxyObjectC::getStaticProxyTypeInfo(),
                                                        nullptr};
    static proxyMemberDescListS const record = {
        "prxPathNameObjC", proxyCastTo<P>, bases,   members, "qxttools.pathname", 0,
        proxyCreate<P>,    file,           __LINE__};
    return &record;
}

}  // namespace velk::core

static proxyAutoRegisterT<velk::core::PathName> registerPathName;
