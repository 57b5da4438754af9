#pragma once

#include <memory>

#include "host/iterator.h"
#include "host/proxy_object.h"

/// Ordered dictionary from keys to items, both host variants, as a script
/// object; its iterator walks the keys in the order in which they were added.
///
/// Calls by name run on the dictionary's own thread, unless a derived class has
/// them run on any; the operations below and the iterator run on the caller's. While
/// one thread is in the dictionary, operations of others fail the running member
/// call (`throwExecuteException`), and their iterators answer `mzFailure`.
class VELKCORE_API prxDictionaryObjC : public proxyObjectC, public mzIIterable {
  public:
    prxDictionaryObjC();
    ~prxDictionaryObjC() override;

    unsigned queryInterface(mzIIDS const& iid, mzComPtrC& out) override;
    unsigned addRef() override;
    unsigned release() override;
    proxyMemberDescListS const* getProxyTypeInfo() override;
    static proxyMemberDescListS const* getStaticProxyTypeInfo();

    unsigned createIterator(mzComPtrT<mzIIterator>& out) override;

    /// Adds a pair and returns 0; 1, and nothing added, when the key is there
    /// already and the insert mode refuses a second one.
    int addObj(mzComVariantC const& key, mzComVariantC const& item);
    /// Renames a key and returns the dictionary; a key that is not there, or a
    /// new key that is, leaves everything as it was.
    mzComPtrT<mzIUnknown> setKey(mzComVariantC const& key, mzComVariantC const& newKey);
    /// Sets the item of a key, adding the key when it is new; the dictionary.
    mzComPtrT<mzIUnknown> setItem(mzComVariantC const& key, mzComVariantC const& item);
    /// The item of a key, empty when the key is not there.
    mzComVariantC getItem(mzComVariantC const& key) const;
    /// 1 when the key is there, 0 when it is not.
    int searchKey(mzComVariantC const& key) const;
    /// Removes the first pair of the key: 1, or 0 when the key is not there.
    int removeKey(mzComVariantC const& key);
    /// Removes every pair; 1.
    int delAll();

    /// 0 compares text keys exactly, 1 without regard to case. Only an empty
    /// dictionary changes its mode; other values are ignored.
    void setCompareMode(int mode);
    int getCompareMode() const;
    /// 0 refuses a second equal key, 1 allows it.
    void setInsertMode(int mode);
    int getInsertMode() const;

    int count() const;
    bool exists(mzComVariantC const& key) const;
    /// A new script array of the keys, and one of the items, in order.
    mzComPtrT<mzIUnknown> keys() const;
    mzComPtrT<mzIUnknown> items() const;

  private:
    struct Contents;
    class Place;

    // The members that scripts see; they fail with a message.
    void scriptAdd(mzComVariantC const& key, mzComVariantC const& item);
    bool scriptExists(mzComVariantC const& key);
    mzComVariantC scriptItem(mzComVariantC const& key);
    void scriptSetItem(mzComVariantC const& key, mzComVariantC const& item);
    void scriptSetKey(mzComVariantC const& key, mzComVariantC const& newKey);
    void scriptRemove(mzComVariantC const& key);
    void scriptRemoveAll();
    void scriptSetCompareMode(int mode);

    std::unique_ptr<Contents> contents_;
};
