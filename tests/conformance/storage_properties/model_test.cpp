#include <algorithm>
#include <set>

#include "conformance/storage_properties/property_values.h"
#include "support/expected_difference.h"
#include "support/random_operations.h"

// Property sets under random operations, beside a model of them.

namespace {

using namespace velk::test;

OLECHAR const* const names[] = {OLESTR("Client"),     OLESTR("cLIENT"), OLESTR("Department"),
                                OLESTR("\x17e \xeb"), OLESTR("later"),  OLESTR("n")};
constexpr PROPID ids[] = {2, 3, 4, 5, 15, 100, 0x1000, 0x7fffffff - 40};
constexpr FMTID const* sets[] = {&ownSet, &summarySet, &documentSet, &customSet};
constexpr std::size_t documents = 2, users = 3;

struct SetModel {
    DWORD flags = 0;
    CLSID classId{};
    std::map<PROPID, std::string> values = {};
    std::map<PROPID, Text> names = {};

    bool isSame(Text const& one, Text const& other) const {
        bool const countsCase = (flags & PROPSETFLAG_CASE_SENSITIVE) != 0;
        return countsCase ? one == other
                          : !IgnoringCase()(one, other) && !IgnoringCase()(other, one);
    }
    std::optional<PROPID> idOf(Text const& name) const {
        auto const found = std::ranges::find_if(
            names, [&](auto const& each) { return isSame(each.second, name); });
        return found == names.end() ? std::nullopt : std::optional(found->first);
    }
};

struct OpenSet {
    PropertySet set;
    SetModel model;
};

class Session {
  public:
    explicit Session(std::string& log) : log_(log), root_(file_.create()) {}

    void run(Operation const& operation) {
        using Member = void (Session::*)(Operation const&);
        constexpr Member members[] = {
            &Session::create,     &Session::open,       &Session::open,        &Session::writeById,
            &Session::writeById,  &Session::writeById,  &Session::writeNamed,  &Session::writeNamed,
            &Session::readOne,    &Session::removeById, &Session::removeNamed, &Session::rename,
            &Session::removeName, &Session::commit,     &Session::revert,      &Session::close,
            &Session::destroy,    &Session::enumerate,  &Session::setClass,    &Session::reopen};
        (this->*members[operation.kind % std::size(members)])(operation);
    }

    /// Closes the file, and looks at all of it while it is open to be read.
    void reopen(Operation const&) {
        note("reopen");
        while (!open_.empty()) end(open_.begin()->first);
        root_.reset();
        root_ = file_.open(look);
        for (std::size_t number = 0; number < std::size(sets); ++number) {
            PropertySet set;
            expectCode(setsOf(root_)->Open(*sets[number], look, set.put()),
                       kept_.contains(number) ? S_OK : STG_E_FILENOTFOUND, "open a set to read");
            if (set) expectSet(*set.get(), kept_.at(number), *sets[number]);
        }
        root_.reset();
        root_ = file_.open();
    }

  private:
    void note(std::string const& what, std::size_t number = 0, PROPID id = 0) {
        log_ += what + ' ' + std::to_string(number) + ' ' + std::to_string(id) + '\n';
    }
    static std::size_t setOf(unsigned number) {
        return number % (hasDifference("user-properties") ? documents : std::size(sets));
    }
    static std::size_t sharerOf(std::size_t number) {
        return number == documents ? users : number == users ? documents : number;
    }
    bool isHeld(std::size_t number) const {
        return open_.contains(number) || open_.contains(sharerOf(number));
    }
    OpenSet* anyOpen(unsigned number) {
        if (open_.empty()) return nullptr;
        return &std::next(open_.begin(), number % open_.size())->second;
    }
    std::size_t numberOf(OpenSet const* wanted) const {
        return std::ranges::find_if(open_, [&](auto const& each) { return &each.second == wanted; })
            ->first;
    }
    /// What others do not keep of names would be told at every step.
    static bool hasNames() { return !hasDifference("property-names-kept"); }
    static Text nameOf(unsigned number) { return names[number % std::size(names)]; }

    void create(Operation const& operation) {
        std::size_t const number = setOf(operation.place);
        bool const replaces = operation.what % 2 == 0;
        DWORD flags = operation.size % 2 == 0 ? PROPSETFLAG_DEFAULT : PROPSETFLAG_ANSI;
        if (operation.size % 3 == 0 && !hasDifference("property-names-case")) {
            flags |= PROPSETFLAG_CASE_SENSITIVE;
        }
        note("create", number, flags);
        PropertySet set;
        HRESULT const expected = isHeld(number)                        ? STG_E_ACCESSDENIED
                                 : kept_.contains(number) && !replaces ? STG_E_FILEALREADYEXISTS
                                                                       : S_OK;
        DWORD const mode = change | (replaces ? STGM_CREATE : 0);
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
        std::size_t const number = setOf(operation.place);
        note("open", number);
        PropertySet set;
        HRESULT const expected = isHeld(number)           ? STG_E_ACCESSDENIED
                                 : kept_.contains(number) ? S_OK
                                                          : STG_E_FILENOTFOUND;
        expectCode(setsOf(root_)->Open(*sets[number], change, set.put()), expected, "open a set");
        if (set) open_[number] = {std::move(set), kept_.at(number)};
    }

    /// A type that the set keeps on this system.
    static VARTYPE typeOf(unsigned number, SetModel const& model) {
        bool const isAnsi = (model.flags & PROPSETFLAG_ANSI) != 0;
        auto const kinds = valueKinds();
        for (std::size_t i = number;; ++i) {
            ValueKind const& kind = kinds[i % kinds.size()];
            std::string const ways = kind.ways;
            if (hasDifference("property-types")) {
                bool const isKept =
                    ways.find('w') != ways.npos || (kind.type == VT_LPSTR && isAnsi);
                if (isKept) return kind.type;
                continue;
            }
            char const way = ways[number / 32 % ways.size()];
            if (way == 'v') return static_cast<VARTYPE>(kind.type | VT_VECTOR);
            if (way == 'r') return static_cast<VARTYPE>(kind.type | VT_ARRAY);
            if (ways.find('a') != ways.npos) return kind.type;
        }
    }

    /// Writes one property, beside one that cannot be written in some cases:
    /// then neither is.
    HRESULT write(OpenSet& open, PROPSPEC const& specifier, Operation const& operation,
                  std::string& text) {
        PropVariant value;
        makeValue(typeOf(operation.size, open.model), operation.size, *value.address());
        text = valueText(value.get());
        log_ += "  " + text + '\n';
        PROPSPEC const both[] = {specifier, byId(PID_CODEPAGE)};
        PROPVARIANT const values[] = {value.get(), number(7)};
        if (operation.size % 8 == 0 && !hasDifference("property-types")) {
            expectCode(open.set->WriteMultiple(2, both, values, PID_FIRST_USABLE),
                       STG_E_INVALIDPARAMETER, "write what is reserved");
            expectSet(*open.set.get(), open.model, *sets[numberOf(&open)]);
        }
        return open.set->WriteMultiple(1, both, values, PID_FIRST_USABLE);
    }
    void writeById(Operation const& operation) {
        auto* const open = anyOpen(operation.place);
        if (open == nullptr) return;
        PROPID const id = ids[operation.what % std::size(ids)];
        note("write", numberOf(open), id);
        std::string text;
        expectCode(write(*open, byId(id), operation, text), S_OK, "write a property");
        open->model.values[id] = text;
    }
    void writeNamed(Operation const& operation) {
        auto* const open = anyOpen(operation.place);
        if (open == nullptr || !hasNames()) return;
        auto const name = nameOf(operation.what);
        note("write named", numberOf(open), operation.what % std::size(names));
        std::string text;
        expectCode(write(*open, byName(name.c_str()), operation, text), S_OK, "write a named one");
        auto id = open->model.idOf(name);
        for (auto const& [listed, entry] : listing(open->set)) {
            if (!id && !open->model.values.contains(listed)) id = listed;
        }
        expectModel(id.has_value(), "the new property is not listed");
        open->model.values[*id] = text;
        if (!open->model.idOf(name)) open->model.names[*id] = name;
    }

    void readOne(Operation const& operation) {
        auto* const open = anyOpen(operation.place);
        if (open == nullptr) return;
        bool const isNamed = operation.size % 2 == 0 && hasNames();
        auto const name = nameOf(operation.what);
        auto id = std::optional(ids[operation.what % std::size(ids)]);
        if (isNamed) id = open->model.idOf(name);
        note("read", numberOf(open), id.value_or(0));
        auto const found = id ? open->model.values.find(*id) : open->model.values.end();
        bool const isThere = found != open->model.values.end();
        PropVariant value;
        expectCode(get(open->set, isNamed ? byName(name.c_str()) : byId(*id), value),
                   isThere ? S_OK : S_FALSE, "read");
        expectModel(valueText(value.get()) == (isThere ? found->second : "empty"), "another value");
    }

    void remove(OpenSet& open, PROPSPEC const& specifier, std::optional<PROPID> id) {
        expectCode(open.set->DeleteMultiple(1, &specifier), S_OK, "delete");
        if (!id) return;
        open.model.values.erase(*id);
        open.model.names.erase(*id);
    }
    void removeById(Operation const& operation) {
        auto* const open = anyOpen(operation.place);
        if (open == nullptr) return;
        PROPID const id = ids[operation.what % std::size(ids)];
        note("delete", numberOf(open), id);
        remove(*open, byId(id), id);
    }
    void removeNamed(Operation const& operation) {
        auto* const open = anyOpen(operation.place);
        if (open == nullptr || !hasNames()) return;
        auto const name = nameOf(operation.what);
        note("delete named", numberOf(open), operation.what % std::size(names));
        remove(*open, byName(name.c_str()), open->model.idOf(name));
    }

    void rename(Operation const& operation) {
        auto* const open = anyOpen(operation.place);
        if (open == nullptr || hasDifference("property-renamed") || !hasNames()) return;
        auto& values = open->model.values;
        if (values.empty()) return;
        PROPID const id = std::next(values.begin(), operation.what % values.size())->first;
        auto name = nameOf(operation.size);
        note("rename to " + std::to_string(operation.size % std::size(names)), numberOf(open), id);
        auto const owner = open->model.idOf(name);
        bool const isTaken = owner && *owner != id;
        auto* text = name.data();
        expectCode(open->set->WritePropertyNames(1, &id, &text),
                   isTaken ? STG_E_INVALIDPARAMETER : S_OK, "rename");
        if (!isTaken) open->model.names[id] = name;
    }
    void removeName(Operation const& operation) {
        auto* const open = anyOpen(operation.place);
        if (open == nullptr || hasDifference("property-names-deleted")) return;
        PROPID const id = ids[operation.what % std::size(ids)];
        note("delete the name", numberOf(open), id);
        expectCode(open->set->DeletePropertyNames(1, &id), S_OK, "delete a name");
        open->model.names.erase(id);
    }

    void commit(Operation const& operation) {
        auto* const open = anyOpen(operation.place);
        if (open == nullptr) return;
        note("commit", numberOf(open));
        expectCode(open->set->Commit(STGC_DEFAULT), S_OK, "commit");
        keep(numberOf(open), open->model);
    }
    void revert(Operation const& operation) {
        auto* const open = anyOpen(operation.place);
        if (open == nullptr) return;
        note("revert", numberOf(open));
        expectCode(open->set->Revert(), S_OK, "revert");
        open->model = kept_.at(numberOf(open));
        expectSet(*open->set.get(), open->model, *sets[numberOf(open)]);
    }
    /// The last release of a set keeps what was changed.
    void end(std::size_t number) {
        auto const open = open_.find(number);
        expectSet(*open->second.set.get(), open->second.model, *sets[number]);
        keep(number, open->second.model);
        open_.erase(open);
    }
    void keep(std::size_t number, SetModel const& model) {
        kept_[number] = model;
        auto const sharer = kept_.find(sharerOf(number));
        if (sharer != kept_.end()) sharer->second.classId = model.classId;
    }
    void close(Operation const& operation) {
        auto* const open = anyOpen(operation.place);
        if (open == nullptr) return;
        note("close", numberOf(open));
        end(numberOf(open));
    }

    void destroy(Operation const& operation) {
        std::size_t const number = setOf(operation.place);
        if (operation.what % 3 != 0) return;
        if (isHeld(number) && hasDifference("open-set-destroyed")) return;
        note("destroy", number);
        expectCode(setsOf(root_)->Delete(*sets[number]),
                   isHeld(number)           ? STG_E_ACCESSDENIED
                   : kept_.contains(number) ? S_OK
                                            : STG_E_FILENOTFOUND,
                   "destroy a set");
        if (isHeld(number)) return;
        kept_.erase(number);
        if (number == documents) kept_.erase(users);
    }

    void enumerate(Operation const&) {
        note("enumerate");
        velk::com::ComPtr<IEnumSTATPROPSETSTG> all;
        expectCode(setsOf(root_)->Enum(all.put()), S_OK, "enumerate sets");
        std::size_t found = 0;
        STATPROPSETSTG status{};
        ULONG done = 0;
        for (; all->Next(1, &status, &done) == S_OK; ++found) {
            bool const isKept = std::ranges::any_of(
                kept_, [&](auto const& each) { return *sets[each.first] == status.fmtid; });
            expectModel(isKept, "a set that is not there");
        }
        std::size_t const shown = kept_.size() - kept_.count(users);
        expectModel(found == shown, "another number of sets");
    }

    void setClass(Operation const& operation) {
        auto* const open = anyOpen(operation.place);
        if (open == nullptr) return;
        note("set class", numberOf(open));
        open->model.classId.Data1 = operation.what;
        expectCode(open->set->SetClass(open->model.classId), S_OK, "set the class");
    }

    static void expectSet(IPropertyStorage& set, SetModel const& model, REFFMTID id) {
        STATPROPSETSTG status{};
        expectCode(set.Stat(&status), S_OK, "ask a set");
        expectModel(status.fmtid == id, "another set");
        bool const hasClass = status.clsid == model.classId || hasDifference("property-set-class");
        expectModel(hasClass, "another class");
        expectModel(status.grfFlags == model.flags, "other flags");
        PropertySet const held(&set);
        auto const listed = listing(held);
        expectModel(listed.size() == model.values.size(), "another number of properties");
        for (auto const& [property, text] : model.values) {
            PropVariant value;
            expectCode(get(held, byId(property), value), S_OK, "read");
            expectModel(valueText(value.get()) == text,
                        valueText(value.get()) + " instead of " + text);
            auto const entry = listed.find(property);
            expectModel(entry != listed.end() && entry->second.type == value.get().vt,
                        "another type in the list");
            auto const name = model.names.find(property);
            auto const expected =
                name == model.names.end() ? std::nullopt : std::optional(name->second);
            expectModel(entry->second.name == expected, "another name in the list");
            LPOLESTR read = nullptr;
            expectCode(set.ReadPropertyNames(1, &property, &read), expected ? S_OK : S_FALSE,
                       "read a name");
            velk::com::TaskMemory const owned(read);
            expectModel(!expected || *expected == read, "another name");
        }
    }

    std::string& log_;
    FilePlace file_;
    Storage root_;
    std::map<std::size_t, SetModel> kept_;
    std::map<std::size_t, OpenSet> open_;
};

TEST(PropertySets, AreAsTheirModelSays) {
    searchOperations(60, 120, [](std::vector<Operation> const& operations, std::string& log) {
        Session session(log);
        for (Operation const& operation : operations) session.run(operation);
        session.reopen({});
    });
}

}  // namespace
