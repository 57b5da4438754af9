// Takes any bytes as a compound file: reads all that is in it, then changes it
// in every way that there is and reads it again.

#include <cstdint>
#include <string>

#include <objbase.h>

#include "fuzz/compound/memory_file.h"
#include "platform/com/held_object.h"
#include "platform/storage/compound/storage_object.h"

namespace {

using namespace velk::platform::storage;
using velk::fuzz::MemoryFile;
using velk::platform::com::HeldObject;
using FileBytes = std::vector<std::byte>;
using Storage = HeldObject<IStorage>;
using Stream = HeldObject<IStream>;

constexpr DWORD look = STGM_READ | STGM_SHARE_EXCLUSIVE;
constexpr DWORD change = STGM_READWRITE | STGM_SHARE_EXCLUSIVE;

// Enough of everything to meet each branch, few enough to stay quick.
constexpr int mostElements = 64;
constexpr int deepest = 8;
constexpr ULONGLONG mostBytes = 1 << 16;

template <typename Interface>
Interface** into(HeldObject<Interface>& held) {
    return reinterpret_cast<Interface**>(held.target());
}

class Status {
  public:
    Status() = default;
    Status(Status const&) = delete;
    Status& operator=(Status const&) = delete;
    ~Status() { CoTaskMemFree(value_.pwcsName); }
    STATSTG* get() { return &value_; }

  private:
    STATSTG value_{};
};

HRESULT open(FileBytes& bytes, DWORD mode, Storage& root) {
    return answer([&] {
        bool const isWritable = mayWrite(mode);
        auto file = std::make_shared<CompoundFile>(std::make_unique<MemoryFile>(bytes), isWritable,
                                                   !isTransacted(mode));
        *root.target() = static_cast<IStorage*>(new StorageObject(std::move(file), mode, u"input"));
    });
}

void move(IStream& stream, LONGLONG distance, DWORD origin) {
    LARGE_INTEGER to;
    to.QuadPart = distance;
    stream.Seek(to, origin, nullptr);
}

void readStream(IStream& stream) {
    Status status;
    stream.Stat(status.get(), STATFLAG_DEFAULT);
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

/// Calls `visit(storage, element)` for the elements of a storage and, with
/// `mode`, of those in it.
template <typename Visit>
void forEachElement(IStorage& storage, DWORD mode, int& left, int depth, Visit const& visit) {
    HeldObject<IEnumSTATSTG> elements;
    if (FAILED(storage.EnumElements(0, nullptr, 0, into(elements)))) return;
    while (left-- > 0) {
        Status element;
        if (elements->Next(1, element.get(), nullptr) != S_OK) return;
        if (element.get()->type == STGTY_STORAGE && depth < deepest) {
            Storage inner;
            if (SUCCEEDED(storage.OpenStorage(element.get()->pwcsName, nullptr, mode, nullptr, 0,
                                              into(inner)))) {
                forEachElement(*inner.get(), mode, left, depth + 1, visit);
            }
        }
        visit(storage, *element.get());
    }
}

void readAll(FileBytes& bytes) {
    Storage root;
    if (FAILED(open(bytes, look, root))) return;
    Status status;
    root->Stat(status.get(), STATFLAG_DEFAULT);
    int left = mostElements;
    forEachElement(*root.get(), look, left, 0, [](IStorage& storage, STATSTG const& element) {
        Stream stream;
        if (SUCCEEDED(storage.OpenStream(element.pwcsName, nullptr, look, 0, into(stream)))) {
            readStream(*stream.get());
        }
    });
}

void changeElement(IStorage& storage, STATSTG const& element, int turn) {
    if (element.type == STGTY_STREAM && turn % 4 < 2) {
        Stream stream;
        if (FAILED(storage.OpenStream(element.pwcsName, nullptr, change, 0, into(stream)))) return;
        turn % 4 == 0 ? overwrite(*stream.get()) : resize(*stream.get());
    } else if (turn % 4 == 2) {
        storage.RenameElement(element.pwcsName, u"renamed");
    } else {
        storage.DestroyElement(element.pwcsName);
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
    Storage root;
    if (FAILED(open(bytes, mode, root))) return;
    int left = mostElements, turn = isTransacted(mode) ? 1 : 0;
    forEachElement(*root.get(), change, left, 0, [&](IStorage& storage, STATSTG const& element) {
        changeElement(storage, element, turn++);
    });
    addElements(*root.get());
    root->Commit(STGC_DEFAULT);
    addElements(*root.get());
    root->DestroyElement(u"new");
    if (isTransacted(mode)) root->Revert();
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
