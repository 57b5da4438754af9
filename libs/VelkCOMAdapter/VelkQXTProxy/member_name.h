#pragma once

#include <array>
#include <cstdint>
#include <cstring>

#include <windows.h>

#include <oleauto.h>

#include "host/com_string.h"

namespace velk::adapter {

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

}  // namespace velk::adapter
