#include "nested_values.h"

#include <new>
#include <vector>

#include "winerror.h"

namespace velk::platform {
namespace {

// A level takes some hundred bytes of stack; structures of everyday depth never wait.
constexpr unsigned deepestLevel = 16;

// Fits the smallest stacks that threads are made with.
constexpr unsigned deepestRecordCopy = 64;
HRESULT const nestedTooDeeply = HRESULT_FROM_WIN32(ERROR_STACK_OVERFLOW);

/// What is to be given up: an array, or a record with its information.
struct Content {
    SAFEARRAY* array = nullptr;
    IRecordInfo* info = nullptr;
    void* record = nullptr;
};

HRESULT destroyNow(Content const& content) noexcept {
    if (content.info == nullptr) return SafeArrayDestroy(content.array);
    if (content.record != nullptr) content.info->RecordDestroy(content.record);
    content.info->Release();
    return S_OK;
}

/// What one thread gives up level by level, from the outermost call in.
class Turn {
  public:
    HRESULT destroy(Content const& content) noexcept {
        if (level_ >= deepestLevel && postpone(content)) return S_OK;
        ++level_;
        HRESULT const result = destroyNow(content);
        --level_;
        return result;
    }
    void destroyWhatWaits() noexcept {
        while (!waiting_.empty()) {
            Content const next = waiting_.back();
            waiting_.pop_back();
            destroy(next);
        }
    }

  private:
    /// False without memory: the work is then done at once.
    bool postpone(Content const& content) noexcept {
        try {
            waiting_.push_back(content);
            return true;
        } catch (std::bad_alloc const&) {
            return false;
        }
    }

    unsigned level_ = 0;
    std::vector<Content> waiting_;
};

// Without destructors, usable until the thread is gone.
constinit thread_local Turn* destroying = nullptr;
constinit thread_local unsigned recordCopies = 0;

HRESULT destroyInTurn(Content const& content) noexcept {
    if (destroying != nullptr) return destroying->destroy(content);
    Turn outermost;
    destroying = &outermost;
    HRESULT const result = outermost.destroy(content);
    outermost.destroyWhatWaits();
    destroying = nullptr;
    return result;
}

}  // namespace

HRESULT destroyArrayInTurn(SAFEARRAY* array) noexcept {
    // Both are answered without any work.
    if (array == nullptr || array->cLocks != 0) return SafeArrayDestroy(array);
    return destroyInTurn({.array = array});
}

void destroyRecordInTurn(IRecordInfo* info, void* record) noexcept {
    if (info != nullptr) destroyInTurn({.info = info, .record = record});
}

RecordCopyLevel::RecordCopyLevel() noexcept {
    ++recordCopies;
}

RecordCopyLevel::~RecordCopyLevel() {
    --recordCopies;
}

HRESULT RecordCopyLevel::result() const noexcept {
    return recordCopies > deepestRecordCopy ? nestedTooDeeply : S_OK;
}

}  // namespace velk::platform
