#include "host/com_string.h"

#include <cstdint>
#include <string_view>

static_assert(sizeof(OLECHAR) == sizeof(QChar) && sizeof(unsigned short) == sizeof(QChar));

namespace {

template <class CodeUnit>
QString fromCodeUnits(CodeUnit const* text, int length) {
    return QString(reinterpret_cast<QChar const*>(text), length);
}

/// Length of NUL-terminated UTF-16 text.
int terminatedLength(unsigned short const* text) {
    int length = 0;
    while (text[length] != 0) ++length;
    return length;
}

unsigned foldAscii(unsigned codeUnit) {
    return codeUnit >= 'A' && codeUnit <= 'Z' ? codeUnit + ('a' - 'A') : codeUnit;
}

/// Compares code unit by code unit; `right` gives those of the other text.
template <class Right>
int compareCodeUnits(QString const& left, Right const& right, int rightLength, caseCompare mode) {
    bool const fold = mode == caseCompareAsciiInsensitive;
    int const common = left.size() < rightLength ? left.size() : rightLength;
    for (int i = 0; i < common; ++i) {
        unsigned const a = left.constData()[i].unicode();
        unsigned const b = right(i);
        if (a == b || (fold && foldAscii(a) == foldAscii(b))) continue;
        return (fold ? foldAscii(a) < foldAscii(b) : a < b) ? -1 : 1;
    }
    return left.size() == rightLength ? 0 : left.size() < rightLength ? -1 : 1;
}

}  // namespace

mzComStringC::mzComStringC(char const* text) : text_(QString::fromLatin1(text)) {}

mzComStringC::mzComStringC(unsigned short const* text) : text_(fromLocal8BitW(text, -1).text_) {}

mzComStringC::mzComStringC(OLECHAR const* text)
    : mzComStringC(reinterpret_cast<unsigned short const*>(text)) {}

mzComStringC::mzComStringC(mzBstrHolderC const& text) : mzComStringC(fromBSTR(text)) {}

mzComStringC mzComStringC::fromBSTR(BSTR text) {
    if (!text) return {};
    return mzComStringC(fromCodeUnits(text, static_cast<int>(SysStringLen(text))));
}

mzComStringC mzComStringC::fromBSTR(mzBstrHolderC const& text) {
    return fromBSTR(text.get());
}

mzComStringC mzComStringC::fromUtf8(char const* text, int length) {
    return mzComStringC(QString::fromUtf8(text, text ? length : 0));
}

mzComStringC mzComStringC::fromLocal8BitW(unsigned short const* text, int length) {
    if (!text) return {};
    return mzComStringC(fromCodeUnits(text, length < 0 ? terminatedLength(text) : length));
}

mzComStringC mzComStringC::fromInt(int value, int base) {
    if (base < 2 || base > 36) return {};
    if (base == 10) return mzComStringC(QString::number(value));
    return mzComStringC(QString::number(static_cast<std::uint32_t>(value), base));
}

int mzComStringC::compare(char const* other, caseCompare mode) const {
    std::string_view const right = other ? other : "";
    return compareCodeUnits(
        text_, [right](int i) { return static_cast<unsigned char>(right[i]); },
        static_cast<int>(right.size()), mode);
}

int mzComStringC::compare(mzComStringC const& other, caseCompare mode) const {
    return compareCodeUnits(
        text_, [&other](int i) { return other.text_.constData()[i].unicode(); }, other.text_.size(),
        mode);
}

mzBstrHolderC mzComStringC::toBSTR() const {
    return mzBstrHolderC(oleText(), length());
}

std::string mzComStringC::toUtf8() const {
    return text_.toStdString();
}

std::string mzComStringC::toAscii() const {
    std::string ascii;
    ascii.reserve(static_cast<std::size_t>(length()));
    for (QChar const codeUnit : text_) {
        ascii += codeUnit.unicode() < 0x80 ? static_cast<char>(codeUnit.unicode()) : '?';
    }
    return ascii;
}

std::basic_string<unsigned short> mzComStringC::toLocal8BitW() const {
    return {text_.utf16(), static_cast<std::size_t>(length())};
}

OLECHAR const* mzComStringC::oleText() const {
    return reinterpret_cast<OLECHAR const*>(text_.utf16());
}
