/// Classes of the test servers, each with the one fault that its name tells.
#pragma once

#include <guiddef.h>

namespace velk::test {

/// Objects that can be made, and made part of another object.
inline constexpr CLSID plainClass = {
    0x4D0E5F10, 0x6B1C, 0x4C55, {0x9A, 0x51, 0x20, 0x5E, 0x11, 0x00, 0x00, 0x01}};
/// Its factory refuses to be part of another object.
inline constexpr CLSID lonelyClass = {
    0x4D0E5F10, 0x6B1C, 0x4C55, {0x9A, 0x51, 0x20, 0x5E, 0x11, 0x00, 0x00, 0x02}};
/// The module says that it has the class and gives no object.
inline constexpr CLSID emptySuccessClass = {
    0x4D0E5F10, 0x6B1C, 0x4C55, {0x9A, 0x51, 0x20, 0x5E, 0x11, 0x00, 0x00, 0x03}};
/// The module fails, and leaves rubbish in the out-pointer.
inline constexpr CLSID failingClass = {
    0x4D0E5F10, 0x6B1C, 0x4C55, {0x9A, 0x51, 0x20, 0x5E, 0x11, 0x00, 0x00, 0x04}};
/// Known to the registry, not to the module.
inline constexpr CLSID unknownClass = {
    0x4D0E5F10, 0x6B1C, 0x4C55, {0x9A, 0x51, 0x20, 0x5E, 0x11, 0x00, 0x00, 0x05}};

/// What the server module exports beside the entry points of class modules:
/// sets where its tear-down counts that it ran.
using SetTearDownCounter = void (*)(int* counter);

}  // namespace velk::test
