#include "platform/storage/properties/set_stream_file.h"

namespace velk::platform::storage {
namespace {

constexpr ULONGLONG biggestStream = ULONGLONG{64} << 20;

/// Damage is told as such: most sizes of this kind are none.
[[noreturn]] void refuseBig(IStream& stream, ULONGLONG size) {
    LARGE_INTEGER last{};
    last.QuadPart = static_cast<LONGLONG>(size - 1);
    std::byte byte{};
    ULONG done = 0;
    failIf(last.QuadPart < 0, STG_E_DOCFILECORRUPT);
    succeed(stream.Seek(last, STREAM_SEEK_SET, nullptr));
    succeed(stream.Read(&byte, sizeof byte, &done));
    fail(done == 0 ? STG_E_DOCFILECORRUPT : STG_E_INSUFFICIENTMEMORY);
}

}  // namespace

SetStream readSets(IStream& stream) {
    STATSTG status{};
    succeed(stream.Stat(&status, STATFLAG_NONAME));
    if (status.cbSize.QuadPart == 0) return SetStream(GUID_NULL);
    if (status.cbSize.QuadPart > biggestStream) refuseBig(stream, status.cbSize.QuadPart);
    succeed(stream.Seek({}, STREAM_SEEK_SET, nullptr));
    std::vector<std::byte> bytes(static_cast<std::size_t>(status.cbSize.QuadPart));
    std::size_t done = 0;
    while (done < bytes.size()) {
        ULONG now = 0;
        succeed(stream.Read(bytes.data() + done, static_cast<ULONG>(bytes.size() - done), &now));
        failIf(now == 0, STG_E_READFAULT);
        done += now;
    }
    return SetStream(std::move(bytes));
}

void writeSets(IStream& stream, SetStream const& sets) {
    auto const bytes = sets.write();
    ULARGE_INTEGER size{};
    size.QuadPart = bytes.size();
    succeed(stream.SetSize(size));
    succeed(stream.Seek({}, STREAM_SEEK_SET, nullptr));
    std::size_t done = 0;
    while (done < bytes.size()) {
        ULONG now = 0;
        succeed(stream.Write(bytes.data() + done, static_cast<ULONG>(bytes.size() - done), &now));
        failIf(now == 0, STG_E_MEDIUMFULL);
        done += now;
    }
}

}  // namespace velk::platform::storage
