/// Text in the bytes of a published code page.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace velk::platform {

/// A code page by its published number: 1252 and its kin, 932 and the other
/// double-byte ones, 10000, 1200 (UTF-16), 65001 (UTF-8) and what else the C
/// library can convert. In a page that it cannot, only ASCII is text. One
/// thread at a time may use an object.
class CodePage {
  public:
    explicit CodePage(unsigned number);
    CodePage(CodePage&&) noexcept;
    CodePage& operator=(CodePage&&) noexcept;
    ~CodePage();

    unsigned number() const noexcept { return number_; }
    bool isUtf16() const noexcept;
    bool isUtf8() const noexcept;

    /// What means no character becomes U+FFFD.
    std::u16string toText(std::string_view bytes) const;

    /// Nothing when the page lacks a character of the text.
    std::optional<std::string> toPageBytes(std::u16string_view text) const;

  private:
    struct Converters;

    Converters& converters() const;

    unsigned number_;
    mutable std::unique_ptr<Converters> converters_;
};

}  // namespace velk::platform
