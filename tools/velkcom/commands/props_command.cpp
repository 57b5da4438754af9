#include "commands/commands.h"

#include <filesystem>

#include "com/error.h"
#include "com/stored_properties.h"
#include "com/utf.h"
#include "commands/object_creation.h"
#include "props/document.h"
#include "props/known_sets.h"
#include "props/list_documents.h"
#include "props/property_address.h"
#include "props/value_text.h"
#include "text/result_codes.h"

namespace velk::velkcom {
namespace {

constexpr unsigned utf16Page = 1200;
/// "The system's own": what that was when the file was made, nothing tells.
constexpr unsigned unknownPage = 0;

/// What the commands for one property begin with.
struct Target {
    std::string file;
    FMTID setId;
    std::string key;

    explicit Target(PropsCommand const& command)
        : file(command.operands[0]),
          setId(setFromText(command.operands[1])),
          key(command.operands[2]) {}

    int isMissing(std::ostream& errors) const {
        errors << "velkcom: \"" << file << "\" has no property \"" << key << "\" in this set\n";
        return 1;
    }
};

int get(PropsCommand const& command, std::ostream& out, std::ostream& errors) {
    Target const target(command);
    Document const document(target.file, Document::Use::reading);
    auto const set = document.set(target.setId);
    if (!set) return target.isMissing(errors);
    auto const address = addressOf(target.setId, set.get(), target.key);
    PROPSPEC const specifier = address.specifier();
    com::PropVariant value;
    HRESULT const code = set->ReadMultiple(1, &specifier, value.put());
    com::throwIfFailed(code, "the property cannot be read");
    if (code != S_OK) return target.isMissing(errors);
    out << valueText(value.get()) << "\n";
    return 0;
}

/// What a new value is written as, when the command line does not say.
VARTYPE typeFor(Target const& target, PropertyAddress const& address, IPropertyStorage* set) {
    auto const stored = set != nullptr ? storedType(*set, address) : std::nullopt;
    if (stored && *stored != VT_EMPTY && canBeWritten(*stored)) return *stored;
    auto const* const known = knownSet(target.setId);
    auto const* const property =
        known != nullptr && address.id ? known->find(*address.id) : nullptr;
    if (property == nullptr || !canBeWritten(property->type)) return VT_LPWSTR;
    auto const page = set != nullptr ? codePageOf(*set) : std::nullopt;
    bool const hasNarrowTexts = page != utf16Page && page != unknownPage;
    return property->type == VT_LPSTR && !hasNarrowTexts ? VARTYPE{VT_LPWSTR} : property->type;
}

void writeProperty(IPropertyStorage& set, PropertyAddress const& address,
                   com::PropVariant const& value) {
    PROPSPEC const specifier = address.specifier();
    com::throwIfFailed(set.WriteMultiple(1, &specifier, value.address(), PID_FIRST_USABLE),
                       "the property cannot be written");
}

int set(PropsCommand const& command) {
    Target const target(command);
    std::optional<VARTYPE> const given =
        command.type.empty() ? std::nullopt : typeFromName(command.type);
    if (!command.type.empty() && !given) {
        throw UsageError("there is no type \"" + command.type + "\" for values");
    }
    Document const document(target.file, Document::Use::writing);
    auto properties = document.set(target.setId);
    auto const address = addressOf(target.setId, properties.get(), target.key);
    VARTYPE const type = given ? *given : typeFor(target, address, properties.get());
    com::PropVariant const value(valueFromText(type, command.operands[3]));
    if (!properties) {
        // The file gets a set only when the property is possible in it.
        auto const trial = Document::temporary();
        writeProperty(*trial.setForWriting(target.setId).get(), address, value);
        properties = document.setForWriting(target.setId);
    }
    writeProperty(*properties.get(), address, value);
    document.commit(*properties.get());
    return 0;
}

int remove(PropsCommand const& command, std::ostream& errors) {
    Target const target(command);
    Document const document(target.file, Document::Use::writing);
    auto const properties = document.set(target.setId);
    if (!properties) return target.isMissing(errors);
    auto const address = addressOf(target.setId, properties.get(), target.key);
    if (!storedType(*properties.get(), address)) return target.isMissing(errors);
    PROPSPEC const specifier = address.specifier();
    com::throwIfFailed(properties->DeleteMultiple(1, &specifier), "the property cannot be removed");
    document.commit(*properties.get());
    return 0;
}

/// The id of a property that is there by a name or an id.
std::optional<PROPID> idOf(IPropertyStorage& set, PropertyAddress const& address) {
    if (!storedType(set, address)) return {};
    if (address.id) return address.id;
    com::ComPtr<IEnumSTATPROPSTG> all;
    com::throwIfFailed(set.Enum(all.put()), "the properties cannot be listed");
    com::StoredProperty property;
    while (com::readNextProperty(*all.get(), set, property) == S_OK) {
        if (property.name && com::equalIgnoringCase(*property.name, address.name)) {
            return property.id;
        }
    }
    return {};
}

int rename(PropsCommand const& command, std::ostream& errors) {
    Target const target(command);
    auto const newName = com::fromUtf8(command.operands[3]);
    if (!newName || newName->empty()) throw UsageError("the NEWKEY is no name");
    Document const document(target.file, Document::Use::writing);
    auto const properties = document.set(target.setId);
    if (!properties) return target.isMissing(errors);
    auto const id = idOf(*properties.get(), addressOf(target.setId, properties.get(), target.key));
    if (!id) return target.isMissing(errors);
    auto const taken = idOf(*properties.get(), PropertyAddress{{}, *newName});
    if (taken && *taken != *id) {
        errors << "velkcom: \"" << target.file << "\" has a property \"" << command.operands[3]
               << "\" already\n";
        return 1;
    }
    LPOLESTR const name = const_cast<LPOLESTR>(newName->c_str());
    com::throwIfFailed(properties->WritePropertyNames(1, &*id, &name),
                       "the property cannot be renamed");
    document.commit(*properties.get());
    return 0;
}

int runOne(PropsCommand const& command, std::ostream& out, std::ostream& errors) {
    switch (command.action) {
        case PropsCommand::Action::list:
            return listDocuments(command.operands, command.json, out, errors);
        case PropsCommand::Action::get:
            return get(command, out, errors);
        case PropsCommand::Action::set:
            return set(command);
        case PropsCommand::Action::remove:
            return remove(command, errors);
        case PropsCommand::Action::rename:
            return rename(command, errors);
        case PropsCommand::Action::create:
            Document::create(command.operands[0]);
            return 0;
    }
    return 1;
}

}  // namespace

int runProps(PropsCommand const& command, std::ostream& out, std::ostream& errors) {
    ComSession const session;
    try {
        return runOne(command, out, errors);
    } catch (com::Error const& error) {
        errors << "velkcom: \"" << command.operands[0] << "\": " << withMeaning(error) << "\n";
    } catch (std::filesystem::filesystem_error const& error) {
        errors << "velkcom: " << error.what() << "\n";
    }
    return 1;
}

}  // namespace velk::velkcom
