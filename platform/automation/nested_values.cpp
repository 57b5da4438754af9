#include "nested_values.h"

#include <new>
#include <utility>
#include <vector>

namespace velk::platform {
namespace {

// A level takes some hundred bytes of stack; structures of everyday depth never wait.
constexpr unsigned deepestLevel = 16;

/// What one thread does level by level, from the outermost call in.
template <typename Work>
class Turn {
  public:
    unsigned level = 0;
    /// What failed on the way, whoever passed over it: what waits may be gone then.
    HRESULT failure = S_OK;

    /// False without memory: the work is then done at once.
    bool postpone(Work const& work) noexcept {
        try {
            waiting_.push_back(work);
            return true;
        } catch (std::bad_alloc const&) {
            return false;
        }
    }
    bool take(Work& work) noexcept {
        if (waiting_.empty()) return false;
        work = waiting_.back();
        waiting_.pop_back();
        return true;
    }

  private:
    std::vector<Work> waiting_;
};

struct ElementCopy {
    VARIANT* target = nullptr;
    VARIANT const* source = nullptr;
};

// Pointers without a destructor, usable until the thread is gone.
constinit thread_local Turn<SAFEARRAY*>* destroying = nullptr;
constinit thread_local Turn<ElementCopy>* copying = nullptr;

HRESULT copyOneLevelDown(VARIANT& target, VARIANT const& source) noexcept {
    ++copying->level;
    HRESULT const result = VariantCopy(&target, &source);
    --copying->level;
    return result;
}

HRESULT copyWhatWaits() noexcept {
    ElementCopy next;
    while (SUCCEEDED(copying->failure) && copying->take(next)) {
        HRESULT const result = copyOneLevelDown(*next.target, *next.source);
        if (FAILED(result)) return result;
    }
    return copying->failure;
}

HRESULT destroyOneLevelDown(SAFEARRAY* array) noexcept {
    ++destroying->level;
    HRESULT const result = SafeArrayDestroy(array);
    --destroying->level;
    return result;
}

}  // namespace

HRESULT destroyArrayInTurn(SAFEARRAY* array) noexcept {
    if (array == nullptr || array->cLocks != 0) return SafeArrayDestroy(array);
    if (destroying != nullptr) {
        if (destroying->level >= deepestLevel && destroying->postpone(array)) return S_OK;
        return destroyOneLevelDown(array);
    }
    Turn<SAFEARRAY*> outermost;
    destroying = &outermost;
    HRESULT const result = destroyOneLevelDown(array);
    for (SAFEARRAY* next = nullptr; outermost.take(next);) destroyOneLevelDown(next);
    destroying = nullptr;
    return result;
}

HRESULT copyElementInTurn(VARIANT& target, VARIANT const& source) noexcept {
    if (copying == nullptr) return VariantCopy(&target, &source);
    bool const isDeep = copying->level >= deepestLevel && (source.vt & VT_ARRAY) != 0;
    if (isDeep && copying->postpone({&target, &source})) return S_OK;
    return copyOneLevelDown(target, source);
}

HRESULT copyArrayInTurn(HRESULT (*copy)(SAFEARRAY* source, SAFEARRAY** made), SAFEARRAY* source,
                        SAFEARRAY** made) noexcept {
    if (copying != nullptr) {
        HRESULT const result = copy(source, made);
        if (FAILED(result)) copying->failure = result;
        return result;
    }
    Turn<ElementCopy> outermost;
    copying = &outermost;
    HRESULT result = copy(source, made);
    if (SUCCEEDED(result)) result = copyWhatWaits();
    copying = nullptr;
    if (FAILED(result)) destroyArrayInTurn(std::exchange(*made, nullptr));
    return result;
}

}  // namespace velk::platform
