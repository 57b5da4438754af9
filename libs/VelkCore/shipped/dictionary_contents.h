#pragma once

#include <vector>

#include "host/dictionary.h"

#include "dictionary_entries.h"

/// What a dictionary holds.
struct prxDictionaryObjC::Contents {
    using Entry = velk::core::DictionaryEntries::Entry;

    velk::core::DictionaryEntries entries;
    int insertMode = 0;

    velk::core::DictionaryKey keyOf(mzComVariantC const& plainKey) const {
        return {plainKey, entries.compare()};
    }

    /// The item of the key, which is added with an empty item when it is new.
    mzComVariantC& itemOf(mzComVariantC const& plainKey) {
        velk::core::DictionaryKey wanted = keyOf(plainKey);
        std::uint32_t position = entries.find(wanted);
        if (position == velk::core::DictionaryEntries::none) {
            position = entries.append(std::move(wanted), plainKey, mzComVariantC());
        }
        return entries.at(position).item;
    }

    std::vector<mzComVariantC> collect(mzComVariantC Entry::*part) const {
        std::vector<mzComVariantC> values;
        values.reserve(entries.size());
        entries.forEach([&](Entry const& entry) { values.push_back(entry.*part); });
        return values;
    }
};
