#include "name_store.h"

#include <cstring>
#include <limits>
#include <new>

namespace velk::adapter {
namespace {

constexpr std::size_t headUnits = 1;  // the length in characters

}  // namespace

void NameStore::addBlock(std::size_t units) {
    if (blocks_.size() == mostBlocks) throw std::bad_alloc();
    blocks_.push_back(makeLargeArray<Unit>(units));
}

void NameStore::startBlock(std::size_t atLeast) {
    std::size_t const units =
        blocks_.empty() && atLeast <= firstBlockUnits ? firstBlockUnits : blockUnits;
    addBlock(units);
    current_ = blocks_.size() - 1;
    capacity_ = units;
    used_ = 0;
}

NameStore::Reference NameStore::add(std::basic_string_view<OLECHAR> text) {
    if (text.size() > std::numeric_limits<Unit>::max()) throw std::bad_alloc();
    std::size_t const bytes = text.size() * sizeof(OLECHAR);
    std::size_t const units = headUnits + (bytes + sizeof(Unit) - 1) / sizeof(Unit);
    std::size_t block = 0;
    std::size_t place = 0;
    if (units > largeUnits) {
        addBlock(units);
        block = blocks_.size() - 1;
    } else {
        if (used_ + units > capacity_) startBlock(units);
        block = current_;
        place = used_;
        used_ += units;
    }
    Unit* const entry = &blocks_[block][place];
    entry[0] = static_cast<Unit>(text.size());
    if (bytes != 0) std::memcpy(entry + headUnits, text.data(), bytes);
    return static_cast<Reference>(block << placeBits | place);
}

std::basic_string_view<OLECHAR> NameStore::at(Reference reference) const noexcept {
    Unit const* const entry = &blocks_[reference >> placeBits][reference & (blockUnits - 1)];
    return {reinterpret_cast<OLECHAR const*>(entry + headUnits), entry[0]};
}

}  // namespace velk::adapter
