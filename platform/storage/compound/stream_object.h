/// IStream of a stream in a compound file.
#pragma once

#include <memory>

#include "platform/storage/compound/compound_file.h"
#include "platform/storage/shared_object.h"

namespace velk::platform::storage {

class StreamObject final : public SharedObject<IStream, IID_ISequentialStream, IID_IStream> {
  public:
    StreamObject(std::shared_ptr<CompoundFile> file, std::shared_ptr<OpenElement> element)
        : file_(std::move(file)), element_(std::move(element)) {}

    HRESULT STDMETHODCALLTYPE Read(void* target, ULONG count, ULONG* done) noexcept override;
    HRESULT STDMETHODCALLTYPE Write(void const* source, ULONG count, ULONG* done) noexcept override;
    HRESULT STDMETHODCALLTYPE Seek(LARGE_INTEGER move, DWORD origin,
                                   ULARGE_INTEGER* position) noexcept override;
    HRESULT STDMETHODCALLTYPE SetSize(ULARGE_INTEGER size) noexcept override;
    HRESULT STDMETHODCALLTYPE Stat(STATSTG* status, DWORD flags) noexcept override;
    /// Changes of a stream belong to those of the storage that it is in.
    HRESULT STDMETHODCALLTYPE Commit(DWORD) noexcept override {
        return use([] {});
    }
    HRESULT STDMETHODCALLTYPE Revert() noexcept override {
        return use([] {});
    }
    /// Regions cannot be locked: the stream is its client's alone.
    HRESULT STDMETHODCALLTYPE LockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) noexcept override {
        return STG_E_INVALIDFUNCTION;
    }
    HRESULT STDMETHODCALLTYPE UnlockRegion(ULARGE_INTEGER, ULARGE_INTEGER,
                                           DWORD) noexcept override {
        return STG_E_INVALIDFUNCTION;
    }
    /// Nobody copies or clones streams: E_NOTIMPL.
    HRESULT STDMETHODCALLTYPE CopyTo(IStream*, ULARGE_INTEGER, ULARGE_INTEGER*,
                                     ULARGE_INTEGER*) noexcept override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Clone(IStream**) noexcept override { return E_NOTIMPL; }

  private:
    /// Runs `body` while nobody else uses the file.
    template <typename Body>
    HRESULT use(Body body) noexcept {
        return answer([&] {
            std::lock_guard const turn(file_->lock());
            require(!element_->isReverted, STG_E_REVERTED);
            body();
        });
    }

    std::shared_ptr<CompoundFile> file_;
    std::shared_ptr<OpenElement> element_;
    std::uint64_t position_ = 0;
};

}  // namespace velk::platform::storage
