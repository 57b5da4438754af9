#pragma once

#include <atomic>
#include <cstdint>
#include <vector>

#include "host/host.h"

namespace velk::core {

/// What a member's parameter takes, as far as it matters for choosing between
/// overloads.
enum class ParameterKind : std::uint8_t { any, boolean, integer, floating, text, object };

/// One entry of a class's member table, ready to be called.
struct IndexedMember {
    proxyMemberDescS const* member;
    proxyMemberDescListS const* owner;  ///< the class whose table it stands in
    std::uint32_t kinds;                ///< call-kind bits only
    std::int32_t argCount;
    std::uint32_t level;           ///< 0 in the class itself, 1 in its parents, ...
    std::uint32_t next;            ///< the next entry of the same name, or `noMember`
    std::uint32_t firstParameter;  ///< into the index's list of parameter kinds
    bool takesConvertFlag;
};

enum class MemberMatch {
    found,
    unknownName,    ///< no member of this name answers the call kind
    wrongArgCount,  ///< members of this name do, but not with so many arguments
};

struct MemberChoice {
    IndexedMember const* member = nullptr;
    MemberMatch match = MemberMatch::unknownName;
};

/// All members of a class and its parents by name, read from the class's
/// record once. Immutable afterwards, so any thread may read it without a lock.
///
/// Which member a call means is decided in this order:
/// 1. the name, without regard to ASCII case;
/// 2. the call kind (a common bit) and the argument count; a class hides what
///    its parents declare for the same name, kind and count;
/// 3. among what is left at one level, the first whose parameters are of the
///    arguments' own types, else the first whose parameters the arguments can
///    be read as, else the first. "First" puts methods before properties, then
///    follows the table.
class MemberIndex {
  public:
    static constexpr std::uint32_t noMember = UINT32_MAX;

    explicit MemberIndex(proxyMemberDescListS const* record);
    MemberIndex(MemberIndex const&) = delete;
    MemberIndex& operator=(MemberIndex const&) = delete;

    proxyMemberDescListS const* record() const noexcept { return record_; }

    /// False when the memory of the record now holds another class, because
    /// its module was unloaded and another one came to lie there.
    bool stillDescribes(proxyMemberDescListS const& record) const noexcept;

    /// Whether the index was made from this record, or from it as a parent.
    bool reads(proxyMemberDescListS const* record) const noexcept;

    MemberChoice find(mzComStringC const& name, unsigned callKind,
                      mzComVariantArrayC const& args) const;

    void retain() noexcept { references_.fetch_add(1, std::memory_order_relaxed); }
    void release() noexcept {
        if (references_.fetch_sub(1, std::memory_order_acq_rel) == 1) {
            delete this;
        }
    }

  private:
    ~MemberIndex() = default;

    struct Slot {
        std::uint32_t hash = 0;
        std::uint32_t first = noMember;
    };

    void collect(proxyMemberDescListS const* record, std::uint32_t level);
    void link();
    void readSignatures();
    std::uint32_t firstOf(mzComStringC const& name) const noexcept;
    std::uint32_t firstMatch(std::uint32_t at, unsigned callKind, int count,
                             std::uint32_t level) const noexcept;
    IndexedMember const* choose(std::uint32_t first, unsigned callKind,
                                mzComVariantArrayC const& args) const;

    proxyMemberDescListS const* record_;
    std::vector<proxyMemberDescListS const*> records_;  // the record and its parents
    char const* className_;
    proxyMemberDescS const* table_;
    std::vector<IndexedMember> members_;
    std::vector<ParameterKind> parameters_;
    std::vector<Slot> slots_;
    std::atomic<std::uint32_t> references_{1};
};

}  // namespace velk::core
