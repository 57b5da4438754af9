#include "storage/compound_reader.h"

#include <algorithm>
#include <cstdint>
#include <set>
#include <vector>

namespace velk::test {
namespace {

using Table = std::vector<std::uint32_t>;
constexpr std::size_t entrySize = 128, smallSize = 64;
constexpr std::uint64_t toTheEnd = ~std::uint64_t{0};

Table numbersIn(std::string const& bytes) {
    Table numbers;
    for (std::size_t at = 0; at < bytes.size(); at += 4) {
        numbers.push_back(static_cast<std::uint32_t>(numberIn(bytes, at)));
    }
    return numbers;
}

/// `part` gives the bytes of a sector; none where there is no such sector.
template <typename Part>
std::string follow(Table const& table, std::uint64_t at, std::uint64_t size, Part part) {
    std::string bytes;
    for (std::size_t steps = 0; bytes.size() < size && steps <= table.size(); ++steps) {
        std::string const next = part(at);
        bytes += next;
        if (next.empty() || at >= table.size()) break;
        at = table[static_cast<std::size_t>(at)];
    }
    if (bytes.size() > size) bytes.resize(static_cast<std::size_t>(size));
    return bytes;
}

class Reader {
  public:
    explicit Reader(std::string const& file)
        : file_(file), each_(std::size_t{1} << (numberIn(file, 30, 2) & 15)) {
        readTable();
        directory_ = chain(numberIn(file_, 48), toTheEnd);
        auto const root = entry(0);
        container_ = chain(numberIn(root, 116), sizeOf(root));
        bool const hasSmall = numberIn(file_, 64) != 0;
        if (hasSmall) smallTable_ = numbersIn(chain(numberIn(file_, 60), toTheEnd));
    }

    Elements elements() {
        Elements all;
        auto root = entry(0);
        std::fill(root.begin() + 67, root.begin() + 80, 0);
        root.resize(116);
        all.insert({{}, {root, {}, true}});
        walk(0, {}, all);
        return all;
    }

  private:
    std::string sector(std::uint64_t id) const {
        std::uint64_t const at = (id + 1) * each_;
        if (at >= file_.size()) return {};
        std::string bytes = file_.substr(static_cast<std::size_t>(at), each_);
        bytes.resize(each_);
        return bytes;
    }
    std::string chain(std::uint64_t first, std::uint64_t size) const {
        return follow(table_, first, size, [&](std::uint64_t id) { return sector(id); });
    }
    std::string smallChain(std::uint64_t first, std::uint64_t size) const {
        return follow(smallTable_, first, size, [&](std::uint64_t id) {
            bool const isThere = id * smallSize < container_.size();
            return isThere ? container_.substr(static_cast<std::size_t>(id) * smallSize, smallSize)
                           : std::string();
        });
    }
    std::string entry(std::uint64_t id) const {
        if (id >= directory_.size() / entrySize) return {};
        return directory_.substr(static_cast<std::size_t>(id) * entrySize, entrySize);
    }
    std::uint64_t sizeOf(std::string const& entry) const {
        return numberIn(entry, 120, numberIn(file_, 26, 2) >= 4 ? 8 : 4);
    }

    void readTable() {
        std::uint64_t const count = numberIn(file_, 44);
        Table places;
        for (std::size_t i = 0; i < 109; ++i) {
            places.push_back(static_cast<std::uint32_t>(numberIn(file_, 76 + 4 * i)));
        }
        std::uint64_t at = numberIn(file_, 68);
        for (std::string list; places.size() < count && !(list = sector(at)).empty();) {
            auto const more = numbersIn(list);
            places.insert(places.end(), more.begin(), more.end() - 1);
            at = more.back();
        }
        if (places.size() > count) places.resize(static_cast<std::size_t>(count));
        for (auto const place : places) {
            auto part = numbersIn(sector(place));
            part.resize(each_ / 4, 0xFFFFFFFF);
            table_.insert(table_.end(), part.begin(), part.end());
        }
    }

    /// The zero at the end counts, where it is there.
    static std::u16string nameOf(std::string const& entry) {
        std::u16string name;
        std::size_t const size = std::min<std::size_t>(numberIn(entry, 64, 2), 64);
        for (std::size_t i = 0; i + 2 <= size; i += 2) {
            name += static_cast<char16_t>(numberIn(entry, i, 2));
        }
        if (!name.empty() && name.back() == 0) name.pop_back();
        return name;
    }
    bool isFoundByName(std::uint64_t storage, std::uint64_t wanted) const {
        auto const name = upperName(nameOf(entry(wanted)));
        std::uint64_t at = numberIn(entry(storage), 76);
        for (std::size_t steps = 0; steps * entrySize < directory_.size(); ++steps) {
            auto const met = entry(at);
            auto const other = upperName(nameOf(met));
            if (met.empty() || other == name) return !met.empty();
            bool const isLess =
                name.size() != other.size() ? name.size() < other.size() : name < other;
            at = numberIn(met, isLess ? 68 : 72);
        }
        return false;
    }

    void walk(std::uint64_t storage, std::u16string const& path, Elements& all) {
        struct Place {
            std::uint64_t id;
            bool isLeftDone;
        };
        std::vector<Place> open{{numberIn(entry(storage), 76), false}};
        while (!open.empty()) {
            auto const [id, isLeftDone] = open.back();
            open.pop_back();
            auto const found = entry(id);
            if (!isLeftDone) {
                if (found.empty() || id == 0 || !seen_.insert(id).second) continue;
                open.insert(
                    open.end(),
                    {{numberIn(found, 72), false}, {id, true}, {numberIn(found, 68), false}});
                continue;
            }
            if (found[66] == 0) continue;
            auto const inner = path + u'/' + nameOf(found);
            Element element = elementOf(found);
            element.isFound = isFoundByName(storage, id);
            all.insert({inner, element});
            if (found[66] != 2) walk(id, inner, all);
        }
    }
    Element elementOf(std::string entry) const {
        Element element;
        bool const isStream = entry[66] == 2;
        std::uint64_t const first = numberIn(entry, 116), size = sizeOf(entry);
        if (entry[66] != 1) {
            element.bytes = size < 4096 ? smallChain(first, size) : chain(first, size);
        }
        std::fill(entry.begin() + 67, entry.begin() + (isStream ? 80 : 76), 0);
        if (isStream) std::fill(entry.begin() + 116, entry.begin() + 120, 0);
        // What is in a storage is told by the paths.
        if (entry[66] == 1) std::fill(entry.begin() + 76, entry.begin() + 80, 0);
        element.entry = entry;
        return element;
    }

    std::string const& file_;
    std::size_t const each_;
    Table table_, smallTable_;
    std::string directory_, container_;
    std::set<std::uint64_t> seen_;
};

}  // namespace

std::uint64_t numberIn(std::string const& bytes, std::size_t at, std::size_t size) {
    std::uint64_t number = 0;
    for (std::size_t i = size; i-- > 0;) {
        bool const isThere = at + i < bytes.size();
        number = number << 8 | (isThere ? static_cast<unsigned char>(bytes[at + i]) : 0);
    }
    return number;
}

std::u16string upperName(std::u16string name) {
    for (auto& unit : name) unit -= unit >= u'a' && unit <= u'z' ? 32 : 0;
    return name;
}

Elements elementsOf(std::string const& file) {
    return Reader(file).elements();
}

}  // namespace velk::test
