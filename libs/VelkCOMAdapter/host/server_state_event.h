#pragma once

#include "host/codes.h"
#include "host/export.h"

/// An object that takes part in the start and end of the runtime's servers:
/// a static object of a module. The runtime calls `serverInit` in ascending
/// order value, `serverDone` in descending order. An object that enters while
/// the servers run is started at once.
class VELKCORE_API mzComServerStateEventC {
  public:
    mzComServerStateEventC(mzComServerStateEventC const&) = delete;
    mzComServerStateEventC& operator=(mzComServerStateEventC const&) = delete;

    /// Leaves the runtime's list.
    virtual ~mzComServerStateEventC();
    /// Host result code.
    virtual unsigned serverInit();
    /// Host result code.
    virtual unsigned serverDone();

  protected:
    explicit mzComServerStateEventC(int order);
    /// Enters the object in the runtime's list. The derived object calls it
    /// once its own construction is done.
    void init();

    int order() const { return order_; }

  private:
    friend class mzServerEventListC;

    int order_;
    bool entered_ = false;
    bool started_ = false;
};
