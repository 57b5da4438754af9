#include <algorithm>
#include <optional>

#include "conformance/storage_properties/property_values.h"
#include "support/expected_difference.h"
#include "support/random_operations.h"

// Property sets under random operations, beside a model of them.

namespace {

using namespace velk::test;

constexpr FMTID const* sets[] = {&ownSet, &summarySet, &documentSet, &customSet};
constexpr std::size_t documents = 2, users = 3;

Text nameOf(unsigned number) {
    OLECHAR const* const names[] = {OLESTR("Client"),     OLESTR("cLIENT"), OLESTR("Department"),
                                    OLESTR("\x17e \xeb"), OLESTR("later"),  OLESTR("n")};
    return names[number % std::size(names)];
}
PROPID idOf(unsigned number) {
    constexpr PROPID ids[] = {2, 3, 4, 5, 15, 100, 0x1000, 0x7fffffff - 40};
    return ids[number % std::size(ids)];
}
/// What others do not keep of names would be told at every step.
bool hasNames() {
    return !hasDifference("property-names-kept");
}

struct SetModel {
    DWORD flags = 0;
    CLSID classId{};
    std::map<PROPID, std::string> values = {};
    std::map<PROPID, Text> names = {};

    std::optional<PROPID> owner(Text const& name) const {
        bool const countsCase = (flags & PROPSETFLAG_CASE_SENSITIVE) != 0;
        IgnoringCase const isLess;
        for (auto const& [id, other] : names) {
            bool const isAlike = !isLess(other, name) && !isLess(name, other);
            if (countsCase ? other == name : isAlike) return id;
        }
        return {};
    }
};

struct OpenSet {
    PropertySet set;
    SetModel model;
};

class Session {
  public:
    /// Closes the file, and looks at all of it while it is open to be read.
    void reopen(Operation const&) {
        while (!open_.empty()) end(open_.begin()->first);
        root_.reset();
        root_ = file_.open(look);
        for (std::size_t number = 0; number < std::size(sets); ++number) {
            PropertySet set;
            expectCode(setsOf(root_)->Open(*sets[number], look, set.put()), codeFor(number),
                       "open a set to read");
            if (set) expectSet(set, kept_.at(number), *sets[number]);
        }
        root_.reset();
        root_ = file_.open();
    }

    void create(Operation const& operation) {
        std::size_t const number = setOf(operation);
        bool const replaces = operation.what % 2 == 0 || hasDifference("storage-modes");
        bool const isThere = kept_.contains(number);
        DWORD flags = operation.size % 2 == 0 ? PROPSETFLAG_DEFAULT : PROPSETFLAG_ANSI;
        if (operation.size % 3 == 0 && !hasDifference("property-names-case")) {
            flags |= PROPSETFLAG_CASE_SENSITIVE;
        }
        if (isHeld(number) && hasDifference("open-set-replaced")) return;
        PropertySet set;
        DWORD const mode = change | (replaces ? STGM_CREATE : 0);
        HRESULT const expected = isHeld(number)         ? STG_E_ACCESSDENIED
                                 : isThere && !replaces ? STG_E_FILEALREADYEXISTS
                                                        : S_OK;
        expectCode(setsOf(root_)->Create(*sets[number], &ownSet, flags, mode, set.put()), expected,
                   "create a set");
        if (expected != S_OK) return;
        SetModel made{flags, ownSet};
        if (number == documents) kept_.erase(users);
        if (number == users) {
            // Behind the document's set, which is made with it.
            auto const [first, isNew] = kept_.try_emplace(documents);
            if (isNew) first->second.flags = flags & PROPSETFLAG_ANSI;
            made.classId = first->second.classId;
        }
        kept_[number] = made;
        open_[number] = {std::move(set), made};
    }

    void open(Operation const& operation) {
        std::size_t const number = setOf(operation);
        PropertySet set;
        expectCode(setsOf(root_)->Open(*sets[number], change, set.put()), codeFor(number),
                   "open a set");
        if (set) open_[number] = {std::move(set), kept_.at(number)};
    }

    void destroy(Operation const& operation) {
        std::size_t const number = setOf(operation);
        if (operation.what % 3 != 0) return;
        if (isHeld(number) && hasDifference("open-set-replaced")) return;
        expectCode(setsOf(root_)->Delete(*sets[number]), codeFor(number), "destroy a set");
        if (isHeld(number)) return;
        kept_.erase(number);
        if (number == documents) kept_.erase(users);
    }

    void enumerate(Operation const&) {
        velk::com::ComPtr<IEnumSTATPROPSETSTG> all;
        expectSuccess(setsOf(root_)->Enum(all.put()), "enumerate sets");
        std::size_t found = 0;
        STATPROPSETSTG status{};
        ULONG done = 0;
        for (; all->Next(1, &status, &done) == S_OK; ++found) {
            bool const isKept = std::ranges::any_of(
                kept_, [&](auto const& each) { return *sets[each.first] == status.fmtid; });
            expectModel(isKept, "a set that is not there");
        }
        expectModel(found == kept_.size() - kept_.count(users), "another number of sets");
    }

    /// The members that work on an open set.
    template <void (Session::*member)(OpenSet&, Operation const&)>
    void onOpen(Operation const& operation) {
        if (open_.empty()) return;
        auto const chosen =
            std::next(open_.begin(), static_cast<std::ptrdiff_t>(operation.place % open_.size()));
        number_ = chosen->first;
        (this->*member)(chosen->second, operation);
    }

    void writeById(OpenSet& open, Operation const& operation) {
        open.model.values[idOf(operation.what)] =
            write(open, byId(idOf(operation.what)), operation);
    }
    void writeNamed(OpenSet& open, Operation const& operation) {
        if (!hasNames()) return;
        auto const name = nameOf(operation.what);
        auto const text = write(open, byName(name.c_str()), operation);
        auto id = open.model.owner(name);
        for (auto const& [listed, entry] : listing(open.set)) {
            if (!id && !open.model.values.contains(listed)) id = listed;
        }
        expectModel(id.has_value(), "the new property is not listed");
        open.model.values[*id] = text;
        open.model.names.try_emplace(*id, name);
    }

    void readOne(OpenSet& open, Operation const& operation) {
        bool const isNamed = operation.size % 2 == 0 && hasNames();
        auto const name = nameOf(operation.what);
        auto const id = isNamed ? open.model.owner(name) : idOf(operation.what);
        auto const found = id ? open.model.values.find(*id) : open.model.values.end();
        bool const isThere = found != open.model.values.end();
        PropVariant value;
        expectCode(get(open.set, isNamed ? byName(name.c_str()) : byId(*id), value),
                   isThere ? S_OK : S_FALSE, "read");
        expectModel(valueText(value.get()) == (isThere ? found->second : "empty"), "another value");
    }

    void remove(OpenSet& open, Operation const& operation) {
        bool const isNamed = operation.size % 2 == 0 && hasNames();
        auto const name = nameOf(operation.what);
        auto const id = isNamed ? open.model.owner(name) : idOf(operation.what);
        auto const specifier = isNamed ? byName(name.c_str()) : byId(*id);
        expectSuccess(open.set->DeleteMultiple(1, &specifier), "delete");
        if (!id) return;
        open.model.values.erase(*id);
        open.model.names.erase(*id);
    }

    void rename(OpenSet& open, Operation const& operation) {
        auto& values = open.model.values;
        if (hasDifference("property-renamed") || values.empty()) return;
        PROPID const id =
            std::next(values.begin(), static_cast<std::ptrdiff_t>(operation.what % values.size()))
                ->first;
        auto name = nameOf(operation.size);
        auto const owner = open.model.owner(name);
        bool const isTaken = owner && *owner != id;
        auto* text = name.data();
        expectCode(open.set->WritePropertyNames(1, &id, &text),
                   isTaken ? STG_E_INVALIDPARAMETER : S_OK, "rename");
        if (!isTaken) open.model.names[id] = name;
    }
    void removeName(OpenSet& open, Operation const& operation) {
        if (hasDifference("property-names-deleted")) return;
        PROPID const id = idOf(operation.what);
        expectSuccess(open.set->DeletePropertyNames(1, &id), "delete a name");
        open.model.names.erase(id);
    }

    void setClass(OpenSet& open, Operation const& operation) {
        open.model.classId.Data1 = operation.what;
        expectSuccess(open.set->SetClass(open.model.classId), "set the class");
    }
    void commit(OpenSet& open, Operation const&) {
        expectSuccess(open.set->Commit(STGC_DEFAULT), "commit");
        keep(number_, open.model);
    }
    void revert(OpenSet& open, Operation const&) {
        expectSuccess(open.set->Revert(), "revert");
        open.model = kept_.at(number_);
        expectSet(open.set, open.model, *sets[number_]);
    }
    void close(OpenSet&, Operation const&) { end(number_); }

  private:
    static std::size_t setOf(Operation const& operation) {
        return operation.place % (hasDifference("user-properties") ? documents : std::size(sets));
    }
    static std::size_t sharerOf(std::size_t number) {
        return number == documents ? users : number == users ? documents : number;
    }
    bool isHeld(std::size_t number) const {
        return open_.contains(number) || open_.contains(sharerOf(number));
    }
    HRESULT codeFor(std::size_t number) const {
        return isHeld(number)           ? STG_E_ACCESSDENIED
               : kept_.contains(number) ? S_OK
                                        : STG_E_FILENOTFOUND;
    }

    /// A type that the set keeps on this system.
    static VARTYPE typeOf(unsigned number) {
        for (std::size_t i = number;; ++i) {
            auto const& [type, size, letters] = valueKinds()[i % valueKinds().size()];
            std::string const ways = letters;
            if (hasDifference("property-types")) {
                if (ways.find('w') != ways.npos) return type;
                continue;
            }
            char const way = ways[number / 32 % ways.size()];
            if (way == 'v') return static_cast<VARTYPE>(type | VT_VECTOR);
            if (way == 'r') return static_cast<VARTYPE>(type | VT_ARRAY);
            if (ways.find('a') != ways.npos) return type;
        }
    }
    /// Writes one property, in some cases after a try with one beside it that
    /// cannot be written: then neither is. Gives its text.
    std::string write(OpenSet& open, PROPSPEC const& specifier, Operation const& operation) {
        PropVariant value;
        makeValue(typeOf(operation.size), operation.size, *value.address());
        PROPSPEC const both[] = {specifier, byId(PID_CODEPAGE)};
        PROPVARIANT const values[] = {value.get(), number(7)};
        if (operation.size % 8 == 0 && !hasDifference("property-types")) {
            expectCode(open.set->WriteMultiple(2, both, values, PID_FIRST_USABLE),
                       STG_E_INVALIDPARAMETER, "write what is reserved");
            expectSet(open.set, open.model, *sets[number_]);
        }
        expectSuccess(open.set->WriteMultiple(1, both, values, PID_FIRST_USABLE), "write");
        return valueText(value.get());
    }

    /// The last release of a set keeps what was changed.
    void end(std::size_t number) {
        auto const open = open_.extract(number);
        expectSet(open.mapped().set, open.mapped().model, *sets[number]);
        keep(number, open.mapped().model);
    }
    void keep(std::size_t number, SetModel const& model) {
        kept_[number] = model;
        auto const sharer = kept_.find(sharerOf(number));
        if (sharer != kept_.end()) sharer->second.classId = model.classId;
    }

    static void expectSet(PropertySet const& set, SetModel const& model, REFFMTID id) {
        STATPROPSETSTG status{};
        expectSuccess(set->Stat(&status), "ask a set");
        bool const isSame = status.clsid == model.classId && status.grfFlags == model.flags;
        expectModel(status.fmtid == id && (isSame || hasDifference("property-set-class")),
                    "another id, class, or flags");
        auto const listed = listing(set);
        expectModel(listed.size() == model.values.size(), "another number of properties");
        for (auto const& [property, text] : model.values) {
            PropVariant value;
            expectSuccess(get(set, byId(property), value), "read");
            expectModel(valueText(value.get()) == text,
                        valueText(value.get()) + " instead of " + text);
            auto const entry = listed.find(property);
            auto const name = model.names.find(property);
            bool const hasName = name != model.names.end();
            bool const isListed = entry != listed.end() && entry->second.type == value.get().vt &&
                                  entry->second.name.has_value() == hasName &&
                                  (!hasName || *entry->second.name == name->second);
            expectModel(isListed, "another type or name in the list");
            LPOLESTR read = nullptr;
            expectCode(set->ReadPropertyNames(1, &property, &read), hasName ? S_OK : S_FALSE,
                       "read a name");
            velk::com::TaskMemory const owned(read);
            expectModel(!hasName || name->second == read, "another name");
        }
    }

    FilePlace file_;
    Storage root_ = file_.create();
    std::map<std::size_t, SetModel> kept_;
    std::map<std::size_t, OpenSet> open_;
    /// Of the set that a member works on.
    std::size_t number_ = 0;
};

TEST(PropertySets, AreAsTheirModelSays) {
    Operations<Session> const operations{{{"create", &Session::create},
                                          {"open", &Session::open},
                                          {"open", &Session::open},
                                          {"write", &Session::onOpen<&Session::writeById>},
                                          {"write", &Session::onOpen<&Session::writeById>},
                                          {"write", &Session::onOpen<&Session::writeById>},
                                          {"write named", &Session::onOpen<&Session::writeNamed>},
                                          {"write named", &Session::onOpen<&Session::writeNamed>},
                                          {"read", &Session::onOpen<&Session::readOne>},
                                          {"delete", &Session::onOpen<&Session::remove>},
                                          {"rename", &Session::onOpen<&Session::rename>},
                                          {"delete a name", &Session::onOpen<&Session::removeName>},
                                          {"set class", &Session::onOpen<&Session::setClass>},
                                          {"commit", &Session::onOpen<&Session::commit>},
                                          {"revert", &Session::onOpen<&Session::revert>},
                                          {"close", &Session::onOpen<&Session::close>},
                                          {"destroy", &Session::destroy},
                                          {"enumerate", &Session::enumerate},
                                          {"reopen", &Session::reopen}}};
    searchOperations(40, 120, [&](std::vector<Operation> const& drawn, std::string& log) {
        Session session;
        for (Operation const& each : drawn) operations.run(session, each, log);
        session.reopen({});
    });
}

}  // namespace
