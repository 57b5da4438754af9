#include "port/stack_room.h"

#include <fcntl.h>
#include <pthread.h>
#include <sys/mman.h>
#include <unistd.h>

#include <iterator>

namespace velk::adapter {
namespace {

/// Reads the process's list of mappings, a line each: the hexadecimal numbers
/// of its beginning and its end, with '-' between them and a space after them.
/// Uses no memory but the little here: the stack in question may be small.
class MappingList {
  public:
    MappingList() noexcept : file_(open("/proc/self/maps", O_RDONLY | O_CLOEXEC)) {}
    ~MappingList() {
        if (file_ >= 0) close(file_);
    }
    MappingList(MappingList const&) = delete;
    MappingList& operator=(MappingList const&) = delete;

    /// False at the end of the list.
    bool next(StackRange& mapping) noexcept {
        mapping.lowest = number();
        mapping.end = number();
        int symbol = take();
        while (symbol >= 0 && symbol != '\n') symbol = take();
        return symbol == '\n';
    }

  private:
    /// The number that ends with the next symbol that is no digit.
    std::uintptr_t number() noexcept {
        std::uintptr_t value = 0;
        for (;;) {
            int const symbol = take();
            bool const isLetter = symbol >= 'a' && symbol <= 'f';
            if (!isLetter && (symbol < '0' || symbol > '9')) return value;
            value = value * 16 + static_cast<unsigned>(isLetter ? symbol - 'a' + 10 : symbol - '0');
        }
    }

    /// The next symbol, negative at the end.
    int take() noexcept {
        if (place_ == size_) {
            place_ = 0;
            size_ = file_ >= 0 ? read(file_, buffer_, sizeof buffer_) : 0;
            if (size_ <= 0) {
                size_ = 0;
                return -1;
            }
        }
        return buffer_[place_++];
    }

    int const file_;
    char buffer_[512];
    ssize_t place_ = 0;
    ssize_t size_ = 0;
};

/// A stack that the program made, as it was seen from an address. Such stacks
/// go and others come in their place, of other sizes: no other address is
/// trusted than those near it.
struct SeenStack {
    static constexpr std::uintptr_t near = std::uintptr_t{64} * 1024;

    StackRange range;
    std::uintptr_t from;

    bool mayHold(std::uintptr_t address) const noexcept {
        return range.holds(address) && address + near > from && address < from + near;
    }
};

// A program that switches between a few stacks finds each of them again.
struct SeenStacks {
    SeenStack stacks[4];
    unsigned oldest;
};
thread_local constinit SeenStacks seen{};

/// False when some of it has been given back to the system.
bool isAllThere(std::uintptr_t lowest, std::uintptr_t end) noexcept {
    // Without an effect on memory that stands for no file.
    return msync(reinterpret_cast<void*>(lowest), end - lowest, MS_ASYNC) == 0;
}

}  // namespace

StackRange ownStack() noexcept {
    pthread_attr_t attributes;
    if (pthread_getattr_np(pthread_self(), &attributes) != 0) return {};
    void* lowest = nullptr;
    std::size_t size = 0;
    std::size_t guard = 0;
    bool const known = pthread_attr_getstack(&attributes, &lowest, &size) == 0 &&
                       pthread_attr_getguardsize(&attributes, &guard) == 0;
    pthread_attr_destroy(&attributes);
    if (!known) return {};
    auto const start = reinterpret_cast<std::uintptr_t>(lowest);
    return {start + guard, start + size};
}

StackRange stackAround(std::uintptr_t address) noexcept {
    // The system shows neighbours that are used alike as one.
    MappingList mappings;
    StackRange mapping{.isExact = false};
    while (mappings.next(mapping)) {
        if (mapping.holds(address)) return mapping;
    }
    return {};
}

StackRange rememberedStackAround(std::uintptr_t address) noexcept {
    for (auto const& stack : seen.stacks) {
        if (stack.mayHold(address) && isAllThere(stack.range.lowest, address)) return stack.range;
    }
    SeenStack const now{stackAround(address), address};
    seen.stacks[seen.oldest++ % std::size(seen.stacks)] = now;
    return now.range;
}

}  // namespace velk::adapter
