/// An object behind the interface IRegister of the test library.
#pragma once

#include "records.h"

namespace velk::test {

/// The vtable of IRegister as its description lays it out.
struct IRegister : IDispatch {
    virtual HRESULT STDMETHODCALLTYPE Birthday(Person* person) = 0;
    virtual HRESULT STDMETHODCALLTYPE Oldest(SAFEARRAY* people, Person* oldest) = 0;
    virtual HRESULT STDMETHODCALLTYPE Find(BSTR name, Person* person, VARIANT_BOOL* found) = 0;
    virtual HRESULT STDMETHODCALLTYPE Everyone(SAFEARRAY** people) = 0;
    virtual HRESULT STDMETHODCALLTYPE Greet(Person person, BSTR* text) = 0;
    virtual HRESULT STDMETHODCALLTYPE Move(Spot from, DOUBLE by, Spot* to) = 0;
    virtual Person STDMETHODCALLTYPE Latest() = 0;
    virtual HRESULT STDMETHODCALLTYPE Nobody(void* nobody) = 0;
};

/// Lives on the stack of a test.
class Register final : public IRegister {
  public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void** object) override {
        *object = nullptr;
        return E_NOINTERFACE;
    }
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

    HRESULT STDMETHODCALLTYPE Birthday(Person* person) override {
        seen = person;
        ++person->age;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Oldest(SAFEARRAY* people, Person* oldest) override {
        auto const* const elements = static_cast<Person*>(people->pvData);
        for (ULONG i = 0; i < people->rgsabound[0].cElements; ++i) {
            if (elements[i].age <= oldest->age) continue;
            SysFreeString(oldest->name);
            *oldest = {SysAllocString(elements[i].name), elements[i].age};
        }
        return oldest->name ? S_OK : E_FAIL;
    }
    HRESULT STDMETHODCALLTYPE Find(BSTR name, Person* person, VARIANT_BOOL* found) override {
        // As any out-parameter: what it held is not looked at.
        *person = {SysAllocString(name), 44};
        *found = VARIANT_TRUE;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Everyone(SAFEARRAY** people) override {
        *people = peopleOf({10, 20, 30});
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Greet(Person person, BSTR* text) override {
        Wide const name = Wide(person.name) + static_cast<OLECHAR>('0' + person.age);
        *text = SysAllocString(name.c_str());
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Move(Spot from, DOUBLE by, Spot* to) override {
        *to = {from.x + static_cast<LONG>(by), from.y + static_cast<FLOAT>(by)};
        return S_OK;
    }
    Person STDMETHODCALLTYPE Latest() override { return {newText(OLESTR("last")), 3}; }
    HRESULT STDMETHODCALLTYPE Nobody(void* nobody) override {
        seen = nobody;
        return S_OK;
    }

    void* seen = nullptr;
};

/// One late-bound call of a Register's member.
class RegisterCall {
  public:
    /// Arguments stand in the order of the declaration.
    HRESULT run(MEMBERID member, std::initializer_list<VARIANT> arguments) {
        VARIANT reversed[4] = {};
        UINT left = static_cast<UINT>(arguments.size());
        for (auto const& argument : arguments) reversed[--left] = argument;
        DISPPARAMS parameters{reversed, nullptr, static_cast<UINT>(arguments.size()), 0};
        return type_->Invoke(static_cast<IRegister*>(&object), member, DISPATCH_METHOD, &parameters,
                             &result, nullptr, nullptr);
    }
    ~RegisterCall() { VariantClear(&result); }

    Register object;
    VARIANT result{};

  private:
    Owned<ITypeLib> library_ = loadRecords();
    Owned<ITypeInfo> type_ = typeNamed(library_.get(), OLESTR("IRegister"));
};

}  // namespace velk::test
