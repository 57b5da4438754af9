#include "servers/automation/support/late_bound.h"

#include <algorithm>

#include "com/error.h"
#include "servers/automation/value_description.h"

namespace velk::test {
namespace {

std::string ascii(com::TextView text) {
    std::string result;
    for (auto const character : text) {
        bool const plain = character > 0 && character < 0x80;
        result += plain ? static_cast<char>(character) : character == 0 ? '.' : '?';
    }
    return result;
}

}  // namespace

std::string asciiOf(BSTR text) {
    return ascii(com::viewBstr(text));
}

std::string describe(VARIANT const& value) {
    return ascii(server::describeValue(value));
}

std::string NativeAnswer::text() const {
    return FAILED(code) ? com::hexadecimal(code) : describe(result.get());
}

NativeAnswer callByName(IDispatch& object, char const* member, std::vector<VARIANT> arguments,
                        WORD flags) {
    NativeAnswer answer;
    auto name = server::textOf(member);
    LPOLESTR names = name.data();
    DISPID id = DISPID_UNKNOWN;
    answer.code = object.GetIDsOfNames(GUID_NULL, &names, 1, LOCALE_USER_DEFAULT, &id);
    if (FAILED(answer.code)) return answer;
    std::reverse(arguments.begin(), arguments.end());
    DISPID put = DISPID_PROPERTYPUT;
    bool const puts = flags & (DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF);
    DISPPARAMS parameters{arguments.data(), puts ? &put : nullptr,
                          static_cast<UINT>(arguments.size()), puts ? 1U : 0U};
    answer.code = object.Invoke(id, GUID_NULL, LOCALE_USER_DEFAULT, flags, &parameters,
                                puts ? nullptr : answer.result.put(), answer.exception.put(),
                                &answer.argumentError);
    return answer;
}

NativeAnswer getByName(IDispatch& object, char const* member, std::vector<VARIANT> indexes) {
    return callByName(object, member, std::move(indexes), DISPATCH_PROPERTYGET);
}

NativeAnswer putByName(IDispatch& object, char const* member, std::vector<VARIANT> arguments,
                       WORD flags) {
    return callByName(object, member, std::move(arguments), flags);
}

std::vector<std::string> textsIn(com::Variant const& vector) {
    std::vector<std::string> texts;
    SAFEARRAY* const array =
        vector.get().vt == (VT_ARRAY | VT_BSTR) ? vector.get().parray : nullptr;
    if (!array || SafeArrayGetDim(array) != 1) return texts;
    auto* const elements = static_cast<BSTR*>(array->pvData);
    for (ULONG i = 0; i < array->rgsabound[0].cElements; ++i) texts.push_back(asciiOf(elements[i]));
    return texts;
}

}  // namespace velk::test
