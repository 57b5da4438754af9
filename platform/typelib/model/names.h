/// Names of types and members: comparison without regard to case, hashing, lookup.
#pragma once

#include <atomic>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/typelib/model/model.h"

namespace velk::typelib {

/// `name` with the letters of the Latin, Greek and Cyrillic blocks in lower case.
std::u16string folded(Text name);
bool sameName(Text left, Text right);

/// A value that is made on first use. Thread-safe.
template <typename T>
class Lazy {
  public:
    /// The value, which the first caller makes; after a failure the next one does.
    template <typename Make>
    T const& get(Make&& make) const {
        if (!isMade_.load(std::memory_order_acquire)) {
            std::lock_guard const guard(lock_);
            if (!value_) value_.emplace(make());
            isMade_.store(true, std::memory_order_release);
        }
        return *value_;
    }

  private:
    mutable std::mutex lock_;
    mutable std::atomic<bool> isMade_{false};
    mutable std::optional<T> value_;
};

/// A member of a type: a function or a variable of the type's own.
struct MemberPlace {
    bool isVariable = false;
    std::size_t index = 0;
};

/// The members of one type by name and by identifier. Within one name or
/// identifier the order is that of the type, functions first.
class MemberIndex {
  public:
    explicit MemberIndex(TypeModel const& type);

    std::vector<MemberPlace> const& named(std::u16string const& foldedName) const;
    std::vector<MemberPlace> const& identified(MEMBERID id) const;

  private:
    std::unordered_map<std::u16string, std::vector<MemberPlace>> byName_;
    std::unordered_map<MEMBERID, std::vector<MemberPlace>> byId_;
};

/// Where names occur in a library.
class LibraryIndex {
  public:
    struct Occurrence {
        std::size_t type = 0;
        MEMBERID member = MEMBERID_NIL;  ///< MEMBERID_NIL for the type itself
        Text spelling;
    };

    explicit LibraryIndex(LibraryModel const& model);

    /// Types and members of a name, in the order of the library.
    std::vector<Occurrence> const& named(std::u16string const& foldedName) const;
    /// The index of the type of an identifier; the number of types where there is none.
    std::size_t identified(REFGUID id) const;

  private:
    struct GuidHash {
        std::size_t operator()(GUID const& id) const noexcept;
    };

    std::unordered_map<std::u16string, std::vector<Occurrence>> byName_;
    std::unordered_map<GUID, std::size_t, GuidHash> byId_;
    std::size_t typeCount_;
};

}  // namespace velk::typelib
