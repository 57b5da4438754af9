#include "platform/typelib/loading/library_source.h"

#include <mutex>
#include <unordered_map>

#include "platform/system/immortal.h"

namespace velk::typelib {
namespace {

// Does not own the libraries: an entry is valid until its library has called
// forgetLibrary, which it does before its memory goes.
struct Cache {
    std::mutex lock;
    std::unordered_map<std::u16string, TypeLibrary*> libraries;
};

// Libraries may be released after static objects have gone.
Cache& cache() noexcept {
    static platform::Immortal<Cache> instance;
    return *instance;
}

Reference<TypeLibrary> known(Cache& libraries, std::u16string const& key) {
    auto const found = libraries.libraries.find(key);
    if (found == libraries.libraries.end() || !found->second->tryAddRef()) return {};
    return Reference<TypeLibrary>::adopt(found->second);
}

}  // namespace

Reference<TypeLibrary> sharedLibrary(std::u16string const& key,
                                     std::function<Reference<TypeLibrary>()> const& load) {
    auto& libraries = cache();
    {
        std::scoped_lock const lock(libraries.lock);
        if (auto found = known(libraries, key)) return found;
    }
    auto loaded = load();
    std::unique_lock lock(libraries.lock);
    auto found = known(libraries, key);
    if (!found) libraries.libraries[key] = loaded.get();
    lock.unlock();
    return found ? found : loaded;
}

void forgetLibrary(TypeLibrary const* library) noexcept {
    auto& libraries = cache();
    std::scoped_lock const lock(libraries.lock);
    std::erase_if(libraries.libraries, [&](auto const& entry) { return entry.second == library; });
}

}  // namespace velk::typelib
