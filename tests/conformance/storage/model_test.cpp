#include <memory>

#include "com/owners.h"
#include "conformance/storage/storage_file.h"
#include "support/expected_difference.h"
#include "support/random_operations.h"

// Storages and streams under random operations, beside a model of them.

namespace {

using namespace velk::test;

OLECHAR const* const names[] = {OLESTR("a"),        OLESTR("Beta"),
                                OLESTR("bETA"),     OLESTR("gamma ray"),
                                OLESTR("A"),        OLESTR("\x5 delta"),
                                OLESTR("x"),        OLESTR("eta of 31 characters, no more ."),
                                OLESTR("zeta"),     OLESTR("\xe9t\xe9"),
                                OLESTR("\xc9T\xe9")};

Text nameOf(unsigned number) {
    return names[number % (std::size(names) - (hasDifference("element-name-case") ? 1 : 0))];
}

/// Around the sizes of small sectors, of sectors and of the largest small stream.
std::size_t sizeOf(unsigned number) {
    constexpr std::size_t sizes[] = {0,    1,    63,   64,   65,   511,  512,  513,   700,  2000,
                                     3000, 3900, 4095, 4096, 4097, 5000, 9000, 20000, 70000};
    return sizes[number % std::size(sizes)];
}

struct Node {
    bool isStream = false;
    std::string bytes = {};
    DWORD stateBits = 0;
    std::map<Text, Node, IgnoringCase> children = {};
};

/// A handle of a client, and those that were opened through it.
struct Handle {
    Storage storage = {};
    Stream stream = {};
    std::map<Text, std::unique_ptr<Handle>, IgnoringCase> inner = {};
};

struct Place {
    Node* node = nullptr;
    Handle* handle = nullptr;
};

class Session {
  public:
    Session() {
        root_.storage = file_.create();
        reopen({});
    }

    /// Closes the file, opens it in one of the ways, and looks at all of it.
    void reopen(Operation const& operation) {
        constexpr DWORD ways[] = {alone, alone | STGM_TRANSACTED,
                                  STGM_SHARE_DENY_WRITE | STGM_TRANSACTED};
        root_.inner.clear();
        root_.storage.reset();
        if (isTransacted_) model_ = committed_;
        DWORD const mode = STGM_READWRITE | ways[operation.what % std::size(ways)];
        isTransacted_ = (mode & STGM_TRANSACTED) != 0;
        expectSuccess(file_.tryOpen(mode, root_.storage), "open the file");
        committed_ = model_;
        expectAll({&model_, &root_});
    }

    void createStream(Operation const& operation) { create(operation, true); }
    void createStorage(Operation const& operation) { create(operation, false); }

    void write(Operation const& operation) {
        auto const [node, handle] = streamOf(operation);
        if (node == nullptr) return;
        auto const made = pattern(sizeOf(operation.size) % 21000, operation.size);
        // Some begin where a sector does, some behind the end: what is between is zero.
        std::size_t at = std::size_t{operation.size} * 7 % (node->bytes.size() + 200);
        if (operation.kind / 32 % 2 == 0) at -= at % 512;
        if (hasDifference("stream-gap")) at = std::min(at, node->bytes.size());
        seekTo(*node, *handle, at, operation.kind / 64);
        ULONG done = 0;
        auto const count = static_cast<ULONG>(made.size());
        expectSuccess(handle->stream->Write(made.data(), count, &done), "write");
        expectModel(done == count, "not all is written");
        if (made.empty()) return;
        node->bytes.resize(std::max(node->bytes.size(), at + count));
        node->bytes.replace(at, count, made);
    }

    void resize(Operation const& operation) {
        auto const [node, handle] = streamOf(operation);
        if (node == nullptr) return;
        ULARGE_INTEGER size;
        size.QuadPart = sizeOf(operation.size);
        if (size.QuadPart == 0 && isTransacted_ && hasDifference("stream-emptied")) return;
        std::size_t const former = std::min(node->bytes.size(), sizeOf(operation.size));
        expectSuccess(handle->stream->SetSize(size), "resize");
        node->bytes.resize(sizeOf(operation.size));
        // Elsewhere what is new has no content until it is written.
        if (!hasDifference("stream-gap")) return;
        seek(*handle->stream.get(), static_cast<LONGLONG>(former));
        velk::test::write(*handle->stream.get(), node->bytes.substr(former));
    }

    void read(Operation const& operation) {
        auto const [node, handle] = streamOf(operation);
        if (node == nullptr) return;
        std::size_t const at = std::size_t{operation.size} * 7 % (node->bytes.size() + 50);
        seekTo(*node, *handle, at, operation.kind / 64);
        std::string part(sizeOf(operation.size), 'x');
        ULONG done = 99;
        auto const count = static_cast<ULONG>(part.size());
        expectModel(SUCCEEDED(handle->stream->Read(part.data(), count, &done)), "cannot read");
        part.resize(done);
        auto const from = std::min(at, node->bytes.size());
        expectModel(part == node->bytes.substr(from, count), "other bytes are read");
    }

    void openAnother(Operation const& operation) {
        auto const outer = storageOf(operation.place);
        auto const name = nameOf(operation.what);
        bool const asStream = operation.size % 2 == 0;
        auto const found = outer.node->children.find(name);
        bool const isThere =
            found != outer.node->children.end() && found->second.isStream == asStream;
        bool const isOpen = outer.handle->inner.contains(name);
        Handle other;
        expectCode(openOne(*outer.handle->storage.get(), name, asStream, look, other),
                   !isThere ? STG_E_FILENOTFOUND
                   : isOpen ? STG_E_ACCESSDENIED
                            : S_OK,
                   "open");
        if (!other.stream) return;
        ULONG done = 0;
        expectCode(other.stream->Write("x", 1, &done), STG_E_ACCESSDENIED, "write to read-only");
        expectContent(found->second, *other.stream.get());
    }

    void destroy(Operation const& operation) {
        auto const outer = storageOf(operation.place);
        auto const name = nameOf(operation.what);
        bool const isThere = outer.node->children.erase(name) != 0;
        expectCode(outer.handle->storage->DestroyElement(name.c_str()),
                   isThere ? S_OK : STG_E_FILENOTFOUND, "destroy");
        expectReverted(outer.handle->inner.extract(name));
    }

    void rename(Operation const& operation) {
        auto const outer = storageOf(operation.place);
        auto const name = nameOf(operation.what), other = nameOf(operation.size);
        auto& children = outer.node->children;
        bool const isThere = children.contains(name);
        bool const isTaken =
            isThere && children.contains(other) && children.find(other) != children.find(name);
        if (children.contains(other) && hasDifference("rename-to-taken")) return;
        outer.handle->inner.erase(name);
        expectCode(outer.handle->storage->RenameElement(name.c_str(), other.c_str()),
                   !isThere  ? STG_E_FILENOTFOUND
                   : isTaken ? STG_E_ACCESSDENIED
                             : S_OK,
                   "rename");
        if (!isThere || isTaken) return;
        auto node = children.extract(name);
        node.key() = other;
        children.insert(std::move(node));
    }

    void setBits(Operation const& operation) {
        if (hasDifference("state-bits")) return;
        auto const [node, handle] = storageOf(operation.place);
        DWORD const bits = operation.what, mask = operation.size;
        expectSuccess(handle->storage->SetStateBits(bits, mask), "set state bits");
        node->stateBits = (node->stateBits & ~mask) | (bits & mask);
    }

    void enumerate(Operation const& operation) { expectElements(storageOf(operation.place)); }

    void closeHandles(Operation const& operation) {
        storageOf(operation.place).handle->inner.clear();
    }

    void commit(Operation const&) {
        expectSuccess(root_.storage->Commit(STGC_DEFAULT), "commit");
        committed_ = model_;
    }

    void revert(Operation const&) {
        expectSuccess(root_.storage->Revert(), "revert");
        if (!isTransacted_) return;
        model_ = committed_;
        while (!root_.inner.empty()) expectReverted(root_.inner.extract(root_.inner.begin()));
    }

  private:
    static HRESULT openOne(IStorage& storage, Text const& name, bool asStream, DWORD mode,
                           Handle& opened) {
        return asStream ? storage.OpenStream(name.c_str(), nullptr, mode, 0, opened.stream.put())
                        : storage.OpenStorage(name.c_str(), nullptr, mode, nullptr, 0,
                                              opened.storage.put());
    }
    /// The element of a storage with its handle, which is opened where it was not.
    static Place elementOf(Place const& outer, Text const& name) {
        Node& node = outer.node->children.at(name);
        auto& handle = outer.handle->inner[name];
        if (handle) return {&node, handle.get()};
        handle = std::make_unique<Handle>();
        expectSuccess(openOne(*outer.handle->storage.get(), name, node.isStream, change, *handle),
                      "open an element");
        return {&node, handle.get()};
    }
    /// The one of that number among all storages.
    Place storageOf(unsigned number) {
        std::vector<Place> all{{&model_, &root_}};
        for (std::size_t i = 0; i < all.size(); ++i) {
            auto const outer = all[i];
            for (auto& [name, node] : outer.node->children) {
                if (!node.isStream) all.push_back(elementOf(outer, name));
            }
        }
        return all[number % all.size()];
    }
    /// One of the streams in it; nothing when it has none.
    Place streamOf(Operation const& operation) {
        auto const outer = storageOf(operation.place);
        std::vector<Text> all;
        for (auto const& [name, node] : outer.node->children) {
            if (node.isStream) all.push_back(name);
        }
        return all.empty() ? Place() : elementOf(outer, all[operation.what % all.size()]);
    }

    void create(Operation const& operation, bool isStream) {
        auto const outer = storageOf(operation.place);
        auto const name = nameOf(operation.what);
        bool const replaces = operation.size % 2 == 1;
        auto const former = outer.node->children.find(name);
        bool const isThere = former != outer.node->children.end();
        bool const isOther = isThere && former->second.isStream != isStream;
        if (replaces && isOther && hasDifference("element-replaced")) return;
        auto made = std::make_unique<Handle>();
        DWORD const mode = change | (replaces ? STGM_CREATE : 0);
        auto& storage = *outer.handle->storage.get();
        bool const isRefused = isThere && (!replaces || isOther);
        expectCode(isStream ? storage.CreateStream(name.c_str(), mode, 0, 0, made->stream.put())
                            : storage.CreateStorage(name.c_str(), mode, 0, 0, made->storage.put()),
                   isRefused ? STG_E_FILEALREADYEXISTS : S_OK, "create an element");
        if (isRefused) return;
        outer.node->children.erase(name);
        outer.node->children[name].isStream = isStream;
        expectReverted(outer.handle->inner.extract(name));
        outer.handle->inner[name] = std::move(made);
    }

    /// No door to what has taken the element's place.
    template <typename Extracted>
    static void expectReverted(Extracted handle) {
        if (!handle) return;
        char byte = 0;
        ULONG done = 0;
        STATSTG status{};
        auto const& [storage, stream, inner] = *handle.mapped();
        expectCode(stream ? stream->Read(&byte, 1, &done) : storage->Stat(&status, STATFLAG_NONAME),
                   STG_E_REVERTED, "use what is gone");
    }

    /// To `at`, from one of the three places, after a try that must fail.
    static void seekTo(Node const& node, Handle const& handle, std::size_t at, unsigned way) {
        LARGE_INTEGER move;
        ULARGE_INTEGER now{};
        move.QuadPart = 17;
        auto& stream = *handle.stream.get();
        expectSuccess(stream.Seek(move, STREAM_SEEK_SET, nullptr), "seek");
        move.QuadPart = -18;
        bool const isWrongWay = way % 2 == 0 || hasDifference("seek-before-beginning");
        expectCode(stream.Seek(move, isWrongWay ? 3 : STREAM_SEEK_CUR, nullptr),
                   STG_E_INVALIDFUNCTION, "seek to nowhere");
        LONGLONG const bases[] = {0, 17, static_cast<LONGLONG>(node.bytes.size())};
        move.QuadPart = static_cast<LONGLONG>(at) - bases[way % 3];
        expectSuccess(stream.Seek(move, way % 3, &now), "seek");
        expectModel(now.QuadPart == at, "another position");
    }

    static void expectElements(Place const& place) {
        velk::com::ComPtr<IEnumSTATSTG> all;
        expectSuccess(place.handle->storage->EnumElements(0, nullptr, 0, all.put()), "enumerate");
        std::size_t found = 0;
        STATSTG element{};
        for (; all->Next(1, &element, nullptr) == S_OK; ++found) {
            velk::com::TaskMemory const name(element.pwcsName);
            auto const child = place.node->children.find(element.pwcsName);
            bool const isThere = child != place.node->children.end() &&
                                 child->first == element.pwcsName &&
                                 child->second.isStream == (element.type == STGTY_STREAM) &&
                                 element.cbSize.QuadPart == child->second.bytes.size();
            expectModel(isThere, "another element is listed");
        }
        expectModel(found == place.node->children.size(), "another number of elements");
        STATSTG status{};
        expectSuccess(place.handle->storage->Stat(&status, STATFLAG_NONAME), "ask a storage");
        expectModel(status.grfStateBits == place.node->stateBits, "other state bits");
    }

    static void expectContent(Node const& node, IStream& stream) {
        std::string read(node.bytes.size() + 1, 0);
        ULONG done = 0;
        seek(stream, 0);
        HRESULT const code = stream.Read(read.data(), static_cast<ULONG>(read.size()), &done);
        read.resize(done);
        expectModel(SUCCEEDED(code) && read == node.bytes, "another content");
    }

    static void expectAll(Place const& place) {
        expectElements(place);
        for (auto& [name, child] : place.node->children) {
            auto const inner = elementOf(place, name);
            if (!child.isStream) expectAll(inner);
            if (child.isStream) expectContent(child, *inner.handle->stream.get());
        }
    }

    FilePlace file_;
    Node model_, committed_;
    bool isTransacted_ = false;
    Handle root_;
};

TEST(CompoundFile, IsAsItsModelSays) {
    // What changes elements more often than what ends all.
    Operations<Session> const operations{{{"create stream", &Session::createStream},
                                          {"create stream", &Session::createStream},
                                          {"create storage", &Session::createStorage},
                                          {"write", &Session::write},
                                          {"write", &Session::write},
                                          {"write", &Session::write},
                                          {"resize", &Session::resize},
                                          {"resize", &Session::resize},
                                          {"read", &Session::read},
                                          {"open", &Session::openAnother},
                                          {"destroy", &Session::destroy},
                                          {"rename", &Session::rename},
                                          {"set bits", &Session::setBits},
                                          {"enumerate", &Session::enumerate},
                                          {"close handles", &Session::closeHandles},
                                          {"commit", &Session::commit},
                                          {"revert", &Session::revert},
                                          {"reopen", &Session::reopen}}};
    searchOperations(30, 150, [&](std::vector<Operation> const& drawn, std::string& log) {
        Session session;
        for (Operation const& each : drawn) operations.run(session, each, log);
        for (unsigned const way : {0U, 1U}) session.reopen({0, 0, way, 0});
    });
}

}  // namespace
