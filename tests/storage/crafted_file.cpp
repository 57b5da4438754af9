#include "storage/crafted_file.h"

#include <algorithm>
#include <numeric>

namespace velk::test {
namespace {

constexpr std::size_t entrySize = 128, smallSize = 64, smallestBig = 4096, headerLists = 109;
constexpr CraftedFile::Sector tableSector = 0xFFFFFFFD, listSector = 0xFFFFFFFC;

void put(std::string& bytes, std::size_t at, std::uint64_t value, std::size_t size) {
    for (std::size_t i = 0; i < size; ++i) bytes[at + i] = static_cast<char>(value >> (8 * i));
}

std::string numbers(std::vector<CraftedFile::Sector> const& all) {
    std::string bytes(4 * all.size(), 0);
    for (std::size_t i = 0; i < all.size(); ++i) put(bytes, 4 * i, all[i], 4);
    return bytes;
}

}  // namespace

void CraftedFile::set(std::size_t at, std::uint64_t value, std::size_t size) {
    put(bytes_, at, value, size);
}

std::size_t CraftedFile::add(std::u16string const& name, std::string const& bytes, unsigned type,
                             std::size_t parent) {
    elements_.push_back({name, bytes, type, parent});
    return elements_.size() - 1;
}

std::size_t CraftedFile::find(std::u16string const& name) const {
    auto const found = std::ranges::find(elements_, name, &Element::name);
    return static_cast<std::size_t>(found - elements_.begin());
}

std::size_t CraftedFile::lastStorage(std::u16string const& name) const {
    std::size_t at = elements_.size();
    while (elements_.at(--at).type != storage || elements_[at].name != name) {
    }
    return at;
}

/// Appends bytes in sectors of their own, one behind the other.
CraftedFile::Sector CraftedFile::place(std::string const& bytes) {
    auto const first = static_cast<Sector>(next_.size());
    bytes_ += bytes;
    bytes_.resize((bytes_.size() + each_ - 1) / each_ * each_);
    while ((next_.size() + 1) * each_ < bytes_.size()) {
        next_.push_back(static_cast<Sector>(next_.size() + 1));
    }
    next_.back() = endOfChain;
    return first;
}

/// The streams below 4096 bytes in the root's.
void CraftedFile::placeSmall() {
    std::string container;
    for (Element& element : elements_) {
        if (element.bytes.empty() || element.bytes.size() >= smallestBig) continue;
        element.first = static_cast<Sector>(smallNext_.size());
        container += element.bytes;
        container.resize((container.size() + smallSize - 1) / smallSize * smallSize);
        while (smallNext_.size() * smallSize < container.size()) {
            smallNext_.push_back(static_cast<Sector>(smallNext_.size() + 1));
        }
        element.last = static_cast<Sector>(smallNext_.size() - 1);
        smallNext_.back() = endOfChain;
    }
    if (container.empty()) return;
    elements_[0].bytes = container;
    elements_[0].first = place(container);
    elements_[0].last = static_cast<Sector>(next_.size() - 1);
    smallNext_.resize((smallNext_.size() + each_ / 4 - 1) / (each_ / 4) * (each_ / 4), freeSector);
    smallTableAt_ = place(numbers(smallNext_));
    setHeader(60, smallTableAt_);
    setHeader(64, static_cast<Sector>(smallNext_.size() * 4 / each_));
}

std::string CraftedFile::entries() const {
    std::string bytes(elements_.size() * entrySize, 0);
    for (std::size_t i = 0; i < elements_.size(); ++i) {
        Element const& element = elements_[i];
        std::size_t const at = i * entrySize;
        for (std::size_t k = 0; k < element.name.size(); ++k) {
            put(bytes, at + 2 * k, element.name[k], 2);
        }
        put(bytes, at + 64, element.name.empty() ? 0 : 2 * (element.name.size() + 1), 2);
        put(bytes, at + typeAt, element.type + 256, 2);
        for (std::size_t const link : {leftAt, rightAt, childAt}) {
            put(bytes, at + link, freeSector, 4);
        }
        put(bytes, at + firstAt, element.first, 4);
        put(bytes, at + sizeAt, element.bytes.size(), 4);
    }
    // Trees that go to the right only, in the published order: shorter names first.
    std::vector<std::size_t> order(elements_.size() - 1);
    std::iota(order.begin(), order.end(), std::size_t{1});
    std::ranges::stable_sort(order, {}, [&](std::size_t i) {
        auto name = elements_[i].name;
        for (auto& unit : name) unit -= unit >= u'a' && unit <= u'z' ? 32 : 0;
        return std::pair(name.size(), name);
    });
    std::vector<std::size_t> links;
    for (std::size_t i = 0; i < elements_.size(); ++i) links.push_back(i * entrySize + childAt);
    for (std::size_t const inner : order) {
        auto& link = links[elements_[inner].parent];
        put(bytes, link, inner, 4);
        link = inner * entrySize + rightAt;
    }
    return bytes;
}

void CraftedFile::placeTables() {
    std::size_t const perTable = each_ / 4;
    auto const listsFor = [&](std::size_t tables) {
        return tables <= headerLists ? 0 : (tables - headerLists + perTable - 2) / (perTable - 1);
    };
    while (tables_ * perTable < next_.size() + tables_ + listsFor(tables_)) ++tables_;
    std::size_t const lists = listsFor(tables_);
    std::vector<Sector> places(tables_);
    std::iota(places.begin(), places.end(), static_cast<Sector>(next_.size() + lists));
    std::vector<Sector> inHeader(headerLists, freeSector), inLists;
    for (std::size_t i = 0; i < tables_; ++i) {
        if (i < headerLists) {
            inHeader[i] = places[i];
            continue;
        }
        if (inLists.size() % perTable == perTable - 1) {
            inLists.push_back(static_cast<Sector>(next_.size() + inLists.size() / perTable + 1));
        }
        inLists.push_back(places[i]);
    }
    if (lists != 0) {
        inLists.resize(lists * perTable, freeSector);
        inLists.back() = endOfChain;
        list_ = place(numbers(inLists));
        std::fill_n(next_.begin() + list_, lists, listSector);
    }
    tableAt_ = static_cast<Sector>(next_.size());
    auto table = next_;
    table.resize(next_.size() + tables_, tableSector);
    table.resize(tables_ * perTable, freeSector);
    place(numbers(table));
    setHeader(44, static_cast<Sector>(tables_));
    setHeader(68, list_);
    setHeader(72, static_cast<Sector>(lists));
    bytes_.replace(76, headerLists * 4, numbers(inHeader));
}

void CraftedFile::build() {
    bool const isLarge = each_ != 512;
    bytes_.assign(each_, 0);
    bytes_.replace(0, 8, "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1");
    set(24, 0x3E, 2);
    set(26, isLarge ? 4 : 3, 2);
    set(28, 0xFFFE, 2);
    set(30, isLarge ? 12 : 9, 2);
    set(32, 6, 2);
    set(56, smallestBig);
    setHeader(60, endOfChain);
    for (Element& element : elements_) {
        if (element.bytes.size() < smallestBig) continue;
        element.first = place(element.bytes);
        element.last = static_cast<Sector>(next_.size() - 1);
    }
    placeSmall();
    directory_ = place(entries());
    setHeader(48, directory_);
    if (isLarge) setHeader(40, static_cast<Sector>(next_.size() - directory_));
    // Free ones, in which there are bytes.
    std::size_t const used = next_.size();
    place(std::string(2 * each_, 'f'));
    std::fill(next_.begin() + static_cast<std::ptrdiff_t>(used), next_.end(), freeSector);
    placeTables();
}

}  // namespace velk::test
