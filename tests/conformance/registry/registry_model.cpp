#include "conformance/registry/registry_model.h"

#include <algorithm>
#include <cstdlib>
#include <iostream>

#include <gtest/gtest.h>

namespace velk::test {
namespace {

// In the order in which names are listed: that of their large letters.
constexpr char const* names[][2] = {{"a", "A"},     {"ab", "aB"}, {"c", "C"},
                                    {"d/e", "D/e"}, {"ä", "Ä"},   {"ж", "Ж"}};
constexpr int nameCount = 6, defaultName = -1;

unsigned numberFrom(char const* variable, unsigned usual) {
    char const* const text = std::getenv(variable);
    return text == nullptr ? usual : static_cast<unsigned>(std::atoi(text));
}

using Random = std::mt19937;

int below(Random& random, std::size_t limit) {
    return static_cast<int>(random() % limit);
}

ModelCall::Name drawName(Random& random) {
    // Few most of the time, so that calls meet each other's keys.
    return {below(random, random() % 4 == 0 ? nameCount : 2), random() % 3 == 0};
}

}  // namespace

std::string ModelCall::Name::text() const {
    return place == defaultName ? "-" : names[place][isLarge ? 1 : 0];
}

std::string ModelCall::words(std::string const& front) const {
    // The classes of both hives show below C.
    auto key = base == "C"                  ? base + front.substr(front.rfind('/'))
               : base == "U" || base == "M" ? base + front
                                            : base;
    for (auto const& name : path) {
        auto text = name.text();
        std::replace(text.begin(), text.end(), '/', '\\');
        key += '/' + text;
    }
    auto words = base.empty() ? verb : verb + ' ' + key;
    if (verb == "put" || verb == "get" || verb == "drop") words += ' ' + valueName.text();
    if (verb == "open") words += " all";
    return argument.empty() ? words : words + ' ' + argument;
}

RegistryModel::NodePointer RegistryModel::copied(NodePointer const& node) {
    auto copy = std::make_shared<Node>(*node);
    for (auto& [place, child] : copy->children) child = copied(child);
    return copy;
}

void RegistryModel::clear(Node& node) {
    node.values.clear();
    for (auto const& [place, child] : node.children) {
        child->isGone = true;
        clear(*child);
    }
    node.children.clear();
}

void RegistryModel::closeAll() {
    std::erase_if(bases_, [](auto const& base) { return base.second.key != nullptr; });
}

std::vector<RegistryModel::NodePointer> RegistryModel::keysAt(Roots const& roots,
                                                              Path const& path) {
    std::vector<NodePointer> keys;
    for (auto node : roots) {
        for (auto name = path.begin(); node && name != path.end(); ++name) {
            auto const child = node->children.find(name->place);
            node = child == node->children.end() ? nullptr : child->second;
        }
        if (node) keys.push_back(node);
    }
    return keys;
}

/// Of a merged key the machine has the new one, unless the deepest key of the
/// path that exists is the user's alone.
std::string RegistryModel::make(Roots const& roots, Path const& path) {
    auto root = roots.front();
    for (auto front = path; roots.size() > 1; front.pop_back()) {
        if (keysAt(roots, front).empty()) continue;
        root = keysAt({machine_}, front).empty() ? user_ : machine_;
        break;
    }
    for (auto const& name : path) {
        auto& child = root->children[name.place];
        if (!child) child = std::make_shared<Node>(Node{name.text(), {}, {}, false});
        root = child;
    }
    return "new";
}

std::string RegistryModel::list(std::vector<NodePointer> const& keys) {
    std::map<int, std::string> below, own;
    for (auto const& key : keys) {
        for (auto const& [place, child] : key->children) below.emplace(place, child->name);
        for (auto const& [place, value] : key->values) own.emplace(place, value.first);
    }
    auto const joined = [](auto const& all) {
        std::string text;
        for (auto const& [place, name] : all) text += (text.empty() ? "" : ",") + name;
        return text;
    };
    return joined(below) + '|' + joined(own);
}

std::string RegistryModel::onValue(ModelCall const& call, std::vector<NodePointer> const& keys) {
    auto const place = call.valueName.place;
    if (call.verb == "put") {
        auto& values = keys.front()->values;
        values.try_emplace(place, call.valueName.text(), "").first->second.second = call.argument;
        return "ok";
    }
    for (auto const& key : keys) {
        auto const value = key->values.find(place);
        if (value == key->values.end()) continue;
        if (call.verb == "get") return value->second.second;
        return key->values.erase(value), "ok";
    }
    return "missing";
}

/// Takes keys away: the first one, where it has none below it, or all of them.
std::string RegistryModel::onTree(ModelCall const& call, Roots const& roots, Path const& path) {
    auto const keys = keysAt(roots, path);
    if (call.verb == "delete" && !keys.front()->children.empty()) return "denied";
    for (auto const& key : keys) {
        clear(*key);
        // Without a path the key itself stays.
        if (call.path.empty()) continue;
        key->isGone = true;
        auto parent = path;
        parent.pop_back();
        for (auto const& above : keysAt(roots, parent)) {
            std::erase_if(above->children, [&](auto const& child) { return child.second == key; });
        }
        if (call.verb == "delete") break;
    }
    return "ok";
}

std::string RegistryModel::transact(std::string const& verb) {
    closeAll();
    if (verb == "begin") {
        before_ = {copied(user_), copied(machine_)};
    } else if (verb == "rollback") {
        user_->children = before_[0]->children, user_->values = before_[0]->values;
        machine_->children = before_[1]->children, machine_->values = before_[1]->values;
    }
    if (verb != "begin") before_.clear();
    return "ok";
}

std::string RegistryModel::answer(ModelCall const& call) {
    if (call.base.empty()) return transact(call.verb);
    if (call.verb == "close") return bases_.erase(call.base), "ok";
    auto const& base = bases_.at(call.base);
    if (base.key && base.key->isGone) return "gone";
    auto path = base.path;
    path.insert(path.end(), call.path.begin(), call.path.end());
    auto const keys = keysAt(base.roots, path);
    if (call.verb == "make") return keys.empty() ? make(base.roots, path) : "old";
    if (keys.empty()) return "missing";
    if (call.verb == "list") return list(keys);
    if (call.verb == "delete" || call.verb == "tree") return onTree(call, base.roots, path);
    if (call.verb != "open") return onValue(call, keys);
    bool const isMerged = base.roots.size() > 1;
    auto const roots = isMerged ? base.roots : Roots{keys.front()};
    bases_.insert_or_assign(call.argument, Base{roots, isMerged ? path : Path(), keys.front()});
    return "ok";
}

bool RegistryModel::allows(ModelCall const& call) const {
    bool const ends = call.verb == "commit" || call.verb == "rollback";
    return call.base.empty() ? ends == !before_.empty() : bases_.contains(call.base);
}

namespace {

std::vector<ModelCall> drawCalls(unsigned seed, std::string const& roots, bool hasProcesses) {
    constexpr char const* verbs[] = {"make", "make", "make",   "put",    "put",  "get",
                                     "get",  "list", "list",   "drop",   "open", "open",
                                     "open", "tree", "delete", "delete", "close"};
    constexpr char const* values[] = {
        "text", "3=", "3=00ff07", "4=01000000", "11=0102030405060708", "1=610062", "999=09", "öж"};
    Random random(seed);
    RegistryModel model;
    std::vector<ModelCall> calls;
    while (calls.size() < 60) {
        ModelCall call;
        if (hasProcesses && random() % 12 == 0) {
            constexpr char const* turns[] = {"process", "begin", "commit", "rollback"};
            call.verb = turns[below(random, 4)];
            if (!model.allows(call)) continue;
        } else {
            call.verb = verbs[below(random, std::size(verbs))];
            call.base = random() % 2 == 0
                            ? std::string(1, roots[random() % roots.size()])
                            : std::string("k") + static_cast<char>('0' + random() % 3);
            if (!model.allows(call)) continue;
            for (auto length = random() % (call.base.size() > 1 ? 2 : 4); length > 0; --length) {
                call.path.push_back(drawName(random));
            }
            bool const isRoot = roots.find(call.base) != roots.npos;
            // What making no new key tells is not the same everywhere.
            bool const needsPath = call.verb == "delete" || (call.verb == "tree" && isRoot) ||
                                   (call.verb == "make" && !hasProcesses);
            if (call.verb == "close" ? isRoot : needsPath && call.path.empty()) continue;
            if (call.verb == "close") call.path.clear();
            call.valueName = random() % 4 == 0 ? ModelCall::Name{defaultName} : drawName(random);
            if (call.verb == "put") call.argument = values[below(random, std::size(values))];
            if (call.verb == "open") call.argument = std::string("k") + "012"[random() % 3];
        }
        model.answer(call);
        calls.push_back(call);
    }
    return calls;
}

}  // namespace

std::size_t compare(std::vector<ModelCall> const& calls, std::size_t from, std::string const& front,
                    bool tells, std::function<std::string(std::string const&)> const& answer) {
    RegistryModel model;
    std::size_t at = 0;
    for (; at < calls.size(); ++at) {
        auto const& call = calls[at];
        if (!model.allows(call)) continue;
        if (at > from && call.verb == "process") break;
        auto const expected = model.answer(call);
        if (at < from || call.verb == "process") continue;
        auto const words = call.words(front);
        auto const actual = answer(words);
        if (actual == expected) continue;
        if (tells) std::cerr << words << ": " << actual << ", and not " << expected << '\n';
        return at;
    }
    return at;
}

void expectRounds(std::string const& roots, bool hasProcesses, FirstWrong const& firstWrong) {
    unsigned const first = numberFrom("VELK_SEED", 1), rounds = numberFrom("VELK_ROUNDS", 20);
    for (unsigned seed = first; seed < first + rounds; ++seed) {
        auto calls = drawCalls(seed, roots, hasProcesses);
        if (firstWrong(calls, false) == calls.size()) continue;
        for (auto at = calls.size(); at-- > 0;) {
            auto fewer = calls;
            fewer.erase(fewer.begin() + static_cast<long>(at));
            if (firstWrong(fewer, false) < fewer.size()) calls = fewer;
        }
        std::string told = "seed " + std::to_string(seed) + ", as few calls as fail:";
        for (auto const& call : calls) told += "\n  " + call.words("/front");
        ADD_FAILURE() << told;
        firstWrong(calls, true);
        return;
    }
}

}  // namespace velk::test
