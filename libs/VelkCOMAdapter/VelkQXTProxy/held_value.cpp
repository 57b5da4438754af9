#include "VelkQXTProxy/held_value.h"

#include <utility>

namespace velk::adapter {

void HeldValue::replace(com::Variant value) {
    if (uses_ > 0) former_.reserve(former_.size() + 1);
    com::Variant former = std::exchange(value_, std::move(value));
    if (uses_ > 0) former_.push_back(std::move(former));
}

void HeldValue::reset(VARTYPE type) {
    VARIANT empty{};
    empty.vt = type;
    replace(com::Variant(empty));
}

HeldValue::Use::~Use() {
    // Giving values up runs foreign code again: they leave the list first.
    if (--held_.uses_ == 0) std::vector<com::Variant>().swap(held_.former_);
}

}  // namespace velk::adapter
