#include <cstring>

#include <gtest/gtest.h>

#include "host/proxy_member.h"

namespace {

// The builders want only member functions; a script object is not needed.
class Account {
  public:
    int add(int amount, mzComStringC const& note) {
        last = note;
        return total += amount;
    }
    void setTotal(mzComVariantC value) { total = value.getInt(); }
    mzComStringC note() const { return last; }
    double half() noexcept { return total / 2.0; }

    int total = 0;
    mzComStringC last;
};

proxyMemberDescS const table[] = {proxyMethod<&Account::add>("Add", "account.cpp", 10),
                                  proxyPropertyPut<&Account::setTotal>("Total", "account.cpp", 11),
                                  proxyPropertyGet<&Account::note>("", "account.cpp", 12),
                                  proxyPlainMethod<&Account::half>("Half", "account.cpp", 13),
                                  proxyMembersEnd()};

TEST(MemberTable, DescribesEachMember) {
    static constexpr struct {
        char const* name;
        unsigned kind;
        int argCount;
    } rows[] = {{"Add", 1, 2}, {"Total", 4, 1}, {"", 2, 0}, {"Half", 0x401, 0}};
    for (int i = 0; i < 4; ++i) {
        EXPECT_STREQ(table[i].name, rows[i].name);
        EXPECT_EQ(table[i].kind, rows[i].kind);
        EXPECT_EQ(table[i].argCount, rows[i].argCount);
        EXPECT_STREQ(table[i].sourceFile, "account.cpp");
        EXPECT_EQ(table[i].line, 10 + i);
    }
    static constexpr char zeros[sizeof(proxyMemberDescS)] = {};
    EXPECT_EQ(std::memcmp(&table[4], zeros, sizeof zeros), 0);
}

TEST(MemberTable, SignatureNamesTheFunctionThenItsParameters) {
    proxySignatureEntryS const* const entries = table[0].signature();
    EXPECT_EQ(*entries[0].type, typeid(int(Account::*)(int, mzComStringC const&)));
    EXPECT_EQ(*entries[1].type, typeid(int));
    EXPECT_EQ(*entries[2].type, typeid(mzComStringC));
    EXPECT_EQ(entries[2].type, entries[2].sameType);
    EXPECT_EQ(entries[2].reserved, 0u);
    EXPECT_EQ(entries[3].type, nullptr);
    EXPECT_EQ(table[0].signature(), entries);
}

TEST(MemberTable, InvokersConvertArgumentsAndStoreTheResult) {
    Account account;
    mzComVariantArrayC args;
    args << "40" << 2;
    proxyAutoParaListC list(args);
    mzComVariantC value;
    auto result = proxyAutoTypeCastC::result(value);
    table[0].invoker(&account, list, result, true);
    EXPECT_EQ(value.getInt(), 40);
    EXPECT_EQ(account.last, mzComStringC("2"));
    proxyAutoParaListC none{mzComVariantArrayC()};
    table[3].plainInvoker(&account, none, result);
    EXPECT_EQ(value.getDouble(), 20.0);
}

TEST(MemberTable, ArgumentsThatCannotBeReadEndTheCall) {
    Account account;
    mzComVariantArrayC words;
    words << "many"
          << "note";
    mzComVariantArrayC tooFew;
    tooFew << 1;
    mzComVariantC value;
    auto result = proxyAutoTypeCastC::result(value);
    for (mzComVariantArrayC const& args : {words, tooFew}) {
        proxyAutoParaListC list(args);
        EXPECT_ANY_THROW(table[0].invoker(&account, list, result, true));
    }
    EXPECT_EQ(account.total, 0);
    EXPECT_EQ(value.getType(), mzTypeEmpty);
}

}  // namespace
