#pragma once

namespace velk::core {

/// Has `action(value)` called when the calling thread ends, after what was
/// asked for later and before what was asked for earlier. May be called again
/// from an action. Actions run when objects with thread storage may be gone:
/// they keep to `value`. Throws std::bad_alloc.
///
/// Instead of such objects with destructors, because the compiler for Windows
/// gives their storage back before it destroys them.
void atThreadEnd(void (*action)(void*), void* value);

/// A mark of the calling thread, clear at first, that can be read and set until
/// the loader has told every module of the thread's end.
bool threadMark() noexcept;
void setThreadMark(bool set) noexcept;

}  // namespace velk::core
