#include "VelkCOMFileProperties/property_values.h"

#include <cstring>
#include <type_traits>

namespace velk::adapter {
namespace {

/// A copy in task memory, which PropVariantClear gives back; null when there
/// is no memory.
template <typename Character>
Character* taskCopy(Character const* text, std::size_t length) {
    auto* const copy = static_cast<Character*>(CoTaskMemAlloc((length + 1) * sizeof(Character)));
    if (copy == nullptr) return nullptr;
    std::memcpy(copy, text, length * sizeof(Character));
    copy[length] = 0;
    return copy;
}

bool setText(mzComStringC const& text, com::PropVariant& result) {
    result.address()->pwszVal = taskCopy(text.oleText(), static_cast<std::size_t>(text.length()));
    if (result.address()->pwszVal == nullptr) return false;
    result.address()->vt = VT_LPWSTR;
    return true;
}

bool setBytes(std::string const& text, com::PropVariant& result) {
    result.address()->pszVal = taskCopy(text.data(), text.size());
    if (result.address()->pszVal == nullptr) return false;
    result.address()->vt = VT_LPSTR;
    return true;
}

}  // namespace

mzComVariantC propVariantToHost(PROPVARIANT const& value) {
    return std::visit(
        [](auto const& content) -> mzComVariantC {
            using Content = std::decay_t<decltype(content)>;
            if constexpr (std::is_same_v<Content, std::monostate>) {
                return {};
            } else if constexpr (std::is_same_v<Content, com::ByteText>) {
                return mzComStringC::fromUtf8(content.bytes.c_str(), -1);
            } else if constexpr (std::is_same_v<Content, std::basic_string<OLECHAR>>) {
                static_assert(sizeof(OLECHAR) == sizeof(unsigned short));
                return mzComStringC::fromLocal8BitW(
                    reinterpret_cast<unsigned short const*>(content.data()),
                    static_cast<int>(content.size()));
            } else {
                return mzComVariantC(content);
            }
        },
        com::readScriptForm(value));
}

bool hostToPropVariant(mzComVariantC const& value, com::PropVariant& result) {
    result.reset();
    mzComVariantC const content = value.skipVariable();
    switch (content.getType()) {
        case mzTypeEmpty:
            return true;
        case mzTypeInteger:
            result.address()->vt = VT_I4;
            result.address()->lVal = content.getInt();
            return true;
        case mzTypeDouble:
            result.address()->vt = VT_R8;
            result.address()->dblVal = content.getDouble();
            return true;
        case mzTypeString: {
            mzComStringC text;
            return content.get(text) == mzSuccess && setText(text, result);
        }
        default: {
            mzComStringC text;
            return content.getExt(text) == mzSuccess && setBytes(text.toUtf8(), result);
        }
    }
}

}  // namespace velk::adapter
