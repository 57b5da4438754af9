// Identifiers, vtable slots and the sizes of records of types made in memory.

#include <algorithm>
#include <unordered_set>

#include "platform/typelib/created_type.h"
#include "platform/typelib/record_layout.h"

namespace velk::typelib {
namespace {

// What compilers of descriptions number members with that have no identifier:
// the kind of member, how many bases the type has, and a running number.
constexpr DWORD functionIds = 0x60000000;
constexpr DWORD variableIds = 0x40000000;
constexpr unsigned basesShift = 16;

// A slot's offset is published as a SHORT.
constexpr std::size_t largestVtable = 0x8000;

// Bases beyond this are taken for a type that derives from itself.
constexpr std::size_t deepestBase = 64;

// Numbers members from `first` on, but for what is already taken.
class Numbering {
  public:
    void take(MEMBERID id) { taken_.insert(id); }
    MEMBERID next(DWORD first, std::size_t index, std::size_t count) {
        auto id = static_cast<MEMBERID>(first + index);
        for (std::size_t beyond = count; !taken_.insert(id).second; ++beyond) {
            id = static_cast<MEMBERID>(first + beyond);
        }
        return id;
    }

  private:
    std::unordered_set<MEMBERID> taken_;
};

bool isDispatch(TypeInfo& type) {
    return type.model().id == IID_IDispatch;
}

}  // namespace

// Done at every change, so that no call ever goes through a slot of nobody's.
void CreatedType::layOutMembers() {
    assignIds(countBases());
    assignSlots();
    info_.forgetMembers();
    library_.library().forgetIndex();
}

std::size_t CreatedType::countBases() {
    std::size_t count = 0;
    for (auto type = info_.base(); type; type = type->base()) {
        require(++count < deepestBase, TYPE_E_CIRCULARTYPE);
        if (isDispatch(*type)) model_.flags |= TYPEFLAG_FDISPATCHABLE;
    }
    return count;
}

void CreatedType::assignIds(std::size_t bases) {
    Numbering numbering;
    for (std::size_t i = 0; i < functions_.size(); ++i) {
        if (functionDrafts_[i].idGiven) numbering.take(functions_[i].id);
    }
    for (std::size_t i = 0; i < variables_.size(); ++i) {
        if (variableIdsGiven_[i]) numbering.take(variables_[i].id);
    }
    auto const level = static_cast<DWORD>(bases << basesShift);
    for (std::size_t i = 0; i < functions_.size(); ++i) {
        if (functionDrafts_[i].idGiven) continue;
        functions_[i].id = numbering.next(functionIds + level, i, functions_.size());
    }
    for (std::size_t i = 0; i < variables_.size(); ++i) {
        if (variableIdsGiven_[i]) continue;
        variables_[i].id = numbering.next(variableIds + level, i, variables_.size());
    }
}

void CreatedType::assignSlots() {
    if (kind_ != TKIND_INTERFACE) return;
    auto const base = info_.base();
    std::size_t const first = base ? base->model().vtableSize : 0;
    std::size_t end = first + functions_.size() * sizeof(void*);
    for (std::size_t i = 0; i < functions_.size(); ++i) {
        std::size_t const running = first + i * sizeof(void*);
        require(running < largestVtable, TYPE_E_SIZETOOBIG);
        auto& function = functions_[i];
        if (!functionDrafts_[i].offsetGiven) function.vtableOffset = static_cast<SHORT>(running);
        end = std::max(end, static_cast<std::size_t>(function.vtableOffset) + sizeof(void*));
    }
    model_.vtableSize = static_cast<WORD>(end);
    model_.inheritedFunctions =
        base ? static_cast<WORD>(base->model().inheritedFunctions + base->model().functions.size())
             : WORD{0};
}

void CreatedType::layOutFields() {
    layOutRecord(library_.model(), place_, [this](HREFTYPE reference) {
        auto const& target = library_.library().resolve(reference)->model();
        return Extent{target.instanceSize, std::max<ULONG>(target.alignment, 1)};
    });
}

HRESULT CreatedType::LayOut() noexcept {
    return guarded([&] {
        layOutMembers();
        layOutFields();
    });
}

// What LayOut computes anew by itself needs no taking back.
HRESULT CreatedType::Invalidate() noexcept {
    bool const sized = kind_ == TKIND_RECORD || kind_ == TKIND_UNION || kind_ == TKIND_ALIAS;
    if (!sized) return S_OK;
    model_.instanceSize = 0;
    for (auto& field : variables_) field.offset = 0;
    return S_OK;
}

}  // namespace velk::typelib
