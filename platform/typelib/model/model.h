/// What a type library says, in memory.
///
/// A model is filled by a reader and never changes afterwards. What types point
/// at lives in the arena of the LibraryModel; texts with a null data pointer are
/// absent.
#pragma once

#include <algorithm>
#include <memory>
#include <memory_resource>
#include <span>
#include <string_view>
#include <vector>

#include "oleauto.h"

namespace velk::typelib {

using Text = std::u16string_view;

/// How references between types are numbered. The published interfaces leave
/// the numbers to the implementation.
enum class ReferenceKind : unsigned {
    local = 0,      ///< index of a type of the same library
    imported = 1,   ///< index of an ImportedType
    otherView = 2,  ///< index of a dual type of the same library, its less usual view
    foreign = 3     ///< index into the library object's table of borrowed references
};
constexpr HREFTYPE makeReference(ReferenceKind kind, std::size_t index) {
    return static_cast<HREFTYPE>(index << 2 | static_cast<unsigned>(kind));
}
constexpr ReferenceKind kindOfReference(HREFTYPE reference) {
    return static_cast<ReferenceKind>(reference & 3);
}
constexpr std::size_t indexOfReference(HREFTYPE reference) {
    return reference >> 2;
}
/// No reference; no kind has this number.
constexpr HREFTYPE noReference = 0xffffffff;

struct CustomItem {
    GUID id;
    VARIANT value;
};
using CustomData = std::span<CustomItem const>;

struct Documentation {
    Text help;
    DWORD context = 0;
    DWORD stringContext = 0;
};

struct ParameterModel {
    Text name;
    TYPEDESC type{};
    USHORT flags = 0;
    PARAMDESCEX* defaultValue = nullptr;
    CustomData custom;
};

struct FunctionModel {
    MEMBERID id = MEMBERID_NIL;
    Text name;
    TYPEDESC result{};
    FUNCKIND kind = FUNC_PUREVIRTUAL;
    INVOKEKIND invocation = INVOKE_FUNC;
    CALLCONV convention = CC_STDCALL;
    SHORT optionalCount = 0;
    SHORT vtableOffset = 0;
    WORD flags = 0;
    std::span<ParameterModel const> parameters;
    Documentation documentation;
    CustomData custom;
    Text entryName;
    WORD entryOrdinal = 0;
};

struct VariableModel {
    MEMBERID id = MEMBERID_NIL;
    Text name;
    TYPEDESC type{};
    VARKIND kind = VAR_PERINSTANCE;
    WORD flags = 0;
    ULONG offset = 0;
    VARIANT* value = nullptr;
    Documentation documentation;
    CustomData custom;
};

struct ImplementedModel {
    HREFTYPE reference = noReference;
    INT flags = 0;
    CustomData custom;
};

struct TypeModel {
    GUID id{};
    Text name;
    TYPEKIND kind = TKIND_MAX;
    WORD flags = 0;
    WORD majorVersion = 0;
    WORD minorVersion = 0;
    ULONG instanceSize = 0;
    WORD alignment = 0;
    WORD vtableSize = 0;
    /// Functions that the vtable inherits, as the library's compiler counted them.
    WORD inheritedFunctions = 0;
    TYPEDESC alias{};
    Text moduleName;
    Documentation documentation;
    CustomData custom;
    std::span<FunctionModel const> functions;
    std::span<VariableModel> variables;
    std::span<ImplementedModel const> implemented;

    bool dual() const { return kind == TKIND_DISPATCH && (flags & TYPEFLAG_FDUAL); }
};

struct ImportedLibrary {
    GUID id{};
    LCID lcid = 0;
    WORD majorVersion = 0;
    WORD minorVersion = 0;
    Text file;
};

struct ImportedType {
    std::size_t library = 0;
    bool byId = false;
    GUID id{};
    ULONG index = 0;
};

/// One whole library. Owns its arena and the texts and values in it.
class LibraryModel {
  public:
    LibraryModel() = default;
    LibraryModel(LibraryModel const&) = delete;
    LibraryModel& operator=(LibraryModel const&) = delete;
    ~LibraryModel() {
        for (VARIANT* value : values_) VariantClear(value);
    }

    /// A block for `count` values, default-made.
    template <typename T>
    std::span<T> makeArray(std::size_t count) {
        if (count == 0) return {};
        auto* first = static_cast<T*>(arena_.allocate(sizeof(T) * count, alignof(T)));
        std::uninitialized_value_construct_n(first, count);
        return {first, count};
    }
    template <typename T>
    T* makeOne() {
        return makeArray<T>(1).data();
    }
    /// A copy of `text` in the arena, not absent even where empty.
    Text keep(Text text) {
        // One more than needed, so that an empty text has an address too.
        auto const copy = makeArray<char16_t>(text.size() + 1);
        std::copy(text.begin(), text.end(), copy.begin());
        return {copy.data(), text.size()};
    }
    /// Remembers that the value at `value` has to be cleared with the model.
    void clearAtEnd(VARIANT* value) { values_.push_back(value); }

    GUID id{};
    LCID lcid = 0;
    SYSKIND system = SYS_WIN64;
    WORD majorVersion = 0;
    WORD minorVersion = 0;
    WORD flags = 0;
    Text name;
    Text helpFile;
    Text helpModule;
    Documentation documentation;
    CustomData custom;
    std::vector<TypeModel> types;
    std::span<ImportedLibrary> importedLibraries;
    std::span<ImportedType> importedTypes;
    /// The reference to IDispatch that dispatch interfaces implement.
    HREFTYPE dispatchReference = noReference;

  private:
    std::pmr::monotonic_buffer_resource arena_{4096};
    std::vector<VARIANT*> values_;
};

}  // namespace velk::typelib
