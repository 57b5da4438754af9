#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <typeinfo>

class proxyAutoParaListC;
class proxyAutoTypeCastC;
class proxyObjectC;

/// In `proxyMemberDescS::kind`, beside the call kinds: the member's invoker
/// takes no conversion flag. Such a member is a method like any other.
inline constexpr unsigned proxyKindPlainInvoker = 0x400;

/// One type of a member's signature, by the compiler's run-time type identity.
struct proxySignatureEntryS {
    std::type_info const* type;
    /// The same type again.
    std::type_info const* sameType;
    std::uint64_t reserved;
};

/// Unpacks the arguments and calls the member. `self` is the object as
/// `proxyMemberDescListS::castFn` returned it.
using proxyInvokerT = void (*)(void* self, proxyAutoParaListC& args, proxyAutoTypeCastC& result,
                               bool convert);
using proxyPlainInvokerT = void (*)(void* self, proxyAutoParaListC& args,
                                    proxyAutoTypeCastC& result);

/// One member of a script class. A table of them ends with an entry that is
/// zero throughout. Entries may share a name and differ in kind or count.
struct proxyMemberDescS {
    /// NUL-terminated; the empty name is the default member.
    char const* name;
    /// Call kinds that the member answers to, and `proxyKindPlainInvoker`.
    std::uint32_t kind;
    /// Number of arguments; a put counts its value as the last one.
    std::int32_t argCount;
    union {
        proxyInvokerT invoker;
        /// In an entry with `proxyKindPlainInvoker`.
        proxyPlainInvokerT plainInvoker;
    };
    /// The member function's own type, then its parameter types; the list ends
    /// with a zero entry.
    proxySignatureEntryS const* (*signature)();
    char const* sourceFile;
    std::int32_t line;
    std::int32_t reserved;
};

/// The type-information record of a script class: one static object per class,
/// filled once and then only read.
struct proxyMemberDescListS {
    char const* className;
    /// The object as this class.
    void* (*castFn)(proxyObjectC*);
    /// The parent records, ended by null.
    proxyMemberDescListS const* const* bases;
    proxyMemberDescS const* members;
    /// The name by which scripts create the class, or null.
    char const* scriptName;
    std::uint32_t classFlags;
    /// A new instance with reference count 0; null when scripts cannot make one.
    proxyObjectC* (*creator)();
    char const* sourceFile;
    std::int32_t line;
};

static_assert(sizeof(void*) != 8 || (sizeof(proxySignatureEntryS) == 24 &&
                                     offsetof(proxySignatureEntryS, sameType) == 8 &&
                                     offsetof(proxySignatureEntryS, reserved) == 16));
static_assert(std::is_standard_layout_v<proxyMemberDescS>);
static_assert(sizeof(void*) != 8 ||
              (sizeof(proxyMemberDescS) == 48 && offsetof(proxyMemberDescS, kind) == 8 &&
               offsetof(proxyMemberDescS, argCount) == 12 &&
               offsetof(proxyMemberDescS, invoker) == 16 &&
               offsetof(proxyMemberDescS, signature) == 24 &&
               offsetof(proxyMemberDescS, sourceFile) == 32 &&
               offsetof(proxyMemberDescS, line) == 40));
static_assert(std::is_standard_layout_v<proxyMemberDescListS>);
static_assert(sizeof(void*) != 8 ||
              (sizeof(proxyMemberDescListS) == 72 && offsetof(proxyMemberDescListS, castFn) == 8 &&
               offsetof(proxyMemberDescListS, bases) == 16 &&
               offsetof(proxyMemberDescListS, members) == 24 &&
               offsetof(proxyMemberDescListS, scriptName) == 32 &&
               offsetof(proxyMemberDescListS, classFlags) == 40 &&
               offsetof(proxyMemberDescListS, creator) == 48 &&
               offsetof(proxyMemberDescListS, sourceFile) == 56 &&
               offsetof(proxyMemberDescListS, line) == 64));
