/// Where each thread keeps the details of its last failed native call.
#pragma once

#include "host/com_ptr.h"

namespace velk::adapter {

/// One thread-local slot of the host runtime, whose value is a holder of one
/// host object. The holder of a thread ends with the thread, and those of all
/// threads with the slot.
class LastExceptionSlot {
  public:
    LastExceptionSlot();
    ~LastExceptionSlot();
    LastExceptionSlot(LastExceptionSlot const&) = delete;
    LastExceptionSlot& operator=(LastExceptionSlot const&) = delete;

    /// The calling thread's holder, made on first use; null when the runtime
    /// had no slot left. Throws std::bad_alloc.
    mzComPtrC* holder();

    /// The runtime's number of the slot; 0 when it had none left.
    int number() const noexcept { return slot_; }

  private:
    int slot_;
};

}  // namespace velk::adapter
