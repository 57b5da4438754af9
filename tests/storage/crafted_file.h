/// Compound files that are put together byte by byte.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace velk::test {

/// A sound file first; what shall be wrong in it is set in its bytes then.
class CraftedFile {
  public:
    using Sector = std::uint32_t;
    static constexpr Sector endOfChain = 0xFFFFFFFE, freeSector = 0xFFFFFFFF;
    static constexpr unsigned storage = 1, stream = 2;
    // Where an entry has what.
    static constexpr std::size_t typeAt = 66, leftAt = 68, rightAt = 72, childAt = 76,
                                 firstAt = 116, sizeAt = 120;

    explicit CraftedFile(std::size_t sectorSize) : each_(sectorSize) { add(u"Root Entry", {}, 5); }

    /// An element in the storage with the number `parent`; its own number.
    std::size_t add(std::u16string const& name, std::string const& bytes, unsigned type = stream,
                    std::size_t parent = 0);
    std::size_t sectorSize() const { return each_; }
    /// How many sectors with the table of sectors there are at least.
    void haveTables(std::size_t least) { tables_ = least; }
    /// Gives all elements their places. Nothing can be added then.
    void build();

    /// The number of the first element of the name.
    std::size_t find(std::u16string const& name) const;
    std::size_t lastStorage(std::u16string const& name) const;
    /// The first and the last sector of an element; of small streams, of theirs.
    Sector first(std::size_t element) const { return elements_[element].first; }
    Sector last(std::size_t element) const { return elements_[element].last; }
    Sector directory() const { return directory_; }
    Sector table() const { return tableAt_; }
    Sector listOfTables() const { return list_; }
    Sector smallTable() const { return smallTableAt_; }

    void setHeader(std::size_t at, Sector value) { set(at, value); }
    void setEntry(std::size_t element, std::size_t at, std::uint64_t value, std::size_t size = 4) {
        set((std::size_t{directory_} + 1) * each_ + element * 128 + at, value, size);
    }
    /// What follows a sector in its chain.
    void setNext(Sector sector, Sector next) {
        set((std::size_t{tableAt_} + 1) * each_ + std::size_t{4} * sector, next);
    }
    void setSmallNext(Sector sector, Sector next) {
        set((std::size_t{smallTableAt_} + 1) * each_ + std::size_t{4} * sector, next);
    }

    std::string& bytes() { return bytes_; }

  private:
    struct Element {
        std::u16string name;
        std::string bytes;
        unsigned type;
        std::size_t parent;
        Sector first = endOfChain, last = endOfChain;
    };

    void set(std::size_t at, std::uint64_t value, std::size_t size = 4);
    Sector place(std::string const& bytes);
    void placeSmall();
    std::string entries() const;
    void placeTables();

    std::size_t each_;
    std::size_t tables_ = 1;
    std::vector<Element> elements_;
    std::vector<Sector> next_, smallNext_;
    Sector directory_ = endOfChain, tableAt_ = endOfChain, list_ = endOfChain,
           smallTableAt_ = endOfChain;
    std::string bytes_;
};

}  // namespace velk::test
