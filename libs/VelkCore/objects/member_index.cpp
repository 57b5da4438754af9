#include "member_index.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <string_view>
#include <typeinfo>

namespace velk::core {

namespace {

constexpr std::uint32_t callKinds = mzCallMethod | mzCallPropertyGet | mzCallPropertyPut;

constexpr std::uint32_t fold(std::uint32_t unit) noexcept {
    return unit - 'A' < 26 ? unit + ('a' - 'A') : unit;
}

// FNV-1a over the folded units; names are short.
constexpr std::uint32_t hashStart = 0x811C9DC5;
constexpr std::uint32_t hashStep(std::uint32_t hash, std::uint32_t unit) noexcept {
    return (hash ^ fold(unit)) * 0x01000193;
}

std::uint32_t hashName(std::string_view name) noexcept {
    std::uint32_t hash = hashStart;
    for (unsigned char const unit : name) {
        hash = hashStep(hash, unit);
    }
    return hash;
}

bool sameName(std::string_view left, std::string_view right) noexcept {
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](unsigned char a, unsigned char b) { return fold(a) == fold(b); });
}

bool sameName(QChar const* units, int length, char const* name) noexcept {
    for (int i = 0; i < length; ++i) {
        auto const unit = static_cast<unsigned char>(name[i]);
        // A NUL inside the UTF-16 text is no end; in the 8-bit name it is.
        if (unit == 0 || fold(units[i].unicode()) != fold(unit)) {
            return false;
        }
    }
    return name[length] == 0;
}

ParameterKind parameterKind(std::type_info const* type) noexcept {
    struct Known {
        std::type_info const& type;
        ParameterKind kind;
    };
    static Known const known[] = {
        {typeid(bool), ParameterKind::boolean},
        {typeid(int), ParameterKind::integer},
        {typeid(long), ParameterKind::integer},
        {typeid(unsigned), ParameterKind::integer},
        {typeid(double), ParameterKind::floating},
        {typeid(float), ParameterKind::floating},
        {typeid(mzComStringC), ParameterKind::text},
        {typeid(QString), ParameterKind::text},
        {typeid(char const*), ParameterKind::text},
        {typeid(mzComPtrC), ParameterKind::object},
        {typeid(mzComPtrT<mzIUnknown>), ParameterKind::object},
        {typeid(mzComPtrT<mzIDispatch>), ParameterKind::object},
    };
    for (Known const& entry : known) {
        if (type != nullptr && *type == entry.type) {
            return entry.kind;
        }
    }
    return ParameterKind::any;
}

bool isOwnType(mzComVariantC const& value, ParameterKind kind) noexcept {
    switch (kind) {
        case ParameterKind::any:
            return true;
        case ParameterKind::boolean:
        case ParameterKind::integer:
            return value.getType() == mzTypeInteger;
        case ParameterKind::floating:
            return value.getType() == mzTypeDouble;
        case ParameterKind::text:
            return value.getType() == mzTypeString;
        case ParameterKind::object:
            return value.getType() == mzTypeObject;
    }
    return false;
}

template <typename Target>
bool readsAs(mzComVariantC const& value) {
    Target target{};
    return value.getExt(target) == mzSuccess;
}

bool isReadable(mzComVariantC const& value, ParameterKind kind) {
    switch (kind) {
        case ParameterKind::any:
            return true;
        case ParameterKind::boolean:
            return readsAs<bool>(value);
        case ParameterKind::integer:
            return readsAs<int>(value);
        case ParameterKind::floating:
            return readsAs<double>(value);
        case ParameterKind::text:
            return readsAs<mzComStringC>(value);
        case ParameterKind::object:
            return readsAs<mzComPtrT<mzIUnknown>>(value);
    }
    return false;
}

}  // namespace

MemberIndex::MemberIndex(proxyMemberDescListS const* record)
    : record_(record), className_(record->className), table_(record->members) {
    collect(record, 0);
    std::stable_sort(members_.begin(), members_.end(),
                     [](IndexedMember const& left, IndexedMember const& right) {
                         if (left.level != right.level) {
                             return left.level < right.level;
                         }
                         return (left.kinds & mzCallMethod) > (right.kinds & mzCallMethod);
                     });
    link();
    readSignatures();
}

bool MemberIndex::stillDescribes(proxyMemberDescListS const& record) const noexcept {
    return record.className == className_ && record.members == table_;
}

bool MemberIndex::reads(proxyMemberDescListS const* record) const noexcept {
    return std::find(records_.begin(), records_.end(), record) != records_.end();
}

void MemberIndex::collect(proxyMemberDescListS const* record, std::uint32_t level) {
    // A parent that is reached twice, or a table that names itself, counts once.
    if (record == nullptr || reads(record)) {
        return;
    }
    records_.push_back(record);
    for (auto const* member = record->members; member != nullptr && member->name != nullptr;
         ++member) {
        members_.push_back({member, record, member->kind & callKinds, member->argCount, level,
                            noMember, 0, (member->kind & proxyKindPlainInvoker) == 0});
    }
    for (auto const* base = record->bases; base != nullptr && *base != nullptr; ++base) {
        collect(*base, level + 1);
    }
}

void MemberIndex::link() {
    std::vector<std::uint32_t> last;
    slots_.assign(std::bit_ceil(members_.size() * 2 + 1), Slot{});
    last.assign(slots_.size(), noMember);
    std::size_t const mask = slots_.size() - 1;
    for (std::uint32_t i = 0; i < members_.size(); ++i) {
        char const* const name = members_[i].member->name;
        std::uint32_t const hash = hashName(name);
        std::size_t at = hash & mask;
        while (slots_[at].first != noMember &&
               !sameName(members_[slots_[at].first].member->name, name)) {
            at = (at + 1) & mask;
        }
        if (slots_[at].first == noMember) {
            slots_[at] = {hash, i};
        } else {
            members_[last[at]].next = i;
        }
        last[at] = i;
    }
}

// Only members with a rival of the same name, kind, count and level are asked
// for their signature: for all others it decides nothing.
void MemberIndex::readSignatures() {
    // A member without a list of its own uses the start of the list: "any" for
    // as many parameters as any member has.
    std::int32_t most = 0;
    for (IndexedMember const& member : members_) {
        most = std::max(most, member.argCount);
    }
    parameters_.assign(static_cast<std::size_t>(most), ParameterKind::any);
    for (IndexedMember& member : members_) {
        bool const hasRival = std::ranges::any_of(members_, [&](IndexedMember const& other) {
            return &other != &member && other.level == member.level &&
                   other.argCount == member.argCount && (other.kinds & member.kinds) != 0 &&
                   sameName(other.member->name, member.member->name);
        });
        if (!hasRival || member.member->signature == nullptr || member.argCount <= 0) {
            continue;
        }
        member.firstParameter = static_cast<std::uint32_t>(parameters_.size());
        // The first entry of the list is the member function's own type.
        auto const* entry = member.member->signature();
        for (std::int32_t i = 0; i < member.argCount; ++i) {
            if (entry != nullptr && entry->type != nullptr) {
                ++entry;
            }
            parameters_.push_back(parameterKind(entry != nullptr ? entry->type : nullptr));
        }
    }
}

std::uint32_t MemberIndex::firstOf(mzComStringC const& name) const noexcept {
    QChar const* const units = name.toQString().constData();
    int const length = name.length();
    std::uint32_t hash = hashStart;
    for (int i = 0; i < length; ++i) {
        hash = hashStep(hash, units[i].unicode());
    }
    std::size_t const mask = slots_.size() - 1;
    for (std::size_t at = hash & mask; slots_[at].first != noMember; at = (at + 1) & mask) {
        if (slots_[at].hash == hash &&
            sameName(units, length, members_[slots_[at].first].member->name)) {
            return slots_[at].first;
        }
    }
    return noMember;
}

std::uint32_t MemberIndex::firstMatch(std::uint32_t at, unsigned callKind, int count,
                                      std::uint32_t level) const noexcept {
    for (; at != noMember; at = members_[at].next) {
        IndexedMember const& member = members_[at];
        bool const levelFits = level == noMember || member.level == level;
        if ((member.kinds & callKind) != 0 && member.argCount == count && levelFits) {
            return at;
        }
    }
    return noMember;
}

MemberChoice MemberIndex::find(mzComStringC const& name, unsigned callKind,
                               mzComVariantArrayC const& args) const {
    std::uint32_t const first = firstOf(name);
    std::uint32_t const match = firstMatch(first, callKind, args.size(), noMember);
    if (match == noMember) {
        for (std::uint32_t at = first; at != noMember; at = members_[at].next) {
            if ((members_[at].kinds & callKind) != 0) {
                return {nullptr, MemberMatch::wrongArgCount};
            }
        }
        return {};
    }
    std::uint32_t const rival =
        firstMatch(members_[match].next, callKind, args.size(), members_[match].level);
    if (rival == noMember) {
        return {&members_[match], MemberMatch::found};
    }
    return {choose(match, callKind, args), MemberMatch::found};
}

IndexedMember const* MemberIndex::choose(std::uint32_t first, unsigned callKind,
                                         mzComVariantArrayC const& args) const {
    std::uint32_t const level = members_[first].level;
    auto const firstThat = [&](auto accepts) -> IndexedMember const* {
        for (std::uint32_t at = first; at != noMember;
             at = firstMatch(members_[at].next, callKind, args.size(), level)) {
            ParameterKind const* const parameters = &parameters_[members_[at].firstParameter];
            int i = 0;
            while (i < args.size() && accepts(args.at(i).skipVariable(), parameters[i])) {
                ++i;
            }
            if (i == args.size()) {
                return &members_[at];
            }
        }
        return nullptr;
    };
    if (args.size() > 0) {
        if (auto const* member = firstThat(isOwnType)) {
            return member;
        }
        if (auto const* member = firstThat(isReadable)) {
            return member;
        }
    }
    return &members_[first];
}

}  // namespace velk::core
