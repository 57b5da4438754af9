#include "platform/storage/compound/stream_object.h"

#include "platform/storage/compound/element_status.h"
#include "platform/storage/compound/open_mode.h"

namespace velk::platform::storage {

HRESULT StreamObject::Read(void* target, ULONG count, ULONG* done) noexcept {
    if (done != nullptr) *done = 0;
    if (target == nullptr) return STG_E_INVALIDPOINTER;
    return use([&] {
        require(mayRead(element_->mode), STG_E_ACCESSDENIED);
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
        require(mayWrite(element_->mode), STG_E_ACCESSDENIED);
        file_->writeStream(element_->entry, position_,
                           {static_cast<std::byte const*>(source), count});
        position_ += count;
        if (done != nullptr) *done = count;
    });
}

HRESULT StreamObject::Seek(LARGE_INTEGER move, DWORD origin, ULARGE_INTEGER* position) noexcept {
    return use([&] {
        require(origin <= STREAM_SEEK_END, STG_E_INVALIDFUNCTION);
        std::uint64_t base = 0;
        if (origin == STREAM_SEEK_CUR) base = position_;
        if (origin == STREAM_SEEK_END) base = file_->streamSize(element_->entry);
        bool const isBack = origin != STREAM_SEEK_SET && move.QuadPart < 0;
        auto const distance = static_cast<std::uint64_t>(move.QuadPart);
        require(!isBack || 0 - distance <= base, STG_E_INVALIDFUNCTION);
        require(isBack || base + distance >= base, STG_E_INVALIDFUNCTION);
        position_ = base + distance;
        if (position != nullptr) position->QuadPart = position_;
    });
}

HRESULT StreamObject::SetSize(ULARGE_INTEGER size) noexcept {
    return use([&] {
        require(mayWrite(element_->mode), STG_E_ACCESSDENIED);
        file_->resizeStream(element_->entry, size.QuadPart);
    });
}

HRESULT StreamObject::Stat(STATSTG* status, DWORD flags) noexcept {
    return use([&] {
        Entry const& entry = file_->directory().at(element_->entry);
        describe(entry, entry.name, element_->mode, flags, status);
    });
}

}  // namespace velk::platform::storage
