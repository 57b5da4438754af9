#include "platform/storage/compound/stream_object.h"

#include <algorithm>
#include <limits>
#include <vector>

#include "platform/storage/compound/element_status.h"
#include "platform/storage/compound/open_mode.h"
#include "platform/storage/storage_error.h"

namespace velk::platform::storage {

template <typename Body>
HRESULT StreamObject::use(Body body) noexcept {
    return answer([&] {
        std::lock_guard const turn(file_->lock());
        failIf(element_->isReverted, STG_E_REVERTED);
        body();
    });
}

HRESULT StreamObject::Read(void* target, ULONG count, ULONG* done) noexcept {
    if (done != nullptr) *done = 0;
    if (target == nullptr) return STG_E_INVALIDPOINTER;
    return use([&] {
        failIf(!mayRead(element_->mode), STG_E_ACCESSDENIED);
        std::size_t const got =
            file_->readStream(element_->entry, position_, {static_cast<std::byte*>(target), count});
        position_ += got;
        if (done != nullptr) *done = static_cast<ULONG>(got);
    });
}

HRESULT StreamObject::Write(void const* source, ULONG count, ULONG* done) noexcept {
    if (done != nullptr) *done = 0;
    if (source == nullptr) return STG_E_INVALIDPOINTER;
    return use([&] {
        failIf(!mayWrite(element_->mode), STG_E_ACCESSDENIED);
        file_->writeStream(element_->entry, position_,
                           {static_cast<std::byte const*>(source), count});
        position_ += count;
        if (done != nullptr) *done = count;
    });
}

HRESULT StreamObject::Seek(LARGE_INTEGER move, DWORD origin, ULARGE_INTEGER* position) noexcept {
    return use([&] {
        failIf(origin > STREAM_SEEK_END, STG_E_INVALIDFUNCTION);
        std::uint64_t base = 0;
        if (origin == STREAM_SEEK_CUR) base = position_;
        if (origin == STREAM_SEEK_END) base = file_->streamSize(element_->entry);
        bool const isBack = origin != STREAM_SEEK_SET && move.QuadPart < 0;
        auto const distance = static_cast<std::uint64_t>(move.QuadPart);
        failIf(isBack && 0 - distance > base, STG_E_INVALIDFUNCTION);
        failIf(!isBack && base + distance < base, STG_E_INVALIDFUNCTION);
        position_ = base + distance;
        if (position != nullptr) position->QuadPart = position_;
    });
}

HRESULT StreamObject::SetSize(ULARGE_INTEGER size) noexcept {
    return use([&] {
        failIf(!mayWrite(element_->mode), STG_E_ACCESSDENIED);
        file_->resizeStream(element_->entry, size.QuadPart);
    });
}

HRESULT StreamObject::CopyTo(IStream* target, ULARGE_INTEGER count, ULARGE_INTEGER* read,
                             ULARGE_INTEGER* written) noexcept {
    if (target == nullptr) return STG_E_INVALIDPOINTER;
    ULONGLONG got = 0, put = 0;
    HRESULT result = answer([&] {
        constexpr ULONGLONG most = 65536;
        std::vector<std::byte> part(static_cast<std::size_t>(std::min(count.QuadPart, most)));
        while (got < count.QuadPart) {
            auto const wanted = static_cast<ULONG>(std::min(count.QuadPart - got, most));
            ULONG now = 0;
            HRESULT const code = Read(part.data(), wanted, &now);
            failIf(FAILED(code), code);
            if (now == 0) break;
            got += now;
            ULONG kept = 0;
            HRESULT const writing = target->Write(part.data(), now, &kept);
            put += std::min(kept, now);
            failIf(FAILED(writing), writing);
            failIf(kept != now, STG_E_MEDIUMFULL);
        }
    });
    if (read != nullptr) read->QuadPart = got;
    if (written != nullptr) written->QuadPart = put;
    return result;
}

HRESULT StreamObject::Commit(DWORD) noexcept {
    return use([] {});
}

HRESULT StreamObject::Revert() noexcept {
    return use([] {});
}

HRESULT StreamObject::LockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) noexcept {
    return STG_E_INVALIDFUNCTION;
}

HRESULT StreamObject::UnlockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) noexcept {
    return STG_E_INVALIDFUNCTION;
}

HRESULT StreamObject::Stat(STATSTG* status, DWORD flags) noexcept {
    return use([&] {
        Entry const& entry = file_->directory().at(element_->entry);
        describe(entry, entry.name, element_->mode, flags, status);
    });
}

HRESULT StreamObject::Clone(IStream** stream) noexcept {
    if (stream == nullptr) return STG_E_INVALIDPOINTER;
    *stream = nullptr;
    return use([&] {
        auto* const clone = new StreamObject(file_, element_);
        clone->position_ = position_;
        *stream = clone;
    });
}

}  // namespace velk::platform::storage
