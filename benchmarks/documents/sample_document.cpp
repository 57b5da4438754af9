#include "sample_document.h"

#include <cstdlib>
#include <stdexcept>
#include <string>
#include <vector>

#include <ole2.h>

namespace {

using velk::com::ComPtr;
using Text = std::u16string;

constexpr DWORD changing = STGM_READWRITE | STGM_SHARE_EXCLUSIVE;

ComPtr<IStorage> create(std::filesystem::path const& file) {
    ComPtr<IStorage> storage;
    requireSuccess(
        StgCreateDocfile(file.u16string().c_str(), changing | STGM_CREATE, 0, storage.put()),
        "StgCreateDocfile");
    return storage;
}

ComPtr<IPropertyStorage> createSet(ComPtr<IStorage> const& storage, REFFMTID id) {
    ComPtr<IPropertyStorage> set;
    auto const sets = storage.query<IPropertySetStorage>(IID_IPropertySetStorage);
    requireSuccess(
        sets->Create(id, nullptr, PROPSETFLAG_DEFAULT, changing | STGM_CREATE, set.put()),
        "Create");
    return set;
}

void addStream(IStorage& storage, std::size_t size) {
    ComPtr<IStream> stream;
    requireSuccess(storage.CreateStream(u"content", changing, 0, 0, stream.put()), "CreateStream");
    std::vector<char> const block(std::size_t{1} << 20, 'x');
    for (std::size_t left = size; left > 0;) {
        auto const part = static_cast<ULONG>(std::min(left, block.size()));
        requireSuccess(stream->Write(block.data(), part, nullptr), "Write");
        left -= part;
    }
}

/// The value with number `i` of a set of mixed ones; texts stay in `text`.
PROPVARIANT mixedValue(int i, Text& text) {
    PROPVARIANT value{};
    switch (i % 5) {
        case 0:
            value.vt = VT_I4;
            value.lVal = i;
            break;
        case 1:
            value.vt = VT_R8;
            value.dblVal = i / 8.0;
            break;
        case 2:
            value.vt = VT_FILETIME;
            value.filetime = {static_cast<DWORD>(i), 30000000};
            break;
        default:
            text = u"The value of the property with number ";
            for (char const digit : std::to_string(i)) text += static_cast<char16_t>(digit);
            value.vt = VT_LPWSTR;
            value.pwszVal = text.data();
    }
    return value;
}

void writeMixed(IPropertyStorage& set, int first, int count, bool named) {
    std::vector<Text> names(static_cast<std::size_t>(count)), texts(names.size());
    std::vector<PROPSPEC> specifiers(names.size());
    std::vector<PROPVARIANT> values(names.size());
    for (int i = 0; i < count; ++i) {
        auto const at = static_cast<std::size_t>(i);
        names[at] = u"Property";
        for (char const digit : std::to_string(i)) names[at] += static_cast<char16_t>(digit);
        specifiers[at].ulKind = named ? PRSPEC_LPWSTR : PRSPEC_PROPID;
        if (named) {
            specifiers[at].lpwstr = names[at].data();
        } else {
            specifiers[at].propid = static_cast<PROPID>(first + i);
        }
        values[at] = mixedValue(i, texts[at]);
    }
    requireSuccess(set.WriteMultiple(static_cast<ULONG>(count), specifiers.data(), values.data(),
                                     PID_FIRST_USABLE),
                   "WriteMultiple");
    requireSuccess(set.Commit(STGC_DEFAULT), "Commit");
}

}  // namespace

OpenSet openSet(std::filesystem::path const& file, REFFMTID id, DWORD access) {
    OpenSet open;
    DWORD const mode = access | STGM_SHARE_EXCLUSIVE;
    requireSuccess(
        StgOpenStorage(file.u16string().c_str(), nullptr, mode, nullptr, 0, open.storage.put()),
        "StgOpenStorage");
    auto const sets = open.storage.query<IPropertySetStorage>(IID_IPropertySetStorage);
    requireSuccess(sets->Open(id, mode, open.set.put()), "Open");
    return open;
}

void makeCustomSet(std::filesystem::path const& file, int count) {
    auto const storage = create(file);
    writeMixed(*createSet(storage, FMTID_UserDefinedProperties).get(), 0, count, true);
    requireSuccess(storage->Commit(STGC_DEFAULT), "Commit");
}

void makeOfSize(std::filesystem::path const& file, std::size_t size) {
    auto const storage = create(file);
    addStream(*storage.get(), size);
    writeTitle(*createSet(storage, FMTID_SummaryInformation).get(), "a title");
    requireSuccess(storage->Commit(STGC_DEFAULT), "Commit");
}

void makeUsual(std::filesystem::path const& file) {
    auto const storage = create(file);
    addStream(*storage.get(), 20000);
    writeMixed(*createSet(storage, FMTID_SummaryInformation).get(), 2, 10, false);
    writeMixed(*createSet(storage, FMTID_DocSummaryInformation).get(), 2, 5, false);
    writeMixed(*createSet(storage, FMTID_UserDefinedProperties).get(), 0, 5, true);
    requireSuccess(storage->Commit(STGC_DEFAULT), "Commit");
}

void writeTitle(IPropertyStorage& set, char const* title) {
    PROPSPEC specifier{};
    specifier.ulKind = PRSPEC_PROPID;
    specifier.propid = PIDSI_TITLE;
    PROPVARIANT value{};
    value.vt = VT_LPSTR;
    value.pszVal = const_cast<char*>(title);
    requireSuccess(set.WriteMultiple(1, &specifier, &value, PID_FIRST_USABLE), "WriteMultiple");
    requireSuccess(set.Commit(STGC_DEFAULT), "Commit");
}

void requireSuccess(HRESULT code, char const* what) {
    if (code != S_OK) throw std::runtime_error(std::string(what) + " failed");
}
