/// A file in memory that remembers how it was written to.
#pragma once

#include <algorithm>
#include <memory>
#include <vector>

#include "platform/storage/compound/file_access.h"
#include "platform/system/boundary.h"

namespace velk::test {

using FileBytes = std::vector<std::byte>;

/// One step that changed the file, or a sync, which has no bytes.
struct FileStep {
    std::uint64_t offset = 0;
    FileBytes bytes;
    bool isSync() const { return bytes.empty(); }
};

inline void applyStep(FileBytes& file, FileStep const& step) {
    auto const end = static_cast<std::size_t>(step.offset) + step.bytes.size();
    if (file.size() < end) file.resize(end);
    std::copy(step.bytes.begin(), step.bytes.end(),
              file.begin() + static_cast<std::ptrdiff_t>(step.offset));
}

/// What the tests look at; outlives the file object that writes it.
struct FileRecord {
    FileBytes bytes;
    std::vector<FileStep> steps;
    /// The step that fails, counted from the next one on; none when negative.
    int failingStep = -1;
};

class RecordedFile final : public platform::storage::FileAccess {
  public:
    explicit RecordedFile(FileRecord& record) : record_(record) {}

    std::uint64_t size() override { return record_.bytes.size(); }
    void read(std::uint64_t offset, platform::storage::MutableBytes target) override {
        for (std::size_t i = 0; i < target.size(); ++i) {
            std::uint64_t const at = offset + i;
            target[i] = at < record_.bytes.size() ? record_.bytes[at] : std::byte{0};
        }
    }
    void write(std::uint64_t offset, platform::storage::Bytes source) override {
        FileStep step{offset, FileBytes(source.begin(), source.end())};
        bool const fails = isFailing();
        // A write that fails may have written a part.
        if (fails) step.bytes.resize(step.bytes.size() / 2);
        if (!step.bytes.empty()) applyStep(record_.bytes, step);
        if (fails) platform::fail(STG_E_MEDIUMFULL);
        record_.steps.push_back(std::move(step));
    }
    void truncate(std::uint64_t size) override {
        record_.bytes.resize(static_cast<std::size_t>(size));
    }
    void sync() override {
        if (isFailing()) platform::fail(STG_E_WRITEFAULT);
        record_.steps.push_back({});
    }
    bool hasReaders() override { return false; }

  private:
    bool isFailing() { return record_.failingStep >= 0 && record_.failingStep-- == 0; }

    FileRecord& record_;
};

}  // namespace velk::test
