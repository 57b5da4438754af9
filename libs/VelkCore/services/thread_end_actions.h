#pragma once

#include <utility>
#include <vector>

namespace velk::core {

/// What a thread has to do at its end; the destructor does it.
class ThreadEndActions {
  public:
    ThreadEndActions() = default;
    ThreadEndActions(ThreadEndActions const&) = delete;
    ThreadEndActions& operator=(ThreadEndActions const&) = delete;
    ~ThreadEndActions() {
        while (!actions_.empty()) {
            auto const [action, value] = actions_.back();
            actions_.pop_back();
            action(value);
        }
    }

    void add(void (*action)(void*), void* value) { actions_.emplace_back(action, value); }

  private:
    std::vector<std::pair<void (*)(void*), void*>> actions_;
};

}  // namespace velk::core
