#include "storage/document_steps.h"

#include <array>

namespace velk::test {
namespace {

constexpr char16_t summaryStream[] = u"\5SummaryInformation",
                   documentStream[] = u"\5DocumentSummaryInformation";
constexpr std::size_t longText = 6000;

/// Not on the heap, whose allocations are counted.
OLECHAR* manyLetters() {
    static std::array<OLECHAR, longText + 1> text = [] {
        std::array<OLECHAR, longText + 1> made{};
        for (std::size_t i = 0; i < longText; ++i) made[i] = static_cast<OLECHAR>(u'a' + i % 26);
        return made;
    }();
    return text.data();
}

PROPVARIANT textOf(std::size_t length) {
    PROPVARIANT value{};
    value.vt = VT_LPWSTR;
    value.pwszVal = manyLetters() + longText - length;
    return value;
}

HRESULT openForChange(IStorage& root, REFFMTID id, bool makes, PropertySet& set) {
    PropertySets sets;
    HRESULT code =
        root.QueryInterface(IID_IPropertySetStorage, reinterpret_cast<void**>(sets.put()));
    if (SUCCEEDED(code)) code = sets->Open(id, change, set.put());
    if (code != STG_E_FILENOTFOUND || !makes) return code;
    return sets->Create(id, nullptr, PROPSETFLAG_DEFAULT, change, set.put());
}

template <typename Body>
HRESULT changeSet(IStorage& root, REFFMTID id, bool makes, Body body) {
    PropertySet set;
    HRESULT code = openForChange(root, id, makes, set);
    if (SUCCEEDED(code)) code = body(*set.get());
    return SUCCEEDED(code) ? set->Commit(STGC_DEFAULT) : code;
}

template <FMTID const& id>
HRESULT make(IStorage& root, Text const&) {
    return changeSet(root, id, true, [](IPropertyStorage&) { return S_OK; });
}

HRESULT write(IStorage& root, REFFMTID id, PROPSPEC specifier, PROPVARIANT const& value) {
    return changeSet(root, id, true, [&](IPropertyStorage& set) {
        return set.WriteMultiple(1, &specifier, &value, PID_FIRST_USABLE);
    });
}

HRESULT rename(IPropertyStorage& set) {
    com::ComPtr<IEnumSTATPROPSTG> all;
    HRESULT code = set.Enum(all.put());
    STATPROPSTG entry{};
    while (SUCCEEDED(code) && (code = all->Next(1, &entry, nullptr)) == S_OK) {
        com::TaskMemory const name(entry.lpwstrName);
        if (entry.lpwstrName == nullptr || Text(OLESTR("added")) != entry.lpwstrName) continue;
        auto* const renamed = const_cast<OLECHAR*>(OLESTR("renamed"));
        return set.WritePropertyNames(1, &entry.propid, &renamed);
    }
    return FAILED(code) ? code : STG_E_FILENOTFOUND;
}

/// Opens the stream and calls `body`, which gets the number of its bytes.
template <typename Body>
HRESULT changeStream(IStorage& root, Text const& name, Body body) {
    Stream stream;
    STATSTG status{};
    HRESULT code = root.OpenStream(name.c_str(), nullptr, change, 0, stream.put());
    if (SUCCEEDED(code)) code = stream->Stat(&status, STATFLAG_NONAME);
    return SUCCEEDED(code) ? body(*stream.get(), status.cbSize.QuadPart) : code;
}

HRESULT writeAt(IStream& stream, ULONGLONG place, std::size_t size) {
    LARGE_INTEGER to;
    to.QuadPart = static_cast<LONGLONG>(place);
    HRESULT const code = stream.Seek(to, STREAM_SEEK_SET, nullptr);
    return SUCCEEDED(code) ? stream.Write(manyLetters(), static_cast<ULONG>(size), nullptr) : code;
}

HRESULT addElements(IStorage& root, Text const&) {
    Storage inner;
    Stream small, big;
    HRESULT code = root.CreateStorage(OLESTR("new"), change, 0, 0, inner.put());
    // Those of the clock differ from try to try.
    FILETIME const time{};
    if (SUCCEEDED(code)) code = root.SetElementTimes(OLESTR("new"), &time, nullptr, &time);
    if (SUCCEEDED(code)) code = inner->CreateStream(OLESTR("small"), change, 0, 0, small.put());
    if (SUCCEEDED(code)) code = writeAt(*small.get(), 0, 300);
    if (SUCCEEDED(code)) code = inner->CreateStream(OLESTR("big"), change, 0, 0, big.put());
    return SUCCEEDED(code) ? writeAt(*big.get(), 0, longText) : code;
}

}  // namespace

std::vector<Step> const steps{
    {"make custom set", make<customSet>, documentStream, &customSet, byName(u"added"), -1,
     Step::Clients::direct},
    {"make summary set", make<summarySet>, summaryStream, nullptr, {}, 0, Step::Clients::direct},
    {"add",
     [](IStorage& root, Text const&) {
         return write(root, customSet, byName(u"added"), number(1));
     },
     documentStream, &customSet, byName(u"added"), 1},
    {"change",
     [](IStorage& root, Text const&) {
         return write(root, customSet, byName(u"added"), textOf(longText));
     },
     documentStream, &customSet, byName(u"added"), longText},
    {"rename",
     [](IStorage& root, Text const&) { return changeSet(root, customSet, false, rename); },
     documentStream, &customSet, byName(u"renamed"), longText},
    {"remove",
     [](IStorage& root, Text const&) {
         return changeSet(root, customSet, false, [](IPropertyStorage& set) {
             PROPSPEC const property = byName(u"renamed");
             return set.DeleteMultiple(1, &property);
         });
     },
     documentStream, &customSet, byName(u"renamed"), -1},
    {"company",
     [](IStorage& root, Text const&) { return write(root, documentSet, byId(15), textOf(7)); },
     documentStream, &documentSet, byId(15), 7},
    {"title",
     [](IStorage& root, Text const&) { return write(root, summarySet, byId(2), textOf(9)); },
     summaryStream, &summarySet, byId(2), 9},
    {"overwrite",
     [](IStorage& root, Text const& name) {
         return changeStream(root, name, [](IStream& stream, ULONGLONG size) {
             return size == 0 ? S_OK : writeAt(stream, size / 2, 1);
         });
     },
     nullptr},
    {"lengthen",
     [](IStorage& root, Text const& name) {
         return changeStream(root, name, [](IStream& stream, ULONGLONG size) {
             return writeAt(stream, size, longText);
         });
     },
     nullptr},
    {"shorten",
     [](IStorage& root, Text const& name) {
         return changeStream(root, name, [](IStream& stream, ULONGLONG) {
             ULARGE_INTEGER size;
             size.QuadPart = 50;
             return stream.SetSize(size);
         });
     },
     nullptr},
    {"add elements", addElements, u"new", nullptr, {}, 0, Step::Clients::transacted},
    {"set state bits", [](IStorage& root, Text const&) { return root.SetStateBits(0x50, 0x70); },
     u""},
    {"rename stream",
     [](IStorage& root, Text const& name) {
         return root.RenameElement(name.c_str(), renamedStream);
     },
     nullptr},
    {"destroy", [](IStorage& root, Text const&) { return root.DestroyElement(renamedStream); },
     nullptr},
};

long Step::measure(IStorage& root) const {
    PropertySet opened;
    PropVariant value;
    if (FAILED(openForChange(root, *set, false, opened))) return -2;
    if (get(opened, property, value) != S_OK) return -1;
    bool const isNumber = value.get().vt == VT_I4;
    return isNumber ? value.get().lVal : static_cast<long>(Text(value.get().pwszVal).size());
}

HRESULT runStep(FilePlace const& place, Step const& step, Text const& stream, Way way,
                void (*whenFailed)()) {
    Storage root;
    DWORD const mode =
        way == Way::direct ? change : STGM_READWRITE | STGM_TRANSACTED | STGM_SHARE_DENY_WRITE;
    HRESULT code = place.tryOpen(mode, root);
    if (FAILED(code)) return code;
    // What could not be listed is listed whole the next time.
    com::ComPtr<IEnumSTATSTG> elements;
    static_cast<void>(root->EnumElements(0, nullptr, 0, elements.put()));
    auto const make = [&] {
        HRESULT const made = step.run(*root.get(), stream);
        return SUCCEEDED(made) ? root->Commit(STGC_DEFAULT) : made;
    };
    code = make();
    if (SUCCEEDED(code) || way != Way::again) return code;
    whenFailed();
    code = root->Revert();
    return SUCCEEDED(code) ? make() : code;
}

}  // namespace velk::test
