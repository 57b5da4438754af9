#include "VelkCOMFileProperties/property_dictionary.h"

#include "VelkCOMFileProperties/property_set_file.h"
#include "VelkCOMFileProperties/property_values.h"
#include "host/proxy_member.h"

using velk::adapter::hostToPropVariant;
using velk::adapter::PropertySetFile;
using velk::adapter::PropertySetUse;
using velk::adapter::propVariantToHost;
namespace com = velk::com;

namespace {

// Unit and lines as member descriptors publish them: constants of the class, no
// places in this file.
constexpr char const* sourceUnit = "VelkCOMFileProperties";
constexpr char const* readOnlyMessage = "Dictionary is in read-only mode!";
constexpr char const* writeMessage = "Failed to write property to source file!";
constexpr char const* removeMessage = "Failed to remove property from source file!";
constexpr char const* removeAllMessage = "Failed to remove all properties from source file!";

/// Names one property by its name, which must outlive this.
PROPSPEC namedProperty(mzComStringC const& name) {
    PROPSPEC specifier{};
    specifier.ulKind = PRSPEC_LPWSTR;
    // The interface takes a pointer to changeable text and changes nothing.
    specifier.lpwstr = const_cast<LPOLESTR>(name.oleText());
    return specifier;
}

bool isSameKey(QString const& one, QString const& other) {
    return one.compare(other, Qt::CaseInsensitive) == 0;
}

/// Whether the file has a property of the name, readable or not.
bool hasProperty(PropertySetFile const& file, mzComStringC const& name) {
    PROPSPEC const property = namedProperty(name);
    com::PropVariant value;
    return file.properties().ReadMultiple(1, &property, value.put()) != S_FALSE;
}

/// Gives a property another spelling of its name, and leaves its value.
/// Result: null, or what to tell of the failure.
char const* respell(PropertySetFile& file, mzComStringC const& key, mzComStringC const& newKey) {
    IEnumSTATPROPSTG* const entries = file.enumerate();
    com::StoredProperty property;
    while (entries != nullptr &&
           com::readNextProperty(*entries, file.properties(), property) == S_OK) {
        if (!property.name || !isSameKey(mzComStringC(property.name->c_str()), key)) continue;
        auto* const name = const_cast<LPOLESTR>(newKey.oleText());
        bool const isRenamed =
            SUCCEEDED(file.properties().WritePropertyNames(1, &property.id, &name));
        return isRenamed && file.commit() ? nullptr : writeMessage;
    }
    return writeMessage;
}

/// Writes a property as text under a new name and deletes the former one, both
/// or neither. Result as above.
char const* replace(PropertySetFile& file, mzComStringC const& key, mzComStringC const& newKey,
                    mzComStringC const& text) {
    com::PropVariant content;
    if (!hostToPropVariant(text, content)) return writeMessage;
    PROPSPEC const made = namedProperty(newKey);
    HRESULT const written =
        file.properties().WriteMultiple(1, &made, content.address(), PID_FIRST_USABLE);
    if (FAILED(written)) return writeMessage;
    PROPSPEC const former = namedProperty(key);
    if (FAILED(file.properties().DeleteMultiple(1, &former))) {
        file.revert();
        return removeMessage;
    }
    return file.commit() ? nullptr : writeMessage;
}

}  // namespace

prxFilePropDictionaryObjC::prxFilePropDictionaryObjC() {
    setNonStickyThread();
}

prxFilePropDictionaryObjC::prxFilePropDictionaryObjC(QString path, bool readOnly, REFFMTID formatId)
    : path_(std::move(path)), readOnly_(readOnly), formatId_(formatId) {
    loadProperties();
    setNonStickyThread();
}

void prxFilePropDictionaryObjC::loadProperties() {
    PropertySetFile file;
    if (!file.open(path_, formatId_, PropertySetUse::reading)) return;
    setCompareMode(1);
    IEnumSTATPROPSTG* const entries = file.enumerate();
    if (entries == nullptr) return;
    com::StoredProperty property;
    while (com::readNextProperty(*entries, file.properties(), property) == S_OK) {
        addObj(mzComVariantC(mzComStringC(property.key().c_str())),
               propVariantToHost(property.value.get()));
    }
}

bool prxFilePropDictionaryObjC::writeProperty(mzComStringC const& name,
                                              mzComVariantC const& value) const {
    PropertySetFile file;
    if (!file.open(path_, formatId_, PropertySetUse::writing)) return false;
    com::PropVariant content;
    if (!hostToPropVariant(value, content)) return false;
    PROPSPEC const property = namedProperty(name);
    HRESULT const written =
        file.properties().WriteMultiple(1, &property, content.address(), PID_FIRST_USABLE);
    return SUCCEEDED(written) && file.commit();
}

bool prxFilePropDictionaryObjC::deleteProperty(mzComStringC const& name) const {
    PropertySetFile file;
    if (!file.open(path_, formatId_, PropertySetUse::writing)) return false;
    PROPSPEC const property = namedProperty(name);
    return SUCCEEDED(file.properties().DeleteMultiple(1, &property)) && file.commit();
}

bool prxFilePropDictionaryObjC::deleteAllProperties() const {
    PropertySetFile file;
    if (!file.open(path_, formatId_, PropertySetUse::writing)) return false;
    IEnumSTATPROPSTG* const entries = file.enumerate();
    if (entries == nullptr) return false;
    for (;;) {
        STATPROPSTG entry{};
        ULONG fetched = 0;
        if (entries->Next(1, &entry, &fetched) != S_OK) break;
        com::TaskMemory const name(entry.lpwstrName);
        PROPSPEC property{};
        property.ulKind = PRSPEC_PROPID;
        property.propid = entry.propid;
        if (FAILED(file.properties().DeleteMultiple(1, &property))) {
            file.revert();
            return false;
        }
    }
    return file.commit();
}

void prxFilePropDictionaryObjC::refuseWhenReadOnly(char const* operation) const {
    if (readOnly_) throwExecuteException(readOnlyMessage, operation, 1);
}

int prxFilePropDictionaryObjC::Remove(mzComStringC const& key) {
    constexpr char const* operation = "removeKey";
    if (removeKey(key) == 0) return 0;
    refuseWhenReadOnly(operation);
    if (!deleteProperty(key)) throwExecuteException(removeMessage, operation, 1);
    return 1;
}

int prxFilePropDictionaryObjC::Add(mzComStringC const& key, mzComVariantC const& item) {
    constexpr char const* operation = "addObj";
    refuseWhenReadOnly(operation);
    int const found = searchKey(key);
    if (found == 0 || (found == 1 && getInsertMode() == 1)) {
        addObj(key, item);
        if (!writeProperty(key, item)) throwExecuteException(writeMessage, operation, 1);
    }
    return 0;
}

int prxFilePropDictionaryObjC::RemoveAll() {
    constexpr char const* operation = "delAll";
    delAll();
    refuseWhenReadOnly(operation);
    if (!deleteAllProperties()) throwExecuteException(removeAllMessage, operation, 1);
    return 1;
}

mzComPtrT<mzIUnknown> prxFilePropDictionaryObjC::setItemInFile(mzComStringC const& key,
                                                               mzComVariantC const& item) {
    constexpr char const* operation = "setItem";
    mzComPtrT<mzIUnknown> result = setItem(key, item);
    refuseWhenReadOnly(operation);
    if (!writeProperty(key, item)) throwExecuteException(writeMessage, operation, 1);
    return result;
}

mzComPtrT<mzIUnknown> prxFilePropDictionaryObjC::setKeyInFile(mzComStringC const& key,
                                                              mzComStringC const& newKey) {
    constexpr char const* operation = "setKey";
    if (readOnly_) setKey(key, newKey);
    refuseWhenReadOnly(operation);
    if (!exists(key)) throwExecuteException(writeMessage, operation, 1);
    if (key == newKey) return getIUnknown();
    bool const isRespelled = isSameKey(key, newKey);
    if (!isRespelled && exists(newKey)) throwExecuteException(writeMessage, operation, 1);
    mzComStringC text;
    getItem(key).get(text);
    char const* failure = writeMessage;
    mzComPtrT<mzIUnknown> result;
    {
        PropertySetFile file;
        bool const isOpen = file.open(path_, formatId_, PropertySetUse::writing);
        bool const isTaken = isOpen && !isRespelled && hasProperty(file, newKey);
        if (!isTaken) result = setKey(key, newKey);
        if (isOpen && !isTaken) {
            failure = isRespelled ? respell(file, key, newKey) : replace(file, key, newKey, text);
        }
    }
    if (failure != nullptr) throwExecuteException(failure, operation, 1);
    return result;
}

proxyMemberDescListS const* prxFilePropDictionaryObjC::getStaticProxyTypeInfo() {
    using Self = prxFilePropDictionaryObjC;
    static proxyMemberDescS const members[] = {
        proxyMethod<&Self::Remove>("Remove", sourceUnit, 212),
        proxyMethod<&Self::Add>("Add", sourceUnit, 213),
        proxyMethod<&Self::RemoveAll>("RemoveAll", sourceUnit, 214),
        proxyPropertyPut<&Self::setItemInFile>("Item", sourceUnit, 215),
        proxyPropertyPut<&Self::setKeyInFile>("Key", sourceUnit, 216),
        proxyPropertyPut<&Self::Add>("", sourceUnit, 217),
        proxyMembersEnd()};
    static proxyMemberDescListS const* const bases[] = {prxDictionaryObjC::getStaticProxyTypeInfo(),
                                                        nullptr};
    static proxyMemberDescListS const record = {"prxFilePropDictionaryObjC",
                                                &proxyCastTo<Self>,
                                                bases,
                                                members,
                                                "qxttools.fileproperties.container",
                                                0,
                                                &proxyCreate<Self>,
                                                sourceUnit,
                                                204};
    return &record;
}
