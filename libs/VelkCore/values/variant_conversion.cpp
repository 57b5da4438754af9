#include <charconv>
#include <cmath>
#include <limits>

#include "host/variant.h"

namespace {

/// A number as text: the shortest digits that read back as the same number.
mzComStringC textOf(double value) {
    if (std::isnan(value)) return "nan";
    if (value == 0) return "0";
    double const magnitude = std::fabs(value);
    // Between these bounds people expect plain digits.
    bool const plain = magnitude >= 1e-5 && magnitude < 1e15;
    char digits[40];
    auto const end =
        std::to_chars(digits, digits + sizeof digits - 1, value,
                      plain ? std::chars_format::fixed : std::chars_format::scientific);
    *end.ptr = '\0';
    return mzComStringC(QString::fromLatin1(digits).replace(QLatin1Char('e'), QLatin1Char('E')));
}

bool numberOf(mzComStringC const& text, double& number) {
    bool valid = false;
    double const parsed = text.toQString().trimmed().toDouble(&valid);
    if (!valid || !std::isfinite(parsed)) return false;
    number = parsed;
    return true;
}

/// Rounds halves to the even neighbour, whatever the thread's rounding mode.
bool roundToInt(double number, int& value) {
    double rounded = std::floor(number);
    double const part = number - rounded;
    if (part > 0.5 || (part == 0.5 && std::fmod(rounded, 2.0) != 0.0)) rounded += 1.0;
    // Not a number fails both comparisons.
    if (!(rounded >= std::numeric_limits<int>::min() && rounded <= std::numeric_limits<int>::max()))
        return false;
    value = static_cast<int>(rounded);
    return true;
}

bool truthOf(mzComStringC const& text, bool& value) {
    mzComStringC const word(text.toQString().trimmed());
    bool const isTrue = word.compare("true", caseCompareAsciiInsensitive) == 0;
    if (isTrue || word.compare("false", caseCompareAsciiInsensitive) == 0) {
        value = isTrue;
        return true;
    }
    double number = 0;
    if (!numberOf(text, number)) return false;
    value = number != 0;
    return true;
}

unsigned codeOf(bool read) {
    return read ? mzSuccess : mzFailure;
}

}  // namespace

int mzComVariantC::readInt() const noexcept {
    int value = 0;
    return type_ == mzTypeDouble && roundToInt(content_.number, value) ? value : 0;
}

unsigned mzComVariantC::getExt(bool& value) const {
    switch (type_) {
        case mzTypeEmpty:
            value = false;
            return mzSuccess;
        case mzTypeInteger:
            value = content_.integer != 0;
            return mzSuccess;
        case mzTypeDouble:
            value = content_.number != 0;
            return mzSuccess;
        case mzTypeString:
            return codeOf(truthOf(content_.text, value));
        default:
            return isVariable() ? skipVariable().getExt(value) : mzFailure;
    }
}

unsigned mzComVariantC::getExt(double& value) const {
    switch (type_) {
        case mzTypeEmpty:
            value = 0;
            return mzSuccess;
        case mzTypeInteger:
            value = content_.integer;
            return mzSuccess;
        case mzTypeDouble:
            value = content_.number;
            return mzSuccess;
        case mzTypeString:
            return codeOf(numberOf(content_.text, value));
        default:
            return isVariable() ? skipVariable().getExt(value) : mzFailure;
    }
}

unsigned mzComVariantC::getExt(int& value) const {
    if (type_ == mzTypeInteger) {
        value = content_.integer;
        return mzSuccess;
    }
    double number = 0;
    if (getExt(number) != mzSuccess) return mzFailure;
    return codeOf(roundToInt(number, value));
}

unsigned mzComVariantC::getExt(mzComStringC& value) const {
    switch (type_) {
        case mzTypeEmpty:
            value = mzComStringC();
            return mzSuccess;
        case mzTypeInteger:
            value = mzComStringC::fromInt(content_.integer, 10);
            return mzSuccess;
        case mzTypeDouble:
            value = textOf(content_.number);
            return mzSuccess;
        case mzTypeString:
            value = content_.text;
            return mzSuccess;
        default:
            return isVariable() ? skipVariable().getExt(value) : mzFailure;
    }
}
