// Takes any bytes as a stream of property sets: reads all that is in it, then
// changes it, writes it and reads it again.

#include <cstdint>
#include <cstdlib>

#include <objbase.h>
#include <propidl.h>

#include "fuzz/compound/memory_file.h"

namespace {

using namespace velk::fuzz;
using Set = Held<IPropertyStorage>;

/// A document with that stream, open.
class Document {
  public:
    explicit Document(velk::platform::storage::Bytes stream) {
        MemoryFile fresh(bytes_);
        velk::platform::storage::CompoundFile::create(fresh);
        root_ = openRoot(bytes_, change);
        Held<IStream> made;
        auto const size = static_cast<ULONG>(stream.size());
        bool const isMade =
            SUCCEEDED(
                root_->CreateStream(u"\5DocumentSummaryInformation", change, 0, 0, into(made))) &&
            SUCCEEDED(made->Write(stream.data(), size, nullptr)) &&
            SUCCEEDED(root_->QueryInterface(IID_IPropertySetStorage, sets_.target()));
        if (!isMade) std::abort();
    }

    /// Empty where there is no such set.
    Set open(REFFMTID id) {
        Set set;
        sets_->Open(id, change, into(set));
        return set;
    }

  private:
    FileBytes bytes_;
    Held<IStorage> root_;
    Held<IPropertySetStorage> sets_;
};

PROPSPEC byId(PROPID id) {
    PROPSPEC specifier{};
    specifier.ulKind = PRSPEC_PROPID;
    specifier.propid = id;
    return specifier;
}
PROPSPEC byName(char16_t* name) {
    PROPSPEC specifier{};
    specifier.ulKind = PRSPEC_LPWSTR;
    specifier.lpwstr = name;
    return specifier;
}

/// Reads every value, and writes each as a new property where `copies`.
/// How many values can be read.
int readAll(IPropertyStorage& set, bool copies) {
    STATPROPSETSTG status{};
    set.Stat(&status);
    Held<IEnumSTATPROPSTG> all;
    if (set.Enum(into(all)) != S_OK) return 0;
    int readable = 0;
    STATPROPSTG entry{};
    for (int i = 0; i < 200 && all->Next(1, &entry, nullptr) == S_OK; ++i) {
        PROPVARIANT value{};
        PROPSPEC const named = byName(entry.lpwstrName);
        if (entry.lpwstrName != nullptr && SUCCEEDED(set.ReadMultiple(1, &named, &value))) {
            PropVariantClear(&value);
        }
        CoTaskMemFree(entry.lpwstrName);
        PROPSPEC const specifier = byId(entry.propid), other = byId(entry.propid ^ 0x10000);
        if (set.ReadMultiple(1, &specifier, &value) != S_OK) continue;
        ++readable;
        if (copies) set.WriteMultiple(1, &other, &value, PID_FIRST_USABLE);
        PropVariantClear(&value);
    }
    return readable;
}

void changeSome(IPropertyStorage& set) {
    PROPVARIANT number{};
    number.vt = VT_I4;
    number.lVal = 5;
    char16_t name[] = u"added";
    PROPSPEC const named = byName(name), title = byId(2);
    set.WriteMultiple(1, &named, &number, PID_FIRST_USABLE);
    set.DeleteMultiple(1, &title);
}

/// What can be read stays readable when the stream is written anew.
void tryStream(velk::platform::storage::Bytes bytes, REFFMTID id) {
    Document document(bytes);
    int before = 0;
    {
        Set const set = document.open(id);
        if (set.get() == nullptr) return;
        before = readAll(*set.get(), false);
        set->SetClass(id);
        if (FAILED(set->Commit(STGC_DEFAULT))) std::abort();
    }
    {
        Set const again = document.open(id);
        if (again.get() == nullptr || readAll(*again.get(), false) < before) std::abort();
        readAll(*again.get(), true);
        changeSome(*again.get());
        if (FAILED(again->Commit(STGC_DEFAULT))) return;
    }
    Set const changed = document.open(id);
    if (changed.get() == nullptr) std::abort();
    readAll(*changed.get(), false);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    for (FMTID const& id : {FMTID_DocSummaryInformation, FMTID_UserDefinedProperties}) {
        tryStream(std::as_bytes(std::span(data, size)), id);
    }
    return 0;
}
