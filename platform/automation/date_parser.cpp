#include <array>
#include <ctime>
#include <optional>

#include "calendar.h"
#include "date_text.h"
#include "text_characters.h"

namespace velk::platform {
namespace {

constexpr unsigned mostNumbers = 3;
constexpr int greatestNumber = 9999;

constexpr std::array<std::u16string_view, 12> months = {
    u"January", u"February", u"March",     u"April",   u"May",      u"June",
    u"July",    u"August",   u"September", u"October", u"November", u"December"};
constexpr std::array<std::u16string_view, 7> days = {
    u"Sunday", u"Monday", u"Tuesday", u"Wednesday", u"Thursday", u"Friday", u"Saturday"};
constexpr std::size_t shortLength = 3;

/// The parts that a text names, before it is settled which number is which.
struct DateParts {
    std::array<int, mostNumbers> numbers{};
    unsigned count = 0;
    int month = 0;             ///< 1 to 12 when it is named
    unsigned beforeMonth = 0;  ///< how many numbers stand before its name
    int second = -1;           ///< of the day, or -1 without a time
};

int currentYear() noexcept {
    std::time_t const now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    return local.tm_year + 1900;
}

/// Cuts a text into the parts of a date and a time.
class DateScanner {
  public:
    DateScanner(OLECHAR const* text, DateParts& parts) noexcept : next(text), parts(parts) {}

    /// False for a text with anything in it that is no part of a date.
    bool scan() noexcept {
        bool expectPart = true;
        for (skipBlanks(); *next != 0; skipBlanks()) {
            if (isDigit(*next)) {
                if (!takeTimeOrNumber()) return false;
                expectPart = false;
            } else if (isLetter(*next)) {
                if (!takeName()) return false;
                expectPart = false;
            } else if (!expectPart && isSeparator(*next)) {
                ++next;
                expectPart = true;
            } else {
                return false;
            }
        }
        return !expectPart;
    }

  private:
    void skipBlanks() noexcept {
        while (isBlank(*next)) ++next;
    }

    static bool isSeparator(OLECHAR character) noexcept {
        return character == u'/' || character == u'-' || character == u',';
    }

    static bool isTimeSeparator(OLECHAR character) noexcept {
        return character == u':' || character == u'.';
    }

    bool takeNumber(int& value) noexcept {
        value = 0;
        if (!isDigit(*next)) return false;
        for (; isDigit(*next); ++next) {
            value = value * 10 + (*next - u'0');
            if (value > greatestNumber) return false;
        }
        return true;
    }

    bool takeTimeOrNumber() noexcept {
        int value = 0;
        if (!takeNumber(value)) return false;
        OLECHAR const* const afterNumber = next;
        skipBlanks();
        if (isTimeSeparator(*next) || atHalfOfDay()) return takeTime(value);
        next = afterNumber;
        if (parts.count == mostNumbers) return false;
        parts.numbers[parts.count++] = value;
        return true;
    }

    bool takeTime(int hour) noexcept {
        if (parts.second >= 0) return false;
        std::array<int, 2> minuteAndSecond{};
        for (int& part : minuteAndSecond) {
            if (!isTimeSeparator(*next)) break;
            ++next;
            skipBlanks();
            if (!takeNumber(part)) return false;
            skipBlanks();
        }
        auto const [minute, second] = minuteAndSecond;
        if (hour > 23 || minute > 59 || second > 59) return false;
        if (atHalfOfDay()) {
            bool const afternoon = lowerAscii(*next) == u'p';
            if (afternoon && hour < 12) hour += 12;
            if (!afternoon && hour == 12) hour = 0;
            next += 2;
        }
        parts.second = (hour * 60 + minute) * 60 + second;
        return true;
    }

    // At "AM" or "PM", in any case, as a word of its own.
    bool atHalfOfDay() const noexcept {
        OLECHAR const half = lowerAscii(*next);
        return (half == u'a' || half == u'p') && lowerAscii(next[1]) == u'm' && !isLetter(next[2]);
    }

    // The name of a month, or of a day of the week, which changes nothing.
    bool takeName() noexcept {
        for (std::size_t month = 0; month < months.size(); ++month) {
            if (!takeEither(months[month])) continue;
            if (parts.month != 0) return false;
            parts.month = static_cast<int>(month) + 1;
            parts.beforeMonth = parts.count;
            return true;
        }
        for (auto const day : days) {
            if (takeEither(day)) return true;
        }
        return false;
    }

    bool takeEither(std::u16string_view word) noexcept {
        return takeWord(word) || takeWord(word.substr(0, shortLength));
    }

    bool takeWord(std::u16string_view word) noexcept {
        std::size_t length = 0;
        for (OLECHAR const character : word) {
            if (lowerLatin(next[length]) != lowerLatin(character)) return false;
            ++length;
        }
        if (isLetter(next[length])) return false;
        next += length;
        return true;
    }

    OLECHAR const* next;
    DateParts& parts;
};

/// Which number is the year, the month and the day; -1 stands for "not given".
struct Order {
    int year;
    int month;
    int day;
};

// The first order that gives a date that exists is the one that is meant.
constexpr Order threeNumbers[] = {{2, 0, 1}, {0, 1, 2}, {0, 2, 1}, {2, 1, 0}};
constexpr Order twoNumbers[] = {{-1, 0, 1}, {-1, 1, 0}, {1, 0, -1}, {0, 1, -1}};
// With a named month, by the count of numbers before the name.
constexpr Order dayOrYear[] = {{-1, -1, 0}, {0, -1, -1}};
constexpr Order dayThenYear[] = {{1, -1, 0}};
constexpr Order aroundName[] = {{1, -1, 0}, {0, -1, 1}};
constexpr Order yearThenDay[] = {{0, -1, 1}};

std::optional<LONG> dayIn(Order const& order, DateParts const& parts) noexcept {
    auto const pick = [&parts](int index, int otherwise) {
        return index < 0 ? otherwise : parts.numbers[static_cast<unsigned>(index)];
    };
    CalendarDate const date{order.year < 0 ? currentYear() : fullYear(pick(order.year, 0)),
                            pick(order.month, parts.month), pick(order.day, 1)};
    if (!isCalendarDate(date)) return std::nullopt;
    return dayOf(date);
}

template <std::size_t Count>
std::optional<LONG> firstDayIn(Order const (&orders)[Count], DateParts const& parts) noexcept {
    for (Order const& order : orders) {
        if (auto const day = dayIn(order, parts)) return day;
    }
    return std::nullopt;
}

std::optional<LONG> resolveDay(DateParts const& parts) noexcept {
    if (parts.month == 0) {
        if (parts.count == 3) return firstDayIn(threeNumbers, parts);
        return parts.count == 2 ? firstDayIn(twoNumbers, parts) : std::nullopt;
    }
    if (parts.count == 1) return firstDayIn(dayOrYear, parts);
    if (parts.count != 2) return std::nullopt;
    if (parts.beforeMonth == 0) return firstDayIn(dayThenYear, parts);
    return parts.beforeMonth == 1 ? firstDayIn(aroundName, parts) : firstDayIn(yearThenDay, parts);
}

}  // namespace

HRESULT parseDate(OLECHAR const* text, DATE& date) noexcept {
    DateParts parts;
    if (text == nullptr || !DateScanner(text, parts).scan()) return DISP_E_TYPEMISMATCH;
    std::optional<LONG> day;
    if (parts.count != 0 || parts.month != 0) {
        day = resolveDay(parts);
        if (!day) return DISP_E_TYPEMISMATCH;
    } else if (parts.second < 0) {
        return DISP_E_TYPEMISMATCH;
    }
    date = joinDate(day.value_or(0), parts.second < 0 ? 0 : parts.second);
    return S_OK;
}

}  // namespace velk::platform
