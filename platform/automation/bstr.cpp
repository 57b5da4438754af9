#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>

#include "oleauto.h"
#include "platform/system/live_counts.h"

namespace velk::platform {
namespace {

// Stands before every text. The published part is the length directly before
// the first character; the rest keeps the text aligned to eight bytes.
struct BstrHeader {
    DWORD unused;
    DWORD byteLength;
};
static_assert(sizeof(BstrHeader) == 8);

// An odd length still gets two zero bytes after its last byte.
constexpr std::size_t terminatorSize = 3;
constexpr UINT longestByteLength = std::numeric_limits<UINT>::max() - 16;

BstrHeader* headerOf(BSTR text) noexcept {
    return reinterpret_cast<BstrHeader*>(text) - 1;
}

BSTR allocate(void const* bytes, UINT byteLength) noexcept {
    if (byteLength > longestByteLength) return nullptr;
    void* const block = std::malloc(sizeof(BstrHeader) + byteLength + terminatorSize);
    if (block == nullptr) return nullptr;
    auto* const header = static_cast<BstrHeader*>(block);
    header->unused = 0;
    header->byteLength = byteLength;
    auto* const start = reinterpret_cast<char*>(header + 1);
    if (bytes == nullptr) {
        std::memset(start, 0, byteLength);
    } else {
        std::memcpy(start, bytes, byteLength);
    }
    std::memset(start + byteLength, 0, terminatorSize);
    countLive(VELK_LIVE_BSTR, 1);
    return reinterpret_cast<BSTR>(start);
}

bool byteLengthOf(std::size_t length, UINT& byteLength) noexcept {
    if (length > longestByteLength / sizeof(OLECHAR)) return false;
    byteLength = static_cast<UINT>(length * sizeof(OLECHAR));
    return true;
}

}  // namespace
}  // namespace velk::platform

using namespace velk::platform;

BSTR SysAllocString(OLECHAR const* text) {
    if (text == nullptr) return nullptr;
    UINT byteLength = 0;
    if (!byteLengthOf(std::char_traits<OLECHAR>::length(text), byteLength)) return nullptr;
    return allocate(text, byteLength);
}

BSTR SysAllocStringLen(OLECHAR const* text, UINT length) {
    UINT byteLength = 0;
    return byteLengthOf(length, byteLength) ? allocate(text, byteLength) : nullptr;
}

BSTR SysAllocStringByteLen(LPCSTR bytes, UINT byteLength) {
    return allocate(bytes, byteLength);
}

void SysFreeString(BSTR text) {
    if (text == nullptr) return;
    countLive(VELK_LIVE_BSTR, -1);
    std::free(headerOf(text));
}

UINT SysStringLen(BSTR text) {
    return SysStringByteLen(text) / static_cast<UINT>(sizeof(OLECHAR));
}

UINT SysStringByteLen(BSTR text) {
    return text == nullptr ? 0 : headerOf(text)->byteLength;
}
