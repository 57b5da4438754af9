#include <iostream>

#include "tours.h"

namespace hostscript {
namespace {

void showReferences(ScriptObject& sample) {
    mzComVariantC const given = mzComVariantC::createSymbolRef(0);
    sample.call("GiveVariant", {given});
    mzComVariantC const changed = mzComVariantC::createSymbolRef(21);
    sample.call("ChangeVariant", {changed});
    std::cout << "by reference:  GiveVariant gave \"" << textOf(given.skipVariable())
              << "\", ChangeVariant made 21 to " << textOf(changed.skipVariable()) << "\n";
}

void showRecord(ScriptObject& sample) {
    constexpr int record = 36;
    auto point = ScriptObject::create("comadapter.variantwrapper");
    point.call("Create", {record, sample.asValue(), "Point"});
    std::cout << "a record:      a new Point is at " << textOf(point.call("", {"x"})) << ", "
              << textOf(point.call("", {"y"})) << "\n";
    ScriptObject given(sample.call("MakePoint", {3, 4}));
    std::cout << "               the given one at " << textOf(given.call("", {"x"})) << ", "
              << textOf(given.call("", {"y"})) << "\n";
}

void showArray(ScriptObject& sample) {
    ScriptObject cube(sample.call("MakeCube", {2, 3, 4}));
    std::cout << "an array:      MakeCube(2, 3, 4) at 1, 2, 3 is "
              << textOf(cube.call("", {1, 2, 3})) << ", all together "
              << textOf(sample.call("SumArray", {cube.asValue()})) << "\n";
}

void showFailure(ScriptObject& adapter, ScriptObject& sample) {
    constexpr int failed = static_cast<int>(0x80004005);
    try {
        sample.call("Fail", {failed, "the sample", "it was asked to fail", "sample.chm", 7});
    } catch (CallError const& error) {
        std::cout << "a failure:     " << error.what() << "\n";
    }
    ScriptObject information(adapter.call("getLastExceptionInfo"));
    std::cout << "               help " << textOf(information.get("BstrHelpFile")) << ", topic "
              << textOf(information.get("DwHelpContext")) << "\n";
}

}  // namespace

void tourSample(ScriptObject& adapter) {
    ScriptObject sample(adapter.call("CreateObject", {"VelkSample.Sample"}));
    std::cout << "a method:      Add(20, 22) is " << textOf(sample.call("Add", {20, 22})) << "\n";
    sample.put("Item", {"colour", "blue"});
    std::cout << "a property:    Item(\"colour\") is " << textOf(sample.get("Item", {"colour"}))
              << "\n";
    std::cout << "a constant:    Color.Blue is "
              << textOf(adapter.call("GetEnumConstant", {sample.asValue(), "Color", "Blue"}))
              << "\n";
    showReferences(sample);
    showRecord(sample);
    showArray(sample);
    showFailure(adapter, sample);
}

}  // namespace hostscript
