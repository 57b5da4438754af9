#include "platform/typelib/record_layout.h"

#include <algorithm>

#include "platform/automation/variant_type.h"
#include "platform/typelib/boundary.h"

namespace velk::typelib {
namespace {

// Arrays in damaged files may claim any size; this one fits every counter.
constexpr ULONGLONG largest = 0x7fffffff;

// Records within records deeper than this occur in damaged files only.
constexpr int deepestRecord = 64;

Extent basicExtent(VARTYPE type) {
    if (type == VT_EMPTY || type == VT_NULL || type == VT_VOID) return {0, 1};
    // Pointers have no type of their own here.
    constexpr ULONG pointer = 8;
    ULONG const size = platform::sizeOfType(type == VT_HRESULT ? VARTYPE{VT_ERROR} : type);
    return size == 0 ? Extent{pointer, pointer} : Extent{size, std::min(size, pointer)};
}

class RecordLayouter {
  public:
    using Foreign = std::function<Extent(HREFTYPE)>;

    // With `foreign`, whatever a damaged file may say is an error.
    explicit RecordLayouter(LibraryModel& model, Foreign const* foreign = nullptr)
        : model_(model), foreign_(foreign), states_(model.types.size()) {}

    void run() {
        for (std::size_t i = 0; i < model_.types.size(); ++i) layOut(i);
    }

    Extent layOut(std::size_t index) {
        auto& type = model_.types[index];
        if (states_[index] == State::untouched && depth_ < deepestRecord) {
            ++depth_;
            states_[index] = State::running;
            if (type.kind == TKIND_RECORD || type.kind == TKIND_UNION) layOutFields(type);
            if (type.kind == TKIND_ALIAS) take(type, of(type.alias));
            states_[index] = State::done;
            --depth_;
        }
        if (states_[index] != State::done) {
            require(!foreign_, TYPE_E_CIRCULARTYPE);
            return {};
        }
        return {type.instanceSize, std::max<ULONG>(type.alignment, 1)};
    }

  private:
    enum class State { untouched, running, done };

    ULONGLONG limited(ULONGLONG size) const {
        require(size <= largest || !foreign_, TYPE_E_SIZETOOBIG);
        return std::min(size, largest);
    }

    void take(TypeModel& type, Extent layout) {
        type.instanceSize = layout.size;
        type.alignment = static_cast<WORD>(layout.alignment);
    }

    void layOutFields(TypeModel& type) {
        bool const unite = type.kind == TKIND_UNION;
        // The file's alignment limits the fields', as the compiler's packing did.
        ULONG const stored = type.alignment == 4 ? 8 : std::max<ULONG>(type.alignment, 1);
        ULONG const packing = type.packing ? type.packing : stored;
        ULONGLONG size = 0;
        ULONG alignment = 1;
        for (auto& field : type.variables) {
            Extent const layout = of(field.type);
            ULONG const own = std::min(layout.alignment, packing);
            alignment = std::max(alignment, own);
            ULONGLONG const at = unite ? 0 : (size + own - 1) / own * own;
            field.offset = static_cast<ULONG>(limited(at));
            size = limited(unite ? std::max<ULONGLONG>(size, layout.size) : at + layout.size);
        }
        size = (size + alignment - 1) / alignment * alignment;
        take(type, {static_cast<ULONG>(limited(size)), alignment});
    }

    Extent of(TYPEDESC const& type) {
        if (type.vt == VT_CARRAY) return ofArray(*type.lpadesc);
        if (type.vt == VT_USERDEFINED) return ofReference(type.hreftype);
        return basicExtent(type.vt);
    }

    Extent ofReference(HREFTYPE reference) {
        if (kindOfReference(reference) != ReferenceKind::local) {
            return foreign_ ? (*foreign_)(reference) : basicExtent(VT_USERDEFINED);
        }
        std::size_t const index = indexOfReference(reference);
        require(!model_.types[index].deleted, TYPE_E_UNDEFINEDTYPE);
        return layOut(index);
    }

    Extent ofArray(ARRAYDESC const& array) {
        Extent const element = of(array.tdescElem);
        ULONGLONG size = element.size;
        for (USHORT i = 0; i < array.cDims; ++i) {
            size = limited(size * array.rgbounds[i].cElements);
        }
        return {static_cast<ULONG>(size), element.alignment};
    }

    LibraryModel& model_;
    Foreign const* foreign_;
    std::vector<State> states_;
    int depth_ = 0;
};

}  // namespace

void layOutRecords(LibraryModel& model) {
    RecordLayouter(model).run();
}

void layOutRecord(LibraryModel& model, std::size_t place,
                  std::function<Extent(HREFTYPE)> const& foreign) {
    RecordLayouter(model, &foreign).layOut(place);
}

}  // namespace velk::typelib
