#include "platform/typelib/model.h"

#include <algorithm>
#include <memory>

namespace velk::typelib {

LibraryModel::~LibraryModel() {
    for (VARIANT* value : values_) VariantClear(value);
}

Text LibraryModel::keep(Text text) {
    // One more than needed, so that an empty text has an address too.
    auto const copy = makeArray<char16_t>(text.size() + 1);
    std::copy(text.begin(), text.end(), copy.begin());
    return {copy.data(), text.size()};
}

}  // namespace velk::typelib
