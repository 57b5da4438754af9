#include "platform/typelib/model/names.h"

#include <algorithm>

namespace velk::typelib {
namespace {

constexpr char16_t lower(char16_t unit) {
    bool const ascii = unit >= u'A' && unit <= u'Z';
    bool const latin = unit >= 0xC0 && unit <= 0xDE && unit != 0xD7;
    bool const greek = unit >= 0x391 && unit <= 0x3A9 && unit != 0x3A2;
    bool const cyrillic = unit >= 0x410 && unit <= 0x42F;
    if (ascii || latin || greek || cyrillic) return unit + 0x20;
    bool const cyrillicExtension = unit >= 0x400 && unit <= 0x40F;
    return cyrillicExtension ? unit + 0x50 : unit;
}

std::vector<MemberPlace> const noPlaces;
std::vector<LibraryIndex::Occurrence> const noOccurrences;

}  // namespace

std::u16string folded(Text name) {
    std::u16string text(name);
    std::transform(text.begin(), text.end(), text.begin(), lower);
    return text;
}

bool sameName(Text left, Text right) {
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](char16_t a, char16_t b) { return lower(a) == lower(b); });
}

MemberIndex::MemberIndex(TypeModel const& type) {
    auto const add = [this](Text name, MEMBERID id, MemberPlace place) {
        if (!name.empty()) byName_[folded(name)].push_back(place);
        byId_[id].push_back(place);
    };
    for (std::size_t i = 0; i < type.functions.size(); ++i) {
        add(type.functions[i].name, type.functions[i].id, {false, i});
    }
    for (std::size_t i = 0; i < type.variables.size(); ++i) {
        add(type.variables[i].name, type.variables[i].id, {true, i});
    }
}

std::vector<MemberPlace> const& MemberIndex::named(std::u16string const& foldedName) const {
    auto const found = byName_.find(foldedName);
    return found == byName_.end() ? noPlaces : found->second;
}

std::vector<MemberPlace> const& MemberIndex::identified(MEMBERID id) const {
    auto const found = byId_.find(id);
    return found == byId_.end() ? noPlaces : found->second;
}

std::size_t LibraryIndex::GuidHash::operator()(GUID const& id) const noexcept {
    return std::hash<std::string_view>()({reinterpret_cast<char const*>(&id), sizeof id});
}

LibraryIndex::LibraryIndex(LibraryModel const& model) : typeCount_(model.types.size()) {
    for (std::size_t i = 0; i < model.types.size(); ++i) {
        auto const& type = model.types[i];
        auto const add = [&](Text name, MEMBERID member) {
            if (!name.empty()) byName_[folded(name)].push_back({i, member, name});
        };
        add(type.name, MEMBERID_NIL);
        for (auto const& function : type.functions) add(function.name, function.id);
        for (auto const& variable : type.variables) add(variable.name, variable.id);
        if (type.id != GUID_NULL) byId_.emplace(type.id, i);
    }
}

std::vector<LibraryIndex::Occurrence> const& LibraryIndex::named(
    std::u16string const& foldedName) const {
    auto const found = byName_.find(foldedName);
    return found == byName_.end() ? noOccurrences : found->second;
}

std::size_t LibraryIndex::identified(REFGUID id) const {
    auto const found = byId_.find(id);
    return found == byId_.end() ? typeCount_ : found->second;
}

}  // namespace velk::typelib
