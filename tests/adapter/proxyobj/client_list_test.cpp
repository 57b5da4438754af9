#include <algorithm>
#include <set>
#include <string>

#include <gtest/gtest.h>

#include "proxyobj/client_table.h"

// The list of the typed clients has the classes, bases, script names and
// numbers of members that script objects are known by.

namespace {

using namespace velk::test;

struct Known {
    char const* name;
    char const* base;
    char const* scriptName;
    int members;  ///< constants included
    int constants;
};

constexpr Known known[] = {
    {"cadAttributeC", "cadObjectC", nullptr, 6, 0},
    {"cadAttributeUtilsC", nullptr, nullptr, 15, 0},
    {"cadCommandC", nullptr, nullptr, 16, 0},
    {"cadCommandManagerC", nullptr, nullptr, 5, 0},
    {"cadComponentFeatureDefinitionC", "cadFeatureDefinitionC", nullptr, 5, 0},
    {"cadConstantFactoryC", nullptr, nullptr, 10, 0},
    {"cadDocumentC", "cadObjectC", nullptr, 8, 0},
    {"cadDocumentWindowC", "cadWindowC", nullptr, 5, 0},
    {"cadFeatureDefinitionC", "cadObjectC", nullptr, 8, 0},
    {"cadManagerC", nullptr, nullptr, 27, 0},
    {"cadModelDefinitionC", "cadObjectC", nullptr, 11, 0},
    {"cadModelRepresentationC", "cadObjectC", nullptr, 24, 0},
    {"cadObjectC", nullptr, nullptr, 11, 0},
    {"cadProxyInfoC", nullptr, nullptr, 23, 0},
    {"cadScriptingRootC", nullptr, nullptr, 37, 0},
    {"cadSelectionC", nullptr, nullptr, 15, 0},
    {"cadSelectionManagerC", nullptr, nullptr, 25, 0},
    {"cadStartInfoC", nullptr, nullptr, 16, 0},
    {"cadWindowC", nullptr, nullptr, 9, 0},
    {"Command", "cadCommandC", nullptr, 0, 0},
    {"ComponentFeature", "cadComponentFeatureDefinitionC", nullptr, 1, 0},
    {"ComponentFeatureDefinition", "cadComponentFeatureDefinitionC", nullptr, 3, 0},
    {"ModelRepresentation", "cadModelRepresentationC", nullptr, 2, 0},
    {"mzCadConfigC", "XConfigC", "qxttools.cadconfig", 3, 0},
    {"mzScriptMgrModuleCollProxyC", nullptr, nullptr, 11, 0},
    {"proxyContainerC", nullptr, "qxttools.array", 17, 0},
    {"prxBase", nullptr, "zw.Base", 3, 0},
    {"prxBaseFileStreamC", nullptr, nullptr, 2, 0},
    {"prxBinaryStreamC", "prxBaseFileStreamC", nullptr, 12, 0},
    {"prxByteArray", "prxQVariantBaseC", "prxQByteArray", 76, 0},
    {"prxConversion", "prxConversion_1", "kq.Conversion", 0, 0},
    {"prxConversion_1", nullptr, "kq.Conversion_1", 16, 2},
    {"prxConversionData", "prxConversionData_1", "kq.ConversionData", 0, 0},
    {"prxConversionData_1", nullptr, "kq.ConversionData_1", 17, 2},
    {"prxConversionInfo", "prxConversionInfo_1", "kq.ConversionInfo", 0, 0},
    {"prxConversionInfo_1", nullptr, "kq.ConversionInfo_1", 17, 2},
    {"prxConversionPathC", nullptr, nullptr, 16, 0},
    {"prxDateTimeC", nullptr, "qxttools.datetime", 32, 0},
    {"prxDictionaryObjC", nullptr, "scripting.dictionary", 17, 0},
    {"prxDllHostMgrC", nullptr, "qxttools.dllhostmgr", 17, 7},
    {"prxDllIfaceFmtC", nullptr, nullptr, 6, 0},
    {"prxDllIfaceFmtDescC", nullptr, nullptr, 11, 0},
    {"prxDocument", nullptr, nullptr, 6, 0},
    {"prxFileFolderBaseObjC", nullptr, nullptr, 22, 6},
    {"prxFileInfoC", nullptr, "Scripting.Fileinfo", 2, 0},
    {"prxFileObjC", "prxFileFolderBaseObjC", nullptr, 6, 0},
    {"prxFileSystemObjC", nullptr, "Scripting.FileSystemObject", 37, 0},
    {"prxFolderObjC", "prxFileFolderBaseObjC", nullptr, 6, 0},
    {"prxFormatMgrC", nullptr, "qxttools.geoformatmgr", 28, 0},
    {"prxMatrix3x3C", "prxQVariantBaseC", "qxttools.matrix3x3", 13, 0},
    {"prxMatrix4x4C", "prxQVariantBaseC", "qxttools.matrix4x4", 20, 0},
    {"prxMutableTreeAdapter", "prxTreeDataNode", nullptr, 13, 0},
    {"prxPathNameC", nullptr, "qxttools.pathname", 53, 0},
    {"prxPrivilegesC", nullptr, "Scripting.Privileges", 7, 0},
    {"prxQColorC", "prxQVariantBaseC", "Qt.Color", 30, 0},
    {"prxQImageC", "prxQVariantBaseC", "Qt.Image", 84, 0},
    {"prxQPixmapC", "prxQVariantBaseC", "Qt.Pixmap", 21, 0},
    {"prxQPointC", "prxQVariantBaseC", "Qt.Point", 6, 0},
    {"prxQRectC", "prxQVariantBaseC", "Qt.Rect", 18, 0},
    {"prxQSizeC", "prxQVariantBaseC", "Qt.Size", 6, 0},
    {"prxQVariantBaseC", nullptr, "qxttools.prxQVariantBaseC", 0, 0},
    {"prxQXmlStreamAttribute", nullptr, nullptr, 6, 0},
    {"prxQXmlStreamAttributes", nullptr, nullptr, 7, 0},
    {"prxQXmlStreamReader", nullptr, "qxttools.XmlStreamReader", 45, 0},
    {"prxQXmlStreamWriter", nullptr, "qxttools.XmlStreamWriter", 32, 0},
    {"prxrwConfigC", nullptr, "qxttools.config", 43, 4},
    {"prxTextStreamC", "prxBaseFileStreamC", nullptr, 12, 0},
    {"prxTreeAdapter", "prxTreeDataNode", nullptr, 2, 0},
    {"prxTreeDataNode", nullptr, nullptr, 13, 0},
    {"prxVector2dC", "prxQVariantBaseC", "qxttools.vector2d", 15, 0},
    {"prxVector3dC", "prxQVariantBaseC", "qxttools.vector3d", 18, 0},
    {"prxXMLAttributeC", nullptr, nullptr, 8, 0},
    {"prxXMLFileC", nullptr, "qxttools.xmlfile", 17, 0},
    {"prxXMLTagC", nullptr, nullptr, 20, 0},
    {"VelkCadManagerC", "cadManagerC", "iface.cadmanager", 0, 0},
    {"ScriptingRoot", "cadScriptingRootC", nullptr, 5, 0},
    {"Selection", "cadSelectionC", nullptr, 1, 0},
    {"SelectionManager", "cadSelectionManagerC", nullptr, 0, 0},
    {"vbScriptEngine", nullptr, "qxttools.scriptmanager", 9, 0},
    {"Window", "cadDocumentWindowC", nullptr, 0, 0},
    {"XConfigC", nullptr, "qxttools.xconfig", 16, 0},
};

std::string textOrNone(char const* text) {
    return text != nullptr ? text : "(none)";
}

ListedClass const* listed(std::string const& name) {
    for (ListedClass const& each : listedClasses()) {
        if (each.name == name) return &each;
    }
    return nullptr;
}

bool isConstant(ListedMember const& member) {
    return member.kind == ListedKind::constant;
}

TEST(ClientList, HasTheKnownClasses) {
    EXPECT_EQ(listedClasses().size(), std::size(known));
    for (Known const& expected : known) {
        SCOPED_TRACE(expected.name);
        auto const* const found = listed(expected.name);
        ASSERT_NE(found, nullptr);
        EXPECT_EQ(textOrNone(found->base), textOrNone(expected.base));
        EXPECT_EQ(textOrNone(found->scriptName), textOrNone(expected.scriptName));
        EXPECT_EQ(found->members.size(), static_cast<std::size_t>(expected.members));
        EXPECT_EQ(std::ranges::count_if(found->members, isConstant), expected.constants);
    }
}

TEST(ClientList, HasTheKnownNumberOfOutParametersAndConstants) {
    int members = 0, constants = 0;
    for (ListedClass const& each : listedClasses()) {
        for (ListedMember const& member : each.members) {
            members += member.outParameters != 0;
            constants += isConstant(member);
        }
    }
    EXPECT_EQ(members, 13);
    EXPECT_EQ(constants, 23);
}

using Names = std::multiset<std::string>;

/// The members of a kind that stand in the list as given, methods with the
/// number of their parameters.
Names given(char const* className, ListedKind kind) {
    Names names;
    auto const* const found = listed(className);
    for (ListedMember const& member : found != nullptr ? found->members : ListedClass{}.members) {
        if (member.kind != kind || !member.isGiven) continue;
        names.insert(kind == ListedKind::method
                         ? member.name + std::string(" ") + std::to_string(member.parameters)
                         : member.name);
    }
    return names;
}

TEST(ClientList, HasTheKnownMembers) {
    struct Row {
        char const* className;
        ListedKind kind;
        Names names;
    };
    Row const rows[] = {
        {"prxPathNameC",
         ListedKind::get,
         {"absoluteFilePath",
          "canonicalFilePath",
          "canonicalPath",
          "ComputerName",
          "Drive",
          "exists",
          "Ext",
          "FileSize",
          "hasComputerName",
          "hasDrive",
          "hasExt",
          "hasShareName",
          "isAbsolute",
          "isComputerName",
          "isDir",
          "isDrive",
          "isEmptyDir",
          "isEmptyFile",
          "isFile",
          "isNull",
          "isReadable",
          "isShareName",
          "isWritable",
          "Name",
          "native",
          "Path",
          "ShareName",
          "standard"}},
        {"prxPathNameC", ListedKind::put, {"Drive", "Ext", "native"}},
        {"prxPathNameC",
         ListedKind::method,
         {"append 1",
          "createDir 0",
          "createFile 0",
          "createTempDirectoryName 1",
          "createTempFileName 2",
          "exists 1",
          "getLocalPathFromUncPath 0",
          "isEqual 1",
          "isHidden 0",
          "isSubDirOf 1",
          "minus 1",
          "optimize 0",
          "plus 1",
          "refresh 0",
          "renameTo 1",
          "resolve 0",
          "resolved 0",
          "setWritable 1",
          "unlink 0",
          "unlinkContents 0",
          "unlinkFiles 0",
          "unlinkRecursive 0"}},
        {"proxyContainerC", ListedKind::get, {"Count", "Length"}},
        {"proxyContainerC", ListedKind::put, {"Item"}},
        {"proxyContainerC",
         ListedKind::method,
         {"Item 1", "Add 1", "Remove 1", "RemoveAt 1", "InsertAt 2", "RemoveAll 0", "LBound 0",
          "UBound 0", "ReDim 1", "Find 1", "Find 2", "Copy 0", "copy 1", "copy 2"}},
        {"prxXMLFileC",
         ListedKind::get,
         {"AutoInsert", "Encoding", "FileError", "FileErrorLineNr", "FileErrorText", "Header"}},
        {"prxXMLFileC", ListedKind::put, {"AutoInsert", "Encoding"}},
        {"prxXMLFileC",
         ListedKind::method,
         {"AutoInsert 1", "Data 0", "Encoding 1", "Read 1", "ReadEncoded 2", "ReadFromString 1",
          "Write 1", "WriteEncoded 2", "WriteToString 1"}},
        {"prxDllHostMgrC",
         ListedKind::method,
         {"createFreeWorker 1", "createFreeWorker 2", "createNamedWorker 2", "createNamedWorker 3",
          "createNamedWorker 4", "HostAlive 1", "HostLock 1", "HostQuit 1", "HostQuit 2",
          "HostUnlock 1"}},
        {"prxDllHostMgrC",
         ListedKind::constant,
         {"registerFlags_host_exe", "registerFlags_host_free", "registerFlags_host_host",
          "registerFlags_killonend", "registerFlags_locked", "registerFlags_strong",
          "registerFlags_zero"}},
        {"prxFileFolderBaseObjC",
         ListedKind::constant,
         {"Attribute_Directory", "Attribute_Hidden", "Attribute_Normal", "Attribute_ReadOnly",
          "Attribute_System", "Attribute_Volume"}},
        {"prxrwConfigC",
         ListedKind::constant,
         {"Flag_Inactive", "Flag_MergeAlways", "Flag_MergeDelete", "Flag_MergeProtected"}},
        {"prxConversion_1", ListedKind::constant, {"FullType", "TypeDisplayName"}},
        {"prxConversionData_1", ListedKind::constant, {"FullType", "TypeDisplayName"}},
        {"prxConversionInfo_1", ListedKind::constant, {"FullType", "TypeDisplayName"}}};
    for (Row const& row : rows) {
        EXPECT_EQ(given(row.className, row.kind), row.names) << row.className;
    }
}

}  // namespace
