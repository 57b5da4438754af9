/// Counts words in a dictionary of the host.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "automation_object.h"

namespace wordcount {

struct WordCount {
    std::string word;
    long count;
};

/// Counts in a host "scripting.dictionary", reached through `proxy`, an
/// object of the class VelkCOMAdapter.VelkCOMProxy.
class WordCounter {
  public:
    /// Throws CallError when the host gives no dictionary.
    explicit WordCounter(AutomationObject& proxy);

    /// Counts one more of `word`, ASCII text. Throws CallError.
    void add(std::string_view word);

    /// The `limit` most frequent words, most frequent first, equally frequent
    /// ones by their text. Throws CallError.
    std::vector<WordCount> mostFrequent(std::size_t limit);

  private:
    AutomationObject dictionary_;
};

}  // namespace wordcount
