#include "commands/member_call.h"

#include <algorithm>

#include "com/utf.h"
#include "text/result_codes.h"

namespace velk::velkcom {
namespace {

WORD invokeFlags(Access access) {
    switch (access) {
        case Access::method:
            return DISPATCH_METHOD;
        case Access::get:
            return DISPATCH_PROPERTYGET;
        case Access::put:
            return DISPATCH_PROPERTYPUT;
        case Access::putReference:
            return DISPATCH_PROPERTYPUTREF;
        case Access::automatic:
            break;
    }
    // What clients without type information ask for.
    return DISPATCH_METHOD | DISPATCH_PROPERTYGET;
}

std::string codeLine(HRESULT code) {
    std::string const meaning = meaningOfCode(code);
    return describeCode(code) + (meaning.empty() ? "" : ": " + meaning);
}

void addLine(std::string& text, char const* label, BSTR value) {
    if (SysStringLen(value) == 0) return;
    text += std::string("\n  ") + label + ": " + com::toUtf8(com::viewBstr(value));
}

std::string exceptionText(EXCEPINFO& exception) {
    if (exception.pfnDeferredFillIn != nullptr) exception.pfnDeferredFillIn(&exception);
    std::string text;
    addLine(text, "source", exception.bstrSource);
    addLine(text, "description", exception.bstrDescription);
    addLine(text, "help file", exception.bstrHelpFile);
    if (exception.scode != 0) text += "\n  code: " + codeLine(exception.scode);
    if (exception.wCode != 0) text += "\n  number: " + std::to_string(exception.wCode);
    return text;
}

// `position` counts from the last argument.
std::string argumentText(HRESULT code, UINT position, std::size_t count) {
    bool const named = code == DISP_E_TYPEMISMATCH || code == DISP_E_PARAMNOTFOUND;
    if (!named || position >= count) return {};
    return "\n  argument: " + std::to_string(count - position);
}

DISPID findMember(IDispatch* object, std::string const& member) {
    if (member.empty()) return DISPID_VALUE;
    auto name = com::fromUtf8(member);
    if (!name) throw UsageError("the name of a member is not valid UTF-8");
    LPOLESTR names[] = {name->data()};
    DISPID id = DISPID_UNKNOWN;
    HRESULT const code = object->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &id);
    if (FAILED(code)) throw CallFailure(codeLine(code));
    return id;
}

}  // namespace

com::Variant callMember(IDispatch* object, std::string const& member,
                        std::vector<com::Variant> const& arguments, Access access) {
    DISPID const id = findMember(object, member);
    // The record of a call holds the arguments last to first, and does not own them.
    std::vector<VARIANT> reversed;
    reversed.reserve(arguments.size());
    for (auto const& argument : arguments) reversed.push_back(argument.get());
    std::ranges::reverse(reversed);

    bool const put = access == Access::put || access == Access::putReference;
    DISPID newValue = DISPID_PROPERTYPUT;
    DISPPARAMS parameters{reversed.data(), put ? &newValue : nullptr,
                          static_cast<UINT>(reversed.size()), put ? 1U : 0U};
    com::Variant result;
    com::ExceptionInfo exception;
    UINT wrongArgument = ~0U;
    HRESULT const code =
        object->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, invokeFlags(access), &parameters,
                       put ? nullptr : result.address(), exception.address(), &wrongArgument);
    if (SUCCEEDED(code)) return result;
    std::string text = codeLine(code) + argumentText(code, wrongArgument, arguments.size());
    if (code == DISP_E_EXCEPTION) text += exceptionText(*exception.address());
    throw CallFailure(text);
}

}  // namespace velk::velkcom
