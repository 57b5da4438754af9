#include "platform/typelib/format/msft_reader.h"

#include "platform/typelib/format/msft_tables.h"
#include "platform/typelib/record_layout.h"

namespace velk::typelib {
namespace {

using namespace msft;

// All views of a dispatch interface have the seven slots of IDispatch.
constexpr WORD dispatchVtableSize = 7 * sizeof(void*);

class LibraryReader {
  public:
    LibraryReader(ByteView bytes, LibraryModel& model) : tables_(bytes, model), model_(model) {
        membersLeft_ = bytes.size();
    }

    void read() {
        readLibrary();
        model_.types.resize(tables_.typeCount());
        for (std::size_t i = 0; i < model_.types.size(); ++i) {
            readType(model_.types[i], tables_.typeRecord(i));
        }
        // Sizes of a 32-bit library's records change with its pointers.
        if (pointers_ != 1) layOutRecords(model_);
    }

  private:
    void readLibrary() {
        auto const file = tables_.file();
        DWORD const presence = file.u32(header::systemAndPresence);
        DWORD const version = file.u32(header::libraryVersion);
        model_.id = tables_.guid(file.u32(header::guid));
        model_.lcid = file.u32(header::lcid);
        require((presence & header::systemMask) <= SYS_WIN64, TYPE_E_INVDATAREAD);
        model_.system = static_cast<SYSKIND>(presence & header::systemMask);
        model_.majorVersion = static_cast<WORD>(version);
        model_.minorVersion = static_cast<WORD>(version >> 16);
        model_.flags = static_cast<WORD>(file.u32(header::flags));
        model_.name = tables_.name(file.u32(header::name));
        model_.helpFile = tables_.string(file.u32(header::helpFile));
        model_.documentation.help = tables_.string(file.u32(header::helpString));
        model_.documentation.context = file.u32(header::helpContext);
        model_.documentation.stringContext = file.u32(header::helpStringContext);
        if (presence & header::helpModulePresent) {
            model_.helpModule = tables_.string(file.u32(header::size));
        }
        model_.custom = tables_.customData(file.u32(header::customData));
        tables_.readImports();
        model_.dispatchReference = tables_.reference(file.u32(header::dispatch));
        pointers_ = model_.system == SYS_WIN64 ? 1 : 2;
    }

    void readType(TypeModel& model, ByteView record) {
        DWORD const kind = record.u32(type::kindAndAlignment);
        DWORD const version = record.u32(type::version);
        require((kind & type::kindMask) < TKIND_MAX, TYPE_E_INVDATAREAD);
        model.kind = static_cast<TYPEKIND>(kind & type::kindMask);
        model.alignment = kind >> type::alignmentShift & type::alignmentMask;
        model.id = tables_.guid(record.u32(type::guid));
        model.name = tables_.name(record.u32(type::name));
        model.flags = static_cast<WORD>(record.u32(type::flags));
        model.majorVersion = static_cast<WORD>(version);
        model.minorVersion = static_cast<WORD>(version >> 16);
        model.documentation.help = tables_.string(record.u32(type::helpString));
        model.documentation.context = record.u32(type::helpContext);
        model.documentation.stringContext = record.u32(type::helpStringContext);
        model.custom = tables_.customData(record.u32(type::customData));
        model.instanceSize = record.u32(type::instanceSize);
        model.vtableSize = record.u16(type::vtableSize);
        readDetail(model, record);
        readInterfaceSizes(model, record);
        readGroup(model, record);
    }

    // One field means a different thing for each kind of type.
    void readDetail(TypeModel& model, ByteView record) {
        DWORD const detail = record.u32(type::detail);
        switch (model.kind) {
            case TKIND_ALIAS:
                model.alias = tables_.type(detail);
                break;
            case TKIND_MODULE:
                model.moduleName = tables_.string(detail);
                break;
            case TKIND_COCLASS:
                model.implemented = tables_.implemented(detail, record.u16(type::implementedCount));
                break;
            case TKIND_INTERFACE:
                readBase(model, tables_.reference(detail));
                break;
            case TKIND_DISPATCH:
                readBase(model,
                         model.dual() ? tables_.reference(detail) : model_.dispatchReference);
                break;
            default:
                break;
        }
    }

    void readBase(TypeModel& model, HREFTYPE reference) {
        if (reference == noReference) return;
        auto const base = model_.makeArray<ImplementedModel>(1);
        base[0].reference = reference;
        model.implemented = base;
    }

    void readInterfaceSizes(TypeModel& model, ByteView record) {
        // The size of a class is that of a pointer, whatever its alignment.
        if (model.kind == TKIND_COCLASS) model.instanceSize = sizeof(void*);
        if (model.kind != TKIND_INTERFACE && model.kind != TKIND_DISPATCH) return;
        model.instanceSize = sizeof(void*);
        model.alignment = alignof(void*);
        bool const plainDispatch = model.kind == TKIND_DISPATCH && !model.dual();
        model.vtableSize =
            plainDispatch ? dispatchVtableSize : static_cast<WORD>(model.vtableSize * pointers_);
        if (!plainDispatch) {
            model.inheritedFunctions = static_cast<WORD>(record.u32(type::inherited) >> 16);
        }
    }

    void readGroup(TypeModel& model, ByteView record) {
        DWORD const counts = record.u32(type::counts);
        if (counts == 0) return;
        auto const file = tables_.file();
        DWORD const position = record.u32(type::members);
        std::size_t const size = file.u32(position);
        // Two types may share a group in a damaged file; the budget keeps the
        // work within the size of the file all the same.
        std::size_t const lists =
            3 * sizeof(DWORD) * (std::size_t{counts & 0xffff} + (counts >> 16));
        require(size + lists <= membersLeft_, TYPE_E_INVDATAREAD);
        membersLeft_ -= size + lists;
        auto const group = file.part(std::size_t{position} + 4, size + lists);
        readMembers(tables_, model, group, counts & 0xffff, counts >> 16, pointers_);
    }

    Tables tables_;
    LibraryModel& model_;
    std::size_t membersLeft_ = 0;
    unsigned pointers_ = 1;
};

}  // namespace

void requireMsftSignature(ByteView beginning) {
    require(beginning.size() >= sizeof(DWORD), TYPE_E_CANTLOADLIBRARY);
    DWORD const found = beginning.u32(0);
    require(found != msft::olderSignature, TYPE_E_UNSUPFORMAT);
    require(found == msft::signature, TYPE_E_CANTLOADLIBRARY);
}

std::unique_ptr<LibraryModel const> readMsftLibrary(ByteView bytes) {
    requireMsftSignature(bytes);
    auto model = std::make_unique<LibraryModel>();
    LibraryReader(bytes, *model).read();
    return model;
}

}  // namespace velk::typelib
