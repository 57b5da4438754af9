#include "platform/typelib/format/msft_tables.h"

namespace velk::typelib::msft {
namespace {

// The identifiers and names that follow the records, one of each a member.
class MemberLists {
  public:
    MemberLists(ByteView group, std::size_t recordsEnd, std::size_t count)
        : lists_(group.part(recordsEnd, 2 * sizeof(DWORD) * count)), count_(count) {}

    MEMBERID id(std::size_t member) const { return lists_.i32(4 * member); }
    DWORD name(std::size_t member) const { return lists_.u32(4 * (count_ + member)); }

  private:
    ByteView lists_;
    std::size_t count_;
};

// Fields that a record has only when it is long enough.
class Extras {
  public:
    explicit Extras(ByteView bytes) : bytes_(bytes) {}
    DWORD get(std::size_t index, DWORD otherwise) const {
        return 4 * (index + 1) <= bytes_.size() ? bytes_.u32(4 * index) : otherwise;
    }

  private:
    ByteView bytes_;
};

void readEntry(Tables& tables, FunctionModel& model, DWORD kinds, DWORD entry) {
    if (entry == absent) return;
    if (kinds & function::entryIsOrdinal) {
        model.entryOrdinal = static_cast<WORD>(entry);
    } else {
        model.entryName = tables.string(entry);
    }
}

void readDefault(Tables& tables, ParameterModel& parameter, DWORD stored) {
    if (!(parameter.flags & PARAMFLAG_FHASDEFAULT)) return;
    VARIANT* const value = tables.value(stored);
    if (!value) {
        // The flag without a value would send readers to a null pointer.
        parameter.flags &= ~PARAMFLAG_FHASDEFAULT;
        return;
    }
    parameter.defaultValue = tables.model().makeOne<PARAMDESCEX>();
    parameter.defaultValue->cBytes = sizeof(PARAMDESCEX);
    parameter.defaultValue->varDefaultValue = *value;
}

void readParameters(Tables& tables, FunctionModel& model, ByteView record, std::size_t count,
                    std::size_t defaultsAt, Extras const& extras) {
    auto const parameters = tables.model().makeArray<ParameterModel>(count);
    std::size_t const first = record.size() - count * function::parameterSize;
    for (std::size_t i = 0; i < count; ++i) {
        std::size_t const at = first + i * function::parameterSize;
        auto& parameter = parameters[i];
        parameter.type = tables.type(record.u32(at));
        parameter.name = tables.name(record.u32(at + 4));
        parameter.flags = static_cast<USHORT>(record.u32(at + 8));
        bool const stored = defaultsAt < first;
        readDefault(tables, parameter, stored ? record.u32(defaultsAt + 4 * i) : absent);
        parameter.custom = tables.customData(extras.get(function::parameterCustomData + i, absent));
    }
    model.parameters = parameters;
}

void readFunction(Tables& tables, FunctionModel& model, ByteView record, unsigned pointers) {
    DWORD const kinds = record.u32(function::kinds);
    std::size_t const count = record.u16(function::parameterCount);
    bool const defaults = kinds & function::hasDefaults;
    std::size_t const tail = count * (function::parameterSize + (defaults ? 4 : 0));
    require(function::size + tail <= record.size(), TYPE_E_INVDATAREAD);
    std::size_t const extrasEnd = record.size() - tail;
    Extras const extras(record.part(function::extras, extrasEnd - function::extras));

    model.result = tables.type(record.u32(function::result));
    model.flags = static_cast<WORD>(record.u32(function::flags));
    // The low bits of the offset say something else.
    WORD const offset = record.u16(function::vtableOffset) & 0xfffc;
    model.vtableOffset = static_cast<SHORT>(offset * pointers);
    require((kinds & 0x7) <= FUNC_DISPATCH && (kinds >> 8 & 0xf) < CC_MAX, TYPE_E_INVDATAREAD);
    model.kind = static_cast<FUNCKIND>(kinds & 0x7);
    model.invocation = static_cast<INVOKEKIND>(kinds >> 3 & 0xf);
    model.convention = static_cast<CALLCONV>(kinds >> 8 & 0xf);
    model.optionalCount = static_cast<SHORT>(record.u16(function::optionalCount));
    model.documentation.context = extras.get(function::helpContext, 0);
    model.documentation.help = tables.string(extras.get(function::helpString, absent));
    model.documentation.stringContext = extras.get(function::helpStringContext, 0);
    model.custom = tables.customData(extras.get(function::customData, absent));
    readEntry(tables, model, kinds, extras.get(function::entry, absent));
    readParameters(tables, model, record, count, extrasEnd, extras);
}

void readVariable(Tables& tables, VariableModel& model, ByteView record) {
    Extras const extras(record.from(variable::extras));
    model.type = tables.type(record.u32(variable::type));
    model.flags = static_cast<WORD>(record.u32(variable::flags));
    require(record.u16(variable::kind) <= VAR_DISPATCH, TYPE_E_INVDATAREAD);
    model.kind = static_cast<VARKIND>(record.u16(variable::kind));
    DWORD const value = record.u32(variable::value);
    if (model.kind == VAR_CONST) {
        model.value = tables.value(value);
        // A constant always has a value to point at.
        if (!model.value) model.value = tables.model().makeOne<VARIANT>();
    } else {
        model.offset = value;
    }
    model.documentation.context = extras.get(variable::helpContext, 0);
    model.documentation.help = tables.string(extras.get(variable::helpString, absent));
    model.documentation.stringContext = extras.get(variable::helpStringContext, 0);
    model.custom = tables.customData(extras.get(variable::customData, absent));
}

// The records stand one after the other, each with its size in front.
ByteView nextRecord(ByteView group, std::size_t& position, std::size_t smallest) {
    std::size_t const size = group.u16(position);
    require(size >= smallest, TYPE_E_INVDATAREAD);
    auto const record = group.part(position, size);
    position += size;
    return record;
}

}  // namespace

void readMembers(Tables& tables, TypeModel& type, ByteView group, std::size_t functions,
                 std::size_t variables, unsigned pointers) {
    auto& model = tables.model();
    require(
        functions <= group.size() / function::size && variables <= group.size() / variable::size,
        TYPE_E_INVDATAREAD);
    auto const functionList = model.makeArray<FunctionModel>(functions);
    auto const variableList = model.makeArray<VariableModel>(variables);
    std::size_t position = 0;
    for (auto& entry : functionList) {
        readFunction(tables, entry, nextRecord(group, position, function::size), pointers);
    }
    for (auto& entry : variableList) {
        readVariable(tables, entry, nextRecord(group, position, variable::size));
    }
    MemberLists const lists(group, position, functions + variables);
    for (std::size_t i = 0; i < functions; ++i) {
        functionList[i].id = lists.id(i);
        functionList[i].name = tables.name(lists.name(i));
    }
    for (std::size_t i = 0; i < variables; ++i) {
        variableList[i].id = lists.id(functions + i);
        variableList[i].name = tables.name(lists.name(functions + i));
    }
    type.functions = functionList;
    type.variables = variableList;
}

}  // namespace velk::typelib::msft
