#include "native_to_host/name_table.h"

#include <atomic>
#include <limits>
#include <new>

#include "host/module_singleton.h"

using velk::com::TextView;

namespace {

constexpr DISPID firstId = 100;
constexpr std::size_t mostNames = std::numeric_limits<DISPID>::max() - firstId;

std::atomic<unsigned> tableGeneration{1};

}  // namespace

PDspMapData& PDspMapData::instance() {
    return mzModuleSingletonT<PDspMapData, 0>::instance();
}

unsigned PDspMapData::generation() noexcept {
    return tableGeneration;
}

PDspMapData::~PDspMapData() {
    ++tableGeneration;
}

DISPID PDspMapData::idOf(TextView name) {
    {
        mzSharedHolderT<PReadWriteLock> const reading(tableLock_);
        if (auto const known = idsByName_.find(name); known != idsByName_.end())
            return known->second;
    }
    mzExclusiveHolderT<PReadWriteLock> const writing(tableLock_);
    // Another thread may have added it between the two locks.
    auto const known = idsByName_.find(name);
    return known != idsByName_.end() ? known->second : add(name);
}

DISPID PDspMapData::add(TextView name) {
    if (namesById_.size() >= mostNames) throw std::bad_alloc();
    DISPID const id = firstId + static_cast<DISPID>(namesById_.size());
    namesById_.emplace_back(name);
    try {
        idsByName_.emplace(namesById_.back(), id);
    } catch (...) {
        namesById_.pop_back();
        throw;
    }
    return id;
}

bool PDspMapData::nameOf(DISPID id, mzComStringC& name) const {
    mzSharedHolderT<PReadWriteLock> const reading(tableLock_);
    if (id < firstId || static_cast<std::size_t>(id - firstId) >= namesById_.size()) return false;
    TextView const text = namesById_[static_cast<std::size_t>(id - firstId)];
    name = mzComStringC(
        QString(reinterpret_cast<QChar const*>(text.data()), static_cast<int>(text.size())));
    return true;
}
