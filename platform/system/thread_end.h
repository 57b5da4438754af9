/// What happens when a thread ends.
#pragma once

namespace velk::platform {

/// Makes sure that the end of the calling thread reaches every attached module.
///
/// Cheap after the first call on a thread. Every function through which a
/// thread can first meet the layer calls it.
void watchThreadEnd() noexcept;

/// Has `action` run on each watched thread that ends, after the attached
/// modules were told. Meant for the layer's own families at load; at most a
/// few. Thread-safe.
void addThreadEndAction(void (*action)() noexcept) noexcept;

}  // namespace velk::platform
