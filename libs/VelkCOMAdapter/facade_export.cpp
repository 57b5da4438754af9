#include "exports.h"
#include "facade_creation.h"

extern "C" bool convertMZCOMIDispatch2MSCOMIDispatch(mzIDispatch* source, IDispatch** result) {
    if (!result) return false;
    velk::com::ComPtr<Ivelkdspwrap> facade;
    if (FAILED(velk::adapter::createBoundFacade(source, facade))) return false;
    *result = facade.detach();
    return true;
}
