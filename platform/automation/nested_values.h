/// Values in arrays and records in values, as deep as their makers like.
#pragma once

#include "oleauto.h"

namespace velk::platform {

/// Gives up an array and everything in it. One that goes many levels inside the
/// end of others waits until these are gone, so that no depth exhausts the
/// stack; whatever waits is gone before the outermost call on the thread returns.
HRESULT destroyArrayInTurn(SAFEARRAY* array) noexcept;

/// Gives up a record, which may be null, and a reference to its information in
/// the same manner.
void destroyRecordInTurn(IRecordInfo* info, void* record) noexcept;

/// One level of records that are copied within one another, for as long as it
/// lives: others than arrays, whose elements wait for their turn, such copies
/// take stack of their own at each level.
class RecordCopyLevel {
  public:
    RecordCopyLevel() noexcept;
    RecordCopyLevel(RecordCopyLevel const&) = delete;
    RecordCopyLevel& operator=(RecordCopyLevel const&) = delete;
    ~RecordCopyLevel();

    /// S_OK, or the code for a thread's stack that has no more room.
    HRESULT result() const noexcept;
};

}  // namespace velk::platform
