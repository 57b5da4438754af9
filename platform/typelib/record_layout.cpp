#include "platform/typelib/record_layout.h"

#include <algorithm>

#include "platform/automation/variant_type.h"
#include "platform/typelib/owners.h"

namespace velk::typelib {
namespace {

// Arrays in damaged files may claim any size; this one fits every counter.
constexpr ULONGLONG largest = 0x7fffffff;

// Records within records deeper than this occur in damaged files only.
constexpr int deepestRecord = 64;

struct Extent {
    ULONG size = 0;
    ULONG alignment = 1;
};

Extent basicExtent(VARTYPE type) {
    if (type == VT_EMPTY || type == VT_NULL || type == VT_VOID) return {0, 1};
    // Pointers have no type of their own here.
    constexpr ULONG pointer = 8;
    ULONG const size = platform::sizeOfType(type == VT_HRESULT ? VARTYPE{VT_ERROR} : type);
    return size == 0 ? Extent{pointer, pointer} : Extent{size, std::min(size, pointer)};
}

class RecordLayouter {
  public:
    explicit RecordLayouter(LibraryModel& model) : model_(model), states_(model.types.size()) {}

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
        if (states_[index] != State::done) return {};
        return {type.instanceSize, std::max<ULONG>(type.alignment, 1)};
    }

  private:
    enum class State { untouched, running, done };

    void take(TypeModel& type, Extent layout) {
        type.instanceSize = layout.size;
        type.alignment = static_cast<WORD>(layout.alignment);
    }

    void layOutFields(TypeModel& type) {
        bool const unite = type.kind == TKIND_UNION;
        // The file's alignment limits the fields', as the compiler's packing did.
        ULONG const packing = type.alignment == 4 ? 8 : std::max<ULONG>(type.alignment, 1);
        ULONGLONG size = 0;
        ULONG alignment = 1;
        for (auto& field : type.variables) {
            Extent const layout = of(field.type);
            ULONG const own = std::min(layout.alignment, packing);
            alignment = std::max(alignment, own);
            ULONGLONG const at = unite ? 0 : (size + own - 1) / own * own;
            field.offset = static_cast<ULONG>(std::min(at, largest));
            size = std::min(unite ? std::max<ULONGLONG>(size, layout.size) : at + layout.size,
                            largest);
        }
        size = (size + alignment - 1) / alignment * alignment;
        take(type, {static_cast<ULONG>(std::min(size, largest)), alignment});
    }

    Extent of(TYPEDESC const& type) {
        if (type.vt == VT_CARRAY) return ofArray(*type.lpadesc);
        if (type.vt == VT_USERDEFINED) return ofReference(type.hreftype);
        return basicExtent(type.vt);
    }

    Extent ofReference(HREFTYPE reference) {
        if (kindOfReference(reference) != ReferenceKind::local) {
            return basicExtent(VT_USERDEFINED);
        }
        return layOut(indexOfReference(reference));
    }

    Extent ofArray(ARRAYDESC const& array) {
        Extent const element = of(array.tdescElem);
        ULONGLONG size = element.size;
        for (USHORT i = 0; i < array.cDims; ++i) {
            size = std::min(largest, size * array.rgbounds[i].cElements);
        }
        return {static_cast<ULONG>(size), element.alignment};
    }

    LibraryModel& model_;
    std::vector<State> states_;
    int depth_ = 0;
};

}  // namespace

void layOutRecords(LibraryModel& model) {
    RecordLayouter(model).run();
}

}  // namespace velk::typelib
