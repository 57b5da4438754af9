#pragma once

#include <QString>
#include <string>

#include "host/bstr_holder.h"
#include "host/export.h"

/// How `mzComStringC::compare` treats upper and lower case.
enum caseCompare : int {
    /// A to Z and a to z are the same; all other characters compare exactly.
    caseCompareAsciiInsensitive = 0,
    /// Every code unit compares exactly.
    caseCompareExact = 1
};

/// Unicode text with value semantics: copies are independent values, although
/// copying is cheap. Lengths count UTF-16 code units; NULs and unpaired
/// surrogates are kept as they come. Different objects may be used on
/// different threads, also when they are copies of one another.
class VELKCORE_API mzComStringC {
  public:
    mzComStringC() = default;
    /// NUL-terminated 8-bit text, read as Latin-1; null gives the empty string.
    mzComStringC(char const* text);
    /// NUL-terminated UTF-16 text; null gives the empty string.
    mzComStringC(unsigned short const* text);
    /// The same for the platform's own wide character type.
    mzComStringC(OLECHAR const* text);
    mzComStringC(QString text) : text_(std::move(text)) {}
    /// The whole string with its embedded NULs; no string gives the empty one.
    mzComStringC(mzBstrHolderC const& text);

    /// The whole string with its embedded NULs; null gives the empty string.
    static mzComStringC fromBSTR(BSTR text);
    static mzComStringC fromBSTR(mzBstrHolderC const& text);
    /// Decodes UTF-8, malformed bytes as U+FFFD. `length` in bytes, negative for
    /// NUL-terminated text; null gives the empty string.
    static mzComStringC fromUtf8(char const* text, int length);
    /// UTF-16 text of the platform's wide form. `length` in code units, negative
    /// for NUL-terminated text; null gives the empty string.
    static mzComStringC fromLocal8BitW(unsigned short const* text, int length);
    /// The number in digits of `base` (2 to 36), lower case. A negative value
    /// has a minus sign in base 10; in every other base it is written as its
    /// 32-bit two's complement (eight digits in base 16). Another base gives
    /// the empty string.
    static mzComStringC fromInt(int value, int base);

    /// Length in code units.
    int length() const { return text_.size(); }
    bool isEmpty() const { return text_.isEmpty(); }
    /// Below, equal to or above 0 as this text sorts before, equal to or after
    /// `other` (8-bit text, null counts as empty).
    int compare(char const* other, caseCompare mode) const;
    int compare(mzComStringC const& other, caseCompare mode) const;

    /// A new `BSTR`, also for the empty string. Throws `mzOutOfMemoryC`.
    mzBstrHolderC toBSTR() const;
    /// UTF-8; an unpaired surrogate becomes a question mark.
    std::string toUtf8() const;
    /// 8-bit text of the ASCII characters, `?` for every other code unit.
    std::string toAscii() const;
    /// The UTF-16 code units.
    std::basic_string<unsigned short> toLocal8BitW() const;
    QString const& toQString() const { return text_; }
    operator QString() const { return text_; }

    /// The code units, NUL-terminated, valid until the string changes.
    OLECHAR const* oleText() const;
    unsigned short const* utf16() const { return text_.utf16(); }

    friend bool operator==(mzComStringC const& left, mzComStringC const& right) {
        return left.text_ == right.text_;
    }
    friend mzComStringC operator+(mzComStringC const& left, mzComStringC const& right) {
        return mzComStringC(left.text_ + right.text_);
    }
    friend mzComStringC operator+(mzComStringC const& left, char const* right) {
        return left + mzComStringC(right);
    }
    friend mzComStringC operator+(char const* left, mzComStringC const& right) {
        return mzComStringC(left) + right;
    }

  private:
    QString text_;
};
