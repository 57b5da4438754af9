#include "VelkCOMFileProperties/property_set_file.h"

#include "host/coinit.h"

namespace velk::adapter {

bool PropertySetFile::open(mzComStringC const& path, REFFMTID formatId, PropertySetUse use) {
    bool const writing = use == PropertySetUse::writing;
    DWORD const fileMode = writing ? STGM_DIRECT_SWMR | STGM_SHARE_DENY_WRITE | STGM_READWRITE
                                   : STGM_DIRECT_SWMR | STGM_SHARE_DENY_NONE | STGM_READ;
    DWORD const setMode = STGM_SHARE_EXCLUSIVE | (writing ? STGM_READWRITE : STGM_READ);
    PCoInitializer::attach(0);
    if (FAILED(StgOpenStorage(path.oleText(), nullptr, fileMode, nullptr, 0, storage_.put()))) {
        return false;
    }
    propertySetStorage_ = storage_.query<IPropertySetStorage>(IID_IPropertySetStorage);
    return propertySetStorage_ &&
           SUCCEEDED(propertySetStorage_->Open(formatId, setMode, propertyStorage_.put()));
}

IEnumSTATPROPSTG* PropertySetFile::enumerate() {
    return SUCCEEDED(propertyStorage_->Enum(enumerator_.put())) ? enumerator_.get() : nullptr;
}

}  // namespace velk::adapter
