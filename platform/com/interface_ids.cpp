/// The published values of the identifiers that the headers declare.
///
/// All but the null one and those that stand last belong to the family whose last eight bytes are
/// C0 00 00 00 00 00 00 46; they differ in the first number only.
#include <oaidl.h>
#include <objidl.h>
#include <ocidl.h>
#include <propidl.h>

namespace {

constexpr GUID publishedId(std::uint32_t first) {
    return {first, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
}

}  // namespace

constinit GUID const GUID_NULL = {0, 0, 0, {0, 0, 0, 0, 0, 0, 0, 0}};
constinit IID const IID_IUnknown = publishedId(0x00000000);
constinit IID const IID_IClassFactory = publishedId(0x00000001);
constinit IID const IID_IStorage = publishedId(0x0000000B);
constinit IID const IID_IStream = publishedId(0x0000000C);
constinit IID const IID_IEnumSTATSTG = publishedId(0x0000000D);
constinit IID const IID_IRecordInfo = publishedId(0x0000002F);
constinit IID const IID_IPropertyStorage = publishedId(0x00000138);
constinit IID const IID_IEnumSTATPROPSTG = publishedId(0x00000139);
constinit IID const IID_IPropertySetStorage = publishedId(0x0000013A);
constinit IID const IID_IEnumSTATPROPSETSTG = publishedId(0x0000013B);
constinit IID const IID_IGlobalInterfaceTable = publishedId(0x00000146);
constinit CLSID const CLSID_StdGlobalInterfaceTable = publishedId(0x00000323);
constinit IID const IID_IDispatch = publishedId(0x00020400);
constinit IID const IID_ITypeInfo = publishedId(0x00020401);
constinit IID const IID_IEnumVARIANT = publishedId(0x00020404);
constinit IID const IID_ITypeLib = publishedId(0x00020402);
constinit IID const IID_ICreateTypeInfo = publishedId(0x00020405);
constinit IID const IID_ITypeLib2 = publishedId(0x00020411);
constinit IID const IID_ITypeInfo2 = publishedId(0x00020412);
constinit IID const IID_ISequentialStream = {
    0x0C733A30, 0x2A1C, 0x11CE, {0xAD, 0xE5, 0x00, 0xAA, 0x00, 0x44, 0x77, 0x3D}};
constinit IID const IID_IProvideClassInfo = {
    0xB196B283, 0xBAB4, 0x101A, {0xB6, 0x9C, 0x00, 0xAA, 0x00, 0x34, 0x1D, 0x07}};
constinit IID const IID_IConnectionPointContainer = {
    0xB196B284, 0xBAB4, 0x101A, {0xB6, 0x9C, 0x00, 0xAA, 0x00, 0x34, 0x1D, 0x07}};
constinit IID const IID_IEnumConnectionPoints = {
    0xB196B285, 0xBAB4, 0x101A, {0xB6, 0x9C, 0x00, 0xAA, 0x00, 0x34, 0x1D, 0x07}};
constinit IID const IID_IConnectionPoint = {
    0xB196B286, 0xBAB4, 0x101A, {0xB6, 0x9C, 0x00, 0xAA, 0x00, 0x34, 0x1D, 0x07}};
constinit IID const IID_IEnumConnections = {
    0xB196B287, 0xBAB4, 0x101A, {0xB6, 0x9C, 0x00, 0xAA, 0x00, 0x34, 0x1D, 0x07}};
