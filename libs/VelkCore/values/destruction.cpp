#include "values/destruction.h"

#include <new>
#include <vector>

namespace velk::core {

namespace {

using Destroy = void (*)(void*) noexcept;

// A level can lead across the bridge and through other people's code, and takes
// kilobytes of stack there. Structures of everyday depth never wait.
constexpr unsigned deepestLevel = 16;

/// What ends on one thread, from the outermost object in.
class Teardown {
  public:
    void destroy(void* object, Destroy destroy) noexcept {
        if (level_ >= deepestLevel && postpone(object, destroy)) return;
        ++level_;
        destroy(object);
        --level_;
    }

    /// The outermost object, then all that waited meanwhile.
    void run(void* object, Destroy destroy) noexcept {
        this->destroy(object, destroy);
        while (!waiting_.empty()) {
            Waiting const next = waiting_.back();
            waiting_.pop_back();
            this->destroy(next.object, next.destroy);
        }
    }

  private:
    struct Waiting {
        void* object;
        Destroy destroy;
    };

    /// False without memory: the object then goes at once.
    bool postpone(void* object, Destroy destroy) noexcept {
        try {
            waiting_.push_back({object, destroy});
            return true;
        } catch (std::bad_alloc const&) {
            return false;
        }
    }

    unsigned level_ = 0;
    std::vector<Waiting> waiting_;
};

// A pointer without a destructor: it can be used until the thread is gone, and
// what it points to never outlives the outermost call.
thread_local constinit Teardown* running = nullptr;

}  // namespace

void destroyInTurn(void* object, Destroy destroy) noexcept {
    Teardown*& current = running;
    if (current != nullptr) {
        current->destroy(object, destroy);
        return;
    }
    Teardown outermost;
    current = &outermost;
    outermost.run(object, destroy);
    current = nullptr;
}

}  // namespace velk::core
