#include "host/bstr_holder.h"

#include <atomic>
#include <utility>

#include "host/diagnostics.h"

char const* mzOutOfMemoryC::what() const noexcept {
    return "out of memory";
}

HRESULT mzOutOfMemoryC::code() const noexcept {
    return E_OUTOFMEMORY;
}

struct mzBstrHolderC::Shared {
    explicit Shared(BSTR owned) : text(owned) {}
    ~Shared() { SysFreeString(text); }
    Shared(Shared const&) = delete;
    Shared& operator=(Shared const&) = delete;

    BSTR const text;
    std::atomic<unsigned> holders{1};
    [[no_unique_address]] mzLiveCounterT<mzLiveKindE::bstrHolder> counter;
};

namespace {

/// What an allocation gave, or the out-of-memory error.
BSTR require(BSTR allocated) {
    if (!allocated) throw mzOutOfMemoryC();
    return allocated;
}

}  // namespace

mzBstrHolderC mzBstrHolderC::adopt(BSTR text) {
    mzBstrHolderC holder;
    if (!text) return holder;
    holder.shared_ = new (std::nothrow) Shared(text);
    if (!holder.shared_) {
        SysFreeString(text);
        throw mzOutOfMemoryC();
    }
    return holder;
}

mzBstrHolderC::mzBstrHolderC(OLECHAR const* text) {
    if (text) *this = adopt(require(SysAllocString(text)));
}

mzBstrHolderC::mzBstrHolderC(OLECHAR const* text, int length) {
    BSTR const copied =
        require(SysAllocStringLen(text, static_cast<UINT>(length < 0 ? 0 : length)));
    if (!text) {
        // The published function leaves the characters of null text unset.
        for (int i = 0; i < length; ++i) copied[i] = 0;
    }
    *this = adopt(copied);
}

mzBstrHolderC::mzBstrHolderC(mzBstrHolderC const& other) noexcept : shared_(other.shared_) {
    if (shared_) shared_->holders.fetch_add(1, std::memory_order_relaxed);
}

mzBstrHolderC::mzBstrHolderC(mzBstrHolderC&& other) noexcept
    : shared_(std::exchange(other.shared_, nullptr)) {}

mzBstrHolderC::~mzBstrHolderC() {
    if (shared_ && shared_->holders.fetch_sub(1, std::memory_order_acq_rel) == 1) delete shared_;
}

mzBstrHolderC& mzBstrHolderC::operator=(mzBstrHolderC other) noexcept {
    std::swap(shared_, other.shared_);
    return *this;
}

mzBstrHolderC mzBstrHolderC::copyOf(BSTR text) {
    if (!text) return {};
    return adopt(
        require(SysAllocStringByteLen(reinterpret_cast<LPCSTR>(text), SysStringByteLen(text))));
}

BSTR mzBstrHolderC::get() const noexcept {
    return shared_ ? shared_->text : nullptr;
}

int mzBstrHolderC::length() const noexcept {
    return static_cast<int>(SysStringLen(get()));
}

BSTR mzBstrHolderC::copy() const {
    BSTR const text = get();
    if (!text) return nullptr;
    return require(SysAllocStringByteLen(reinterpret_cast<LPCSTR>(text), SysStringByteLen(text)));
}
