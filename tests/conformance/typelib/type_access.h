/// Small helpers around the interfaces of type libraries.
#pragma once

#include <memory>
#include <string>

#include <windows.h>

#include <oleauto.h>

namespace velk::test {

struct ReleaseInterface {
    void operator()(IUnknown* object) const { object->Release(); }
};
template <typename Interface>
using Owned = std::unique_ptr<Interface, ReleaseInterface>;

using Wide = std::basic_string<OLECHAR>;

/// A library that the build made for these tests, by its file's path in UTF-8;
/// a failure ends the test program's assertion.
Owned<ITypeLib> loadLibrary(char const* path);
/// A type by its name.
Owned<ITypeInfo> typeNamed(ITypeLib* library, OLECHAR const* name);
/// The other view of a dual interface.
Owned<ITypeInfo> otherView(ITypeInfo* type);
/// The name of a type or of one of its members.
Wide nameOf(ITypeInfo* type, MEMBERID member = MEMBERID_NIL);
/// The text of a BSTR, which is freed.
Wide taken(BSTR text);

/// Give themselves back.
struct ReleaseAttributes {
    ITypeInfo* type;
    void operator()(TYPEATTR* attributes) const { type->ReleaseTypeAttr(attributes); }
};
using Attributes = std::unique_ptr<TYPEATTR, ReleaseAttributes>;
Attributes attributesOf(ITypeInfo* type);

}  // namespace velk::test
