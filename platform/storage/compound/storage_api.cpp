/// The published functions that make and open compound files.
#include <coml2api.h>

#include <array>
#include <filesystem>

#include <stdlib.h>
#include <unistd.h>
#include <velk_paths.h>
#include <winbase.h>

#include "platform/com/held_object.h"
#include "platform/storage/compound/disk_file.h"
#include "platform/storage/compound/open_mode.h"
#include "platform/storage/compound/storage_object.h"
#include "platform/system/utf16.h"

namespace velk::platform::storage {
namespace {

using com::HeldObject;
using Storage = HeldObject<IStorage>;

std::string fileOf(OLECHAR const* name) {
    require(name != nullptr && *name != 0, STG_E_INVALIDNAME);
    std::array<char, 4096> file;
    DWORD const length = VelkFileOfPath(name, file.data(), file.size());
    require(length != 0 || GetLastError() != ERROR_NOT_ENOUGH_MEMORY, STG_E_INSUFFICIENTMEMORY);
    require(length != 0 && length <= file.size(), STG_E_PATHNOTFOUND);
    return {file.data(), length};
}

std::string temporaryFile() {
    std::error_code error;
    auto pattern = (std::filesystem::temp_directory_path(error) / "velkXXXXXX").string();
    int const file = error ? -1 : mkostemp(pattern.data(), 0);
    require(file >= 0, STG_E_ACCESSDENIED);
    close(file);
    return pattern;
}

Storage createFile(OLECHAR const* name, DWORD mode) {
    checkFileMode(mode, true);
    bool const isTemporary = name == nullptr;
    std::string const path = isTemporary ? temporaryFile() : fileOf(name);
    bool const replaces = isTemporary || (mode & STGM_CREATE) != 0;
    auto file = std::make_unique<DiskFile>(
        path, replaces ? DiskFile::Disposition::createAlways : DiskFile::Disposition::createNew,
        sharingOf(mode));
    if (isTemporary || (mode & STGM_DELETEONRELEASE) != 0) file->removeOnClose();
    CompoundFile::create(*file);
    auto opened = std::make_shared<CompoundFile>(std::move(file), true, !isTransacted(mode));
    Storage made;
    *made.target() =
        static_cast<IStorage*>(new StorageObject(std::move(opened), mode, toUtf16(path)));
    return made;
}

Storage openFile(OLECHAR const* name, DWORD mode) {
    std::string const path = fileOf(name);
    checkFileMode(mode, false);
    auto file = std::make_unique<DiskFile>(path, DiskFile::Disposition::open, sharingOf(mode));
    auto opened =
        std::make_shared<CompoundFile>(std::move(file), mayWrite(mode), !isTransacted(mode));
    Storage made;
    *made.target() = static_cast<IStorage*>(new StorageObject(std::move(opened), mode, name));
    return made;
}

/// Gives what `make` makes.
template <typename Make>
HRESULT give(IStorage** storage, Make make) noexcept {
    if (storage == nullptr) return STG_E_INVALIDPOINTER;
    *storage = nullptr;
    return answer(
        [&] { check(make()->QueryInterface(IID_IStorage, reinterpret_cast<void**>(storage))); });
}

}  // namespace
}  // namespace velk::platform::storage

using namespace velk::platform::storage;

HRESULT StgCreateDocfile(OLECHAR const* name, DWORD mode, DWORD reserved, IStorage** storage) {
    return give(storage, [&] {
        velk::platform::require(reserved == 0, STG_E_INVALIDPARAMETER);
        return createFile(name, mode);
    });
}

HRESULT StgOpenStorage(OLECHAR const* name, IStorage* priority, DWORD mode, SNB exclude,
                       DWORD reserved, IStorage** storage) {
    return give(storage, [&] {
        bool const isPlain = priority == nullptr && exclude == nullptr && reserved == 0;
        velk::platform::require(isPlain, STG_E_INVALIDPARAMETER);
        return openFile(name, mode);
    });
}
