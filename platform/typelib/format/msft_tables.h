/// The shared tables of a library in the MSFT format: texts, identifiers,
/// types, values, references.
#pragma once

#include <array>
#include <unordered_map>
#include <vector>

#include "platform/typelib/format/byte_view.h"
#include "platform/typelib/format/msft_layout.h"
#include "platform/typelib/model/model.h"

namespace velk::typelib::msft {

/// Reads entries of the tables into the arena of a model. An entry that is
/// read twice is stored once. Every failure is a Failure.
class Tables {
  public:
    /// Checks the header and the directory of `file`, which has to outlive
    /// this object as `model` has to.
    Tables(ByteView file, LibraryModel& model);

    ByteView file() const { return file_; }
    LibraryModel& model() const { return model_; }
    std::size_t typeCount() const { return typePositions_.size(); }
    /// The record of a type.
    ByteView typeRecord(std::size_t index) const;

    /// Texts and identifiers at an offset of their table; absent for -1.
    Text name(DWORD offset);
    Text string(DWORD offset);
    GUID guid(DWORD offset) const;

    /// A type as records store it: a basic type, or an offset of the type table.
    TYPEDESC type(DWORD stored);

    /// A stored value: in the number itself, or at an offset of the value table.
    /// Null where there is none.
    VARIANT* value(DWORD stored);

    /// The chain of custom data that begins at `offset`.
    CustomData customData(DWORD offset);

    /// The stored reference to a type in the model's own numbering.
    HREFTYPE reference(DWORD stored) const;

    /// The chain of implemented types that begins at `offset`.
    std::span<ImplementedModel> implemented(DWORD offset, std::size_t count);

    /// Fills the model's imported libraries and types.
    void readImports();

  private:
    ByteView const& segment(Segment which) const { return segments_[which]; }
    void readDirectory(std::size_t position);
    void readTypePositions(std::size_t position, std::size_t count);
    /// A type and how many levels of pointers and arrays it has.
    struct NestedType {
        TYPEDESC description{};
        int height = 0;
    };
    std::u16string decode(std::string_view bytes);
    Text keepBytes(std::string_view bytes) { return model_.keep(decode(bytes)); }
    NestedType readType(DWORD offset, int depth);
    NestedType typeAtDepth(DWORD stored, int depth);
    NestedType readArray(DWORD offset, int depth);
    VARIANT* readValue(DWORD offset);
    VARIANT* inlineValue(DWORD stored);

    ByteView file_;
    LibraryModel& model_;
    LCID textLcid_ = 0;
    std::array<ByteView, segmentCount> segments_;
    std::vector<DWORD> typePositions_;
    std::unordered_map<DWORD, std::size_t> typeIndexes_;
    std::unordered_map<DWORD, Text> names_;
    std::unordered_map<DWORD, Text> strings_;
    std::unordered_map<DWORD, NestedType> types_;
    std::unordered_map<DWORD, CustomData> customData_;
    std::unordered_map<DWORD, VARIANT*> values_;
    // A damaged file may have its entries overlap; what is left of these keeps
    // the whole work within a multiple of the file's size.
    std::size_t customItemsLeft_ = 0;
    std::size_t implementedLeft_ = 0;
    std::size_t textLeft_ = 0;
};

/// Reads the member group of one type.
///
/// @param group     the bytes of the group, without its leading size
/// @param pointers  how many times wider pointers are here than in the library
void readMembers(Tables& tables, TypeModel& type, ByteView group, std::size_t functions,
                 std::size_t variables, unsigned pointers);

}  // namespace velk::typelib::msft
