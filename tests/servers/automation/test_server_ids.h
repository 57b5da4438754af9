/// The identifiers of the automation server of the tests.
#pragma once

#include <windows.h>

namespace velk::test::server {

// They differ in the last byte only.
constexpr GUID testServerId(BYTE number) {
    return {0x7E0B5A10, 0x3C64, 0x4D2F, {0x9B, 0x18, 0x52, 0xD6, 0xA1, 0xC4, 0x0E, number}};
}

/// The type library VelkTestLib, version 1.0.
inline constexpr GUID testLibrary = testServerId(0x01);
/// The enumeration Color and the records Point and Person.
inline constexpr GUID colorId = testServerId(0x02);
inline constexpr GUID pointId = testServerId(0x03);
inline constexpr GUID personId = testServerId(0x04);
/// The sample's dual interfaces.
inline constexpr IID sampleInterface = testServerId(0x05);
inline constexpr IID sampleExtraInterface = testServerId(0x06);
/// The one interface of the class without IDispatch.
inline constexpr IID noDispatchInterface = testServerId(0x07);

/// "VelkTest.Sample": right in everything.
inline constexpr CLSID sampleClass = testServerId(0x11);
/// "VelkTest.Faulty": wrong on purpose, by named methods.
inline constexpr CLSID faultyClass = testServerId(0x12);
/// "VelkTest.NoDispatch": its objects have no IDispatch.
inline constexpr CLSID noDispatchClass = testServerId(0x13);
/// "VelkTest.NoInstance": no object can be made; the code is `noInstanceCode`.
inline constexpr CLSID noInstanceClass = testServerId(0x14);
inline constexpr HRESULT noInstanceCode = static_cast<HRESULT>(0x80040205U);

/// What the server exports beside the entry points of class modules, under the
/// name VelkTestLiveObjects: how many objects of its classes are alive.
using LiveObjects = long (*)();

}  // namespace velk::test::server
