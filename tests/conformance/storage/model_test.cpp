#include <algorithm>
#include <map>
#include <memory>

#include "com/owners.h"
#include "conformance/storage/storage_file.h"
#include "support/expected_difference.h"
#include "support/random_operations.h"

// Storages and streams under random operations, beside a model of them.

namespace {

using namespace velk::test;

OLECHAR const* const names[] = {OLESTR("a"),
                                OLESTR("Beta"),
                                OLESTR("bETA"),
                                OLESTR("gamma ray"),
                                OLESTR("\x5 delta"),
                                OLESTR("\xe9t\xe9"),
                                OLESTR("\xc9T\xe9"),
                                OLESTR("A"),
                                OLESTR("x"),
                                OLESTR("zeta"),
                                OLESTR("eta of 31 characters, no more .")};

// Around the sizes of small sectors, of sectors and of the largest small stream.
constexpr unsigned sizes[] = {0,   1,   63,   64,   65,   100,  511,   512,
                              513, 700, 4095, 4096, 4097, 5000, 20000, 70000};

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

/// A storage of the model with the client's handle of it.
struct Place {
    Node* node;
    Handle* handle;
};

class Session {
  public:
    explicit Session(std::string& log) : log_(log) {
        root_.storage = file_.create();
        closeAndOpen(0);
    }

    void run(Operation const& operation) {
        using Member = void (Session::*)(Operation const&);
        // What changes elements more often than what ends all.
        constexpr Member members[] = {
            &Session::createStream, &Session::createStream, &Session::createStorage,
            &Session::write,        &Session::write,        &Session::write,
            &Session::write,        &Session::resize,       &Session::resize,
            &Session::read,         &Session::seekAround,   &Session::openAnother,
            &Session::destroy,      &Session::rename,       &Session::setBits,
            &Session::enumerate,    &Session::closeHandles, &Session::commit,
            &Session::revert,       &Session::reopen};
        (this->*members[operation.kind % std::size(members)])(operation);
    }

    void checkAll() { expectTree(model_, root_); }
    void reopen(Operation const& operation) {
        note("reopen", operation.what % 3);
        root_.inner.clear();
        closeAndOpen(operation.what % 3);
        checkAll();
    }

  private:
    void note(std::string const& what, unsigned number = 0, OLECHAR const* name = nullptr) {
        log_ += what + ' ' + std::to_string(number);
        for (; name != nullptr && *name != 0; ++name) log_ += static_cast<char>(*name);
        log_ += '\n';
    }
    static OLECHAR const* nameOf(unsigned number) { return names[number % std::size(names)]; }

    void closeAndOpen(unsigned way) {
        root_.storage.reset();
        if (isTransacted_) model_ = committed_;
        constexpr DWORD ways[] = {alone, alone | STGM_TRANSACTED,
                                  STGM_SHARE_DENY_WRITE | STGM_TRANSACTED};
        DWORD const mode = STGM_READWRITE | ways[way];
        isTransacted_ = (mode & STGM_TRANSACTED) != 0;
        expectCode(file_.tryOpen(mode, root_.storage), S_OK, "open the file");
        committed_ = model_;
    }

    /// The one of that number among all storages, opened where it was not.
    Place storageOf(unsigned number) {
        std::vector<Place> all{{&model_, &root_}};
        for (std::size_t i = 0; i < all.size(); ++i) {
            for (auto& [name, node] : all[i].node->children) {
                if (!node.isStream) all.push_back({&node, openInner(all[i], name)});
            }
        }
        return all[number % all.size()];
    }
    Handle* openInner(Place const& outer, Text const& name) {
        auto& handle = outer.handle->inner[name];
        if (!handle) handle = std::make_unique<Handle>();
        if (!handle->storage) {
            expectCode(outer.handle->storage->OpenStorage(name.c_str(), nullptr, change, nullptr, 0,
                                                          handle->storage.put()),
                       S_OK, "open a storage");
        }
        return handle.get();
    }
    /// One of the streams, opened; nothing when the storage has none.
    Place streamOf(Operation const& operation) {
        auto const outer = storageOf(operation.place);
        std::vector<Text> all;
        for (auto const& [name, node] : outer.node->children) {
            if (node.isStream) all.push_back(name);
        }
        if (all.empty()) return {};
        Text const& name = all[operation.what % all.size()];
        auto& handle = outer.handle->inner[name];
        if (!handle) handle = std::make_unique<Handle>();
        if (!handle->stream) {
            expectCode(outer.handle->storage->OpenStream(name.c_str(), nullptr, change, 0,
                                                         handle->stream.put()),
                       S_OK, "open a stream");
        }
        return {&outer.node->children.at(name), handle.get()};
    }

    void create(Operation const& operation, bool isStream) {
        auto const outer = storageOf(operation.place);
        auto const* const name = nameOf(operation.what);
        bool const replaces = operation.size % 2 == 1;
        note(isStream ? "create stream" : "create storage", replaces, name);
        auto const former = outer.node->children.find(name);
        bool const isThere = former != outer.node->children.end();
        bool const isOther = isThere && former->second.isStream != isStream;
        if (replaces && isOther && hasDifference("element-replaced")) return;
        auto made = std::make_unique<Handle>();
        DWORD const mode = change | (replaces ? STGM_CREATE : 0);
        auto& storage = *outer.handle->storage.get();
        HRESULT const code = isStream
                                 ? storage.CreateStream(name, mode, 0, 0, made->stream.put())
                                 : storage.CreateStorage(name, mode, 0, 0, made->storage.put());
        bool const isRefused = isThere && (!replaces || isOther);
        expectCode(code, isRefused ? STG_E_FILEALREADYEXISTS : S_OK, "create an element");
        if (isRefused) return;
        if (isThere) outer.node->children.erase(former);
        outer.node->children[name].isStream = isStream;
        auto handle = outer.handle->inner.extract(name);
        if (handle) expectReverted(*handle.mapped());
        outer.handle->inner[name] = std::move(made);
    }
    void createStream(Operation const& operation) { create(operation, true); }
    void createStorage(Operation const& operation) { create(operation, false); }

    /// Neither lost memory nor a door to what has taken the element's place.
    static void expectReverted(Handle const& handle) {
        char byte = 0;
        ULONG done = 0;
        STATSTG status{};
        HRESULT code = STG_E_REVERTED;
        if (handle.stream) code = handle.stream->Read(&byte, 1, &done);
        if (handle.storage) code = handle.storage->Stat(&status, STATFLAG_NONAME);
        expectCode(code, STG_E_REVERTED, "use what is gone");
    }

    void write(Operation const& operation) {
        auto const [node, handle] = streamOf(operation);
        if (node == nullptr) return;
        auto& bytes = node->bytes;
        auto const made =
            pattern(sizes[operation.size % std::size(sizes)] % 21000, operation.size % 251);
        // Some begin behind the end: what is between is zero.
        std::size_t at = operation.size / 16 % (bytes.size() + 200);
        if (operation.size / 7 % 3 == 0 || hasDifference("stream-gap")) at %= bytes.size() + 1;
        note("write at " + std::to_string(at) + " bytes", static_cast<unsigned>(made.size()));
        seek(*handle->stream.get(), static_cast<LONGLONG>(at));
        ULONG done = 0;
        expectCode(handle->stream->Write(made.data(), static_cast<ULONG>(made.size()), &done), S_OK,
                   "write");
        expectModel(done == made.size(), "not all is written");
        if (made.empty()) return;
        if (bytes.size() < at + made.size()) bytes.resize(at + made.size());
        bytes.replace(at, made.size(), made);
    }

    void resize(Operation const& operation) {
        auto const [node, handle] = streamOf(operation);
        if (node == nullptr) return;
        ULARGE_INTEGER size;
        size.QuadPart = sizes[operation.size % std::size(sizes)];
        note("resize", static_cast<unsigned>(size.QuadPart));
        std::size_t const former = node->bytes.size();
        expectCode(handle->stream->SetSize(size), S_OK, "resize");
        node->bytes.resize(static_cast<std::size_t>(size.QuadPart));
        // Elsewhere what is new has no content until it is written.
        if (!hasDifference("stream-gap") || node->bytes.size() <= former) return;
        seek(*handle->stream.get(), static_cast<LONGLONG>(former));
        velk::test::write(*handle->stream.get(), node->bytes.substr(former));
    }

    void read(Operation const& operation) {
        auto const [node, handle] = streamOf(operation);
        if (node == nullptr) return;
        std::size_t const at = operation.size % (node->bytes.size() + 50);
        std::string part(sizes[operation.size / 64 % std::size(sizes)], 'x');
        note("read at " + std::to_string(at) + " bytes", static_cast<unsigned>(part.size()));
        seek(*handle->stream.get(), static_cast<LONGLONG>(at));
        ULONG done = 99;
        HRESULT const code =
            handle->stream->Read(part.data(), static_cast<ULONG>(part.size()), &done);
        expectModel(SUCCEEDED(code), "cannot read");
        part.resize(done);
        auto const expected = node->bytes.substr(std::min(at, node->bytes.size()), done);
        bool const isWhole = at + done >= node->bytes.size() || done == part.size();
        expectModel(isWhole && part == expected, "other bytes are read");
        expectContent(*node, *handle);
    }

    void seekAround(Operation const& operation) {
        auto const [node, handle] = streamOf(operation);
        if (node == nullptr) return;
        note("seek", operation.size);
        auto& stream = *handle->stream.get();
        auto const size = static_cast<LONGLONG>(node->bytes.size());
        LONGLONG const start = operation.size % 300;
        seek(stream, start);
        LARGE_INTEGER move;
        ULARGE_INTEGER now{};
        DWORD const origin = operation.size / 300 % 4;
        move.QuadPart = static_cast<LONGLONG>(operation.size / 1200 % 600) - 200;
        if (origin == STREAM_SEEK_SET && move.QuadPart < 0) move.QuadPart = -move.QuadPart;
        LONGLONG const base = origin == STREAM_SEEK_END   ? size
                              : origin == STREAM_SEEK_CUR ? start
                                                          : 0;
        bool const isWrong = origin > STREAM_SEEK_END || base + move.QuadPart < 0;
        if (isWrong && origin <= STREAM_SEEK_END && hasDifference("seek-before-beginning")) return;
        expectCode(stream.Seek(move, origin, nullptr), isWrong ? STG_E_INVALIDFUNCTION : S_OK,
                   "seek");
        expectCode(stream.Seek({}, STREAM_SEEK_CUR, &now), S_OK, "ask for the position");
        auto const expected = isWrong ? start : base + move.QuadPart;
        expectModel(now.QuadPart == static_cast<ULONGLONG>(expected), "another position");
    }

    void openAnother(Operation const& operation) {
        auto const outer = storageOf(operation.place);
        auto const* const name = nameOf(operation.what);
        note("open", operation.size % 2, name);
        auto const found = outer.node->children.find(name);
        bool const asStream = operation.size % 2 == 0;
        HRESULT expected = S_OK;
        if (found == outer.node->children.end() || found->second.isStream != asStream) {
            expected = STG_E_FILENOTFOUND;
        } else if (auto const open = outer.handle->inner.find(name);
                   open != outer.handle->inner.end() &&
                   (open->second->stream || open->second->storage)) {
            expected = STG_E_ACCESSDENIED;
        }
        Handle opened;
        auto& storage = *outer.handle->storage.get();
        HRESULT const code =
            asStream ? storage.OpenStream(name, nullptr, look, 0, opened.stream.put())
                     : storage.OpenStorage(name, nullptr, look, nullptr, 0, opened.storage.put());
        expectCode(code, expected, "open an element");
        if (FAILED(code) || !asStream) return;
        expectContent(found->second, opened);
        ULONG done = 0;
        expectCode(opened.stream->Write("x", 1, &done), STG_E_ACCESSDENIED, "write to a read-only");
    }

    void destroy(Operation const& operation) {
        auto const outer = storageOf(operation.place);
        auto const* const name = nameOf(operation.what);
        note("destroy", 0, name);
        bool const isThere = outer.node->children.erase(name) != 0;
        expectCode(outer.handle->storage->DestroyElement(name), isThere ? S_OK : STG_E_FILENOTFOUND,
                   "destroy");
        auto handle = outer.handle->inner.extract(name);
        if (handle) expectReverted(*handle.mapped());
    }

    void rename(Operation const& operation) {
        auto const outer = storageOf(operation.place);
        auto const *const name = nameOf(operation.what), *const other = nameOf(operation.size);
        note(std::string("rename to ") + std::to_string(operation.size % std::size(names)), 0,
             name);
        auto& children = outer.node->children;
        bool const isThere = children.contains(name);
        bool const isTaken =
            isThere && children.contains(other) && children.find(other) != children.find(name);
        if (children.contains(other) && hasDifference("rename-to-taken")) return;
        outer.handle->inner.erase(name);
        expectCode(outer.handle->storage->RenameElement(name, other),
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
        auto const [node, handle] = storageOf(operation.place);
        if (hasDifference("state-bits")) return;
        note("set state bits", operation.what);
        expectCode(handle->storage->SetStateBits(operation.what, operation.size), S_OK, "set bits");
        node->stateBits = (node->stateBits & ~operation.size) | (operation.what & operation.size);
    }

    void enumerate(Operation const& operation) {
        auto const [node, handle] = storageOf(operation.place);
        note("enumerate");
        expectElements(*node, *handle);
    }

    void closeHandles(Operation const& operation) {
        note("close handles");
        storageOf(operation.place).handle->inner.clear();
    }

    void commit(Operation const&) {
        note("commit");
        expectCode(root_.storage->Commit(STGC_DEFAULT), S_OK, "commit");
        committed_ = model_;
    }

    void revert(Operation const&) {
        note("revert");
        expectCode(root_.storage->Revert(), S_OK, "revert");
        if (!isTransacted_) return;
        model_ = committed_;
        for (auto const& [name, handle] : root_.inner) expectReverted(*handle);
        root_.inner.clear();
    }

    static void expectContent(Node const& node, Handle const& handle) {
        STATSTG status{};
        expectCode(handle.stream->Stat(&status, STATFLAG_NONAME), S_OK, "ask a stream");
        expectModel(status.type == STGTY_STREAM && status.cbSize.QuadPart == node.bytes.size() &&
                        status.pwcsName == nullptr,
                    "another size");
        expectModel(content(*handle.stream.get()) == node.bytes, "another content");
    }

    void expectElements(Node const& node, Handle const& handle) const {
        velk::com::ComPtr<IEnumSTATSTG> all;
        expectCode(handle.storage->EnumElements(0, nullptr, 0, all.put()), S_OK, "enumerate");
        std::size_t found = 0;
        STATSTG element{};
        for (; all->Next(1, &element, nullptr) == S_OK; ++found) {
            velk::com::TaskMemory const name(element.pwcsName);
            auto const child = node.children.find(element.pwcsName);
            expectModel(child != node.children.end(), "an element that is not there");
            expectModel(child->first == element.pwcsName, "another spelling");
            bool const isStream = element.type == STGTY_STREAM;
            expectModel(isStream == child->second.isStream, "another type");
            expectModel(!isStream || element.cbSize.QuadPart == child->second.bytes.size(),
                        "another size in the list");
        }
        expectModel(found == node.children.size(), "another number of elements");
        STATSTG status{};
        expectCode(handle.storage->Stat(&status, STATFLAG_NONAME), S_OK, "ask a storage");
        expectModel(status.grfStateBits == node.stateBits, "other state bits");
    }

    void expectTree(Node& node, Handle& handle) {
        expectElements(node, handle);
        for (auto& [name, child] : node.children) {
            if (!child.isStream) {
                expectTree(child, *openInner({&node, &handle}, name));
                continue;
            }
            auto& open = handle.inner[name];
            if (!open) open = std::make_unique<Handle>();
            if (!open->stream) {
                expectCode(handle.storage->OpenStream(name.c_str(), nullptr, change, 0,
                                                      open->stream.put()),
                           S_OK, "open a stream");
            }
            expectContent(child, *open);
        }
    }

    std::string& log_;
    FilePlace file_;
    Node model_, committed_;
    bool isTransacted_ = false;
    Handle root_;
};

TEST(CompoundFile, IsAsItsModelSays) {
    searchOperations(80, 150, [](std::vector<Operation> const& operations, std::string& log) {
        Session session(log);
        for (Operation const& operation : operations) session.run(operation);
        session.checkAll();
        for (unsigned const way : {0U, 1U}) session.reopen({0, 0, way, 0});
    });
}

}  // namespace
