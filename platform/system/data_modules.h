/// Modules of which only the data is used: nothing of them is run.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include <windef.h>

namespace velk::platform {

struct DataModule {
    std::string path;
    std::vector<std::byte> resources;
};

/// Opens a file as data. Null when it is no shared object. Thread-safe.
HMODULE openDataModule(std::string const& path);

/// The module of a handle, or null when no openDataModule gave it. Thread-safe.
std::shared_ptr<DataModule const> dataModule(HMODULE handle);

/// Closes a handle; false when it is none. Thread-safe.
bool closeDataModule(HMODULE handle);

/// Whether the bytes lie in an open data module's resources. Thread-safe.
bool isInDataModule(void const* begin, std::size_t size);

}  // namespace velk::platform
