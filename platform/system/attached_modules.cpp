#include "platform/system/attached_modules.h"

#include <algorithm>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <utility>
#include <vector>

#include "platform/system/immortal.h"

namespace velk::platform {
namespace {

/// One attached module.
struct Attachment {
    DllEntryPoint entry;
    HMODULE module;
    /// Grows with every attachment.
    std::uint64_t number = 0;
    /// The threads that are in the entry; what keeps the module from going away.
    int inside = 0;
    /// Given up by the last thread that leaves the entry.
    LoaderHandles toClose;
};
using AttachmentPointer = std::shared_ptr<Attachment>;

/// Modules in the order of their attachment. The entries are called without
/// the lock.
class Attachments {
  public:
    void add(DllEntryPoint entry, HMODULE module) {
        auto attachment = std::make_shared<Attachment>(
            Attachment{.entry = entry, .module = module, .toClose = {}});
        std::lock_guard const guard(lock_);
        attachment->number = ++last_;
        attached_.push_back(std::move(attachment));
    }

    void remove(DllEntryPoint entry) noexcept {
        std::unique_lock guard(lock_);
        auto const found =
            std::find_if(attached_.rbegin(), attached_.rend(),
                         [&](auto const& attachment) { return attachment->entry == entry; });
        if (found == attached_.rend()) return;
        auto const attachment = *found;
        attached_.erase(std::next(found).base());
        // A module may detach itself from inside its own entry: that one call
        // is not waited for.
        int const own = currentOfThisThread == attachment.get() ? 1 : 0;
        left_.wait(guard, [&] { return attachment->inside == own; });
    }

    void tellThreadDetach() noexcept {
        std::uint64_t before = UINT64_MAX;
        while (auto const next = enterLastBefore(before)) {
            before = next->number;
            Attachment* const outer = currentOfThisThread;
            currentOfThisThread = next.get();
            next->entry(next->module, DLL_THREAD_DETACH, nullptr);
            currentOfThisThread = outer;
            // Closed at the end of this turn, without the lock: the module may go.
            LoaderHandles const toClose = leave(*next);
        }
    }

    void closeAfterEntries(HMODULE module, LoaderHandles handles) noexcept {
        // What is left in `handles` goes after the lock.
        std::lock_guard const guard(lock_);
        Attachment* busy = currentOfThisThread;
        for (auto const& attachment : attached_) {
            if (attachment->module == module && attachment->inside != 0) busy = attachment.get();
        }
        if (busy != nullptr) busy->toClose.splice_after(busy->toClose.before_begin(), handles);
    }

  private:
    /// The attachment of the greatest number below `before`, with the thread
    /// counted as inside; null when there is none.
    AttachmentPointer enterLastBefore(std::uint64_t before) noexcept {
        std::lock_guard const guard(lock_);
        auto const found =
            std::find_if(attached_.rbegin(), attached_.rend(),
                         [&](auto const& attachment) { return attachment->number < before; });
        if (found == attached_.rend()) return nullptr;
        ++(*found)->inside;
        return *found;
    }

    LoaderHandles leave(Attachment& attachment) noexcept {
        LoaderHandles toClose;
        {
            std::lock_guard const guard(lock_);
            if (--attachment.inside == 0) toClose.swap(attachment.toClose);
        }
        left_.notify_all();
        return toClose;
    }

    // Not null while the thread is in an entry.
    static thread_local Attachment* currentOfThisThread;

    std::mutex lock_;
    std::condition_variable left_;
    std::vector<AttachmentPointer> attached_;
    std::uint64_t last_ = 0;
};

constinit thread_local Attachment* Attachments::currentOfThisThread = nullptr;

Attachments& attachments() noexcept {
    static Immortal<Attachments> all;
    return *all;
}

HMODULE moduleAround(DllEntryPoint entry) {
    HMODULE module = nullptr;
    GetModuleHandleExW(
        GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
        reinterpret_cast<LPCWSTR>(entry), &module);
    return module;
}

}  // namespace

void attachModule(DllEntryPoint entry) {
    attachments().add(entry, moduleAround(entry));
}

void detachModule(DllEntryPoint entry) noexcept {
    attachments().remove(entry);
}

void tellThreadDetach() noexcept {
    attachments().tellThreadDetach();
}

void closeAfterEntries(HMODULE module, LoaderHandles handles) noexcept {
    attachments().closeAfterEntries(module, std::move(handles));
}

}  // namespace velk::platform
