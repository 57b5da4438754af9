#include "name_store.h"

#include <cstring>
#include <limits>
#include <new>

namespace velk::adapter {
namespace {

constexpr std::size_t headUnits = 2;  // number, then length in characters

}  // namespace

void NameStore::addBlock(std::size_t units) {
    if (blocks_.size() == mostBlocks) throw std::bad_alloc();
    blocks_.push_back(std::make_unique_for_overwrite<Unit[]>(units));
}

NameStore::Reference NameStore::add(std::int32_t number, std::basic_string_view<OLECHAR> text) {
    if (text.size() > std::numeric_limits<Unit>::max()) throw std::bad_alloc();
    std::size_t const bytes = text.size() * sizeof(OLECHAR);
    std::size_t const units = headUnits + (bytes + sizeof(Unit) - 1) / sizeof(Unit);
    std::size_t block = current_;
    std::size_t place = used_;
    if (units > largeUnits) {
        addBlock(units);
        block = blocks_.size() - 1;
        place = 0;
    } else {
        if (used_ + units > blockUnits) {
            addBlock(blockUnits);
            block = current_ = blocks_.size() - 1;
            place = 0;
        }
        used_ = place + units;
    }
    Unit* const entry = &blocks_[block][place];
    entry[0] = static_cast<Unit>(number);
    entry[1] = static_cast<Unit>(text.size());
    if (bytes != 0) std::memcpy(entry + headUnits, text.data(), bytes);
    return static_cast<Reference>(block << 16 | place);
}

NameStore::Entry NameStore::at(Reference reference) const noexcept {
    Unit const* const entry = &blocks_[reference >> 16][reference & 0xffff];
    return {static_cast<std::int32_t>(entry[0]),
            {reinterpret_cast<OLECHAR const*>(entry + headUnits), entry[1]}};
}

}  // namespace velk::adapter
