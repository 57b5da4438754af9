#include "platform/system/data_modules.h"

#include <algorithm>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>

#include "platform/system/elf_file.h"
#include "platform/system/immortal.h"
#include "platform/system/resource_section.h"

namespace velk::platform {
namespace {

struct OpenDataModules {
    std::mutex lock;
    std::map<HMODULE, std::shared_ptr<DataModule const>> modules;
    std::uintptr_t next = 1;
};

OpenDataModules& open() {
    static Immortal<OpenDataModules> all;
    return *all;
}

}  // namespace

HMODULE openDataModule(std::string const& path) {
    RegularFile const file(path);
    if (!moduleHeader(file)) return nullptr;
    auto module = std::make_shared<DataModule>();
    module->path = path;
    if (auto section = readResourceSection(file)) module->resources = std::move(section->bytes);
    auto& all = open();
    std::lock_guard const guard(all.lock);
    // Odd numbers: the handle of a loaded module is the address of a page.
    auto const handle = reinterpret_cast<HMODULE>(all.next);
    all.next += 2;
    all.modules.emplace(handle, std::move(module));
    return handle;
}

std::shared_ptr<DataModule const> dataModule(HMODULE handle) {
    auto& all = open();
    std::lock_guard const guard(all.lock);
    auto const found = all.modules.find(handle);
    return found == all.modules.end() ? nullptr : found->second;
}

bool closeDataModule(HMODULE handle) {
    auto& all = open();
    std::lock_guard const guard(all.lock);
    return all.modules.erase(handle) != 0;
}

bool isInDataModule(void const* begin, std::size_t size) {
    auto const* const first = static_cast<std::byte const*>(begin);
    auto const contains = [&](auto const& entry) {
        auto const& bytes = entry.second->resources;
        std::less_equal<> const notAfter;
        if (!notAfter(bytes.data(), first) || !notAfter(first, bytes.data() + bytes.size())) {
            return false;
        }
        return size <= bytes.size() - static_cast<std::size_t>(first - bytes.data());
    };
    auto& all = open();
    std::lock_guard const guard(all.lock);
    return std::any_of(all.modules.begin(), all.modules.end(), contains);
}

}  // namespace velk::platform
