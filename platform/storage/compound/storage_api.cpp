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
#include "platform/storage/storage_error.h"
#include "platform/system/utf16.h"

namespace velk::platform::storage {
namespace {

using com::HeldObject;
using Storage = HeldObject<IStorage>;

std::string fileOf(OLECHAR const* name) {
    failIf(name == nullptr || *name == 0, STG_E_INVALIDNAME);
    std::array<char, 4096> file;
    DWORD const length = VelkFileOfPath(name, file.data(), file.size());
    failIf(length == 0 && GetLastError() == ERROR_NOT_ENOUGH_MEMORY, STG_E_INSUFFICIENTMEMORY);
    failIf(length == 0 || length > file.size(), STG_E_PATHNOTFOUND);
    return {file.data(), length};
}

std::string temporaryFile() {
    std::error_code error;
    auto pattern = (std::filesystem::temp_directory_path(error) / "velkXXXXXX").string();
    int const file = error ? -1 : mkostemp(pattern.data(), 0);
    failIf(file < 0, STG_E_ACCESSDENIED);
    close(file);
    return pattern;
}

std::size_t sectorSizeOf(STGOPTIONS const* options) {
    if (options == nullptr) return 512;
    failIf(
        options->usVersion < 1 || options->usVersion > STGOPTIONS_VERSION || options->reserved != 0,
        STG_E_INVALIDPARAMETER);
    std::size_t const size = options->ulSectorSize;
    failIf(size != 0 && size != 512 && size != 4096, STG_E_INVALIDPARAMETER);
    return size == 0 ? 512 : size;
}

void checkFormat(DWORD format, DWORD attributes) {
    bool const isKnown =
        format == STGFMT_STORAGE || format == STGFMT_DOCFILE || format == STGFMT_ANY;
    failIf(!isKnown || attributes != 0, STG_E_INVALIDPARAMETER);
}

Storage createFile(OLECHAR const* name, DWORD mode, std::size_t sectorSize) {
    checkFileMode(mode, true);
    bool const isTemporary = name == nullptr;
    std::string const path = isTemporary ? temporaryFile() : fileOf(name);
    bool const replaces = isTemporary || (mode & STGM_CREATE) != 0;
    auto file = std::make_unique<DiskFile>(
        path, replaces ? DiskFile::Disposition::createAlways : DiskFile::Disposition::createNew,
        sharingOf(mode));
    if (isTemporary || (mode & STGM_DELETEONRELEASE) != 0) file->removeOnClose();
    CompoundFile::create(*file, sectorSize);
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

/// Gives an interface of what `make` makes.
template <typename Make>
HRESULT give(REFIID riid, void** object, Make make) noexcept {
    if (object == nullptr) return STG_E_INVALIDPOINTER;
    *object = nullptr;
    return answer([&] {
        Storage const made = make();
        HRESULT const code = made->QueryInterface(riid, object);
        failIf(FAILED(code), code);
    });
}

}  // namespace
}  // namespace velk::platform::storage

using namespace velk::platform::storage;

HRESULT StgCreateDocfile(OLECHAR const* name, DWORD mode, DWORD reserved, IStorage** storage) {
    return give(IID_IStorage, reinterpret_cast<void**>(storage), [&] {
        failIf(reserved != 0, STG_E_INVALIDPARAMETER);
        return createFile(name, mode, sectorSizeOf(nullptr));
    });
}

HRESULT StgCreateStorageEx(WCHAR const* name, DWORD mode, DWORD format, DWORD attributes,
                           STGOPTIONS* options, void* security, REFIID riid, void** object) {
    return give(riid, object, [&] {
        checkFormat(format, attributes);
        failIf(security != nullptr, STG_E_INVALIDPARAMETER);
        return createFile(name, mode, sectorSizeOf(options));
    });
}

HRESULT StgOpenStorage(OLECHAR const* name, IStorage* priority, DWORD mode, SNB exclude,
                       DWORD reserved, IStorage** storage) {
    return give(IID_IStorage, reinterpret_cast<void**>(storage), [&] {
        failIf(priority != nullptr || exclude != nullptr || reserved != 0, STG_E_INVALIDPARAMETER);
        return openFile(name, mode);
    });
}

HRESULT StgOpenStorageEx(WCHAR const* name, DWORD mode, DWORD format, DWORD attributes,
                         STGOPTIONS* options, void* reserved, REFIID riid, void** object) {
    return give(riid, object, [&] {
        checkFormat(format, attributes);
        failIf(reserved != nullptr, STG_E_INVALIDPARAMETER);
        static_cast<void>(sectorSizeOf(options));
        return openFile(name, mode);
    });
}

HRESULT StgIsStorageFile(OLECHAR const* name) {
    bool isOne = false;
    HRESULT const result = answer([&] {
        DiskFile file(fileOf(name), DiskFile::Disposition::open, Sharing{true});
        std::array<std::byte, headerSize> bytes;
        file.read(0, bytes);
        isOne = SUCCEEDED(answer([&] { static_cast<void>(Header::parse(bytes)); }));
    });
    if (FAILED(result)) return result;
    return isOne ? S_OK : S_FALSE;
}
