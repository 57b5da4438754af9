/// Which QtCore the module runs with.
#pragma once

namespace velk::adapter {

/// Whether the module can use a QtCore of this version, "5.15.8" say: one of
/// the major version that it was built with, and no older one. A client may
/// bring its own, which a system that tells libraries by their file names gives
/// to the module too.
bool canUseQt(char const* version) noexcept;

}  // namespace velk::adapter
