// Takes any bytes as a compound file: reads all that is in it, then changes it
// in every way that there is and reads it again.

#include <cstdint>
#include <string>

#include <objbase.h>

#include "fuzz/compound/memory_file.h"

namespace {

using namespace velk::fuzz;
using Storage = Held<IStorage>;
using Stream = Held<IStream>;

// Enough of everything to meet each branch, few enough to stay quick.
constexpr int mostElements = 64;
constexpr int deepest = 8;
constexpr ULONGLONG mostBytes = 1 << 16;

void move(IStream& stream, LONGLONG distance, DWORD origin) {
    LARGE_INTEGER to;
    to.QuadPart = distance;
    stream.Seek(to, origin, nullptr);
}

void readStream(IStream& stream) {
    STATSTG status{};
    stream.Stat(&status, STATFLAG_DEFAULT);
    CoTaskMemFree(status.pwcsName);
    char part[3000];
    ULONG done = 1;
    for (ULONGLONG read = 0; done != 0 && read < mostBytes; read += done) {
        if (FAILED(stream.Read(part, sizeof part, &done))) break;
    }
    // The end, wherever the file says that it is.
    move(stream, -100, STREAM_SEEK_END);
    stream.Read(part, sizeof part, &done);
}

void overwrite(IStream& stream) {
    std::string const bytes(700, 'o');
    move(stream, 33, STREAM_SEEK_SET);
    stream.Write(bytes.data(), 200, nullptr);
    move(stream, -20, STREAM_SEEK_END);
    stream.Write(bytes.data(), static_cast<ULONG>(bytes.size()), nullptr);
}

void resize(IStream& stream) {
    for (ULONGLONG const size : {100u, 5000u, 4095u, 9000u, 0u, 64u}) {
        ULARGE_INTEGER wanted;
        wanted.QuadPart = size;
        stream.SetSize(wanted);
    }
}

/// Calls `visit(storage, name, type)` for the elements of a storage, opened with
/// `mode`, and of those in it.
template <typename Visit>
void forEachElement(IStorage& storage, DWORD mode, int& left, int depth, Visit const& visit) {
    Held<IEnumSTATSTG> elements;
    if (FAILED(storage.EnumElements(0, nullptr, 0, into(elements)))) return;
    STATSTG element{};
    while (left-- > 0 && elements->Next(1, &element, nullptr) == S_OK) {
        std::u16string const name = element.pwcsName;
        CoTaskMemFree(element.pwcsName);
        Storage inner;
        if (element.type == STGTY_STORAGE && depth < deepest &&
            SUCCEEDED(storage.OpenStorage(name.c_str(), nullptr, mode, nullptr, 0, into(inner)))) {
            forEachElement(*inner.get(), mode, left, depth + 1, visit);
        }
        inner = {};
        visit(storage, name.c_str(), element.type);
    }
}

void readAll(FileBytes& bytes) {
    auto const root = openRoot(bytes, look);
    if (root.get() == nullptr) return;
    int left = mostElements;
    forEachElement(*root.get(), look, left, 0, [](IStorage& storage, OLECHAR const* name, DWORD) {
        Stream stream;
        if (SUCCEEDED(storage.OpenStream(name, nullptr, look, 0, into(stream)))) {
            readStream(*stream.get());
        }
    });
}

void changeElement(IStorage& storage, OLECHAR const* name, DWORD type, int turn) {
    Stream stream;
    if (type == STGTY_STREAM && turn % 4 < 2) {
        if (FAILED(storage.OpenStream(name, nullptr, change, 0, into(stream)))) return;
        turn % 4 == 0 ? overwrite(*stream.get()) : resize(*stream.get());
    } else if (turn % 4 == 2) {
        storage.RenameElement(name, u"renamed");
    } else {
        storage.DestroyElement(name);
    }
}

void addElements(IStorage& storage) {
    Stream small, big;
    Storage inner;
    std::string const bytes(4500, 'n');
    if (SUCCEEDED(storage.CreateStream(u"new small", change, 0, 0, into(small)))) {
        small->Write(bytes.data(), 65, nullptr);
    }
    if (SUCCEEDED(storage.CreateStorage(u"new", change | STGM_CREATE, 0, 0, into(inner))) &&
        SUCCEEDED(inner->CreateStream(u"big", change, 0, 0, into(big)))) {
        big->Write(bytes.data(), static_cast<ULONG>(bytes.size()), nullptr);
        inner->SetClass(IID_IStorage);
    }
}

void changeAll(FileBytes& bytes, DWORD mode) {
    auto const root = openRoot(bytes, mode);
    if (root.get() == nullptr) return;
    bool const isDirect = (mode & STGM_TRANSACTED) == 0;
    int left = mostElements, turn = isDirect ? 0 : 1;
    forEachElement(*root.get(), change, left, 0,
                   [&](IStorage& storage, OLECHAR const* name, DWORD type) {
                       changeElement(storage, name, type, turn++);
                   });
    addElements(*root.get());
    root->Commit(STGC_DEFAULT);
    addElements(*root.get());
    root->DestroyElement(u"new");
    if (!isDirect) root->Revert();
    root->Commit(STGC_DEFAULT);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    auto const input = std::as_bytes(std::span(data, size));
    FileBytes bytes(input.begin(), input.end());
    readAll(bytes);
    for (DWORD const mode : {change, change | STGM_TRANSACTED}) {
        changeAll(bytes, mode);
        readAll(bytes);
    }
    return 0;
}
