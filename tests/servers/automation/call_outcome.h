/// What a member wants Invoke to answer, beyond its own result code.
#pragma once

#include <optional>

#include "com/owners.h"

namespace velk::test::server {

/// Lives in Invoke around the call of the member, which leaves its wish there.
/// A member that is called through its vtable finds none. One thread's.
class CallOutcome {
  public:
    CallOutcome() noexcept;
    ~CallOutcome();
    CallOutcome(CallOutcome const&) = delete;
    CallOutcome& operator=(CallOutcome const&) = delete;

    /// The running call's on this thread, or null.
    static CallOutcome* current() noexcept;

    /// Invoke is to answer `code` and to leave EXCEPINFO empty.
    void answer(HRESULT code) noexcept { code_ = code; }
    /// Invoke is to answer DISP_E_EXCEPTION with `info`.
    void fail(com::ExceptionInfo info) noexcept;
    /// Invoke is to answer `code` for the argument `index`.
    void refuse(HRESULT code, UINT index) noexcept;

    /// Puts what was wished in the place of what the call answered. A member that
    /// wishes something fails, so that EXCEPINFO is filled in then.
    HRESULT apply(HRESULT code, EXCEPINFO* exception, UINT* argumentError) noexcept;

  private:
    std::optional<HRESULT> code_;
    std::optional<UINT> index_;
    com::ExceptionInfo info_;
    CallOutcome* outer_;
};

}  // namespace velk::test::server
