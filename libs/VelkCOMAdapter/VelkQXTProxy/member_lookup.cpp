#include "VelkQXTProxy/member_lookup.h"

#include <array>
#include <cstdint>
#include <cstring>

#include "VelkQXTProxy/call_failure.h"

namespace velk::adapter {
namespace {

using com::ComPtr;

/// A member's name as native objects take it: NUL-terminated, and readable as
/// a BSTR by those that take it for one. A name of usual length stays on the
/// stack, because every call needs it once. Throws `mzOutOfMemoryC`.
class MemberName {
  public:
    explicit MemberName(mzComStringC const& name) {
        auto const length = static_cast<std::size_t>(name.length());
        if (length > usualLength) {
            long_ = name.toBSTR();
            text_ = long_.get();
            return;
        }
        // The layout of a BSTR: the size in bytes, the text, a NUL.
        std::uint32_t const bytes = static_cast<std::uint32_t>(length * sizeof(OLECHAR));
        std::memcpy(usual_.data() + prefix - sizeof bytes / sizeof(OLECHAR), &bytes, sizeof bytes);
        std::memcpy(usual_.data() + prefix, name.oleText(), bytes);
        usual_[prefix + length] = 0;
        text_ = usual_.data() + prefix;
    }
    MemberName(MemberName const&) = delete;
    MemberName& operator=(MemberName const&) = delete;

    LPOLESTR get() const noexcept { return text_; }

  private:
    static constexpr std::size_t usualLength = 55;
    // As far as the alignment of a BSTR's text reaches.
    static constexpr std::size_t prefix = 4;

    alignas(8) std::array<OLECHAR, prefix + usualLength + 1> usual_;
    mzBstrHolderC long_;
    OLECHAR* text_;
};

struct Lookup {
    HRESULT code = S_OK;
    char const* what = nullptr;
};

/// Asks the type information of the forced interface, which stands in the same
/// library as that of the object.
Lookup findForced(NativeCall const& call, LPOLESTR* name, Member& member) {
    ComPtr<ITypeInfo> type;
    if (HRESULT const code = call.object->GetTypeInfo(0, LOCALE_USER_DEFAULT, type.put());
        code != S_OK || !type) {
        return {code, "no type info found"};
    }
    ComPtr<ITypeLib> library;
    UINT index = 0;
    if (HRESULT const code = type->GetContainingTypeLib(library.put(), &index);
        code != S_OK || !library) {
        return {code, "no type lib found"};
    }
    ComPtr<ITypeInfo> forced;
    if (HRESULT const code = library->GetTypeInfoOfGuid(call.forcedIid, forced.put());
        code != S_OK || !forced) {
        return {code, "no type info for GUID found"};
    }
    if (HRESULT const code = forced->GetIDsOfNames(name, 1, &member.id); code != S_OK) {
        return {code, "on forced interface"};
    }
    member.forcedType = forced;
    return {};
}

}  // namespace

bool findMember(NativeCall const& call, Member& member, mzComStringC& failure) {
    if (call.name.isEmpty()) return true;
    MemberName const text(call.name);
    LPOLESTR name = text.get();
    if (call.object->GetIDsOfNames(IID_NULL, &name, 1, LOCALE_USER_DEFAULT, &member.id) == S_OK) {
        return true;
    }
    failure = "Member '" + call.name + "' not found";
    if (IsEqualGUID(call.forcedIid, GUID_NULL)) return false;
    Lookup const lookup = findForced(call, &name, member);
    if (!lookup.what) return true;
    failure = failure + " (" + lookup.what + "): 0x" + hexText(lookup.code);
    return false;
}

}  // namespace velk::adapter
