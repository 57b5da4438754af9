#include "servers/automation/call_outcome.h"

namespace velk::test::server {
namespace {

thread_local CallOutcome* running = nullptr;

}  // namespace

CallOutcome::CallOutcome() noexcept : outer_(running) {
    running = this;
}

CallOutcome::~CallOutcome() {
    running = outer_;
}

CallOutcome* CallOutcome::current() noexcept {
    return running;
}

void CallOutcome::fail(com::ExceptionInfo info) noexcept {
    code_ = DISP_E_EXCEPTION;
    info_ = std::move(info);
}

void CallOutcome::refuse(HRESULT code, UINT index) noexcept {
    code_ = code;
    index_ = index;
}

HRESULT CallOutcome::apply(HRESULT code, EXCEPINFO* exception, UINT* argumentError) noexcept {
    if (!code_) return code;
    if (exception) {
        com::ExceptionInfo const replaced(*exception);
        *exception = info_.release();
    }
    if (index_ && argumentError) *argumentError = *index_;
    return *code_;
}

}  // namespace velk::test::server
