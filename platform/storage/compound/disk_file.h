/// A file of the system that compound files are stored in.
#pragma once

#include <string>

#include "platform/storage/compound/file_access.h"

namespace velk::platform::storage {

/// What a client does with a file, and what it does not let others do.
struct Sharing {
    bool reads = true;
    bool writes = false;
    bool deniesReading = false;
    bool deniesWriting = false;
};

/// An open file. Sharing holds between all handles of all processes that use
/// this class; other programs are not kept out. No lock is lost when another
/// handle is closed or the process forks.
class DiskFile final : public FileAccess {
  public:
    enum class Disposition { open, createNew, createAlways };

    /// Fails with STG_E_FILENOTFOUND, STG_E_PATHNOTFOUND, STG_E_ACCESSDENIED,
    /// STG_E_FILEALREADYEXISTS, STG_E_SHAREVIOLATION, STG_E_TOOMANYOPENFILES.
    DiskFile(std::string const& path, Disposition disposition, Sharing sharing);
    DiskFile(DiskFile const&) = delete;
    DiskFile& operator=(DiskFile const&) = delete;
    ~DiskFile() override;

    std::uint64_t size() override;
    void read(std::uint64_t offset, MutableBytes target) override;
    void write(std::uint64_t offset, Bytes source) override;
    void truncate(std::uint64_t size) override;
    void sync() override;
    bool hasReaders() override;

    /// Has the file vanish when this is closed.
    void removeOnClose() { removeOnClose_ = true; }

  private:
    void open(Disposition disposition, bool writes);
    void share(Sharing sharing);

    std::string path_;
    int file_ = -1;
    bool removeOnClose_ = false;
};

}  // namespace velk::platform::storage
