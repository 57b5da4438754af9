// Late-bound calls by type information and through a standard dispatch, seen
// from the object that is called.

#include <algorithm>
#include <deque>
#include <vector>

#include "code_names.h"
#include "recorder.h"
#include "support/data_table.h"
#include "support/expected_difference.h"

namespace velk::test {
namespace {

ComPtr<IUnknown> dispatchOver(Recorder& recorder, ITypeInfo& type, IUnknown* outer = nullptr) {
    ComPtr<IUnknown> object;
    EXPECT_EQ(CreateStdDispatch(outer, &recorder, &type, object.put()), S_OK);
    return object;
}

// The arguments of a row: values, "&" before those that are passed by reference
// and "&&" before a reference to a VARIANT; `other` is an object, "I4[1 2]" an
// array, "&null" and "&&null" are references to nothing. "put=" and "2=" before a
// value name it by its DISPID.
class Arguments {
  public:
    Arguments(std::string const& cell, Recorder& other) : other_(other) {
        std::vector<VARIANT> positional;
        std::istringstream stream(cell);
        for (std::string token; std::getline(stream >> std::ws, token, ',');) {
            std::size_t const sign = std::min(token.find('='), token.size());
            if (sign == token.size()) {
                positional.push_back(parsed(token));
                continue;
            }
            std::string const name = token.substr(0, sign);
            names_.push_back(name == "put" ? DISPID_PROPERTYPUT : std::stoi(name));
            values_.push_back(parsed(token.substr(sign + 1)));
        }
        values_.insert(values_.end(), positional.rbegin(), positional.rend());
        parameters = {values_.data(), names_.data(), static_cast<UINT>(values_.size()),
                      static_cast<UINT>(names_.size())};
    }

    // What the references hold now, in the order of the row.
    std::string references() const {
        std::string text;
        for (auto const* cell : referenced_) text += " &" + notationOf(*cell);
        return text;
    }

    DISPPARAMS parameters{};

  private:
    VARIANT parsed(std::string const& token) {
        VARIANT value{};
        if (token == "other") {
            value.vt = VT_UNKNOWN;
            value.punkVal = &other_;
        } else if (token.ends_with("&null")) {
            value.vt = VT_BYREF | (token[1] == '&' ? VARTYPE{VT_VARIANT} : VARTYPE{VT_I4});
        } else if (token.starts_with("I4[")) {
            auto& cell = cells_.emplace_back();
            cell->vt = VT_ARRAY | VT_I4;
            std::istringstream stream(token.substr(3));
            std::vector<LONG> const numbers{std::istream_iterator<LONG>(stream), {}};
            cell->parray = SafeArrayCreateVector(VT_I4, 0, static_cast<ULONG>(numbers.size()));
            std::copy(numbers.begin(), numbers.end(), static_cast<LONG*>(cell->parray->pvData));
            value = *cell;
        } else if (token[0] == '&') {
            bool const variant = token[1] == '&';
            auto* const cell =
                &cells_.emplace_back(std::string_view(token).substr(variant ? 2 : 1));
            referenced_.push_back(cell);
            value.vt = static_cast<VARTYPE>(VT_BYREF | (variant ? VARTYPE{VT_VARIANT} : cell->vt));
            value.byref = variant ? static_cast<void*>(cell) : &cell->llVal;
        } else {
            value = *cells_.emplace_back(token);
        }
        return value;
    }

    Recorder& other_;
    std::deque<Value> cells_;
    std::vector<VARIANT const*> referenced_;
    std::vector<VARIANT> values_;
    std::vector<DISPID> names_;
};

WORD flagsOf(std::string const& cell) {
    WORD flags = 0;
    for (auto const& [name, flag] : {std::pair<std::string, WORD>{"method", DISPATCH_METHOD},
                                     {"get", DISPATCH_PROPERTYGET},
                                     {"putref", DISPATCH_PROPERTYPUTREF},
                                     {"put", DISPATCH_PROPERTYPUT}}) {
        if ((" " + cell + " ").find(" " + name + " ") != std::string::npos) flags |= flag;
    }
    return flags;
}

std::string resultText(VARIANT const& result, Recorder& other) {
    if (result.vt == VT_EMPTY) return "";
    if (result.vt != VT_DISPATCH) return ' ' + notationOf(result);
    return result.pdispVal == &other ? " the other" : " a stranger";
}

// The answer to one call, and what it did: "code result | Member(arguments) &reference".
class Call {
  public:
    explicit Call(DataRow const& row)
        : type_(typeNamed(*loadShapes(row["type"] == "IAlone" ? VELK_ALONE_TLB : VELK_SHAPES_TLB),
                          row["type"])) {
        if (row["by"] != "dispatch") return;
        dispatch_ = dispatchOver(recorder_, *type_).query<IDispatch>(IID_IDispatch);
    }

    std::string answer(DataRow const& row) {
        Arguments arguments(row["arguments"], other_);
        recorder_.partner = &other_;
        Value result;
        EXCEPINFO exception{};
        UINT argument = 4711;
        HRESULT const code = invoke(idOf(row["member"]), flagsOf(row["flags"]),
                                    arguments.parameters, &result, exception, argument);
        std::string text = codeName(code);
        if (code == DISP_E_EXCEPTION) text += ' ' + codeName(exception.scode);
        for (BSTR const part : {exception.bstrSource, exception.bstrDescription})
            SysFreeString(part);
        if (argument != 4711) text += " argument " + std::to_string(argument);
        text += resultText(*result, other_) + recorder_.saw + arguments.references();
        VariantClear(&result);
        EXPECT_EQ(other_.references, 1U);
        if (recorder_.references != 1) text += " counted";
        return text;
    }

  private:
    DISPID idOf(std::string const& member) {
        if (member[0] == '#') return std::stoi(member.substr(1));
        Wide name = wide(member);
        LPOLESTR names[] = {name.data()};
        DISPID id = DISPID_UNKNOWN;
        EXPECT_EQ(dispatch_ ? dispatch_->GetIDsOfNames(GUID_NULL, names, 1, 0, &id)
                            : type_->GetIDsOfNames(names, 1, &id),
                  S_OK);
        return id;
    }

    HRESULT invoke(DISPID member, WORD flags, DISPPARAMS& given, VARIANT* result,
                   EXCEPINFO& exception, UINT& argument) {
        if (dispatch_) {
            return dispatch_->Invoke(member, GUID_NULL, 0, flags, &given, result, &exception,
                                     &argument);
        }
        return type_->Invoke(&recorder_, member, flags, &given, result, &exception, &argument);
    }

    Recorder recorder_;
    Recorder other_;
    ComPtr<ITypeInfo> type_;
    ComPtr<IDispatch> dispatch_;
};

TEST(Invoke, ReachesMembers) {
    expectTable("typelib/invoke.tsv", [](DataRow const& row) { return Call(row).answer(row); });
}

class StdDispatch : public testing::Test {
  protected:
    ComPtr<ITypeInfo> type = typeNamed(*loadShapes(), "IRecorder");
    Recorder recorder;
};

TEST_F(StdDispatch, HasOneIdentityAndKeepsItsType) {
    auto const object = dispatchOver(recorder, *type);
    type.reset();
    auto const dispatch = object.query<IDispatch>(IID_IDispatch);
    EXPECT_EQ(recorder.references, 1U);
    EXPECT_EQ(dispatch.query<IUnknown>(IID_IUnknown).get(), object.get());
    void* other = object.get();
    EXPECT_EQ(object->QueryInterface(IID_ITypeInfo, &other), E_NOINTERFACE);
    EXPECT_EQ(other, nullptr);
    UINT count = 0;
    EXPECT_EQ(dispatch->GetTypeInfoCount(&count), S_OK);
    EXPECT_EQ(count, 1U);
    ASSERT_EQ(dispatch->GetTypeInfo(0, 0, type.put()), S_OK);
    EXPECT_EQ(nameOf(*type), "IRecorder");
    ITypeInfo* none = type.get();
    EXPECT_EQ(dispatch->GetTypeInfo(1, 0, &none), DISP_E_BADINDEX);
    EXPECT_EQ(none, nullptr);
}

// The recorder stands outside: its count and its interfaces are those that a
// client of the inner IDispatch sees.
TEST_F(StdDispatch, DelegatesToItsOuterObject) {
    auto const inner = dispatchOver(recorder, *type, &recorder);
    EXPECT_EQ(recorder.references, 1U);
    auto const dispatch = inner.query<IDispatch>(IID_IDispatch);
    EXPECT_NE(static_cast<IUnknown*>(dispatch.get()), &recorder);
    expectDifference("standard-dispatch-aggregation", [&] {
        EXPECT_EQ(recorder.references, 2U);
        auto const identity = dispatch.query<IUnknown>(IID_IUnknown);
        EXPECT_EQ(identity.get(), &recorder);
        EXPECT_EQ(recorder.references, 3U);
    });
    // The inner identity answers for itself.
    ULONG const before = recorder.references;
    EXPECT_EQ(inner.query<IUnknown>(IID_IUnknown).get(), inner.get());
    EXPECT_EQ(recorder.references, before);
}

TEST_F(StdDispatch, RefusesWhatIsMissing) {
    IUnknown* none = nullptr;
    EXPECT_EQ(CreateStdDispatch(nullptr, nullptr, type.get(), &none), E_INVALIDARG);
    EXPECT_EQ(CreateStdDispatch(nullptr, &recorder, nullptr, &none), E_INVALIDARG);
    EXPECT_EQ(CreateStdDispatch(nullptr, &recorder, type.get(), nullptr), E_INVALIDARG);
    EXPECT_EQ(none, nullptr);
    auto const object = dispatchOver(recorder, *type);
    auto const dispatch = object.query<IDispatch>(IID_IDispatch);
    Wide name = OLESTR("Add");
    LPOLESTR names[] = {name.data()};
    DISPID member = 0;
    DISPPARAMS empty{};
    auto const invoke = [&](REFIID riid, DISPPARAMS* given) {
        return dispatch->Invoke(1, riid, 0, DISPATCH_METHOD, given, nullptr, nullptr, nullptr);
    };
    EXPECT_EQ(dispatch->GetIDsOfNames(IID_IDispatch, names, 1, 0, &member), E_INVALIDARG);
    expectDifference("standard-dispatch-interface",
                     [&] { EXPECT_EQ(invoke(IID_IDispatch, &empty), DISP_E_UNKNOWNINTERFACE); });
    // At these Wine ends the process.
    if (runsOn(System::wine)) return;
    EXPECT_EQ(object->QueryInterface(IID_IDispatch, nullptr), E_POINTER);
    EXPECT_EQ(dispatch->GetTypeInfoCount(nullptr), E_INVALIDARG);
    EXPECT_EQ(dispatch->GetTypeInfo(0, 0, nullptr), E_INVALIDARG);
    EXPECT_EQ(dispatch->GetIDsOfNames(GUID_NULL, nullptr, 1, 0, &member), E_INVALIDARG);
    EXPECT_EQ(invoke(GUID_NULL, nullptr), E_INVALIDARG);
}

}  // namespace
}  // namespace velk::test
