/// The script object that gives the property sets of documents.
#pragma once

#include <windows.h>

#include <QString>

#include "com/module_lock.h"
#include "host/auto_register.h"
#include "host/critical_section.h"
#include "host/proxy_object.h"

/// "qxttools.fileproperties". Names a file; each of its four properties is a
/// new dictionary of one property set of that file, read afresh, which keeps
/// the file's path and whether it may write. The file is never held open.
///
/// May be called by several threads at the same time.
class prxFilePropertiesC : public proxyObjectC {
  public:
    prxFilePropertiesC();

    /// Names the file whose dictionaries refuse changes.
    /// Result: 1 when the file exists on a volume with the file system NTFS,
    /// otherwise 0; the file is named all the same.
    int Open(mzComStringC const& path);
    /// The same; `writable` lets the dictionaries write.
    int Open(mzComStringC const& path, bool writable);
    mzComPtrT<mzIDispatch> SummaryInformation();
    mzComPtrT<mzIDispatch> DocSummaryInformation();
    mzComPtrT<mzIDispatch> MediaFileSummaryInfo();
    mzComPtrT<mzIDispatch> Custom();

    proxyMemberDescListS const* getProxyTypeInfo() override { return getStaticProxyTypeInfo(); }
    static proxyMemberDescListS const* getStaticProxyTypeInfo();

  private:
    mzComPtrT<mzIDispatch> propertySet(REFFMTID formatId);

    mzCriticalSectionObjectC section_;
    QString path_;
    bool readOnly_ = true;
    velk::com::ModuleLock moduleLock_;
};
