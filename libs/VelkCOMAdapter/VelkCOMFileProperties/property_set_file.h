/// One property set of one file, open for one operation.
#pragma once

#include <windows.h>

#include <propidl.h>

#include "com/com_ptr.h"
#include "host/com_string.h"

namespace velk::adapter {

/// What an open property set is for.
enum class PropertySetUse {
    reading,  ///< everybody else may read and write the file meanwhile
    writing   ///< nobody else may write the file meanwhile
};

/// Opens a property set of a compound file and releases the set, its view and
/// the file, in this order, when it ends. Not thread-safe.
class PropertySetFile {
  public:
    PropertySetFile() = default;
    PropertySetFile(PropertySetFile const&) = delete;
    PropertySetFile& operator=(PropertySetFile const&) = delete;

    /// Opens the set. False when the file cannot be opened in the way that
    /// `use` asks for, is no compound file or has no such set; a set that is
    /// missing is never created. Call it once.
    bool open(mzComStringC const& path, REFFMTID formatId, PropertySetUse use);

    /// Starts an enumeration of the set's properties. Null when that fails.
    IEnumSTATPROPSTG* enumerate();

    /// The open set; only after `open` returned true.
    IPropertyStorage& properties() const { return *propertyStorage_; }

    /// Forgets the changes since the last commit, which the end of this would
    /// make lasting otherwise.
    void revert() { static_cast<void>(propertyStorage_->Revert()); }

    /// Makes the changes lasting.
    bool commit() { return SUCCEEDED(propertyStorage_->Commit(STGC_DEFAULT)); }

  private:
    // Released from the last to the first.
    com::ComPtr<IEnumSTATPROPSTG> enumerator_;
    com::ComPtr<IStorage> storage_;
    com::ComPtr<IPropertySetStorage> propertySetStorage_;
    com::ComPtr<IPropertyStorage> propertyStorage_;
};

}  // namespace velk::adapter
