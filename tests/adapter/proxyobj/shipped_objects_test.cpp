#include <gtest/gtest.h>

#include "host/server.h"
#include "proxyobj/proxyContainerC.h"
#include "proxyobj/prxConversion_1.h"
#include "proxyobj/prxDictionaryObjC.h"
#include "proxyobj/prxFileFolderBaseObjC.h"
#include "proxyobj/vbScriptEngine.h"

// The typed clients with objects that the runtime ships.

namespace {

using namespace scripting::proxyobj;
using scripting::createNew;

TEST(ShippedObjects, AreMadeCalledAndShared) {
    prxDictionaryObjC const dictionary(createNew);
    ASSERT_TRUE(dictionary.isBound());
    dictionary.setCompareMode(1);
    dictionary.setItem("two", mzComVariantC("zwei"));
    EXPECT_TRUE(dictionary.Exists("TWO"));
    prxDictionaryObjC assigned;
    assigned = prxDictionaryObjC(dictionary);
    assigned.Add("one", 1);
    EXPECT_EQ(dictionary.Keys().Count(), 2);
    EXPECT_EQ(dictionary.Item("one").getInt(), 1);
    EXPECT_EQ(dictionary.scriptObject().dispatch().iface(),
              assigned.scriptObject().dispatch().iface());
}

TEST(ShippedObjects, ConstantsComeFromTheScriptManager) {
    ASSERT_EQ(mzComServerInit(), mzSuccess);
    EXPECT_EQ(prxFileFolderBaseObjC::Attribute_Directory(), 16);
    EXPECT_EQ(prxConversion_1::FullType().toUtf8(), "kq.Conversion_1");
    vbScriptEngine const manager(createNew);
    EXPECT_TRUE(manager.HasType("proxyobj.prxdllhostmgrc"));
    EXPECT_EQ(manager.Constant("proxyobj.prxfilefolderbaseobjc", "Attribute_Hidden").getInt(), 2);
    EXPECT_GT(manager.Types().Count(), 0);
    EXPECT_TRUE(manager.CreateNullType("proxyobj.prxrwconfigc").isValid());
    EXPECT_FALSE(manager.CreateNullType("proxyobj.nothing").isValid());
    EXPECT_EQ(mzComServerDone(), mzSuccess);
}

}  // namespace
