#pragma once

#include <vector>

#include "com/owners.h"

namespace velk::adapter {

/// One owned VARIANT that may be replaced while it is worked on: reading or
/// writing a field or an element can run foreign code, which can call back and
/// put another value in its place. The former value then lives on until the
/// work with it is done. Not for several threads at a time.
class HeldValue {
  public:
    VARIANT const& get() const noexcept { return value_.get(); }
    VARTYPE type() const noexcept { return value_.get().vt; }

    /// Throws std::bad_alloc, the value then being as before.
    void replace(com::Variant value);
    /// Becomes the empty value of a type: all its data null.
    void reset(VARTYPE type);

    /// While it lives, no value that is replaced is given up.
    class Use {
      public:
        explicit Use(HeldValue& held) noexcept : held_(held) { ++held_.uses_; }
        ~Use();
        Use(Use const&) = delete;
        Use& operator=(Use const&) = delete;

      private:
        HeldValue& held_;
    };

  private:
    com::Variant value_;
    std::vector<com::Variant> former_;
    int uses_ = 0;
};

}  // namespace velk::adapter
