#include <gtest/gtest.h>

#include "host/server.h"
#include "proxyobj/proxyContainerC.h"
#include "proxyobj/prxConversion_1.h"
#include "proxyobj/prxDictionaryObjC.h"
#include "proxyobj/prxFileFolderBaseObjC.h"
#include "proxyobj/prxPathNameC.h"
#include "proxyobj/vbScriptEngine.h"

// The typed clients of the objects that the runtime ships.

namespace {

using namespace scripting::proxyobj;
using scripting::createNew;

class ShippedObjects : public testing::Test {
  protected:
    void SetUp() override { ASSERT_EQ(mzComServerInit(), mzSuccess); }
    void TearDown() override { EXPECT_EQ(mzComServerDone(), mzSuccess); }
};

TEST_F(ShippedObjects, Dictionary) {
    prxDictionaryObjC const dictionary(createNew);
    ASSERT_TRUE(dictionary.isBound());
    dictionary.setCompareMode(1);
    dictionary.Add("one", 1);
    dictionary.setItem("two", mzComVariantC("zwei"));
    EXPECT_EQ(dictionary.Count(), 2);
    EXPECT_TRUE(dictionary.Exists("ONE"));
    EXPECT_EQ(dictionary.Item("one").getInt(), 1);
    dictionary.setKey(mzComVariantC("one"), mzComVariantC("eins"));
    EXPECT_FALSE(dictionary.Exists("one"));
    EXPECT_EQ(dictionary.Keys().Count(), 2);
    EXPECT_EQ(dictionary.Items().Item(0).getInt(), 1);
    dictionary.Remove("eins");
    EXPECT_EQ(dictionary.Count(), 1);
    EXPECT_EQ(dictionary.CompareMode(), 1);
}

TEST_F(ShippedObjects, Array) {
    proxyContainerC const array(createNew);
    for (int i = 0; i < 4; ++i) array.Add(i * i);
    EXPECT_EQ(array.Count(), 4);
    EXPECT_EQ(array.LBound(), 0);
    EXPECT_EQ(array.UBound(), 3);
    EXPECT_EQ(array.Find(4), 2);
    array.setItem(0, mzComVariantC(100));
    array.InsertAt(1, mzComVariantC(50));
    array.RemoveAt(4);
    EXPECT_EQ(array.Item(1).getInt(), 50);
    auto const part = array.copy(1, 2);
    EXPECT_EQ(part.Length(), 2);
    EXPECT_EQ(part.Item(1).getInt(), 1);
    array.RemoveAll();
    EXPECT_EQ(array.Count(), 0);
}

TEST_F(ShippedObjects, CopiesShareTheirObject) {
    proxyContainerC const array(createNew);
    proxyContainerC const copied = array;
    proxyContainerC assigned;
    assigned = copied;
    assigned.Add(5);
    EXPECT_EQ(array.Count(), 1);
    EXPECT_EQ(array.scriptObject().dispatch().iface(), copied.scriptObject().dispatch().iface());
}

TEST_F(ShippedObjects, PathName) {
    prxPathNameC const path(createNew);
    path.append("C:\\folder\\document.doc");
    EXPECT_TRUE(path.hasDrive());
    EXPECT_EQ(path.Drive().toUtf8(), "C");
    EXPECT_EQ(path.Ext().toUtf8(), "doc");
    EXPECT_FALSE(path.hasShareName());
    prxPathNameC const share(createNew);
    share.append("\\\\server\\share\\file.doc");
    EXPECT_EQ(share.ComputerName().toUtf8(), "server");
    EXPECT_EQ(share.ShareName().toUtf8(), "share");
}

TEST_F(ShippedObjects, ConstantsComeFromTheScriptManager) {
    EXPECT_EQ(prxFileFolderBaseObjC::Attribute_Hidden(), 2);
    EXPECT_EQ(prxFileFolderBaseObjC::Attribute_Directory(), 16);
    EXPECT_EQ(prxConversion_1::FullType().toUtf8(), "kq.Conversion_1");
    vbScriptEngine const manager(createNew);
    EXPECT_TRUE(manager.HasType("proxyobj.prxdllhostmgrc"));
    EXPECT_EQ(manager.Constant("proxyobj.prxfilefolderbaseobjc", "Attribute_Hidden").getInt(), 2);
    EXPECT_GT(manager.Types().Count(), 0);
    EXPECT_TRUE(manager.CreateNullType("proxyobj.prxrwconfigc").isValid());
    EXPECT_FALSE(manager.CreateNullType("proxyobj.nothing").isValid());
}

}  // namespace
