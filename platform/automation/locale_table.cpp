#include "locale_table.h"

namespace velk::platform {
namespace {

constexpr OLECHAR noBreakSpace = u'\u00a0';
constexpr OLECHAR narrowNoBreakSpace = u'\u202f';

constexpr LocaleNames english{
    {u"January", u"February", u"March", u"April", u"May", u"June", u"July", u"August", u"September",
     u"October", u"November", u"December"},
    {u"Jan", u"Feb", u"Mar", u"Apr", u"May", u"Jun", u"Jul", u"Aug", u"Sep", u"Oct", u"Nov",
     u"Dec"},
    {u"Sunday", u"Monday", u"Tuesday", u"Wednesday", u"Thursday", u"Friday", u"Saturday"},
    {u"Sun", u"Mon", u"Tue", u"Wed", u"Thu", u"Fri", u"Sat"}};

constexpr LocaleNames german{
    {u"Januar", u"Februar", u"M\u00e4rz", u"April", u"Mai", u"Juni", u"Juli", u"August",
     u"September", u"Oktober", u"November", u"Dezember"},
    {u"Jan", u"Feb", u"M\u00e4r", u"Apr", u"Mai", u"Jun", u"Jul", u"Aug", u"Sep", u"Okt", u"Nov",
     u"Dez"},
    {u"Sonntag", u"Montag", u"Dienstag", u"Mittwoch", u"Donnerstag", u"Freitag", u"Samstag"},
    {u"So", u"Mo", u"Di", u"Mi", u"Do", u"Fr", u"Sa"}};

constexpr LocaleNames french{
    {u"janvier", u"f\u00e9vrier", u"mars", u"avril", u"mai", u"juin", u"juillet", u"ao\u00fbt",
     u"septembre", u"octobre", u"novembre", u"d\u00e9cembre"},
    {u"janv.", u"f\u00e9vr.", u"mars", u"avr.", u"mai", u"juin", u"juil.", u"ao\u00fbt", u"sept.",
     u"oct.", u"nov.", u"d\u00e9c."},
    {u"dimanche", u"lundi", u"mardi", u"mercredi", u"jeudi", u"vendredi", u"samedi"},
    {u"dim.", u"lun.", u"mar.", u"mer.", u"jeu.", u"ven.", u"sam."}};

// US English is first: it stands in for every locale without an entry.
constexpr Locale locales[] = {
    {.id = 0x0409,
     .decimalSeparator = u'.',
     .groupSeparator = u',',
     .currency = u"$",
     .order = DateOrder::monthDay,
     .dateSeparator = u'/',
     .padDate = false,
     .twelveHours = true,
     .trueText = u"True",
     .falseText = u"False",
     .names = &english},
    {.id = 0x0407,
     .decimalSeparator = u',',
     .groupSeparator = u'.',
     .currency = u"\u20ac",
     .order = DateOrder::dayMonth,
     .dateSeparator = u'.',
     .padDate = true,
     .twelveHours = false,
     .trueText = u"Wahr",
     .falseText = u"Falsch",
     .names = &german},
    {.id = 0x0809,
     .decimalSeparator = u'.',
     .groupSeparator = u',',
     .currency = u"\u00a3",
     .order = DateOrder::dayMonth,
     .dateSeparator = u'/',
     .padDate = true,
     .twelveHours = false,
     .trueText = u"True",
     .falseText = u"False",
     .names = &english},
    {.id = 0x040c,
     .decimalSeparator = u',',
     .groupSeparator = narrowNoBreakSpace,
     .currency = u"\u20ac",
     .order = DateOrder::dayMonth,
     .dateSeparator = u'/',
     .padDate = true,
     .twelveHours = false,
     .trueText = u"Vrai",
     .falseText = u"Faux",
     .names = &french},
    {.id = LOCALE_INVARIANT,
     .decimalSeparator = u'.',
     .groupSeparator = u',',
     .currency = u"\u00a4",
     .order = DateOrder::monthDay,
     .dateSeparator = u'/',
     .padDate = true,
     .twelveHours = false,
     .trueText = u"True",
     .falseText = u"False",
     .names = &english},
};

}  // namespace

Locale const& localeOf(LCID id) noexcept {
    // The upper half names a sort order, which changes nothing here.
    LCID const language = LANGIDFROMLCID(id);
    for (auto const& locale : locales) {
        if (locale.id == language) return locale;
    }
    return locales[0];
}

bool isGroupSeparator(Locale const& locale, OLECHAR character) noexcept {
    if (character == locale.groupSeparator) return true;
    // Where groups are set apart by a space that does not break, a typed text
    // may have any space.
    return locale.groupSeparator == narrowNoBreakSpace &&
           (character == u' ' || character == noBreakSpace);
}

}  // namespace velk::platform
