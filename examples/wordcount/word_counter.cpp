#include "word_counter.h"

#include <algorithm>
#include <array>
#include <tuple>

namespace wordcount {
namespace {

namespace com = velk::com;

VARIANT number(LONG value) {
    VARIANT variant;
    VariantInit(&variant);
    variant.vt = VT_I4;
    variant.lVal = value;
    return variant;
}

/// A VARIANT that borrows the text.
VARIANT text(com::Bstr const& value) {
    VARIANT variant;
    VariantInit(&variant);
    variant.vt = VT_BSTR;
    variant.bstrVal = value.get();
    return variant;
}

com::Bstr bstr(std::string_view ascii) {
    return com::makeBstr(std::basic_string<OLECHAR>(ascii.begin(), ascii.end()));
}

LONG numberOf(com::Variant const& value, char const* what) {
    VARIANT const& variant = *value.address();
    if (variant.vt != VT_I4) throw CallError(std::string(what) + " gave no number");
    return variant.lVal;
}

std::string textOf(com::Variant const& value, char const* what) {
    VARIANT const& variant = *value.address();
    if (variant.vt != VT_BSTR) throw CallError(std::string(what) + " gave no text");
    auto const view = com::viewBstr(variant.bstrVal);
    return {view.begin(), view.end()};
}

AutomationObject createDictionary(AutomationObject& proxy) {
    com::Bstr const name = bstr("scripting.dictionary");
    std::array const arguments{text(name)};
    return {proxy.call(OLESTR("CreateObject"), arguments), "CreateObject"};
}

}  // namespace

WordCounter::WordCounter(AutomationObject& proxy) : dictionary_(createDictionary(proxy)) {}

void WordCounter::add(std::string_view word) {
    com::Bstr const key = bstr(word);
    std::array const index{text(key)};
    com::Variant const known = dictionary_.get(OLESTR("Item"), index);
    // The dictionary gives Empty for a key that it did not have.
    LONG const count = known.get().vt == VT_EMPTY ? 0 : numberOf(known, "Item");
    std::array const entry{text(key), number(count + 1)};
    dictionary_.put(OLESTR("Item"), entry);
}

std::vector<WordCount> WordCounter::mostFrequent(std::size_t limit) {
    AutomationObject words(dictionary_.call(OLESTR("Keys")), "Keys");
    AutomationObject counts(dictionary_.call(OLESTR("Items")), "Items");
    LONG const size = numberOf(words.get(OLESTR("Count")), "Count");
    std::vector<WordCount> all;
    for (LONG i = 0; i < size; ++i) {
        std::array const index{number(i)};
        all.push_back({textOf(words.call(OLESTR("Item"), index), "Item"),
                       numberOf(counts.call(OLESTR("Item"), index), "Item")});
    }
    auto const first = [](WordCount const& left, WordCount const& right) {
        return std::tie(right.count, left.word) < std::tie(left.count, right.word);
    };
    std::size_t const shown = std::min(limit, all.size());
    std::partial_sort(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(shown), all.end(),
                      first);
    all.resize(shown);
    return all;
}

}  // namespace wordcount
