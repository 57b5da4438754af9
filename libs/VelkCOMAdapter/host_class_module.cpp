#include "host_class_module.h"

#include <new>

mzComPtrT<mzIClassFactory> qxtClassFactory::make() {
    return mzComPtrT<mzIClassFactory>(new (std::nothrow) qxtClassFactory);
}

void VelkCOMAdapter::registerFactories() {
    addFactory(&qxtClassFactory::make);
}
