#include "servers/automation/faulty.h"

#include "com/error.h"

namespace velk::test::server {
namespace {

constexpr DISPID firstMember = 1;
constexpr DISPID memberThatIsMissing = 9999;

OLECHAR lower(OLECHAR character) {
    bool const upper = character >= 'A' && character <= 'Z';
    return static_cast<OLECHAR>(upper ? character - 'A' + 'a' : character);
}

Text lower(Text text) {
    for (auto& character : text) character = lower(character);
    return text;
}

bool isNamed(OLECHAR const* given, char const* name) {
    return lower(Text(given)) == lower(textOf(name));
}

HRESULT findName(OLECHAR const* name, DISPID& id) {
    id = DISPID_UNKNOWN;
    if (isNamed(name, "NamesFail")) return E_OUTOFMEMORY;
    if (isNamed(name, "NamesUnknown")) return S_OK;
    if (isNamed(name, "WrongDispId")) id = memberThatIsMissing;
    // The member with the DISPID firstMember + i is at i.
    for (std::size_t i = 0; i < faultyMethods().size(); ++i) {
        if (isNamed(name, faultyMethods()[i].name)) id = firstMember + static_cast<DISPID>(i);
    }
    return id == DISPID_UNKNOWN ? DISP_E_UNKNOWNNAME : S_OK;
}

bool isAboutTheRecord(FaultyMethod const& method) {
    auto const name = textOf(method.name);
    return name == OLESTR("RecordedCalls") || name == OLESTR("ClearRecorded");
}

}  // namespace

HRESULT Faulty::GetTypeInfoCount(UINT* count) noexcept {
    if (!count) return E_POINTER;
    *count = 0;
    return vanished_ ? RPC_E_DISCONNECTED : S_OK;
}

HRESULT Faulty::GetTypeInfo(UINT, LCID, ITypeInfo** type) noexcept {
    if (type) *type = nullptr;
    return vanished_ ? RPC_E_DISCONNECTED : E_NOTIMPL;
}

HRESULT Faulty::GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID, DISPID* ids) noexcept {
    if (vanished_) return RPC_E_DISCONNECTED;
    if (!names || !ids || count == 0) return E_INVALIDARG;
    try {
        HRESULT const code = findName(names[0], ids[0]);
        // Its methods have no named arguments.
        for (UINT i = 1; i < count; ++i) ids[i] = DISPID_UNKNOWN;
        return SUCCEEDED(code) && count > 1 ? DISP_E_UNKNOWNNAME : code;
    }
    VELK_COM_CATCH
}

HRESULT Faulty::Invoke(DISPID member, REFIID, LCID, WORD flags, DISPPARAMS* parameters,
                       VARIANT* result, EXCEPINFO* exception, UINT* argumentError) {
    if (vanished_) return RPC_E_DISCONNECTED;
    DISPPARAMS const none{};
    auto const index = static_cast<std::size_t>(member) - firstMember;
    bool const known = member >= firstMember && index < faultyMethods().size();
    if (!known) return DISP_E_MEMBERNOTFOUND;
    auto const& method = faultyMethods()[index];
    if (!isAboutTheRecord(method)) record_.add(flags, parameters);
    return method.run(*this, {parameters ? *parameters : none, result, exception, argumentError});
}

}  // namespace velk::test::server
