#include <algorithm>
#include <charconv>
#include <limits>

#include <objbase.h>
#include <oleauto.h>

#include "com/utf.h"
#include "props/value_text.h"
#include "usage_error.h"

// Values of properties from the command line.

namespace velk::velkcom {
namespace {

[[noreturn]] void refuse(VARTYPE type, std::string const& text) {
    throw UsageError("\"" + text + "\" is no value of the type " + typeName(type));
}

template <typename Number>
Number number(VARTYPE type, std::string const& text, Number least, Number most) {
    Number value{};
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    bool const isWhole = error == std::errc() && end == text.data() + text.size();
    if (!isWhole || value < least || value > most) refuse(type, text);
    return value;
}

long long wholeNumber(VARTYPE type, std::string const& text, long long least, long long most) {
    return number<long long>(type, text, least, most);
}

double floatingNumber(VARTYPE type, std::string const& text, double most) {
    return number<double>(type, text, -most, most);
}

VARIANT_BOOL truth(std::string const& text) {
    if (text == "true" || text == "1") return VARIANT_TRUE;
    if (text == "false" || text == "0") return VARIANT_FALSE;
    refuse(VT_BOOL, text);
}

/// Takes a time apart from its beginning on.
class TimeReader {
  public:
    explicit TimeReader(std::string_view text) : left_(text) {}

    /// How many digits stand next.
    std::size_t digitsAhead() const {
        return std::min(left_.find_first_not_of("0123456789"), left_.size());
    }
    /// A number of so many digits.
    ULONG digits(std::size_t count) {
        unsigned value = 0;
        auto const part = left_.substr(0, count);
        auto const [end, error] = std::from_chars(part.data(), part.data() + part.size(), value);
        isTime_ = isTime_ && error == std::errc() && part.size() == count &&
                  end == part.data() + part.size();
        left_.remove_prefix(part.size());
        return value;
    }
    WORD twoDigits() { return static_cast<WORD>(digits(2)); }
    void need(bool condition) { isTime_ = isTime_ && condition; }
    bool take(char character) {
        bool const isThere = left_.starts_with(character);
        if (isThere) left_.remove_prefix(1);
        return isThere;
    }
    void need(char character) { isTime_ = take(character) && isTime_; }
    bool isTimeToTheEnd() const { return isTime_ && left_.empty(); }

  private:
    std::string_view left_;
    bool isTime_ = true;
};

/// Up to seven digits behind the point, in ticks of 100 nanoseconds.
LONGLONG fraction(TimeReader& reader) {
    constexpr std::size_t most = 7;
    auto const count = reader.digitsAhead();
    reader.need(count >= 1 && count <= most);
    LONGLONG ticks = reader.digits(std::min(count, most));
    for (auto i = count; i < most; ++i) ticks *= 10;
    return ticks;
}

/// How far the time is ahead of UTC, in ticks.
LONGLONG offset(TimeReader& reader) {
    constexpr LONGLONG ticksPerMinute = 60 * 10'000'000LL;
    if (reader.take('Z')) return 0;
    bool const isBehind = reader.take('-');
    if (!isBehind && !reader.take('+')) return 0;
    LONGLONG const hours = reader.twoDigits();
    reader.need(':');
    LONGLONG const minutes = reader.twoDigits();
    reader.need(hours < 24 && minutes < 60);
    return (isBehind ? -1 : 1) * (hours * 60 + minutes) * ticksPerMinute;
}

FILETIME time(std::string const& text) {
    TimeReader reader(text);
    SYSTEMTIME split{};
    // The last of times have a year of five digits.
    split.wYear = static_cast<WORD>(reader.digits(reader.digitsAhead() == 5 ? 5 : 4));
    reader.need('-');
    split.wMonth = reader.twoDigits();
    reader.need('-');
    split.wDay = reader.twoDigits();
    LONGLONG ticks = 0;
    if (reader.take('T') || reader.take(' ')) {
        split.wHour = reader.twoDigits();
        reader.need(':');
        split.wMinute = reader.twoDigits();
        if (reader.take(':')) split.wSecond = reader.twoDigits();
        if (reader.take('.')) ticks = fraction(reader);
    }
    ticks -= offset(reader);
    FILETIME value{};
    if (!reader.isTimeToTheEnd() || !SystemTimeToFileTime(&split, &value)) {
        refuse(VT_FILETIME, text);
    }
    ticks += static_cast<LONGLONG>((ULONGLONG{value.dwHighDateTime} << 32) + value.dwLowDateTime);
    FILETIME const moved{static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
    // Beyond either end there is no time.
    if (ticks < 0 || !FileTimeToSystemTime(&moved, &split)) refuse(VT_FILETIME, text);
    return moved;
}

template <typename Character>
Character* taskText(std::basic_string_view<Character> text) {
    std::size_t const size = (text.size() + 1) * sizeof(Character);
    auto* const made = static_cast<Character*>(CoTaskMemAlloc(size));
    if (made == nullptr) throw std::bad_alloc();
    std::copy(text.begin(), text.end(), made);
    made[text.size()] = 0;
    return made;
}

std::basic_string<OLECHAR> wideText(std::string const& text) {
    auto const wide = com::fromUtf8(text);
    if (!wide) throw UsageError("the value is not valid UTF-8");
    return *wide;
}

BSTR bstr(std::string const& text) {
    BSTR const made = SysAllocString(wideText(text).c_str());
    if (made == nullptr) throw std::bad_alloc();
    return made;
}

}  // namespace

bool canBeWritten(VARTYPE type) {
    switch (type) {
        case VT_EMPTY:
        case VT_I2:
        case VT_I4:
        case VT_UI4:
        case VT_R4:
        case VT_R8:
        case VT_BOOL:
        case VT_BSTR:
        case VT_LPSTR:
        case VT_LPWSTR:
        case VT_FILETIME:
            return true;
        default:
            return false;
    }
}

PROPVARIANT valueFromText(VARTYPE type, std::string const& text) {
    PROPVARIANT value{};
    switch (type) {
        case VT_EMPTY:
            if (!text.empty()) refuse(type, text);
            break;
        case VT_I2:
            // Code pages and the like are meant without a sign.
            value.iVal = static_cast<SHORT>(wholeNumber(type, text, -32768, 65535));
            break;
        case VT_I4:
            value.lVal = static_cast<LONG>(wholeNumber(type, text, -2147483648LL, 2147483647LL));
            break;
        case VT_UI4:
            value.ulVal = static_cast<ULONG>(wholeNumber(type, text, 0, 4294967295LL));
            break;
        case VT_R4:
            value.fltVal =
                static_cast<float>(floatingNumber(type, text, std::numeric_limits<float>::max()));
            break;
        case VT_R8:
            value.dblVal = floatingNumber(type, text, std::numeric_limits<double>::max());
            break;
        case VT_BOOL:
            value.boolVal = truth(text);
            break;
        case VT_BSTR:
            value.bstrVal = bstr(text);
            break;
        case VT_LPSTR:
            static_cast<void>(wideText(text));
            value.pszVal = taskText(std::string_view(text));
            break;
        case VT_LPWSTR:
            value.pwszVal = taskText(std::basic_string_view<OLECHAR>(wideText(text)));
            break;
        case VT_FILETIME:
            value.filetime = time(text);
            break;
        default:
            throw UsageError("values of the type " + typeName(type) + " cannot be written");
    }
    value.vt = type;
    return value;
}

}  // namespace velk::velkcom
