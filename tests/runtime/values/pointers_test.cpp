#include <climits>
#include <cstring>
#include <thread>

#include <gtest/gtest.h>

#include "counting_object.h"
#include "host/diagnostics.h"
#include "host/dispatch_client.h"
#include "host/exception.h"
#include "host/execute_exception.h"

// Who owns what: pointers, texts, clients of objects and exceptions.

namespace {

TEST(ComPtr, EveryPointerHoldsOneReference) {
    CountingDispatch first, second;
    {
        mzComPtrC const one(&first);
        mzComPtrC two = one;
        EXPECT_EQ(first.references, 2u);
        mzComPtrC three(std::move(two));
        EXPECT_EQ(first.references, 2u);
        EXPECT_FALSE(two.isValid());
        three.attach(&second);
        EXPECT_EQ(first.references, 1u);
        three.attach(&second);
        EXPECT_EQ(second.references, 1u);
        EXPECT_EQ(mzComPtrC(one).detach(), 1u) << "the count that is left";
        EXPECT_EQ(three.detach(), 0u);
        EXPECT_EQ(three.detach(), 0u);
        EXPECT_FALSE(three.isValid());
    }
    EXPECT_EQ(first.references, 0u);
}

TEST(ComPtr, TypedPointersAskTheObject) {
    CountingDispatch dispatch;
    CountingDispatch plain(mzIUnknown::interfaceId());
    mzComPtrT<mzIDispatch> pointer;
    pointer = mzComPtrC(&dispatch);
    mzComPtrT<mzIDispatch> const& same = pointer;
    pointer = same;
    pointer = pointer.iface();
    EXPECT_EQ(pointer.iface(), &dispatch);
    EXPECT_EQ(dispatch.references, 1u);
    dispatch.onRelease = [&] { EXPECT_FALSE(pointer.isValid()) << "sees the new value"; };
    pointer = mzComPtrC(&plain);
    EXPECT_EQ(dispatch.references + plain.references, 0u);
}

long long holders() {
    return mzLiveCount(mzLiveKindE::bstrHolder);
}

TEST(BstrHolder, CopiesShareOneString) {
    long long const before = holders();
    {
        mzBstrHolderC first(OLESTR("text"));
        mzBstrHolderC second = first;
        EXPECT_EQ(first.get(), second.get());
        EXPECT_EQ(holders(), before + 1);
        mzBstrHolderC moved(std::move(second));
        mzBstrHolderC const& same = moved;
        moved = same;
        EXPECT_EQ(moved.length(), 4);
        moved = mzBstrHolderC(OLESTR("three"));
        EXPECT_EQ(moved.length(), 5);
        // They may end on other threads.
        auto const copyOften = [copy = moved] {
            for (int i = 0; i < 1000; ++i) mzBstrHolderC const again = copy;
        };
        std::jthread const other(copyOften);
        copyOften();
        moved = mzBstrHolderC();
    }
    EXPECT_EQ(holders(), before);
}

TEST(BstrHolder, KeepsEveryByteAndNoStringIsNotTheEmptyString) {
    for (auto const& none : {mzBstrHolderC(), mzBstrHolderC(static_cast<OLECHAR const*>(nullptr)),
                             mzBstrHolderC::adopt(nullptr), mzBstrHolderC::copyOf(nullptr)}) {
        EXPECT_TRUE(none.isNull() && none.copy() == nullptr && none.length() == 0);
    }
    for (auto const& empty : {mzBstrHolderC(OLESTR("")), mzComStringC().toBSTR()}) {
        EXPECT_TRUE(!empty.isNull() && empty.length() == 0);
    }
    EXPECT_EQ(mzBstrHolderC(OLESTR("a\0b"), 3).get()[2], OLESTR('b'));
    mzBstrHolderC const zeros(nullptr, 2);
    EXPECT_EQ(std::basic_string_view<OLECHAR>(zeros.get(), 3), (std::basic_string<OLECHAR>(3, 0)));
    mzBstrHolderC const odd = mzBstrHolderC::adopt(SysAllocStringByteLen("abcde", 5));
    mzBstrHolderC const copy = mzBstrHolderC::copyOf(odd.get());
    ASSERT_EQ(SysStringByteLen(copy.get()), 5u);
    EXPECT_EQ(std::memcmp(copy.get(), "abcde", 5), 0);
    EXPECT_NE(copy.get(), odd.get());
    // Two bytes each are more than a BSTR can count.
    EXPECT_THROW(mzBstrHolderC(nullptr, INT_MAX), mzOutOfMemoryC);
    static_assert(std::is_base_of_v<std::bad_alloc, mzOutOfMemoryC>);
    EXPECT_EQ(mzOutOfMemoryC().code(), static_cast<HRESULT>(0x8007000E));
}

TEST(Texts, ComeFromEverySource) {
    unsigned short const utf16[] = {'a', 0x00E4, 0x20AC, 0};
    char const* const utf8 = "a\xc3\xa4\xe2\x82\xac";
    mzComStringC const expected(OLESTR("a\u00e4\u20ac"));
    EXPECT_EQ(mzComStringC(utf16), expected);
    EXPECT_EQ(mzComStringC::fromLocal8BitW(utf16, -1), expected);
    EXPECT_EQ(mzComStringC::fromLocal8BitW(utf16, 2), mzComStringC(OLESTR("a\u00e4")));
    EXPECT_EQ(mzComStringC::fromUtf8(utf8, -1), expected);
    EXPECT_EQ(mzComStringC::fromUtf8(utf8, 3), mzComStringC("a\xe4")) << "Latin-1";
    EXPECT_EQ(mzComStringC::fromUtf8("x\xffy", 3), mzComStringC(OLESTR("x\ufffdy")));
    EXPECT_EQ(mzComStringC(QString::fromUtf8(utf8)), expected);
    EXPECT_EQ(mzComStringC(mzBstrHolderC(OLESTR("a\u00e4\u20ac"))), expected);
    for (auto const& none :
         {mzComStringC(static_cast<char const*>(nullptr)),
          mzComStringC(static_cast<unsigned short const*>(nullptr)),
          mzComStringC::fromBSTR(static_cast<BSTR>(nullptr)),
          mzComStringC::fromBSTR(mzBstrHolderC()), mzComStringC::fromUtf8(nullptr, -1),
          mzComStringC::fromUtf8(nullptr, 4), mzComStringC::fromLocal8BitW(nullptr, 3)}) {
        EXPECT_TRUE(none.isEmpty());
    }
    EXPECT_EQ(mzComStringC("x").compare(nullptr, caseCompareExact), 1);
}

TEST(Texts, GoToEveryForm) {
    mzComStringC const text(OLESTR("Aa\u00e4\u20ac"));
    EXPECT_EQ(text.toUtf8(), "Aa\xc3\xa4\xe2\x82\xac");
    EXPECT_EQ(text.toAscii(), "Aa??");
    unsigned short const odd[] = {'a', 0, 0xD800, 'b', 0xD83D, 0xDE00};
    mzComStringC const whole = mzComStringC::fromLocal8BitW(odd, 6);
    EXPECT_EQ(whole.toUtf8(), std::string("a\0?b\xf0\x9f\x98\x80", 8));
    EXPECT_EQ(mzComStringC::fromBSTR(whole.toBSTR()).toLocal8BitW(),
              (std::basic_string<unsigned short>(odd, 6)));
    mzComStringC const name("Count");
    QString const message = "Member '" + name + "' not found" + name;
    EXPECT_EQ(message, QStringLiteral("Member 'Count' not foundCount"));
    EXPECT_EQ(name, mzComStringC("Count")) << "an operand";
}

TEST(DispatchClient, PassesTheCallOnAndDropsTheException) {
    CountingDispatch object;
    mzIDispatchC client(&object);
    mzComVariantArrayC args;
    args << 1 << 2;
    mzComVariantC result;
    unsigned code = mzSuccess;
    object.onInvoke = [&](mzComVariantC& answer, mzComPtrT<mzIException>& exception) {
        answer.set(1);
        exception = mzComCreateException("test", "failed", {});
        return code;
    };
    EXPECT_EQ(client.invokeByName("Item", mzCallPropertyPut, args, result), mzSuccess);
    EXPECT_EQ(client.invokeByName(nullptr, mzCallMethod, {}, result), mzSuccess);
    EXPECT_EQ(client.call("Add", args).getType(), mzTypeInteger);
    code = mzFailure;
    EXPECT_EQ(client.call("Add", {}).getType(), mzTypeEmpty);
    EXPECT_EQ(client.getProperty("Count", result), mzFailure);
    EXPECT_EQ(object.calls, "Item/4/2 /1/0 Add/1/2 Add/1/0 Count/2/0 ");
    object.onInvoke = [&](mzComVariantC&, auto&) {
        client = mzIDispatchC();
        EXPECT_EQ(object.references, 1u) << "the object outlives the call";
        return mzSuccess;
    };
    EXPECT_EQ(client.getProperty("Close", result), mzSuccess);
    EXPECT_EQ(object.references, 0u);
    CountingDispatch plain(mzIUnknown::interfaceId());
    for (mzIDispatchC const& unbound : {client, mzIDispatchC(&plain), mzIDispatchC(nullptr)}) {
        EXPECT_FALSE(unbound.isValid());
        EXPECT_EQ(unbound.invokeByName("Count", mzCallMethod, {}, result), mzFailure);
        EXPECT_EQ(unbound.call("Count", {}).getType(), mzTypeEmpty);
    }
    EXPECT_EQ(plain.references, 0u);
}

/// An exception object that is its own cause.
class Ring : public mzIException {
  public:
    unsigned queryInterface(mzIIDS const&, mzComPtrC&) override { return mzFailure; }
    unsigned addRef() override { return 1; }
    unsigned release() override { return 1; }
    mzComStringC source() const override { return {}; }
    mzComStringC description() const override { return "again"; }
    mzComPtrT<mzIException> inner() const override { return const_cast<Ring*>(this); }
};

TEST(Exceptions, TellTheirCauses) {
    auto const cause = mzComCreateException("inner", "cause", {});
    auto const silent = mzComCreateException("source only", "", cause);
    auto const outer = mzComCreateException("Invoke DSP", "failed", silent);
    EXPECT_EQ(outer->source(), mzComStringC("Invoke DSP"));
    EXPECT_EQ(outer->description(), mzComStringC("failed"));
    EXPECT_EQ(outer->inner().iface(), silent.iface());
    mzComPtrT<mzIException> const again{mzComPtrC(outer.iface())};
    EXPECT_EQ(again.iface(), outer.iface());
    auto const textOf = [](mzComPtrT<mzIException> const& exception) {
        return mzComExceptionErrorString(exception, "+").toUtf8();
    };
    EXPECT_EQ(textOf(outer), "failed+cause");
    EXPECT_EQ(textOf(silent), "cause");
    EXPECT_EQ(textOf({}), "+") << "nothing to tell";
    EXPECT_EQ(textOf(mzComCreateException("s", "", {})), "+");
    Ring ring;
    EXPECT_EQ(textOf(&ring).substr(0, 12), "again+again+") << "a ring of causes has an end";
    EXPECT_THROW(mzThrowAutoTypeCastException(), mzAutoTypeCastExceptionC);
    try {
        mzThrowExecuteException("Dictionary is in read-only mode!", "addObj", 7);
    } catch (mzExecuteExceptionC const& error) {
        EXPECT_EQ(error.message(), mzComStringC("Dictionary is in read-only mode!"));
        EXPECT_EQ(error.operation(), mzComStringC("addObj"));
        EXPECT_EQ(error.code(), 7);
        EXPECT_STREQ(error.what(), "Dictionary is in read-only mode!");
    }
}

}  // namespace
