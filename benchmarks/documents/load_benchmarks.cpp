#include <stdexcept>

#include <benchmark/benchmark.h>
#include <gsf/gsf-doc-meta-data.h>
#include <gsf/gsf-infile-msole.h>
#include <gsf/gsf-infile.h>
#include <gsf/gsf-input-stdio.h>
#include <gsf/gsf-msole-utils.h>
#include <gsf/gsf-utils.h>

#include "com/stored_properties.h"
#include "common/module.h"
#include "host/host.h"
#include "measures.h"
#include "sample_document.h"

namespace {

namespace com = velk::com;
namespace fs = std::filesystem;

constexpr int properties = 1000;

void require(bool condition, char const* what) {
    if (!condition) throw std::runtime_error(what);
}

void measureLayer(benchmark::State& state, fs::path const& file) {
    for (auto _ : state) {
        auto const open = openSet(file, FMTID_UserDefinedProperties, STGM_READ);
        com::ComPtr<IEnumSTATPROPSTG> all;
        requireSuccess(open.set->Enum(all.put()), "Enum");
        com::StoredProperty property;
        int count = 0;
        while (com::readNextProperty(*all.get(), *open.set.get(), property) == S_OK) ++count;
        require(count == properties, "not every property was read");
    }
}

mzComVariantC call(mzComPtrT<mzIDispatch> const& object, char const* name, unsigned kind,
                   mzComVariantArrayC const& arguments) {
    mzComVariantC result;
    mzComPtrT<mzIException> exception;
    require(object->invokeByName(name, kind, arguments, result, exception) == mzSuccess,
            "the call of a script object failed");
    return result;
}

void measureScript(benchmark::State& state, fs::path const& file) {
    auto const path = "C:\\" + file.filename().string();
    loadAdapterModule();
    mzComPtrC created;
    require(mzComCreateObject("qxttools.fileproperties", mzIDispatch::interfaceId(), created) ==
                mzSuccess,
            "the script object cannot be made");
    mzComPtrT<mzIDispatch> const object(created);
    call(object, "Open", mzCallMethod, mzComVariantArrayC() << path.c_str());
    for (auto _ : state) {
        auto const loaded = call(object, "Custom", mzCallPropertyGet, {});
        mzComPtrT<mzIUnknown> held;
        loaded.get(held);
        mzComPtrT<mzIDispatch> const dictionary(mzComPtrC(held.iface()));
        require(call(dictionary, "Count", mzCallPropertyGet, {}).getInt() == properties,
                "not every property was read");
    }
}

/// What libgsf makes of the file: a table of all properties by name.
int loadWithRival(char const* file) {
    GsfInput* const input = gsf_input_stdio_new(file, nullptr);
    require(input != nullptr, "libgsf cannot open the file");
    GsfInfile* const storage = gsf_infile_msole_new(input, nullptr);
    require(storage != nullptr, "libgsf cannot read the file");
    GsfInput* const stream = gsf_infile_child_by_name(storage, "\005DocumentSummaryInformation");
    require(stream != nullptr, "libgsf finds no stream");
    GsfDocMetaData* const table = gsf_doc_meta_data_new();
    GError* const error = gsf_doc_meta_data_read_from_msole(table, stream);
    require(error == nullptr, "libgsf cannot read the set");
    auto const count = static_cast<int>(gsf_doc_meta_data_size(table));
    g_object_unref(table);
    g_object_unref(stream);
    g_object_unref(storage);
    g_object_unref(input);
    return count;
}

void measureRival(benchmark::State& state, fs::path const& file) {
    gsf_init();
    for (auto _ : state) {
        require(loadWithRival(file.c_str()) >= properties, "libgsf did not read every property");
    }
    gsf_shutdown();
}

}  // namespace

void registerLoadBenchmarks(fs::path const& folder) {
    fs::path const file = folder / "custom";
    makeCustomSet(file, properties);
    benchmark::RegisterBenchmark(measure::layerLoad, measureLayer, file)->UseRealTime();
    benchmark::RegisterBenchmark(measure::scriptLoad, measureScript, file)->UseRealTime();
    benchmark::RegisterBenchmark(measure::rivalLoad, measureRival, file)->UseRealTime();
}
