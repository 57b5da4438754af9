#include "platform/storage/properties/set_stream.h"

#include <algorithm>

namespace velk::platform::storage {
namespace {

constexpr USHORT byteOrderMark = 0xfffe;
// From version 1 on names may count case.
constexpr USHORT lastVersion = 1;
constexpr ULONG mostSections = 2;
// Mark, version, system, class id and number of sections.
constexpr std::size_t headerSize = 28;
constexpr std::size_t listEntrySize = sizeof(FMTID) + sizeof(ULONG);

bool isWellKnown(REFFMTID id) {
    return id == FMTID_SummaryInformation || id == FMTID_DocSummaryInformation ||
           id == FMTID_UserDefinedProperties;
}

constexpr ULONGLONG biggestStream = ULONGLONG{64} << 20;

/// Damage is told as such: most sizes of this kind are none.
[[noreturn]] void refuseBig(IStream& stream, ULONGLONG size) {
    LARGE_INTEGER last{};
    last.QuadPart = static_cast<LONGLONG>(size - 1);
    std::byte byte{};
    ULONG done = 0;
    require(last.QuadPart >= 0, STG_E_DOCFILECORRUPT);
    check(stream.Seek(last, STREAM_SEEK_SET, nullptr));
    check(stream.Read(&byte, sizeof byte, &done));
    fail(done == 0 ? STG_E_DOCFILECORRUPT : STG_E_INSUFFICIENTMEMORY);
}

}  // namespace

SetStream::SetStream(std::vector<std::byte> bytes) {
    auto const image = std::make_shared<std::vector<std::byte> const>(std::move(bytes));
    require(image->size() >= headerSize, STG_E_INVALIDHEADER);
    ByteReader from(*image);
    require(from.read<USHORT>() == byteOrderMark, STG_E_INVALIDHEADER);
    version_ = from.read<USHORT>();
    require(version_ <= lastVersion, STG_E_INVALIDHEADER);
    system_ = from.read<DWORD>();
    classId_ = from.read<CLSID>();
    auto const count = from.read<ULONG>();
    require(count <= mostSections && count * listEntrySize <= from.left(), STG_E_INVALIDHEADER);
    struct Listed {
        FMTID id;
        std::size_t begin;
    };
    std::vector<Listed> list;
    for (ULONG i = 0; i < count; ++i) {
        auto const id = from.read<FMTID>();
        list.push_back({id, std::min<std::size_t>(from.read<ULONG>(), image->size())});
    }
    std::size_t lastEnd = 0;
    sections_.reserve(mostSections);
    for (Listed const& listed : list) {
        std::size_t end = image->size();
        for (Listed const& other : list) {
            if (other.begin > listed.begin) end = std::min(end, other.begin);
        }
        sections_.emplace_back(listed.id, image, listed.begin, end);
        lastEnd = std::max(lastEnd, listed.begin + sections_.back().sizeAsRead());
    }
    if (lastEnd < image->size()) sizeToKeep_ = image->size();
}

std::size_t SetStream::place(REFFMTID formatId) const {
    auto const isOfSet = [&](Section const& section) { return section.formatId() == formatId; };
    auto const found = std::ranges::find_if(sections_, isOfSet);
    if (found != sections_.end()) return static_cast<std::size_t>(found - sections_.begin());
    // Some programs write ids that nobody knows.
    std::size_t const usual = formatId == FMTID_UserDefinedProperties ? 1 : 0;
    bool const isThere = usual < sections_.size() && !isWellKnown(sections_[usual].formatId());
    return isThere ? usual : sections_.size();
}

Section& SetStream::at(REFFMTID formatId) {
    std::size_t const at = place(formatId);
    if (at == sections_.size()) {
        bool const mayLack = formatId == FMTID_UserDefinedProperties || isEmpty();
        fail(mayLack ? STG_E_FILENOTFOUND : STG_E_INVALIDHEADER);
    }
    require(sections_[at].isReadable(), STG_E_INVALIDHEADER);
    return sections_[at];
}

Section& SetStream::put(Section section) {
    std::size_t const at = place(section.formatId());
    if (at == sections_.size()) {
        sections_.push_back(std::move(section));
    } else {
        sections_[at] = std::move(section);
    }
    return sections_[at];
}

void SetStream::remove(REFFMTID formatId) {
    std::size_t const at = place(formatId);
    if (at < sections_.size()) sections_.erase(sections_.begin() + static_cast<ptrdiff_t>(at));
}

std::vector<std::byte> SetStream::write() const {
    bool const countsCase = std::ranges::any_of(sections_, &Section::countsCase);
    ByteWriter to;
    to.write(byteOrderMark);
    to.write(countsCase ? lastVersion : version_);
    to.write(system_);
    to.write(classId_);
    to.write(static_cast<ULONG>(sections_.size()));
    std::size_t const list = to.size();
    for (Section const& section : sections_) {
        to.write(section.formatId());
        to.write(ULONG{0});
    }
    for (std::size_t i = 0; i < sections_.size(); ++i) {
        to.overwrite(list + i * listEntrySize + sizeof(FMTID), static_cast<ULONG>(to.size()));
        sections_[i].write(to);
    }
    auto bytes = to.take();
    if (bytes.size() < sizeToKeep_) bytes.resize(sizeToKeep_);
    return bytes;
}

SetStream readSets(IStream& stream) {
    STATSTG status{};
    check(stream.Stat(&status, STATFLAG_NONAME));
    if (status.cbSize.QuadPart == 0) return SetStream(GUID_NULL);
    if (status.cbSize.QuadPart > biggestStream) refuseBig(stream, status.cbSize.QuadPart);
    check(stream.Seek({}, STREAM_SEEK_SET, nullptr));
    std::vector<std::byte> bytes(static_cast<std::size_t>(status.cbSize.QuadPart));
    std::size_t done = 0;
    while (done < bytes.size()) {
        ULONG now = 0;
        check(stream.Read(bytes.data() + done, static_cast<ULONG>(bytes.size() - done), &now));
        require(now != 0, STG_E_READFAULT);
        done += now;
    }
    return SetStream(std::move(bytes));
}

void writeSets(IStream& stream, SetStream const& sets) {
    auto const bytes = sets.write();
    ULARGE_INTEGER size{};
    size.QuadPart = bytes.size();
    check(stream.SetSize(size));
    check(stream.Seek({}, STREAM_SEEK_SET, nullptr));
    std::size_t done = 0;
    while (done < bytes.size()) {
        ULONG now = 0;
        check(stream.Write(bytes.data() + done, static_cast<ULONG>(bytes.size() - done), &now));
        require(now != 0, STG_E_MEDIUMFULL);
        done += now;
    }
}

}  // namespace velk::platform::storage
