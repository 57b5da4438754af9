#include "platform/storage/properties/set_stream_file.h"

namespace velk::platform::storage {
namespace {

constexpr ULONGLONG biggestStream = ULONGLONG{64} << 20;

}  // namespace

SetStream readSets(IStream& stream) {
    STATSTG status{};
    succeed(stream.Stat(&status, STATFLAG_NONAME));
    if (status.cbSize.QuadPart == 0) return SetStream(GUID_NULL);
    failIf(status.cbSize.QuadPart > biggestStream, STG_E_INSUFFICIENTMEMORY);
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
