/// The list of the typed clients, as the generator gives it to tests.
#pragma once

#include <span>

namespace velk::test {

enum class ListedKind { get, put, method, constant };

struct ListedMember {
    char const* name;
    ListedKind kind;
    int parameters;
    int outParameters;
    bool isGiven;
};

struct ListedClass {
    char const* name;
    char const* base;        ///< null for none
    char const* scriptName;  ///< null for none
    std::span<ListedMember const> members;
};

std::span<ListedClass const> listedClasses();

}  // namespace velk::test
