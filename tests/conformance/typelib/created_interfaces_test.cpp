// Interfaces made in memory: slots, identifiers, both views, and calls.

#include <gtest/gtest.h>

#include "created_library.h"
#include "support/expected_difference.h"

namespace velk::test {
namespace {

// What the description below says, and nothing more than its vtable.
struct ICounter : IDispatch {
    virtual HRESULT STDMETHODCALLTYPE Add(LONG amount, LONG factor, LONG* total) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_Total(LONG* total) = 0;
    virtual HRESULT STDMETHODCALLTYPE put_Total(LONG total) = 0;
};

class Counter final : public ICounter {
  public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*,
                                     UINT*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Add(LONG amount, LONG factor, LONG* sum) override {
        *sum = total += amount * factor;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE get_Total(LONG* value) override {
        *value = total;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE put_Total(LONG value) override {
        total = value;
        return S_OK;
    }

    LONG total = 0;
};

// Makes the description of ICounter; a dual one when `flags` say so.
Owned<ICreateTypeInfo2> createCounter(ICreateTypeLib2* library, UINT flags) {
    auto type = createType(library, OLESTR("ICounter"), TKIND_INTERFACE);
    EXPECT_EQ(type->SetGuid(shapesId(0x80)), S_OK);
    EXPECT_EQ(type->SetTypeFlags(flags), S_OK);
    implement(type.get(), standardType(IID_IDispatch).get());
    TYPEDESC whole = plain(VT_I4);
    TYPEDESC pointer = plain(VT_PTR);
    pointer.lptdesc = &whole;
    PARAMDESCEX once{sizeof(PARAMDESCEX), number(1)};
    FunctionShape add(1);
    add.with(whole)
        .with(whole, PARAMFLAG_FIN | PARAMFLAG_FOPT | PARAMFLAG_FHASDEFAULT, &once)
        .with(pointer, PARAMFLAG_FOUT | PARAMFLAG_FRETVAL);
    addFunction(type.get(), add,
                {OLESTR("Add"), OLESTR("amount"), OLESTR("factor"), OLESTR("sum")});
    FunctionShape get(2, INVOKE_PROPERTYGET);
    addFunction(type.get(), get.with(pointer, PARAMFLAG_FOUT | PARAMFLAG_FRETVAL),
                {OLESTR("Total"), OLESTR("value")});
    FunctionShape put(2, INVOKE_PROPERTYPUT);
    addFunction(type.get(), put.with(whole), {OLESTR("Total")});
    EXPECT_EQ(type->LayOut(), S_OK);
    return type;
}

constexpr SHORT slot(int index) {
    return static_cast<SHORT>(index * sizeof(void*));
}

TEST(CreatedInterface, HasSlotsAfterThoseOfItsBases) {
    auto const library = createLibrary();
    auto const base = createType(library.get(), OLESTR("IBase"), TKIND_INTERFACE);
    auto const derived = createType(library.get(), OLESTR("IDerived"), TKIND_INTERFACE);
    implement(base.get(), standardType(IID_IUnknown).get());
    for (auto const* name : {OLESTR("One"), OLESTR("Two")}) {
        FunctionShape function(MEMBERID_NIL);
        addFunction(base.get(), function, {name});
    }
    EXPECT_EQ(base->LayOut(), S_OK);
    implement(derived.get(), readType(base.get()).get());
    FunctionShape given(0x123), left(MEMBERID_NIL);
    addFunction(derived.get(), given, {OLESTR("Three")});
    addFunction(derived.get(), left, {OLESTR("Four")});
    EXPECT_EQ(derived->LayOut(), S_OK);
    struct {
        ICreateTypeInfo* type;
        UINT index;
        SHORT offset;
        MEMBERID id;
    } const cases[] = {{base.get(), 0, slot(3), 0x60010000},
                       {base.get(), 1, slot(4), 0x60010001},
                       {derived.get(), 0, slot(5), 0x123},
                       {derived.get(), 1, slot(6), 0x60020001}};
    for (auto const& entry : cases) {
        auto const reader = readType(entry.type);
        auto const function = functionOf(reader.get(), entry.index);
        EXPECT_EQ(function->oVft, entry.offset);
        EXPECT_EQ(function->memid, entry.id);
    }
    EXPECT_EQ(attributesOf(readType(derived.get()).get())->cbSizeVft, slot(7));
    HREFTYPE reference = 0;
    ASSERT_EQ(readType(derived.get())->GetRefTypeOfImplType(0, &reference), S_OK);
    EXPECT_EQ(nameOf(referenced(readType(derived.get()).get(), reference).get()), OLESTR("IBase"));
}

TEST(CreatedInterface, KeepsSlotsThatItWasGiven) {
    auto const library = createLibrary();
    auto const type = createType(library.get(), OLESTR("IGiven"), TKIND_INTERFACE);
    FunctionShape given(5), left(6);
    given.oVft = slot(5);
    ASSERT_EQ(type->AddFuncDesc(0, &given), S_OK);
    ASSERT_EQ(type->AddFuncDesc(1, &left), S_OK);
    EXPECT_EQ(type->LayOut(), S_OK);
    auto const reader = readType(type.get());
    EXPECT_EQ(functionOf(reader.get(), 0)->oVft, slot(5));
    EXPECT_EQ(functionOf(reader.get(), 1)->oVft, slot(1));
    EXPECT_EQ(attributesOf(reader.get())->cbSizeVft, slot(6));
}

TEST(CreatedInterface, CountsAnewAfterMembersWereInsertedOrDeleted) {
    auto const library = createLibrary();
    auto const type = createType(library.get(), OLESTR("IList"), TKIND_INTERFACE);
    FunctionShape one(11), two(12), three(13);
    ASSERT_EQ(type->AddFuncDesc(0, &one), S_OK);
    ASSERT_EQ(type->AddFuncDesc(1, &three), S_OK);
    ASSERT_EQ(type->AddFuncDesc(1, &two), S_OK);
    EXPECT_EQ(type->DeleteFuncDesc(0), S_OK);
    EXPECT_EQ(type->DeleteFuncDesc(2), TYPE_E_ELEMENTNOTFOUND);
    EXPECT_EQ(type->LayOut(), S_OK);
    auto const reader = readType(type.get());
    ASSERT_EQ(attributesOf(reader.get())->cFuncs, 2);
    for (UINT i = 0; i < 2; ++i) {
        EXPECT_EQ(functionOf(reader.get(), i)->memid, static_cast<MEMBERID>(12 + i));
        EXPECT_EQ(functionOf(reader.get(), i)->oVft, slot(static_cast<int>(i)));
    }
    expectDifference(System::wine, "functions are deleted by their place only", [&] {
        EXPECT_EQ(type->DeleteFuncDescByMemId(12, INVOKE_PROPERTYGET), TYPE_E_ELEMENTNOTFOUND);
        EXPECT_EQ(type->DeleteFuncDescByMemId(12, INVOKE_FUNC), S_OK);
        EXPECT_EQ(type->DeleteFuncDescByMemId(12, INVOKE_FUNC), TYPE_E_ELEMENTNOTFOUND);
        EXPECT_EQ(attributesOf(reader.get())->cFuncs, 1);
    });
}

TEST(CreatedInterface, TellsNamesAndDefaultValues) {
    auto const library = createLibrary();
    auto const type = readType(createCounter(library.get(), 0).get());
    BSTR names[5] = {};
    UINT count = 0;
    ASSERT_EQ(type->GetNames(1, names, 5, &count), S_OK);
    ASSERT_EQ(count, 4u);
    OLECHAR const* const expected[] = {OLESTR("Add"), OLESTR("amount"), OLESTR("factor"),
                                       OLESTR("sum")};
    for (UINT i = 0; i < count; ++i) EXPECT_EQ(taken(names[i]), expected[i]);
    auto const add = functionOf(type.get(), 0);
    ASSERT_EQ(add->cParams, 3);
    ASSERT_NE(add->lprgelemdescParam[1].paramdesc.pparamdescex, nullptr);
    EXPECT_EQ(add->lprgelemdescParam[1].paramdesc.pparamdescex->varDefaultValue.lVal, 1);
    ASSERT_EQ(add->lprgelemdescParam[2].tdesc.vt, VT_PTR);
    EXPECT_EQ(add->lprgelemdescParam[2].tdesc.lptdesc->vt, VT_I4);
    EXPECT_EQ(add->elemdescFunc.tdesc.vt, VT_HRESULT);
    EXPECT_EQ(functionOf(type.get(), 2)->invkind, INVOKE_PROPERTYPUT);
    EXPECT_EQ(nameOf(type.get(), 2), OLESTR("Total"));
}

TEST(CreatedInterface, KeepsDefaultValuesAsTheyAreGiven) {
    auto const library = createLibrary();
    auto const type = createType(library.get(), OLESTR("IDefault"), TKIND_INTERFACE);
    PARAMDESCEX value{sizeof(PARAMDESCEX), number(77)};
    FunctionShape function(1);
    function.with(plain(VT_I2), PARAMFLAG_FIN | PARAMFLAG_FHASDEFAULT, &value);
    ASSERT_EQ(type->AddFuncDesc(0, &function), S_OK);
    value.varDefaultValue.lVal = 0;
    auto const reader = readType(type.get());
    auto const kept = functionOf(reader.get(), 0);
    auto const& copy = kept->lprgelemdescParam[0].paramdesc.pparamdescex->varDefaultValue;
    EXPECT_EQ(copy.vt, VT_I4);
    EXPECT_EQ(copy.lVal, 77);
}

TEST(CreatedInterface, CallsWhatItDescribes) {
    for (UINT const flags :
         {UINT{TYPEFLAG_FOLEAUTOMATION}, UINT{TYPEFLAG_FDUAL | TYPEFLAG_FOLEAUTOMATION}}) {
        auto const library = createLibrary();
        auto const type = readType(createCounter(library.get(), flags).get());
        Counter counter;
        auto* const instance = static_cast<ICounter*>(&counter);
        Wide name = OLESTR("add"), parameter = OLESTR("FACTOR");
        LPOLESTR names[] = {name.data(), parameter.data()};
        DISPID ids[2] = {};
        ASSERT_EQ(DispGetIDsOfNames(type.get(), names, 2, ids), S_OK);
        EXPECT_EQ(ids[0], 1);
        EXPECT_EQ(ids[1], 1);
        VARIANT arguments[] = {number(10), number(4)};
        DISPPARAMS parameters{arguments, nullptr, 2, 0};
        VARIANT result;
        VariantInit(&result);
        ASSERT_EQ(DispInvoke(instance, type.get(), 1, DISPATCH_METHOD, &parameters, &result,
                             nullptr, nullptr),
                  S_OK);
        EXPECT_EQ(result.lVal, 40);
        // The factor has a default value.
        DISPPARAMS fewer{&arguments[1], nullptr, 1, 0};
        ASSERT_EQ(
            DispInvoke(instance, type.get(), 1, DISPATCH_METHOD, &fewer, &result, nullptr, nullptr),
            S_OK);
        EXPECT_EQ(result.lVal, 44);
        DISPID put = DISPID_PROPERTYPUT;
        DISPPARAMS written{arguments, &put, 1, 1};
        EXPECT_EQ(DispInvoke(instance, type.get(), 2, DISPATCH_PROPERTYPUT, &written, nullptr,
                             nullptr, nullptr),
                  S_OK);
        EXPECT_EQ(counter.total, 10);
    }
}

TEST(CreatedInterface, IsSeenAsItsVtableWhenDual) {
    auto const library = createLibrary();
    auto const type = readType(createCounter(library.get(), TYPEFLAG_FDUAL).get());
    auto const attributes = attributesOf(type.get());
    EXPECT_EQ(attributes->typekind, TKIND_INTERFACE);
    EXPECT_EQ(attributes->cFuncs, 3);
    EXPECT_EQ(attributes->cbSizeVft, slot(10));
    EXPECT_EQ(attributes->wTypeFlags, TYPEFLAG_FDUAL | TYPEFLAG_FDISPATCHABLE);
    auto const other = otherView(type.get());
    auto const dispatch = attributesOf(other.get());
    EXPECT_EQ(dispatch->typekind, TKIND_DISPATCH);
    EXPECT_EQ(dispatch->cFuncs, 10);
    EXPECT_EQ(dispatch->cImplTypes, 1);
    EXPECT_EQ(dispatch->cbSizeVft, slot(7));
    auto const add = functionOf(other.get(), 7);
    EXPECT_EQ(add->memid, 1);
    EXPECT_EQ(add->funckind, FUNC_DISPATCH);
    EXPECT_EQ(add->cParams, 2);
    EXPECT_EQ(add->elemdescFunc.tdesc.vt, VT_I4);
    EXPECT_EQ(nameOf(otherView(other.get()).get()), OLESTR("ICounter"));
    HREFTYPE reference = 0;
    ASSERT_EQ(other->GetRefTypeOfImplType(0, &reference), S_OK);
    EXPECT_EQ(nameOf(referenced(other.get(), reference).get()), OLESTR("IDispatch"));
}

TEST(CreatedInterface, HasOneViewWhenNotDual) {
    auto const library = createLibrary();
    auto const type = readType(createCounter(library.get(), 0).get());
    HREFTYPE reference = 0;
    EXPECT_EQ(type->GetRefTypeOfImplType(static_cast<UINT>(-1), &reference),
              TYPE_E_ELEMENTNOTFOUND);
    auto const attributes = attributesOf(type.get());
    EXPECT_EQ(attributes->typekind, TKIND_INTERFACE);
    EXPECT_EQ(attributes->cbSizeInstance, sizeof(void*));
    EXPECT_EQ(attributes->wTypeFlags, TYPEFLAG_FDISPATCHABLE);
    expectDifference(System::wine, "interfaces made in memory are aligned to four bytes",
                     [&] { EXPECT_EQ(attributes->cbAlignment, alignof(void*)); });
}

TEST(CreatedInterface, AllowsOneNameToTheAccessorsOfAPropertyOnly) {
    auto const library = createLibrary();
    auto const type = createCounter(library.get(), 0);
    Wide total = OLESTR("Total"), add = OLESTR("Add"), free = OLESTR("Free");
    Wide a = OLESTR("a"), b = OLESTR("b"), c = OLESTR("c"), d = OLESTR("d");
    LPOLESTR totals[] = {total.data(), a.data()};
    LPOLESTR adds[] = {add.data()};
    LPOLESTR frees[] = {free.data(), a.data(), b.data(), c.data(), d.data()};
    struct {
        UINT index;
        LPOLESTR* names;
        UINT count;
        HRESULT expected;
    } const cases[] = {
        {0, totals, 1, TYPE_E_AMBIGUOUSNAME},
        {1, adds, 1, TYPE_E_AMBIGUOUSNAME},
        // The value of a property has no name.
        {2, totals, 2, TYPE_E_ELEMENTNOTFOUND},
        {0, frees, 5, TYPE_E_ELEMENTNOTFOUND},
        {0, frees, 0, TYPE_E_ELEMENTNOTFOUND},
        {3, frees, 1, TYPE_E_ELEMENTNOTFOUND},
        {0, nullptr, 1, E_INVALIDARG},
        {0, frees, 4, S_OK},
    };
    for (auto const& entry : cases) {
        EXPECT_EQ(type->SetFuncAndParamNames(entry.index, entry.names, entry.count), entry.expected)
            << entry.index << ", " << entry.count;
    }
    EXPECT_EQ(nameOf(readType(type.get()).get(), 1), OLESTR("Free"));
    expectDifference(System::wine, "names of another case are other names", [&] {
        Wide spelling = OLESTR("TOTAL");
        LPOLESTR names[] = {spelling.data()};
        EXPECT_EQ(type->SetFuncAndParamNames(0, names, 1), TYPE_E_AMBIGUOUSNAME);
    });
}

TEST(CreatedInterface, HasOneBase) {
    auto const library = createLibrary();
    auto const type = createType(library.get(), OLESTR("IOne"), TKIND_INTERFACE);
    HREFTYPE const base = referTo(type.get(), standardType(IID_IUnknown).get());
    EXPECT_EQ(type->AddImplType(1, base), TYPE_E_ELEMENTNOTFOUND);
    EXPECT_EQ(type->AddImplType(0, base), S_OK);
    for (UINT const index : {0u, 1u}) {
        EXPECT_EQ(type->AddImplType(index, base), TYPE_E_ELEMENTNOTFOUND);
    }
    EXPECT_EQ(attributesOf(readType(type.get()).get())->cImplTypes, 1);
    EXPECT_EQ(attributesOf(readType(type.get()).get())->cbSizeVft, slot(3));
    EXPECT_EQ(type->SetImplTypeFlags(0, IMPLTYPEFLAG_FDEFAULT), TYPE_E_BADMODULEKIND);
    EXPECT_EQ(type->DeleteImplType(0), S_OK);
    EXPECT_EQ(type->DeleteImplType(0), TYPE_E_ELEMENTNOTFOUND);
    EXPECT_EQ(attributesOf(readType(type.get()).get())->cImplTypes, 0);
}

TEST(CreatedInterface, KeepsMarshallingInstructions) {
    auto const library = createLibrary();
    auto const type = createType(library.get(), OLESTR("IMarshalled"), TKIND_INTERFACE);
    FunctionShape function(1);
    addFunction(type.get(), function, {OLESTR("Do")});
    BSTR const given = SysAllocString(OLESTR("ops"));
    BSTR found = nullptr;
    expectDifference(System::wine, "marshalling instructions are not kept", [&] {
        EXPECT_EQ(type->SetMops(0, given), S_OK);
        EXPECT_EQ(type->SetMops(1, given), TYPE_E_ELEMENTNOTFOUND);
        EXPECT_EQ(readType(type.get())->GetMops(1, &found), S_OK);
        EXPECT_EQ(taken(found), OLESTR("ops"));
    });
    SysFreeString(given);
}

TEST(CreatedInterface, RefusesFunctionsThatContradictThemselves) {
    auto const library = createLibrary();
    auto const type = createType(library.get(), OLESTR("IStrict"), TKIND_INTERFACE);
    struct {
        char const* what;
        void (*change)(FUNCDESC&);
        HRESULT expected;
    } const cases[] = {
        {"half a slot", [](FUNCDESC& f) { f.oVft = 4; }, E_INVALIDARG},
        {"an odd slot", [](FUNCDESC& f) { f.oVft = 1; }, E_INVALIDARG},
        {"dispatch only", [](FUNCDESC& f) { f.funckind = FUNC_DISPATCH; }, TYPE_E_BADMODULEKIND},
        {"static", [](FUNCDESC& f) { f.funckind = FUNC_STATIC; }, TYPE_E_BADMODULEKIND},
        {"not pure", [](FUNCDESC& f) { f.funckind = FUNC_VIRTUAL; }, TYPE_E_BADMODULEKIND},
        {"unknown kind", [](FUNCDESC& f) { f.funckind = static_cast<FUNCKIND>(9); },
         TYPE_E_BADMODULEKIND},
        {"no value", [](FUNCDESC& f) { f.invkind = INVOKE_PROPERTYPUT; },
         TYPE_E_INCONSISTENTPROPFUNCS},
    };
    for (auto const& entry : cases) {
        FunctionShape function(MEMBERID_NIL);
        entry.change(function);
        EXPECT_EQ(type->AddFuncDesc(0, &function), entry.expected) << entry.what;
    }
    EXPECT_EQ(type->AddFuncDesc(0, nullptr), E_INVALIDARG);
    FunctionShape late(MEMBERID_NIL);
    EXPECT_EQ(type->AddFuncDesc(1, &late), TYPE_E_ELEMENTNOTFOUND);
    EXPECT_EQ(attributesOf(readType(type.get()).get())->cFuncs, 0);
}

}  // namespace
}  // namespace velk::test
