#include "storage/file_changes.h"

namespace velk::test {
namespace {

HRESULT put(IStorage& storage, OLECHAR const* name, std::size_t size, unsigned seed) {
    Stream stream;
    HRESULT code = storage.OpenStream(name, nullptr, change, 0, stream.put());
    if (code == STG_E_FILENOTFOUND) code = storage.CreateStream(name, change, 0, 0, stream.put());
    if (FAILED(code)) return code;
    ULARGE_INTEGER length;
    length.QuadPart = size;
    code = stream->SetSize(length);
    if (FAILED(code)) return code;
    // Not on the heap, whose blocks are counted.
    static std::array<char, 40000> bytes;
    for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<char>(i / 7 + seed);
    return stream->Write(bytes.data(), static_cast<ULONG>(size), nullptr);
}

HRESULT addStream(IStorage& root) {
    Stream added;
    return root.CreateStream(OLESTR("added stream"), change, 0, 0, added.put());
}

HRESULT addStorage(IStorage& root) {
    Storage added;
    return root.CreateStorage(OLESTR("added"), change, 0, 0, added.put());
}

HRESULT putIntoStorage(IStorage& root) {
    Storage inner;
    HRESULT const code =
        root.OpenStorage(OLESTR("inner"), nullptr, change, nullptr, 0, inner.put());
    return FAILED(code) ? code : put(*inner.get(), OLESTR("deep"), 700, 9);
}

HRESULT listElements(IStorage& root) {
    velk::com::ComPtr<IEnumSTATSTG> elements;
    HRESULT code = root.EnumElements(0, nullptr, 0, elements.put());
    if (FAILED(code)) return code;
    std::array<STATSTG, 20> all{};
    ULONG count = 0;
    code = elements->Next(static_cast<ULONG>(all.size()), all.data(), &count);
    for (ULONG i = 0; i < count; ++i) CoTaskMemFree(all[i].pwcsName);
    return code;
}

}  // namespace

std::array<Step, 14> const steps{{
    {"list", listElements},
    {"overwrite small", [](IStorage& root) { return put(root, OLESTR("small"), 100, 1); }},
    {"lengthen small", [](IStorage& root) { return put(root, OLESTR("small"), 900, 2); }},
    {"overwrite big", [](IStorage& root) { return put(root, OLESTR("big"), 6000, 3); }},
    {"lengthen big", [](IStorage& root) { return put(root, OLESTR("big"), 30000, 4); }},
    {"small to big", [](IStorage& root) { return put(root, OLESTR("middle"), 5000, 5); }},
    {"big to small", [](IStorage& root) { return put(root, OLESTR("large"), 50, 6); }},
    {"add stream", addStream},
    {"fill stream", [](IStorage& root) { return put(root, OLESTR("added stream"), 300, 7); }},
    {"add storage", addStorage},
    {"set state bits", [](IStorage& root) { return root.SetStateBits(5, 7); }},
    {"change inside", putIntoStorage},
    {"rename",
     [](IStorage& root) { return root.RenameElement(OLESTR("other"), OLESTR("renamed")); }},
    {"destroy", [](IStorage& root) { return root.DestroyElement(OLESTR("doomed")); }},
}};

void makeFile(FilePlace const& place) {
    auto const root = place.create();
    for (auto const* name : {OLESTR("small"), OLESTR("middle"), OLESTR("other")}) {
        ASSERT_EQ(put(*root.get(), name, 200, 11), S_OK);
    }
    for (auto const* name : {OLESTR("big"), OLESTR("large")}) {
        ASSERT_EQ(put(*root.get(), name, 6000, 12), S_OK);
    }
    for (auto const* name : {OLESTR("inner"), OLESTR("doomed")}) {
        Storage inner;
        ASSERT_EQ(root->CreateStorage(name, change, 0, 0, inner.put()), S_OK);
        ASSERT_EQ(put(*inner.get(), OLESTR("deep"), 4800, 13), S_OK);
    }
}

namespace {

void collect(IStorage& storage, Text const& path, Content& content) {
    velk::com::ComPtr<IEnumSTATSTG> elements;
    ASSERT_EQ(storage.EnumElements(0, nullptr, 0, elements.put()), S_OK);
    STATSTG status{};
    while (elements->Next(1, &status, nullptr) == S_OK) {
        Text const name = status.pwcsName, inner = path + name;
        CoTaskMemFree(status.pwcsName);
        if (status.type == STGTY_STREAM) {
            content[inner] = velk::test::content(*openStream(storage, name.c_str()).get());
            continue;
        }
        Storage opened;
        ASSERT_EQ(storage.OpenStorage(name.c_str(), nullptr, look, nullptr, 0, opened.put()), S_OK);
        content[inner] = "a storage";
        collect(*opened.get(), inner + OLESTR("/"), content);
    }
}

}  // namespace

std::string stateBitsOf(IStorage& storage) {
    STATSTG status{};
    EXPECT_EQ(storage.Stat(&status, STATFLAG_NONAME), S_OK);
    return std::to_string(status.grfStateBits);
}

Content contentOf(FilePlace const& place) {
    Content content;
    auto const root = place.open(look);
    if (!root) return content;
    collect(*root.get(), {}, content);
    content[{}] = stateBitsOf(*root.get());
    return content;
}

Outcome make(IStorage& root, std::size_t count) {
    Outcome outcome;
    for (; outcome.completed < count; ++outcome.completed) {
        outcome.code = steps[outcome.completed].run(root);
        if (FAILED(outcome.code)) return outcome;
    }
    outcome.code = root.Commit(STGC_DEFAULT);
    return outcome;
}

void ChangedFile::SetUp() {
    makeFile(original_);
    for (std::size_t count = 0; count <= steps.size(); ++count) {
        restore();
        ASSERT_EQ(make(*place_.open(change).get(), count).code, S_OK);
        states_.push_back(contentOf(place_));
    }
}

void ChangedFile::restore() const {
    std::filesystem::copy_file(original_.file(), place_.file(),
                               std::filesystem::copy_options::overwrite_existing);
}

}  // namespace velk::test
