/// Which apartment the calling thread is in.
#pragma once

namespace velk::platform::com {

/// Whether COM may be used on the calling thread: it has entered an apartment,
/// or shares the multi-threaded one that some other thread keeps alive.
bool isInApartment() noexcept;

}  // namespace velk::platform::com
