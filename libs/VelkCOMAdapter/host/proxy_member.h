#pragma once

#include <tuple>
#include <type_traits>
#include <utility>

#include "host/auto_para_list.h"
#include "host/codes.h"
#include "host/member_desc.h"

/// Builders of member tables, one line a member:
///
///     static proxyMemberDescS const members[] = {
///         proxyMethod<&Counter::add>("Add", file, 12),
///         proxyPropertyGet<&Counter::value>("Value", file, 13),
///         proxyPropertyPut<&Counter::setValue>("Value", file, 14),
///         proxyMembersEnd()};
///
/// The argument count, the invoker and the signature come from the member
/// function's type. Parameters are of the types that `proxyReadArgument` knows,
/// by value or const reference; the result is void or of a type that
/// `mzComVariantC::set` takes.
namespace proxy_member_detail {

template <class Type>
struct MemberFunction;

template <class Result, class Class, class... Parameters>
struct MemberFunction<Result (Class::*)(Parameters...)> {
    using ResultType = Result;
    using ClassType = Class;
    using Arguments = std::tuple<std::decay_t<Parameters>...>;
    static constexpr int argCount = sizeof...(Parameters);

    static proxySignatureEntryS const* signature() {
        static proxySignatureEntryS const entries[] = {
            {&typeid(Result(Class::*)(Parameters...)), &typeid(Result(Class::*)(Parameters...)), 0},
            {&typeid(Parameters), &typeid(Parameters), 0}...,
            {nullptr, nullptr, 0}};
        return entries;
    }
};

template <class Result, class Class, class... Parameters>
struct MemberFunction<Result (Class::*)(Parameters...) const>
    : MemberFunction<Result (Class::*)(Parameters...)> {};

template <class Result, class Class, class... Parameters>
struct MemberFunction<Result (Class::*)(Parameters...) noexcept>
    : MemberFunction<Result (Class::*)(Parameters...)> {};

template <class Result, class Class, class... Parameters>
struct MemberFunction<Result (Class::*)(Parameters...) const noexcept>
    : MemberFunction<Result (Class::*)(Parameters...)> {};

/// A static function: the object that it is called on does not matter.
template <class Result, class... Parameters>
struct MemberFunction<Result (*)(Parameters...)> {
    using ResultType = Result;
    using ClassType = void;
    using Arguments = std::tuple<std::decay_t<Parameters>...>;
    static constexpr int argCount = sizeof...(Parameters);

    static proxySignatureEntryS const* signature() {
        static proxySignatureEntryS const entries[] = {
            {&typeid(Result(*)(Parameters...)), &typeid(Result(*)(Parameters...)), 0},
            {&typeid(Parameters), &typeid(Parameters), 0}...,
            {nullptr, nullptr, 0}};
        return entries;
    }
};

template <auto member, class... Values>
decltype(auto) callMember([[maybe_unused]] void* self, Values&&... values) {
    if constexpr (std::is_member_function_pointer_v<decltype(member)>) {
        auto* const object =
            static_cast<typename MemberFunction<decltype(member)>::ClassType*>(self);
        return (object->*member)(std::forward<Values>(values)...);
    } else {
        return member(std::forward<Values>(values)...);
    }
}

template <auto member, std::size_t... indices>
void invokeMember(void* self, proxyAutoParaListC& args, proxyAutoTypeCastC& result, bool convert,
                  std::index_sequence<indices...>) {
    using Function = MemberFunction<decltype(member)>;
    using Arguments = typename Function::Arguments;
    [[maybe_unused]] auto const unpack = [&]<class T>(int index) {
        return args[index].get<T>(convert);
    };
    // Braces fix the order: the first argument that cannot be read is reported.
    Arguments values{
        unpack.template operator()<std::tuple_element_t<indices, Arguments>>(int(indices))...};
    auto const call = [self](auto&&... all) -> decltype(auto) {
        return callMember<member>(self, std::forward<decltype(all)>(all)...);
    };
    if constexpr (std::is_void_v<typename Function::ResultType>) {
        std::apply(call, std::move(values));
    } else {
        result.set<std::decay_t<typename Function::ResultType>>(
            std::apply(call, std::move(values)));
    }
}

template <auto member>
void invoke(void* self, proxyAutoParaListC& args, proxyAutoTypeCastC& result, bool convert) {
    invokeMember<member>(self, args, result, convert,
                         std::make_index_sequence<MemberFunction<decltype(member)>::argCount>{});
}

template <auto member>
void invokePlain(void* self, proxyAutoParaListC& args, proxyAutoTypeCastC& result) {
    invoke<member>(self, args, result, true);
}

template <auto member>
constexpr proxyMemberDescS describe(char const* name, unsigned kind, char const* sourceFile,
                                    int line) {
    using Function = MemberFunction<decltype(member)>;
    return {name, kind, Function::argCount, {&invoke<member>}, &Function::signature, sourceFile,
            line, 0};
}

}  // namespace proxy_member_detail

/// A method. `sourceFile` and `line` are the place that its descriptor publishes.
template <auto member>
constexpr proxyMemberDescS proxyMethod(char const* name, char const* sourceFile, int line) {
    return proxy_member_detail::describe<member>(name, mzCallMethod, sourceFile, line);
}

/// A property read.
template <auto member>
constexpr proxyMemberDescS proxyPropertyGet(char const* name, char const* sourceFile, int line) {
    return proxy_member_detail::describe<member>(name, mzCallPropertyGet, sourceFile, line);
}

/// A property write; its last parameter is the value.
template <auto member>
constexpr proxyMemberDescS proxyPropertyPut(char const* name, char const* sourceFile, int line) {
    return proxy_member_detail::describe<member>(name, mzCallPropertyPut, sourceFile, line);
}

/// A member that answers to several call kinds (bits of `mzCall...`).
template <auto member>
constexpr proxyMemberDescS proxyMember(char const* name, unsigned kind, char const* sourceFile,
                                       int line) {
    return proxy_member_detail::describe<member>(name, kind, sourceFile, line);
}

/// A method without arguments, static or not, whose invoker takes no conversion
/// flag (kind 0x401).
template <auto member>
constexpr proxyMemberDescS proxyPlainMethod(char const* name, char const* sourceFile, int line) {
    using Function = proxy_member_detail::MemberFunction<decltype(member)>;
    static_assert(Function::argCount == 0);
    proxyMemberDescS entry =
        proxy_member_detail::describe<member>(name, mzCallMethod, sourceFile, line);
    entry.kind |= proxyKindPlainInvoker;
    entry.plainInvoker = &proxy_member_detail::invokePlain<member>;
    return entry;
}

/// The entry that ends a table.
constexpr proxyMemberDescS proxyMembersEnd() {
    return {nullptr, 0, 0, {nullptr}, nullptr, nullptr, 0, 0};
}

/// `castFn` of a class that derives from `proxyObjectC`.
template <class Class>
void* proxyCastTo(proxyObjectC* object) {
    return static_cast<Class*>(object);
}

/// `creator` of a class that scripts can make; throws `std::bad_alloc`.
template <class Class>
proxyObjectC* proxyCreate() {
    return new Class();
}
