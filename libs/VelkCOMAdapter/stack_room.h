#pragma once

namespace velk::adapter {

/// Whether the calling thread has stack left for one more call across the
/// bridge, whatever the two sides do in it. What goes back and forth without
/// end is refused at this point instead of ending the process. Any thread.
bool stackHasRoom() noexcept;

}  // namespace velk::adapter
