/// An open compound file.
#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <unordered_map>
#include <vector>

#include "platform/storage/compound/directory.h"
#include "platform/storage/compound/stream_content.h"
#include "platform/system/boundary.h"

namespace velk::platform::storage {

/// An element while a client has it open.
struct OpenElement {
    EntryId entry = noEntry;
    /// Access and sharing as the client asked for them.
    DWORD mode = 0;
    /// The element, or its file, is gone: every use fails with STG_E_REVERTED.
    bool isReverted = false;
};

/// A compound file with what clients have open in it. Members fail with a
/// Failure. A caller holds lock() while it uses one.
class CompoundFile {
  public:
    /// Reads what is there. `isWritable` as the file was opened; `isDirect`:
    /// changes need not wait for a commit of the root.
    CompoundFile(std::unique_ptr<FileAccess> file, bool isWritable, bool isDirect = true);
    CompoundFile(CompoundFile const&) = delete;
    CompoundFile& operator=(CompoundFile const&) = delete;
    ~CompoundFile() { close(); }

    /// Writes an empty compound file, with sectors of 512 bytes.
    static void create(FileAccess& file);

    std::recursive_mutex& lock() noexcept { return lock_; }
    bool isWritable() const noexcept { return isWritable_; }
    bool isDirect() const noexcept { return isDirect_; }
    bool isOpen() const noexcept { return file_ != nullptr; }
    /// STG_E_REVERTED after a revert() that failed.
    Directory& directory();

    std::uint64_t streamSize(EntryId stream) { return content(stream).size(); }
    /// Reads up to the end of the stream; gives the number of bytes.
    std::size_t readStream(EntryId stream, std::uint64_t offset, MutableBytes target);
    /// Writes all, and lengthens the stream where it ends before.
    void writeStream(EntryId stream, std::uint64_t offset, Bytes source);
    void resizeStream(EntryId stream, std::uint64_t size);

    /// Takes an element and everything in it out of a storage. Clients that
    /// have any of it open find it reverted.
    void destroy(EntryId storage, EntryId element);

    /// Registers that a client opens an element. STG_E_ACCESSDENIED when one
    /// has it open already.
    std::shared_ptr<OpenElement> open(EntryId element, DWORD mode);

    /// Runs a change. When it fails half-way, nothing can be committed, with
    /// the failure's own code, before revert(): the file keeps what the last
    /// commit left. A change that is refused before it begins leaves no trace.
    template <typename Body>
    void change(Body body) {
        auto const before = store_.touches();
        try {
            body();
        } catch (Failure const& error) {
            bool const hasBegun = store_.touches() != before;
            if (hasBegun || error.code == STG_E_READFAULT) torn_ = error.code;
            throw;
        } catch (...) {
            torn_ = STG_E_INSUFFICIENTMEMORY;
            throw;
        }
    }

    void commit();
    /// Has nothing be committed, with this code, before revert().
    void refuseCommit(HRESULT failure) noexcept { torn_ = failure; }
    /// Back to the last commit. What clients have open is reverted.
    void revert();
    /// Closes the file, which keeps what the last commit left; what clients
    /// have open is reverted.
    void close() noexcept;

    /// STG_E_DOCFILECORRUPT when a stream is said to be larger than the file.
    void checkSize(EntryId stream);

  private:
    MiniStore& small();
    StreamContent& content(EntryId stream);
    void keepPlace(EntryId stream);
    template <typename Body>
    void changeContent(EntryId stream, Body body);
    void destroyOne(EntryId storage, EntryId element);
    void openTables();
    void revertElements() noexcept;

    std::recursive_mutex lock_;
    std::unique_ptr<FileAccess> file_;
    bool const isWritable_;
    bool const isDirect_;
    SectorStore store_;
    std::optional<Directory> directory_;
    std::optional<MiniStore> small_;
    /// What a change failed with that left a half of itself behind.
    HRESULT torn_ = S_OK;
    std::unordered_map<EntryId, StreamContent> contents_;
    std::vector<std::weak_ptr<OpenElement>> open_;
};

}  // namespace velk::platform::storage
