// The script object "qxttools.fileproperties" and its dictionaries.

#include <QtGlobal>

#include "support/document.h"
#include "support/expected_difference.h"
#include "support/native_scripts.h"

namespace {

using namespace velk::test;

class FileProperties : public NativeScripts {
  protected:
    void checkWithDocument(char const* table) {
        auto* const document = new Document;
        objects_["document"] = mzComPtrC(document->getIUnknown());
        words_["DOCUMENT"] = document->path().toUtf8();
        check(table);
    }
};

TEST_F(FileProperties, OfSetsWithoutNames) {
    checkWithDocument("bridge/file_properties.tsv");
}

TEST_F(FileProperties, OfTheCustomSet) {
    if (!runsOn(System::ownLayer)) GTEST_SKIP() << "Wine neither writes nor reads this set";
    qputenv("TZ", "UTC");
    checkWithDocument("bridge/custom_properties.tsv");
}

}  // namespace
