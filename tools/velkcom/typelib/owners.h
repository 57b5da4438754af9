/// Owners of what the type interfaces hand out, for the printer.
#pragma once

#include <memory>
#include <string_view>

#include <windows.h>

#include <objbase.h>
#include <oleauto.h>

namespace velk::tools {

struct ReleaseInterface {
    void operator()(IUnknown* object) const { object->Release(); }
};
template <typename Interface>
using InterfaceOwner = std::unique_ptr<Interface, ReleaseInterface>;

/// Gives a description back to the object that handed it out, which has to
/// outlive the owner.
template <typename Source, typename Description, auto release>
struct GiveBack {
    Source* source;
    void operator()(Description* description) const { (source->*release)(description); }
};

using LibraryAttributes =
    std::unique_ptr<TLIBATTR, GiveBack<ITypeLib, TLIBATTR, &ITypeLib::ReleaseTLibAttr>>;
using TypeAttributes =
    std::unique_ptr<TYPEATTR, GiveBack<ITypeInfo, TYPEATTR, &ITypeInfo::ReleaseTypeAttr>>;
using Function =
    std::unique_ptr<FUNCDESC, GiveBack<ITypeInfo, FUNCDESC, &ITypeInfo::ReleaseFuncDesc>>;
using Variable = std::unique_ptr<VARDESC, GiveBack<ITypeInfo, VARDESC, &ITypeInfo::ReleaseVarDesc>>;

/// A text that a call fills in; null where there is none.
class TextOwner {
  public:
    TextOwner() = default;
    TextOwner(TextOwner const&) = delete;
    TextOwner& operator=(TextOwner const&) = delete;
    ~TextOwner() { SysFreeString(text_); }

    BSTR* out() { return &text_; }
    bool present() const { return text_ != nullptr; }
    std::basic_string_view<OLECHAR> view() const { return {text_, SysStringLen(text_)}; }

  private:
    BSTR text_ = nullptr;
};

class ValueOwner {
  public:
    ValueOwner() { VariantInit(&value_); }
    ValueOwner(ValueOwner const&) = delete;
    ValueOwner& operator=(ValueOwner const&) = delete;
    ~ValueOwner() { VariantClear(&value_); }

    VARIANT* out() { return &value_; }
    VARIANT const& get() const { return value_; }

  private:
    VARIANT value_;
};

inline LibraryAttributes attributesOf(ITypeLib* library) {
    TLIBATTR* attributes = nullptr;
    if (FAILED(library->GetLibAttr(&attributes))) attributes = nullptr;
    return {attributes, {library}};
}

inline TypeAttributes attributesOf(ITypeInfo* type) {
    TYPEATTR* attributes = nullptr;
    if (FAILED(type->GetTypeAttr(&attributes))) attributes = nullptr;
    return {attributes, {type}};
}

inline Function functionOf(ITypeInfo* type, UINT index) {
    FUNCDESC* function = nullptr;
    if (FAILED(type->GetFuncDesc(index, &function))) function = nullptr;
    return {function, {type}};
}

inline Variable variableOf(ITypeInfo* type, UINT index) {
    VARDESC* variable = nullptr;
    if (FAILED(type->GetVarDesc(index, &variable))) variable = nullptr;
    return {variable, {type}};
}

}  // namespace velk::tools
