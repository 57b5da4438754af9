/// Errors of this family: exceptions inside, result codes at the published boundary.
#pragma once

#include <exception>
#include <new>
#include <utility>

#include "oleauto.h"

namespace velk::typelib {

/// A failure that already has its published code.
class ResultError : public std::exception {
  public:
    explicit ResultError(HRESULT code) noexcept : code_(code) {}
    HRESULT code() const noexcept { return code_; }
    char const* what() const noexcept override { return "type library failure"; }

  private:
    HRESULT code_;
};

[[noreturn]] inline void fail(HRESULT code) {
    throw ResultError(code);
}

inline void require(bool condition, HRESULT code) {
    if (!condition) fail(code);
}

/// Throws a failure as a ResultError.
inline void check(HRESULT result) {
    if (FAILED(result)) fail(result);
}

/// Runs `action`, which gives an HRESULT or nothing, and turns what it throws
/// into a result code.
template <typename Action>
HRESULT guarded(Action&& action) noexcept {
    try {
        if constexpr (std::is_void_v<decltype(action())>) {
            std::forward<Action>(action)();
            return S_OK;
        } else {
            return std::forward<Action>(action)();
        }
    } catch (ResultError const& error) {
        return error.code();
    } catch (std::bad_alloc const&) {
        return E_OUTOFMEMORY;
    } catch (...) {
        return E_UNEXPECTED;
    }
}

}  // namespace velk::typelib
