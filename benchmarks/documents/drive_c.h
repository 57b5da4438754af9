/// A folder as a drive, which scripts' paths need.
#pragma once

#include <filesystem>

/// Makes `folder` the root of the drive `C:\` for this process, in a registry
/// of its own that stands in the folder. Before any other use of the registry.
/// Throws std::runtime_error.
void mapAsDriveC(std::filesystem::path const& folder);
