/// The published functions about resources.
#include <cstring>

#include <winbase.h>

#include "platform/system/data_modules.h"
#include "platform/system/loaded_objects.h"
#include "platform/system/resource_list.h"
#include "platform/system/resource_section.h"

using namespace velk::platform;

namespace {

using Bytes = std::span<std::byte const>;

/// The resources of a loaded module, where they lie in its image. The file
/// tells where that is; when it has been exchanged since, it is not believed.
Bytes resourcesOfObject(LoadedObject const& object) {
    auto const section = readResourceSection(RegularFile(object.path));
    if (!section || section->address == 0) return {};
    auto const* const begin = reinterpret_cast<std::byte const*>(
        static_cast<std::uintptr_t>(section->address) + static_cast<std::uintptr_t>(object.shift));
    auto const owner = loadedObjectAround(begin);
    bool const same = owner && owner->handle == object.handle &&
                      isInLoadedImage(begin, section->bytes.size()) &&
                      std::memcmp(begin, section->bytes.data(), section->bytes.size()) == 0;
    return same ? Bytes(begin, section->bytes.size()) : Bytes();
}

Bytes resourcesOf(HMODULE module) {
    if (auto const data = dataModule(module)) return data->resources;
    auto const object = module != nullptr ? loadedObject(module) : programObject();
    return object ? resourcesOfObject(*object) : Bytes();
}

DWORD findError(ResourceSearch::Outcome outcome) {
    return outcome == ResourceSearch::Outcome::noSuchType ? ERROR_RESOURCE_TYPE_NOT_FOUND
                                                          : ERROR_RESOURCE_NAME_NOT_FOUND;
}

/// The data behind a resource handle, which is the address of its entry.
std::optional<Bytes> dataOfHandle(HRSRC resource) {
    auto const* const entry = reinterpret_cast<std::byte const*>(resource);
    auto const isReadable = [&](std::size_t size) {
        return isInLoadedImage(entry, size) || isInDataModule(entry, size);
    };
    struct Sizes {
        std::uint32_t data;
        std::uint32_t header;
    } sizes;
    if (!isReadable(sizeof sizes)) return std::nullopt;
    std::memcpy(&sizes, entry, sizeof sizes);
    std::size_t const whole = std::size_t{sizes.data} + sizes.header;
    return isReadable(whole) ? dataOfEntry(Bytes(entry, whole)) : std::nullopt;
}

}  // namespace

HRSRC FindResourceW(HMODULE module, LPCWSTR name, LPCWSTR type) {
    try {
        Bytes const all = resourcesOf(module);
        if (all.empty()) {
            SetLastError(ERROR_RESOURCE_DATA_NOT_FOUND);
            return nullptr;
        }
        auto const search =
            findResource(all, ResourceName::fromPublished(type), ResourceName::fromPublished(name));
        if (search.outcome != ResourceSearch::Outcome::found) {
            SetLastError(findError(search.outcome));
            return nullptr;
        }
        return reinterpret_cast<HRSRC>(const_cast<std::byte*>(search.entry.data()));
    } catch (...) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }
}

HGLOBAL LoadResource(HMODULE, HRSRC resource) {
    if (resource == nullptr) return nullptr;
    auto const data = dataOfHandle(resource);
    if (!data) {
        SetLastError(ERROR_RESOURCE_DATA_NOT_FOUND);
        return nullptr;
    }
    return const_cast<std::byte*>(data->data());
}

LPVOID LockResource(HGLOBAL resource) {
    return resource;
}

DWORD SizeofResource(HMODULE, HRSRC resource) {
    if (resource == nullptr) return 0;
    auto const data = dataOfHandle(resource);
    if (!data) {
        SetLastError(ERROR_RESOURCE_DATA_NOT_FOUND);
        return 0;
    }
    return static_cast<DWORD>(data->size());
}
