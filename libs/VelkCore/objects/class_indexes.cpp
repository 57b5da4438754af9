#include "class_indexes.h"

#include <mutex>
#include <shared_mutex>
#include <unordered_map>
#include "services/immortal.h"

namespace velk::core {

namespace {

struct ClassIndexes {
    std::shared_mutex mutex;
    std::unordered_map<proxyMemberDescListS const*, IndexHolder> byRecord;
};

// Lives as long as the process: modules revoke their classes while the static
// objects of all libraries are being torn down.
ClassIndexes& classIndexes() {
    static Immortal<ClassIndexes> indexes;
    return *indexes;
}

IndexHolder known(ClassIndexes& indexes, proxyMemberDescListS const& record) {
    auto const place = indexes.byRecord.find(&record);
    if (place == indexes.byRecord.end() || !place->second->stillDescribes(record)) {
        return nullptr;
    }
    place->second->retain();
    return IndexHolder(place->second.get());
}

}  // namespace

IndexHolder indexOf(proxyMemberDescListS const& record) {
    ClassIndexes& indexes = classIndexes();
    {
        std::shared_lock const hold(indexes.mutex);
        if (IndexHolder index = known(indexes, record)) {
            return index;
        }
    }
    // Two threads may build the same index; the first one to enter it wins.
    IndexHolder built(new MemberIndex(&record));
    std::unique_lock const hold(indexes.mutex);
    if (IndexHolder index = known(indexes, record)) {
        return index;
    }
    built->retain();
    IndexHolder index(built.get());
    indexes.byRecord[&record] = std::move(built);
    return index;
}

void forgetIndexesOf(proxyMemberDescListS const* record) {
    ClassIndexes& indexes = classIndexes();
    std::unique_lock const hold(indexes.mutex);
    std::erase_if(indexes.byRecord,
                  [record](auto const& entry) { return entry.second->reads(record); });
}

}  // namespace velk::core
