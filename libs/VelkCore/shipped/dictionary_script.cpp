#include "host/auto_register.h"
#include "host/dictionary.h"
#include "host/proxy_member.h"

#include "dictionary_contents.h"

using velk::core::DictionaryEntries;
using velk::core::KeyCompare;

// What scripts see of a dictionary. The class is a plain script object, so a
// call reaches these functions on the thread that owns the dictionary.

void prxDictionaryObjC::scriptAdd(mzComVariantC const& key, mzComVariantC const& item) {
    if (addObj(key, item) != 0) {
        throwExecuteException("The key is already in the dictionary", "Add", 1);
    }
}

bool prxDictionaryObjC::scriptExists(mzComVariantC const& key) {
    return exists(key);
}

// Reading the item of a new key adds the key, as users of such dictionaries expect.
mzComVariantC prxDictionaryObjC::scriptItem(mzComVariantC const& key) {
    return contents_->itemOf(key.skipVariable());
}

void prxDictionaryObjC::scriptSetItem(mzComVariantC const& key, mzComVariantC const& item) {
    setItem(key, item);
}

void prxDictionaryObjC::scriptSetKey(mzComVariantC const& key, mzComVariantC const& newKey) {
    DictionaryEntries const& entries = contents_->entries;
    std::uint32_t const position = entries.find(contents_->keyOf(key.skipVariable()));
    if (position == DictionaryEntries::none) {
        throwExecuteException("The key is not in the dictionary", "Key", 1);
    }
    std::uint32_t const taken = entries.find(contents_->keyOf(newKey.skipVariable()));
    if (taken != DictionaryEntries::none && taken != position) {
        throwExecuteException("The new key is already in the dictionary", "Key", 1);
    }
    setKey(key, newKey);
}

void prxDictionaryObjC::scriptRemove(mzComVariantC const& key) {
    if (removeKey(key) == 0) {
        throwExecuteException("The key is not in the dictionary", "Remove", 1);
    }
}

void prxDictionaryObjC::scriptRemoveAll() {
    delAll();
}

void prxDictionaryObjC::scriptSetCompareMode(int mode) {
    if (mode != int(KeyCompare::binary) && mode != int(KeyCompare::text)) {
        throwExecuteException("The compare mode is 0 (binary) or 1 (text)", "CompareMode", 1);
    }
    if (mode != getCompareMode() && count() != 0) {
        throwExecuteException("The compare mode of a dictionary with entries cannot be changed",
                              "CompareMode", 1);
    }
    setCompareMode(mode);
}

proxyMemberDescListS const* prxDictionaryObjC::getStaticProxyTypeInfo() {
    // What returns a value answers both as a method and as a property read,
    // because not every caller can tell the two apart.
    constexpr unsigned reads = mzCallMethod | mzCallPropertyGet;
    constexpr char const* file = "dictionary.h";
    using D = prxDictionaryObjC;
    static proxyMemberDescS const members[] = {
        proxyMethod<&D::scriptAdd>("Add", file, __LINE__),
        proxyMember<&D::count>("Count", reads, file, __LINE__),
        proxyMember<&D::scriptExists>("Exists", reads, file, __LINE__),
        proxyMember<&D::scriptItem>("Item", reads, file, __LINE__),
        proxyPropertyPut<&D::scriptSetItem>("Item", file, __LINE__),
        proxyMember<&D::scriptItem>("", reads, file, __LINE__),
        proxyPropertyPut<&D::scriptSetItem>("", file, __LINE__),
        proxyMember<&D::items>("Items", reads, file, __LINE__),
        proxyPropertyPut<&D::scriptSetKey>("Key", file, __LINE__),
        proxyMember<&D::keys>("Keys", reads, file, __LINE__),
        proxyMethod<&D::scriptRemove>("Remove", file, __LINE__),
        proxyMethod<&D::scriptRemoveAll>("RemoveAll", file, __LINE__),
        proxyMember<&D::getCompareMode>("CompareMode", reads, file, __LINE__),
        proxyPropertyPut<&D::scriptSetCompareMode>("CompareMode", file, __LINE__),
        proxyMembersEnd()};
    static proxyMemberDescListS const* const bases[] = {proxyObjectC::getStaticProxyTypeInfo(),
                                                        nullptr};
    static proxyMemberDescListS const record = {
        "prxDictionaryObjC", proxyCastTo<D>, bases,   members, "scripting.dictionary", 0,
        proxyCreate<D>,      file,           __LINE__};
    return &record;
}

proxyMemberDescListS const* prxDictionaryObjC::getProxyTypeInfo() {
    return getStaticProxyTypeInfo();
}

static proxyAutoRegisterT<prxDictionaryObjC> registerDictionary;
