/// Compound files that are put together byte by byte.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace velk::test {

/// A sound file first; then what shall be wrong in it is set in its bytes.
class CraftedFile {
  public:
    using Sector = std::uint32_t;
    static constexpr unsigned storage = 1, stream = 2;

    explicit CraftedFile(std::size_t sectorSize) : each_(sectorSize) { add(u"Root Entry", {}, 5); }

    /// An element in the storage with the number `parent`.
    void add(std::u16string const& name, std::string const& bytes, unsigned type = stream,
             std::size_t parent = 0) {
        elements_.push_back({name, bytes, type, parent});
    }
    /// The number of the last storage of that name.
    std::size_t lastStorage(std::u16string const& name) const;
    std::size_t sectorSize() const { return each_; }
    /// How many sectors with the table of sectors there are at least.
    void haveTables(std::size_t least) { tables_ = least; }

    /// The file, with all elements in their places. `damage` is statements with
    /// a `;` between them:
    ///
    ///     entry NAME:FIELD=PLACE    next PLACE=PLACE     header OFFSET=PLACE
    ///     small next PLACE=PLACE    cut=NUMBER           more=BYTES
    ///
    /// A FIELD is type, left, right, child, first or size; a PLACE is a number,
    /// `free`, the `first` or `last` sector or the `number` of an element, or
    /// where the `directory`, the `table` of sectors, the `list` of tables or
    /// the table of `small` sectors begins, with a number added or not.
    std::string build(std::string const& damage = {});

  private:
    struct Element {
        std::u16string name;
        std::string bytes;
        unsigned type;
        std::size_t parent;
        /// Of small streams, the numbers of small sectors.
        Sector first = endOfChain, last = endOfChain;
    };
    static constexpr Sector endOfChain = 0xFFFFFFFE, freeSector = 0xFFFFFFFF;

    void set(std::size_t at, std::uint64_t value, std::size_t size = 4);
    std::size_t find(std::string const& name) const;
    Sector placeOf(std::string const& words) const;
    void apply(std::string const& statement);
    Sector place(std::string const& bytes);
    void placeSmall();
    std::string entries() const;
    void placeTables();

    std::size_t each_;
    std::size_t tables_ = 1;
    std::vector<Element> elements_;
    std::vector<Sector> next_, smallNext_;
    Sector directory_ = endOfChain, table_ = endOfChain, list_ = endOfChain, small_ = endOfChain;
    std::string bytes_;
};

/// Texts between separators, without the spaces around them.
std::vector<std::string> partsOf(std::string const& text, char separator);

/// The name of an element; S and D stand for the streams of the summary sets.
std::u16string elementName(std::string const& notation);

}  // namespace velk::test
