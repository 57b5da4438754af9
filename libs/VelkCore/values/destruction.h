#pragma once

namespace velk::core {

/// Ends an object whose last reference has gone: calls `destroy(object)`.
///
/// An object that goes gives up the objects that it holds, and these give up
/// theirs. Structures of any depth end on a stack of any usual size, because an
/// object that goes many levels inside the end of others waits until these
/// are gone. Whatever waits is gone before the outermost call on the thread returns.
void destroyInTurn(void* object, void (*destroy)(void*) noexcept) noexcept;

}  // namespace velk::core
