#include "commands/object_creation.h"

#include "com/utf.h"
#include "commands/member_call.h"
#include "text/result_codes.h"
#include "usage_error.h"

namespace velk::velkcom {
namespace {

[[noreturn]] void failCreation(std::string const& progId, HRESULT code) {
    std::string const meaning = meaningOfCode(code);
    throw CallFailure("cannot create \"" + progId + "\": " + describeCode(code) +
                      (meaning.empty() ? "" : ": " + meaning));
}

}  // namespace

com::ComPtr<IDispatch> createObject(std::string const& progId) {
    auto const name = com::fromUtf8(progId);
    if (!name) throw UsageError("the PROGID is not valid UTF-8");
    CLSID classId{};
    HRESULT code = progId.starts_with('{') ? CLSIDFromString(name->c_str(), &classId)
                                           : CLSIDFromProgID(name->c_str(), &classId);
    if (FAILED(code)) failCreation(progId, code);
    com::ComPtr<IDispatch> object;
    code =
        CoCreateInstance(classId, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch, object.putVoid());
    if (FAILED(code)) failCreation(progId, code);
    if (!object) failCreation(progId, E_NOINTERFACE);
    return object;
}

}  // namespace velk::velkcom
