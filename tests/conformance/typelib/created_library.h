/// Libraries made in memory, and descriptions to fill them with.
#pragma once

#include <vector>

#include <gtest/gtest.h>

#include "shapes.h"

namespace velk::test {

Owned<ICreateTypeLib2> createLibrary();
Owned<ICreateTypeInfo2> createType(ICreateTypeLib2* library, Wide name, TYPEKIND kind);
/// Tests of types in a library of their own.
class CreatedTypes : public testing::Test {
  protected:
    Owned<ICreateTypeInfo2> make(OLECHAR const* name, TYPEKIND kind) {
        return createType(library.get(), name, kind);
    }

    Owned<ICreateTypeLib2> library = createLibrary();
};

/// The reading side of a type or library that is being made.
Owned<ITypeInfo2> readType(IUnknown* created);
Owned<ITypeLib2> readLibrary(IUnknown* created);
/// A type of the library that every system has.
Owned<ITypeInfo> standardType(REFIID id);
/// A reference of one type to another.
HREFTYPE referTo(ICreateTypeInfo* from, ITypeInfo* to);
void implement(ICreateTypeInfo* type, ITypeInfo* base);
/// A type that stands for itself, and one that points at such a type.
TYPEDESC plain(VARTYPE type);
TYPEDESC userDefined(HREFTYPE reference);
VARIANT number(LONG value);

/// A function description that owns its parameters.
struct FunctionShape : FUNCDESC {
    /// A method without parameters that returns a result code.
    FunctionShape(MEMBERID id, INVOKEKIND invocation = INVOKE_FUNC,
                  FUNCKIND kind = FUNC_PUREVIRTUAL);
    FunctionShape(FunctionShape const&) = delete;
    FunctionShape& with(TYPEDESC type, USHORT flags = PARAMFLAG_FIN, PARAMDESCEX* value = nullptr);
    FunctionShape& returning(VARTYPE type);

  private:
    std::vector<ELEMDESC> parameters_;
};

/// A variable of a simple type.
VARDESC variableShape(VARKIND kind, VARTYPE type, MEMBERID id = MEMBERID_NIL);

/// Adds at the end and names; names of parameters may follow.
void addFunction(ICreateTypeInfo* type, FunctionShape& function, std::vector<Wide> names);
void addVariable(ICreateTypeInfo* type, VARDESC variable, Wide name);

}  // namespace velk::test
