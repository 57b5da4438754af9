#include "script_table.h"

#include <cstdlib>
#include <sstream>
#include <stdexcept>

namespace velk::test {
namespace {

mzComVariantC valueOf(std::string_view cell, Objects const& objects) {
    std::string const text(cell);
    if (text[0] == '"') return mzComStringC::fromUtf8(text.data() + 1, int(text.size()) - 2);
    if (text[0] == '@') return reference(objects.at(text.substr(1)).iface());
    if (text.starts_with("var ")) {
        return mzComVariantC::createSymbolRef(valueOf(cell.substr(4), objects));
    }
    if (text == "empty") return {};
    if (text == "null") return reference(nullptr);
    if (text == "true" || text == "false") return text == "true";
    char* end = nullptr;
    double const number = std::strtod(text.c_str(), &end);
    if (*end != '\0') throw std::invalid_argument("no value: " + text);
    if (text.find_first_not_of("-0123456789") == std::string::npos) return int(number);
    return number;
}

std::string plainText(mzComVariantC const& value) {
    mzComStringC text;
    value.getExt(text);
    return text.toUtf8();
}

std::string elementsOf(mzComPtrT<mzIIterable> const& list, Objects const& objects) {
    mzComPtrT<mzIIterator> walk;
    if (list->createIterator(walk) != mzSuccess) return "no walk";
    std::string text;
    mzComVariantC value;
    while (walk->next(value) == mzSuccess)
        text += (text.empty() ? "" : "; ") + described(value, objects);
    return text;
}

}  // namespace

std::vector<mzComVariantC> valuesOf(std::string_view cell, Objects const& objects) {
    std::vector<mzComVariantC> values;
    while (!cell.empty()) {
        std::size_t const begin = cell.starts_with("var ") ? 4 : 0;
        std::size_t const closing = cell[begin] == '"' ? cell.find('"', begin + 1) : begin;
        std::size_t const end = cell.find(", ", closing);
        values.push_back(valueOf(cell.substr(0, end), objects));
        cell.remove_prefix(end == std::string_view::npos ? cell.size() : end + 2);
    }
    return values;
}

std::string described(mzComVariantC const& value, Objects const& objects) {
    if (value.isVariable()) return "var " + described(value.skipVariable(), objects);
    std::string const text = plainText(value);
    switch (value.getType()) {
        case mzTypeEmpty:
            return "empty";
        case mzTypeString:
            return '"' + text + '"';
        case mzTypeDouble:
            return text + (text.find_first_of(".Ean") == std::string::npos ? ".0" : "");
        case mzTypeObject: {
            mzComPtrT<mzIUnknown> object;
            if (value.get(object) != mzSuccess) return "null";
            for (auto const& [name, known] : objects) {
                if (known.iface() == object.iface()) return '@' + name;
            }
            std::string const state = stateOf(object.iface(), objects);
            return state.empty() ? "object" : state;
        }
        default:
            return text;
    }
}

std::string stateOf(mzIUnknown* object, Objects const& objects) {
    mzComPtrT<mzIIterable> const list{mzComPtrC(object)};
    if (!list.isValid()) {
        auto const standard = call(object, "standard", mzCallPropertyGet);
        return standard.code == mzSuccess ? '<' + standard.text() + '>' : "";
    }
    std::string text = '[' + elementsOf(list, objects) + ']';
    mzComPtrT<mzIUnknown> items;
    if (call(object, "Items", mzCallPropertyGet).value.get(items) == mzSuccess) {
        text += stateOf(items.iface(), objects);
    }
    return text;
}

namespace {

/// Calls by name and describes the outcome: the value (`ok` for none), `not
/// found`, or `!source: text` of the exception. A value that comes with a
/// failure is told too.
std::string told(mzIUnknown* object, std::string_view name, unsigned kind,
                 std::vector<mzComVariantC> const& args, Objects const& objects,
                 mzComVariantC& value) {
    mzComVariantArrayC list;
    for (auto const& arg : args) list.append(arg);
    value = mzComVariantC("left over");
    mzComPtrT<mzIException> exception;
    unsigned const code = mzComPtrT<mzIDispatch>(mzComPtrC(object))
                              ->invokeByName(mzComStringC::fromUtf8(name.data(), int(name.size())),
                                             kind, list, value, exception);
    std::string const text = value.getType() == mzTypeEmpty ? "" : described(value, objects);
    if (code == mzSuccess) return text.empty() ? "ok" : text;
    std::string failure = code == mzMemberNotFound ? "not found" : "failed";
    if (exception.isValid()) {
        failure = '!' + exception->source().toUtf8() + ": " + exception->description().toUtf8();
    }
    return text.empty() ? failure : failure + ", and yet " + text;
}

std::vector<std::string> wordsOf(std::string const& text) {
    std::istringstream stream(text);
    std::vector<std::string> words;
    for (std::string word; stream >> word;) words.push_back(word);
    return words;
}

unsigned kindOf(std::string const& word) {
    static std::map<std::string, unsigned> const kinds = {{"do", mzCallMethod},
                                                          {"get", mzCallPropertyGet},
                                                          {"put", mzCallPropertyPut},
                                                          {"ask", mzCallMethod | mzCallPropertyGet},
                                                          {"none", 0}};
    return kinds.at(word);
}

}  // namespace

mzComPtrC ScriptTable::objectOf(std::string const& cell) {
    mzComPtrC object;
    if (cell == "variable") {
        return mzComPtrC(mzComVariantC::createSymbolRef({}).symbol().iface());
    }
    if (auto const known = objects_.find(cell); known != objects_.end()) return known->second;
    bool const isPath = cell.starts_with("path");
    std::string const name = isPath ? "qxttools.pathname" : cell.substr(4);
    EXPECT_EQ(mzComCreateObject(name.c_str(), mzIDispatch::interfaceId(), object), mzSuccess);
    if (isPath && cell.size() > 5) {
        mzComStringC const native = mzComStringC::fromUtf8(cell.data() + 5, -1);
        EXPECT_EQ(call(object.iface(), "native", mzCallPropertyPut, {native}).code, mzSuccess);
    }
    return object;
}

std::string ScriptTable::stateAfter(mzIUnknown* object) const {
    return tellsState_ ? stateOf(object, objects_) : "";
}

std::vector<mzComVariantC> ScriptTable::argumentsOf(std::string cell) const {
    for (auto const& [word, meaning] : words_) {
        if (auto const at = cell.find(word); at != std::string::npos)
            cell.replace(at, word.size(), meaning);
    }
    return valuesOf(cell, objects_);
}

std::string ScriptTable::answer(DataRow const& row) {
    mzComPtrC const object = objectOf(row["object"]);
    std::string const before = stateAfter(object.iface());
    auto const words = wordsOf(row["call"]);
    mzComVariantC value = reference(object.iface());
    std::string text;
    for (std::size_t i = 1; i < words.size(); ++i) {
        if (i > 1) text += " | ";
        text += anonymous(told(object.iface(), words[i] == "()" ? "" : words[i], kindOf(words[0]),
                               argumentsOf(row["args"]), objects_, value));
    }
    if (row.has("keep") && !row["keep"].empty()) {
        mzComPtrT<mzIUnknown> kept;
        EXPECT_EQ(value.get(kept), mzSuccess) << "nothing to keep: " << text;
        objects_[row["keep"]] = mzComPtrC(kept.iface());
        text = described(value, objects_);
    }
    std::string const after = stateAfter(object.iface());
    return after == before ? text : text + " -> " + anonymous(after);
}

// Without what differs from run to run and from system to system: the folder of
// the test, and the system's words for an error.
std::string ScriptTable::anonymous(std::string text) const {
    if (folder_.empty()) return text;
    for (auto const* sign : {"/", "\\"}) {
        std::string const whole = "C:" + std::string(sign) + folder_;
        for (std::size_t at; (at = text.find(whole)) != std::string::npos;)
            text.replace(at, whole.size(), "F:");
    }
    auto const reason = text.rfind("': ");
    if (reason != std::string::npos) text.replace(reason + 3, std::string::npos, "...");
    return text;
}

void ScriptTable::check(char const* table) {
    expectTable(table, [this](DataRow const& row) { return answer(row); });
}

void ScriptTable::TearDown() {
    // Collections may hold each other.
    for (auto const& [name, object] : objects_) call(object.iface(), "RemoveAll", mzCallMethod);
}

}  // namespace velk::test
