// Arrays beside a vector of what is to be in them, and what they refuse.
#include <iterator>
#include <memory>

#include <gtest/gtest.h>

#include "support/data_table.h"
#include "support/fake_objects.h"
#include "support/random_operations.h"
#include "support/value_notation.h"

namespace velk::test {
namespace {

VARTYPE const elementTypes[] = {VT_I4,      VT_UI1,      VT_R8,      VT_DECIMAL, VT_BSTR,
                                VT_VARIANT, VT_DISPATCH, VT_UNKNOWN, VT_BOOL};

/// The place in a VARIANT where a value of that type stands.
void* placeIn(VARIANT& value, VARTYPE type) {
    if (type == VT_VARIANT || type == VT_DECIMAL) return &value;
    return &value.llVal;
}

/// One array of a random shape, and its elements in the order of its data: the
/// first index varies fastest.
class ArrayModel {
  public:
    explicit ArrayModel(Operation const& shape)
        : type_(elementTypes[shape.what % std::size(elementTypes)]) {
        for (unsigned left = 1 + shape.kind % 3, bits = shape.size; left > 0; --left, bits /= 16) {
            bounds_.push_back({bits % 4, static_cast<LONG>(bits / 4 % 4) - 2});
        }
        elements_.resize(countOf());
        array_ = SafeArrayCreate(type_, static_cast<UINT>(bounds_.size()), bounds_.data());
        expectModel(array_ != nullptr, "no array");
    }
    ArrayModel(ArrayModel const&) = delete;
    ArrayModel& operator=(ArrayModel const&) = delete;
    ~ArrayModel() { SafeArrayDestroy(array_); }

    std::string run(Operation const& operation) {
        switch (operation.kind % 6) {
            case 0:
            case 1:
                return put(operation);
            case 2:
                return get(operation);
            case 3:
                return redim(operation);
            case 4:
                return copy(operation);
            default:
                return lock();
        }
    }

    void check() {
        VARIANT const holder = asValue();
        std::string expected;
        for (auto const& bound : bounds_) {
            expected += (expected.empty() ? "[" : ", ") + std::to_string(bound.lLbound) + ".." +
                        std::to_string(bound.lLbound + static_cast<LONG>(bound.cElements) - 1);
        }
        expected += "]{";
        ULONG references[] = {1, 1};
        for (std::size_t i = 0; i < elements_.size(); ++i) {
            expected += (i == 0 ? "" : ", ") + notationOfElement(i);
            if (elements_[i].object >= 0) ++references[elements_[i].object];
        }
        expected += '}';
        auto const found = notationOf(holder);
        expectModel(found == expected, found + " instead of " + expected);
        for (int i = 0; i < 2; ++i) {
            expectModel(objects_[i].references == references[i],
                        "object " + std::to_string(i) + " has " +
                            std::to_string(objects_[i].references) + " references instead of " +
                            std::to_string(references[i]));
        }
    }

  private:
    struct Element {
        std::string notation;  ///< empty for what was never put
        int object = -1;
    };

    std::size_t countOf() const {
        std::size_t count = 1;
        for (auto const& bound : bounds_) count *= bound.cElements;
        return count;
    }

    VARIANT asValue() const {
        VARIANT value{};
        value.vt = static_cast<VARTYPE>(VT_ARRAY | type_);
        value.parray = array_;
        return value;
    }

    std::string notationOfElement(std::size_t position) const {
        if (!elements_[position].notation.empty()) return elements_[position].notation;
        Value empty;
        empty->vt = type_ == VT_VARIANT ? VARTYPE{VT_EMPTY} : type_;
        return empty.notation();
    }

    /// The indices of a random place, at times one beside the array, and its
    /// position, or the count of elements.
    std::size_t place(unsigned number, std::vector<LONG>& indices) const {
        std::size_t position = 0;
        std::size_t stride = 1;
        bool inside = true;
        for (auto const& bound : bounds_) {
            auto const index =
                static_cast<LONG>(number % (bound.cElements + 2)) - (number % 31 == 0 ? 1 : 0);
            number /= 7;
            indices.push_back(bound.lLbound + index);
            inside = inside && index >= 0 && index < static_cast<LONG>(bound.cElements);
            position += static_cast<std::size_t>(index) * stride;
            stride *= bound.cElements;
        }
        return inside ? position : elements_.size();
    }

    /// A random value for an element.
    Element fill(unsigned number, Value& value) {
        static std::map<VARTYPE, std::vector<char const*>> const notations = {
            {VT_I4, {"I4:-5", "I4:7"}},
            {VT_UI1, {"UI1:250", "UI1:1"}},
            {VT_R8, {"R8:2.5", "R8:-1e+300"}},
            {VT_DECIMAL, {"DECIMAL:-1.50", "DECIMAL:79228162514264337593543950335"}},
            {VT_BSTR, {"BSTR:text", "BSTR:other", "BSTR:"}},
            {VT_BOOL, {"BOOL:-1", "BOOL:0"}},
            {VT_VARIANT, {"I2:12", "BSTR:in a value", "EMPTY", "DECIMAL:0.5"}}};
        auto const known = notations.find(type_);
        Element element;
        if (known != notations.end() && (type_ != VT_VARIANT || number % 3 != 0)) {
            element.notation = known->second[number % known->second.size()];
            Value const drawn(element.notation);
            VariantCopy(&value, &const_cast<Value&>(drawn));
            return element;
        }
        VARTYPE const type = type_ == VT_UNKNOWN ? VT_UNKNOWN : VT_DISPATCH;
        value->vt = type;
        element.object = static_cast<int>(number / 3 % 3) - 1;
        if (element.object >= 0) {
            value->pdispVal = &objects_[element.object];
            value->pdispVal->AddRef();
        }
        element.notation = value.notation();
        return element;
    }

    std::string put(Operation const& operation) {
        std::vector<LONG> indices;
        std::size_t const position = place(operation.place, indices);
        bool const inside = position < elements_.size();
        Value value;
        auto const element = fill(operation.what, value);
        bool const itself = type_ == VT_BSTR || type_ == VT_DISPATCH || type_ == VT_UNKNOWN;
        void* const source = itself ? static_cast<void*>(value->punkVal) : placeIn(*value, type_);
        expectCode(SafeArrayPutElement(array_, indices.data(), source),
                   inside ? S_OK : DISP_E_BADINDEX, "put");
        if (inside) elements_[position] = element;
        return "put " + std::to_string(position) + ' ' + element.notation;
    }

    std::string get(Operation const& operation) {
        std::vector<LONG> indices;
        std::size_t const position = place(operation.place, indices);
        bool const inside = position < elements_.size();
        Value value;
        expectCode(SafeArrayGetElement(array_, indices.data(), placeIn(*value, type_)),
                   inside ? S_OK : DISP_E_BADINDEX, "get");
        void* at = nullptr;
        expectCode(SafeArrayPtrOfIndex(array_, indices.data(), &at),
                   inside ? S_OK : DISP_E_BADINDEX, "address");
        if (inside) {
            if (type_ != VT_VARIANT) value->vt = type_;
            expectModel(value.notation() == notationOfElement(position), "got " + value.notation());
            expectModel(at == static_cast<BYTE*>(array_->pvData) + position * array_->cbElements,
                        "address of another element");
        }
        return "get " + std::to_string(position);
    }

    std::string redim(Operation const& operation) {
        bounds_.back() = {operation.size % 6, static_cast<LONG>(operation.what % 5) - 2};
        expectCode(SafeArrayRedim(array_, &bounds_.back()), S_OK, "redim");
        elements_.resize(countOf());
        return "redim to " + std::to_string(bounds_.back().cElements);
    }

    /// The copy takes the place of the original, or goes.
    std::string copy(Operation const& operation) {
        SAFEARRAY* made = nullptr;
        if (operation.what % 2 == 0) {
            expectCode(SafeArrayCopy(array_, &made), S_OK, "copy");
        } else {
            VARIANT const value = asValue();
            VARIANT other{};
            expectCode(VariantCopy(&other, const_cast<VARIANT*>(&value)), S_OK,
                       "copy of the value");
            made = other.parray;
        }
        bool const replaces = operation.size % 2 == 0;
        if (replaces) std::swap(made, array_);
        expectCode(SafeArrayDestroy(made), S_OK, "destroy");
        return replaces ? "replace by copy" : "copy";
    }

    std::string lock() {
        void* data = nullptr;
        expectCode(SafeArrayLock(array_), S_OK, "lock");
        expectCode(SafeArrayAccessData(array_, &data), S_OK, "access");
        expectModel(data == array_->pvData && array_->cLocks == 2, "not two locks");
        SAFEARRAYBOUND none{0, 0};
        for (int locks = 2; locks > 0; --locks) {
            expectCode(SafeArrayRedim(array_, &none), DISP_E_ARRAYISLOCKED,
                       "redim of a locked one");
            expectCode(SafeArrayDestroy(array_), DISP_E_ARRAYISLOCKED, "destroy a locked one");
            expectCode(locks == 2 ? SafeArrayUnaccessData(array_) : SafeArrayUnlock(array_), S_OK,
                       "unlock");
        }
        expectCode(SafeArrayUnlock(array_), E_UNEXPECTED, "unlock once more");
        return "lock";
    }

    // Before the array, which may hold references to its end.
    FakeDispatch objects_[2];
    VARTYPE type_;
    std::vector<SAFEARRAYBOUND> bounds_;
    std::vector<Element> elements_;
    SAFEARRAY* array_ = nullptr;
};

TEST(SafeArray, HoldsWhatAModelHolds) {
    searchOperations(400, 40, [](std::vector<Operation> const& operations, std::string& log) {
        std::unique_ptr<ArrayModel> model;
        for (auto const& operation : operations) {
            if (!model || operation.kind % 50 == 0) {
                model = std::make_unique<ArrayModel>(operation);
                log += "new array\n";
            } else {
                log += model->run(operation) + '\n';
            }
            model->check();
        }
    });
}

TEST(SafeArray, HasFeaturesAndSizeByType) {
    expectTable("automation/arrays.tsv", [](DataRow const& row) {
        std::string text;
        for (bool const vector : {false, true}) {
            SAFEARRAYBOUND bound{2, 0};
            auto const type = static_cast<VARTYPE>(std::stoi(row["type"]));
            SAFEARRAY* const array =
                vector ? SafeArrayCreateVector(type, 0, 2) : SafeArrayCreate(type, 1, &bound);
            VARTYPE told = 0;
            char one[64] = "none ";
            if (array && SafeArrayGetVartype(array, &told) == S_OK) {
                std::snprintf(one, sizeof one, "%d: %u bytes, features %x ", told,
                              SafeArrayGetElemsize(array), array->fFeatures);
            }
            text += one;
            SafeArrayDestroy(array);
        }
        text.pop_back();
        return text;
    });
}

TEST(SafeArray, RefusesWhatIsNoneAndBoundsThatItHasNot) {
    SAFEARRAY* copy = nullptr;
    LONG bound = 0;
    EXPECT_EQ(SafeArrayDestroy(nullptr), S_OK);
    EXPECT_EQ(SafeArrayCopy(nullptr, &copy), S_OK);
    EXPECT_EQ(SafeArrayLock(nullptr), E_INVALIDARG);
    EXPECT_EQ(SafeArrayUnlock(nullptr), E_INVALIDARG);
    EXPECT_EQ(SafeArrayGetDim(nullptr), 0U);
    EXPECT_EQ(SafeArrayGetElemsize(nullptr), 0U);
    EXPECT_EQ(SafeArrayGetLBound(nullptr, 1, &bound), E_INVALIDARG);
    SAFEARRAYBOUND bounds[] = {{2, 1}, {0, -1}};
    EXPECT_EQ(SafeArrayCreate(VT_I4, 0, bounds), nullptr);
    EXPECT_EQ(SafeArrayCreate(VT_I4, 65536, bounds), nullptr);
    SAFEARRAY* const array = SafeArrayCreate(VT_DISPATCH, 2, bounds);
    ASSERT_NE(array, nullptr);
    EXPECT_NE(array->pvData, nullptr);
    EXPECT_EQ(array->rgsabound[1].lLbound, 1);
    EXPECT_EQ(SafeArrayGetLBound(array, 0, &bound), DISP_E_BADINDEX);
    EXPECT_EQ(SafeArrayGetUBound(array, 3, &bound), DISP_E_BADINDEX);
    EXPECT_EQ(SafeArrayGetUBound(array, 2, &bound), S_OK);
    EXPECT_EQ(bound, -2);
    GUID id{};
    EXPECT_EQ(SafeArrayGetIID(array, &id), S_OK);
    EXPECT_TRUE(id == IID_IDispatch);
    array->cLocks = 0xffff;
    EXPECT_EQ(SafeArrayLock(array), E_UNEXPECTED);
    EXPECT_EQ(array->cLocks, 0xffffU);
    array->cLocks = 0;
    EXPECT_EQ(SafeArrayDestroy(array), S_OK);
}

}  // namespace
}  // namespace velk::test
