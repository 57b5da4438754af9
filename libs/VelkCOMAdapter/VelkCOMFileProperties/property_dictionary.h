/// The dictionary of one property set of a document.
#pragma once

#include <windows.h>

#include <QString>

#include "com/module_lock.h"
#include "host/auto_register.h"
#include "host/dictionary.h"

/// "qxttools.fileproperties.container". Holds the properties of one OLE
/// property set of one file, by name or, where a property has no name, by its
/// number in decimal, and writes every change through to the file at once.
///
/// The file is open during a change only, and read only when the dictionary is
/// made. What the file refuses fails with a message, and the change then
/// stays in the dictionary, as changes of a read-only dictionary do; only
/// "Add" to a read-only one is refused as a whole. A property that was read
/// under its number is written under that number as its name.
///
/// Works on any thread, for one at a time: a call that comes while another
/// thread is in the dictionary fails.
class prxFilePropDictionaryObjC : public prxDictionaryObjC {
  public:
    /// An empty dictionary without a file, read-only.
    prxFilePropDictionaryObjC();
    /// The properties of the set `formatId` of the file; none when the file
    /// cannot be read or has no such set.
    prxFilePropDictionaryObjC(QString path, bool readOnly, REFFMTID formatId);

    /// Removes a property: 1, or 0 when there is no such key.
    int Remove(mzComStringC const& key);
    /// Adds a property, unless the key is there and the dictionary refuses a
    /// second one; 0.
    int Add(mzComStringC const& key, mzComVariantC const& item);
    /// Removes every property of the file's set; 1.
    int RemoveAll();
    /// Sets a property's value, or adds the property; the dictionary.
    mzComPtrT<mzIUnknown> setItemInFile(mzComStringC const& key, mzComVariantC const& item);
    /// Renames a property, whose value becomes text; in another spelling of
    /// its own name it keeps the value. A key that is not there, and a new one
    /// that is, are refused and change nothing. Result: the dictionary.
    mzComPtrT<mzIUnknown> setKeyInFile(mzComStringC const& key, mzComStringC const& newKey);

    proxyMemberDescListS const* getProxyTypeInfo() override { return getStaticProxyTypeInfo(); }
    static proxyMemberDescListS const* getStaticProxyTypeInfo();

  private:
    void loadProperties();
    bool writeProperty(mzComStringC const& name, mzComVariantC const& value) const;
    bool deleteProperty(mzComStringC const& name) const;
    bool deleteAllProperties() const;
    void refuseWhenReadOnly(char const* operation) const;

    QString path_;
    bool readOnly_ = true;
    FMTID formatId_{};
    velk::com::ModuleLock moduleLock_;
};
