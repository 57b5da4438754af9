/// Property sets in an IStream.
#pragma once

#include <vector>

#include <objidl_storage.h>

#include "platform/storage/properties/section.h"

namespace velk::platform::storage {

/// A stream with one property set, or with two, as the document summary
/// information has it. What is not changed is written as it was read.
class SetStream {
  public:
    /// One without sections.
    explicit SetStream(CLSID const& classId) : classId_(classId) {}

    /// Reads a stream. Fails with STG_E_INVALIDHEADER for anything else.
    explicit SetStream(std::vector<std::byte> bytes);

    bool isEmpty() const noexcept { return sections_.empty(); }
    CLSID const& classId() const noexcept { return classId_; }
    void setClassId(REFCLSID id) noexcept { classId_ = id; }
    /// The system that wrote it, as the header says.
    DWORD system() const noexcept { return system_; }

    /// The section of a set: the one with its format id, or the one that
    /// stands where the set does, when that has an id of no other set. Fails
    /// with STG_E_FILENOTFOUND when there is none, and with STG_E_INVALIDHEADER
    /// for one that cannot be read and for a stream that has other sets only.
    Section& at(REFFMTID formatId);
    /// Whether there is a section of the set, readable or not.
    bool has(REFFMTID formatId) const { return place(formatId) < sections_.size(); }

    /// Puts a section behind the others, instead of one that it had for the set.
    Section& put(Section section);
    void remove(REFFMTID formatId);

    std::vector<std::byte> write() const;

  private:
    std::size_t place(REFFMTID formatId) const;

    USHORT version_ = 0;
    CLSID classId_{};
    DWORD system_ = thisSystem;
    std::vector<Section> sections_;
    /// Where the stream had bytes behind its sections, its size.
    std::size_t sizeToKeep_ = 0;

    // The kind of system in the upper half, its version in the lower.
    static constexpr DWORD thisSystem = 0x00020106;
};

/// Reads a stream from its beginning; an empty one has no sets. Fails with what
/// the stream answers, STG_E_INVALIDHEADER for a stream of something else, and
/// STG_E_INSUFFICIENTMEMORY beyond 64 MiB, which no set of a document comes near.
SetStream readSets(IStream& stream);

/// Writes the stream anew. Fails with what the stream answers.
void writeSets(IStream& stream, SetStream const& sets);

}  // namespace velk::platform::storage
