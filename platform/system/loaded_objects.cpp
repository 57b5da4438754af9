#include "platform/system/loaded_objects.h"

#include <algorithm>
#include <cstdint>
#include <exception>
#include <filesystem>
#include <functional>
#include <utility>

#include <link.h>
#include <unistd.h>

#include "platform/system/loader_names.h"

namespace velk::platform {
namespace {

constexpr std::uintptr_t pageMask = 4095;

struct Extent {
    std::uintptr_t begin;
    std::uintptr_t end;
};

bool isReadableLoad(ElfW(Phdr) const& segment) {
    return segment.p_type == PT_LOAD && (segment.p_flags & PF_R) != 0;
}

Extent extentOf(dl_phdr_info const& info) {
    Extent extent{UINTPTR_MAX, 0};
    for (int index = 0; index < info.dlpi_phnum; ++index) {
        auto const& segment = info.dlpi_phdr[index];
        if (segment.p_type != PT_LOAD) continue;
        std::uintptr_t const begin = info.dlpi_addr + segment.p_vaddr;
        extent.begin = std::min(extent.begin, begin & ~pageMask);
        extent.end = std::max(extent.end, begin + segment.p_memsz);
    }
    return extent;
}

std::string programPath() {
    std::error_code error;
    return std::filesystem::read_symlink("/proc/self/exe", error).string();
}

/// Without what a path may hold more than once, "." and "/"; ".." stays, since
/// behind a link it leads elsewhere than it looks.
std::string cleaned(std::filesystem::path const& path) {
    std::filesystem::path clean;
    for (auto const& part : path) {
        if (!part.empty() && part != ".") clean /= part;
    }
    return clean.string();
}

/// The loader remembers the name under which an object was opened, which may
/// be relative to the folder that was current then.
std::string absolutePath(std::string_view name) {
    std::error_code error;
    auto const path = std::filesystem::absolute(pathOfLoaderName(name), error);
    return error ? std::string(name) : cleaned(path);
}

/// Gives every object to `visit` until it returns true. `visit` runs under
/// the loader's lock and must not load or free.
using Visit = std::function<bool(dl_phdr_info const&, bool isProgram)>;
void visitObjects(Visit visit) {
    struct State {
        Visit& visit;
        bool first;
        std::exception_ptr failure;
    } state{visit, true, nullptr};
    dl_iterate_phdr(
        [](dl_phdr_info* info, std::size_t, void* data) {
            auto& state = *static_cast<State*>(data);
            // The first object is the program; it is the only one without a name,
            // but for the system's own page of code, which has a file nowhere.
            bool const isProgram = std::exchange(state.first, false);
            // An exception must not pass through the C library, which would need
            // memory to let it and end the process without.
            try {
                return state.visit(*info, isProgram) ? 1 : 0;
            } catch (...) {
                state.failure = std::current_exception();
                return 1;
            }
        },
        &state);
    if (state.failure) std::rethrow_exception(state.failure);
}

std::optional<LoadedObject> findObject(
    std::function<bool(dl_phdr_info const&, Extent const&)> const& matches) {
    std::optional<LoadedObject> found;
    visitObjects([&](dl_phdr_info const& info, bool isProgram) {
        Extent const extent = extentOf(info);
        if (!matches(info, extent)) return false;
        found = LoadedObject{reinterpret_cast<HMODULE>(extent.begin),
                             static_cast<std::ptrdiff_t>(info.dlpi_addr), std::string(),
                             std::string(info.dlpi_name), isProgram};
        return true;
    });
    // Paths are worked out here, outside the loader's lock.
    if (found) {
        found->path = found->isProgram ? programPath() : absolutePath(found->loaderName);
    }
    return found;
}

}  // namespace

std::optional<LoadedObject> loadedObject(HMODULE handle) {
    auto const address = reinterpret_cast<std::uintptr_t>(handle);
    return findObject(
        [&](dl_phdr_info const&, Extent const& extent) { return extent.begin == address; });
}

std::optional<LoadedObject> loadedObjectAround(void const* address) {
    auto const place = reinterpret_cast<std::uintptr_t>(address);
    return findObject([&](dl_phdr_info const&, Extent const& extent) {
        return place >= extent.begin && place < extent.end;
    });
}

std::optional<LoadedObject> loadedObjectNamed(std::string_view name) {
    bool const isPath = name.find('/') != std::string_view::npos;
    std::string const wanted = isPath ? absolutePath(name) : std::string(name);
    std::string const withExtension = wanted + ".so";
    return findObject([&](dl_phdr_info const& info, Extent const&) {
        std::string_view file = info.dlpi_name;
        if (isPath) return !file.empty() && pathOfLoaderName(file) == wanted;
        file.remove_prefix(file.rfind('/') + 1);
        return !file.empty() && (file == wanted || file == withExtension);
    });
}

LoadedObject programObject() {
    return findObject([](dl_phdr_info const&, Extent const&) { return true; }).value();
}

bool isInLoadedImage(void const* begin, std::size_t size) {
    auto const first = reinterpret_cast<std::uintptr_t>(begin);
    bool found = false;
    visitObjects([&](dl_phdr_info const& info, bool) {
        for (int index = 0; index < info.dlpi_phnum && !found; ++index) {
            auto const& segment = info.dlpi_phdr[index];
            if (!isReadableLoad(segment)) continue;
            std::uintptr_t const start = info.dlpi_addr + segment.p_vaddr;
            found = first >= start && first - start <= segment.p_memsz &&
                    size <= segment.p_memsz - (first - start);
        }
        return found;
    });
    return found;
}

}  // namespace velk::platform
