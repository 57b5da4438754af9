/// IDispatch of the sample object: recorded, then called by its description.
#pragma once

#include "com/dispatch_impl.h"
#include "servers/automation/call_outcome.h"
#include "servers/automation/call_record.h"
#include "servers/automation/sample_interfaces.h"
#include "servers/automation/test_server_ids.h"

namespace velk::test::server {

class SampleDispatch : public com::IDispatchImpl<ISample, &sampleInterface, &testLibrary, 1, 0> {
  public:
    HRESULT STDMETHODCALLTYPE Invoke(DISPID member, REFIID id, LCID lcid, WORD flags,
                                     DISPPARAMS* parameters, VARIANT* result, EXCEPINFO* exception,
                                     UINT* argumentError) noexcept override {
        try {
            // Whoever reads the record does not appear in it.
            if (member < firstRecordMember) record_.add(flags, parameters);
        }
        VELK_COM_CATCH
        CallOutcome outcome;
        HRESULT const code = IDispatchImpl::Invoke(member, id, lcid, flags, parameters, result,
                                                   exception, argumentError);
        return outcome.apply(code, exception, argumentError);
    }

  protected:
    SampleDispatch() = default;
    ~SampleDispatch() = default;

    /// RecordedCalls and ClearRecorded.
    static constexpr DISPID firstRecordMember = 134;
    CallRecord record_;
};

}  // namespace velk::test::server
