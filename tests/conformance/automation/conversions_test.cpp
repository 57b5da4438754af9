// What values become: the tables of tests/data/automation, and what holds for
// more values than any table has.
#include <chrono>
#include <sstream>

#include <gtest/gtest.h>

#include "support/data_table.h"
#include "support/value_notation.h"

namespace velk::test {
namespace {

constexpr LCID english = 0x409;

std::vector<std::string> wordsOf(std::string const& text) {
    std::istringstream stream(text);
    return {std::istream_iterator<std::string>(stream), {}};
}

USHORT flagsOf(std::string const& words) {
    USHORT flags = 0;
    for (auto const& word : wordsOf(words)) {
        flags |= word == "alpha" ? VARIANT_ALPHABOOL : VARIANT_LOCALBOOL;
    }
    return flags;
}

/// The content of a notation without its type, where that is the wanted one.
std::string contentOf(std::string const& notation, std::string const& type) {
    if (notation == type) return "-";
    return notation.starts_with(type + ':') ? notation.substr(type.size() + 1) : notation;
}

/// What all types of a row give; the list of them where they do not agree.
std::string convertedTo(DataRow const& row) {
    LCID const locale = row.has("locale") && !row["locale"].empty()
                            ? static_cast<LCID>(std::stoul(row["locale"], nullptr, 16))
                            : english;
    USHORT const flags = row.has("flags") ? flagsOf(row["flags"]) : USHORT{0};
    std::string list;
    std::string first;
    bool agree = true;
    for (auto const& type : wordsOf(row["to"])) {
        Value from(row["value"]);
        Value to;
        HRESULT const result = VariantChangeTypeEx(&to, &from, locale, flags, typeCalled(type));
        auto const content = result == S_OK ? contentOf(to.notation(), type) : resultName(result);
        if (list.empty()) first = content;
        agree = agree && content == first;
        list += (list.empty() ? "" : " ") + type + '=' + content;
    }
    return agree ? first : list;
}

TEST(Conversions, OfEachTypeIntoEach) {
    expectTable("automation/change.tsv", convertedTo);
}

TEST(Conversions, OfTextsToNumbers) {
    expectTable("automation/numbers.tsv", convertedTo);
}

TEST(Conversions, ToTextsAndTruthValues) {
    expectTable("automation/texts.tsv", convertedTo);
}

TEST(Conversions, OfLongTextsOfDigits) {
    std::string const zeroes(2000, '0');
    std::pair<std::string, VARTYPE> const rows[] = {{zeroes + "7", VT_I4},
                                                    {"0." + zeroes + "1", VT_R8},
                                                    {'1' + zeroes, VT_R8},
                                                    {'1' + zeroes, VT_I8}};
    std::string results;
    for (auto const& [digits, type] : rows) {
        Value value("BSTR:" + digits);
        HRESULT const result = VariantChangeType(&value, &value, 0, type);
        results += (result == S_OK ? value.notation() : resultName(result)) + ' ';
    }
    EXPECT_EQ(results, "I4:7 R8:0 overflow overflow ");
}

/// A date as "2003-1-2 12:34:56", rounded to the second; without the day for day
/// 0, and without the time at midnight of any other.
std::string readable(double date) {
    SYSTEMTIME time{};
    if (!VariantTimeToSystemTime(date, &time)) return "no date";
    std::ostringstream text;
    bool const onlyTime = time.wYear == 1899 && time.wMonth == 12 && time.wDay == 30;
    if (!onlyTime) text << time.wYear << '-' << time.wMonth << '-' << time.wDay;
    if (onlyTime || time.wHour != 0 || time.wMinute != 0 || time.wSecond != 0) {
        text << (onlyTime ? "" : " ") << time.wHour << ':' << time.wMinute << ':' << time.wSecond;
    }
    return text.str();
}

TEST(Conversions, OfTextsToDates) {
    auto const today = std::chrono::floor<std::chrono::days>(std::chrono::system_clock::now());
    auto const thisYear =
        std::to_string(static_cast<int>(std::chrono::year_month_day{today}.year())) + '-';
    expectTable("automation/dates.tsv", [&](DataRow const& row) {
        Value from("BSTR:" + row["text"]);
        Value to;
        HRESULT const result = VariantChangeTypeEx(&to, &from, english, 0, VT_DATE);
        if (result != S_OK) return resultName(result);
        auto const date = readable(to->date);
        return date.starts_with(thisYear) ? "now-" + date.substr(thisYear.size()) : date;
    });
}

/// The date of year, month, day, hour, minute, second and millisecond.
std::string dateOf(std::string const& numbers) {
    std::istringstream stream(numbers);
    SYSTEMTIME time{};
    for (WORD* const part : {&time.wYear, &time.wMonth, &time.wDay, &time.wHour, &time.wMinute,
                             &time.wSecond, &time.wMilliseconds}) {
        stream >> *part;
    }
    Value date("DATE:0");
    return SystemTimeToVariantTime(&time, &date->date) ? date.notation() : "no date";
}

TEST(Conversions, BetweenDatesAndSystemTimes) {
    expectTable("automation/times.tsv", [](DataRow const& row) {
        auto const& from = row["from"];
        return from.starts_with("DATE:") ? readable(Value(from)->date) : dateOf(from);
    });
}

void expectBack(double day) {
    Value date;
    date->vt = VT_DATE;
    date->date = day;
    SYSTEMTIME time{};
    double again = -1;
    ASSERT_TRUE(VariantTimeToSystemTime(day, &time)) << day;
    // 30 December 1899 was a Saturday.
    auto const weeks = static_cast<int>(day < 0 ? -day : day) / 7 + 1;
    EXPECT_EQ(time.wDayOfWeek, (static_cast<int>(day) + 6 + 7 * weeks) % 7) << day;
    ASSERT_TRUE(SystemTimeToVariantTime(&time, &again)) << day;
    EXPECT_EQ(again, day);
    Value text;
    ASSERT_EQ(VariantChangeTypeEx(&text, &date, english, 0, VT_BSTR), S_OK) << day;
    ASSERT_EQ(VariantChangeTypeEx(&text, &text, english, 0, VT_DATE), S_OK) << day;
    EXPECT_EQ(text->date, day);
}

TEST(Conversions, EveryDayReadsBack) {
    constexpr int firstDay = -657434;
    constexpr int lastDay = 2958465;
    for (int day = 36526; day < 36526 + 4 * 366; ++day) expectBack(day + 0.75);
    for (int day = firstDay; day <= lastDay; day += 37)
        expectBack(day < 0 ? day - 0.25 : day + 0.25);
    expectBack(lastDay);
}

// A type that no VARIANT carries is refused before anything else is looked at.
TEST(Conversions, ToTypesThatDoNotExist) {
    for (VARTYPE const type : {VARTYPE{15}, VARTYPE{24}, VARTYPE{37}, VARTYPE{VT_FILETIME},
                               VARTYPE{VT_CLSID}, VARTYPE{VT_VECTOR | VT_I4}, VARTYPE{VT_RESERVED},
                               VARTYPE{VT_BYREF | VT_EMPTY}, VARTYPE{VT_ARRAY | VT_NULL}}) {
        Value number("I4:1");
        Value result("I2:5");
        EXPECT_EQ(VariantChangeType(&result, &number, 0, type), DISP_E_BADVARTYPE) << type;
        EXPECT_EQ(result.notation(), "I2:5");
    }
}

}  // namespace
}  // namespace velk::test
