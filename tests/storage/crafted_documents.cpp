#include "storage/documents.h"

#include <initializer_list>

#include "conformance/storage_properties/set_bytes.h"
#include "storage/crafted_file.h"

namespace velk::test {
namespace {

using Refused = std::map<std::string, HRESULT>;

constexpr char16_t summaryName[] = u"\5SummaryInformation",
                   documentName[] = u"\5DocumentSummaryInformation";

std::string pattern(std::size_t size, std::size_t seed) {
    std::string bytes(size, 0);
    for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<char>(i * 7 + i / 251 + seed);
    return bytes;
}

/// What is left of a file that has no sets.
void fillWithoutSets(CraftedFile& file) {
    file.add(u"Workbook", pattern(9000, 1));
    auto const inner = file.add(u"inner", {}, CraftedFile::storage);
    file.add(u"deep", pattern(5000, 2), CraftedFile::stream, inner);
    file.add(u"other", pattern(4096, 3));
}

std::string summary(std::size_t padding = 0) {
    return header({FMTID_SummaryInformation}, {section({{1, codePage(1252)},
                                                        {2, text("A title")},
                                                        {4, text("Somebody")},
                                                        {5, text(std::string(padding, 'p'))}})});
}

std::string customSection() {
    std::string const names = number32(1) + number32(2) + number32(5) + std::string("kept\0", 5);
    return section({{0, names + std::string(3, '\0')}, {1, codePage(1252)}, {2, text("value")}});
}

std::string documentSummary(std::size_t padding = 0) {
    auto const first =
        section({{1, codePage(1252)}, {15, text("Us")}, {14, text(std::string(padding, 'p'))}});
    return header({FMTID_DocSummaryInformation, FMTID_UserDefinedProperties},
                  {first, customSection()});
}

void fillSmallStreams(CraftedFile& file) {
    file.add(u"small", pattern(200, 4));
    file.add(u"Small 2", pattern(64, 5));
    file.add(u"deep small", pattern(300, 6), CraftedFile::stream, file.find(u"inner"));
    file.add(u"empty", {});
}

void fillUsual(CraftedFile& file) {
    file.add(summaryName, summary());
    file.add(documentName, documentSummary());
    fillWithoutSets(file);
    fillSmallStreams(file);
}

void fillWithBigSets(CraftedFile& file) {
    file.add(summaryName, summary(5000));
    file.add(documentName, documentSummary(5000));
    fillWithoutSets(file);
    fillSmallStreams(file);
}

/// More than the header has places for.
void fillManyTables(CraftedFile& file) {
    fillUsual(file);
    file.haveTables(file.sectorSize() == 512 ? 240 : 120);
}

/// One way in which a file is not as usual.
struct Oddity {
    char const* name;
    void (*fill)(CraftedFile&);
    void (*damage)(CraftedFile&) = [](CraftedFile&) {};
    Refused refused = {};
};

/// The links of an element's siblings lead by it.
void makeUnknown(CraftedFile& file, std::u16string const& name, unsigned type) {
    file.setEntry(file.find(name), CraftedFile::typeAt, type, 1);
}

std::vector<Oddity> odditiesOfTables() {
    return {
        {"RootStartsAt0WithSize0", fillWithoutSets,
         [](CraftedFile& file) { file.setEntry(0, CraftedFile::firstAt, 0); }},
        {"SmallTableAt0WithCount0", fillWithoutSets,
         [](CraftedFile& file) {
             file.setHeader(CraftedFile::smallTableAt, 0);
             file.setEntry(0, CraftedFile::firstAt, 0);
         }},
        {"EmptyRootStartsInAnotherStream", fillWithoutSets,
         [](CraftedFile& file) {
             file.setEntry(0, CraftedFile::firstAt, file.first(file.find(u"Workbook")));
             file.setHeader(CraftedFile::smallTableAt, file.directory());
         }},
        {"ListOfTables", fillManyTables},
        {"TablesMarkedFree", fillUsual,
         [](CraftedFile& file) { file.setNext(file.table(), CraftedFile::freeSector); }},
        {"ListOfTablesMarkedFree", fillManyTables,
         [](CraftedFile& file) {
             file.setNext(file.listOfTables(), CraftedFile::freeSector);
             file.setNext(file.listOfTables() + 1, CraftedFile::freeSector);
             file.setNext(file.table() + 115, CraftedFile::freeSector);
         }},
        {"DirectoryMarkedFree", fillUsual,
         [](CraftedFile& file) {
             // Two that are free stand between.
             file.setNext(file.table() - 3, CraftedFile::freeSector);
         }},
        {"SmallTableMarkedFree", fillUsual,
         [](CraftedFile& file) { file.setNext(file.smallTable(), CraftedFile::freeSector); }},
        {"StreamMarkedFree", fillUsual,
         [](CraftedFile& file) {
             auto const book = file.find(u"Workbook");
             for (auto at = file.first(book); at <= file.last(book); ++at) {
                 file.setNext(at, at == file.last(book) ? CraftedFile::freeSector : at + 1);
             }
             file.setNext(file.last(file.find(u"deep")), CraftedFile::freeSector);
         }},
        {"SmallStreamMarkedFree", fillUsual,
         [](CraftedFile& file) {
             file.setSmallNext(file.last(file.find(u"small")), CraftedFile::freeSector);
             file.setSmallNext(file.last(file.find(u"Small 2")), CraftedFile::freeSector);
         }},
        {"RootMarkedFree", fillUsual,
         [](CraftedFile& file) { file.setNext(file.last(0), CraftedFile::freeSector); }},
    };
}

/// Of these steps, STG_E_DOCFILECORRUPT.
Refused damaged(std::initializer_list<char const*> steps) {
    Refused all;
    for (auto const* step : steps) all[step] = STG_E_DOCFILECORRUPT;
    return all;
}

std::vector<Oddity> odditiesOfChains() {
    Refused smallOnes =
        damaged({"add", "change", "remove", "company", "title", "shorten", "add elements"});
    smallOnes["rename"] = STG_E_FILENOTFOUND;
    return {
        {"SetRunsIntoTheDirectory", fillWithBigSets,
         [](CraftedFile& file) {
             file.setNext(file.last(file.find(documentName)), file.directory());
             file.setNext(file.last(file.find(summaryName)), file.directory());
         }},
        {"SetRunsIntoAnotherStream", fillWithBigSets,
         [](CraftedFile& file) {
             file.setNext(file.last(file.find(documentName)), file.first(file.find(u"Workbook")));
         }},
        {"SmallSetRunsIntoAnother", fillUsual,
         [](CraftedFile& file) {
             file.setSmallNext(file.last(file.find(documentName)), file.first(file.find(u"small")));
             file.setSmallNext(file.last(file.find(summaryName)),
                               file.first(file.find(u"deep small")));
         }},
        {"RootRunsIntoTheDirectory", fillUsual,
         [](CraftedFile& file) { file.setNext(file.last(0), file.directory()); }},
        {"StreamRunsIntoTheDirectory", fillUsual,
         [](CraftedFile& file) {
             file.setNext(file.last(file.find(u"Workbook")), file.directory());
         }},
        {"RootIsShorterThanItsSize", fillUsual,
         [](CraftedFile& file) { file.setEntry(0, CraftedFile::sizeAt, 1 << 20); },
         damaged({"remove", "shorten", "add elements"})},
        {"RootIsLongerThanItsSize", fillUsual,
         [](CraftedFile& file) { file.setEntry(0, CraftedFile::sizeAt, 640); }, smallOnes},
        {"StreamIsShorterThanItsSize", fillUsual,
         [](CraftedFile& file) {
             file.setEntry(file.find(u"Workbook"), CraftedFile::sizeAt, 1 << 30);
             file.setEntry(file.find(u"other"), CraftedFile::sizeAt, 20000);
         },
         damaged({"overwrite", "lengthen", "shorten", "destroy"})},
        {"StreamsShareTheirSectors", fillUsual,
         [](CraftedFile& file) {
             file.setEntry(file.find(u"other"), CraftedFile::firstAt,
                           file.first(file.find(u"Workbook")));
             file.setEntry(file.find(u"Small 2"), CraftedFile::firstAt,
                           file.first(file.find(u"small")));
         },
         damaged({"overwrite", "shorten", "destroy"})},
        {"CutInTheLastSector", fillUsual,
         [](CraftedFile& file) { file.bytes().resize(file.bytes().size() - 100); }},
        {"BytesBehindTheEnd", fillUsual, [](CraftedFile& file) { file.bytes() += "behind"; }},
    };
}

std::vector<Oddity> odditiesOfNames() {
    return {
        {"EmptyNames",
         [](CraftedFile& file) {
             fillUsual(file);
             file.add(u"", pattern(100, 7));
             auto const inner = file.add(u"", {}, CraftedFile::storage);
             file.add(u"in a nameless one", pattern(100, 8), CraftedFile::stream, inner);
             file.add(u"", pattern(5000, 9));
         }},
        {"EqualNames",
         [](CraftedFile& file) {
             fillUsual(file);
             for (auto const* name : {u"same", u"SAME", u"Same", u"same"}) {
                 auto const inner = file.add(name, {}, CraftedFile::storage);
                 file.add(name, pattern(100, inner), CraftedFile::stream, inner);
                 file.add(name, pattern(4500, inner));
             }
         }},
        {"NamesWithAZeroInside",
         [](CraftedFile& file) {
             fillUsual(file);
             for (auto const* name : {u"ab_c", u"ab_d", u"a__b", u"_abc"}) {
                 std::u16string zeros = name;
                 for (auto& unit : zeros) unit = unit == u'_' ? u'\0' : unit;
                 file.add(zeros, pattern(100, 3));
             }
         }},
        {"UnknownKinds",
         [](CraftedFile& file) {
             fillUsual(file);
             for (unsigned const kind : {3U, 4U, 6U, 7U}) {
                 auto const name = u"unknown " + std::u16string(1, u'0' + kind);
                 file.add(name, pattern(std::size_t{900} * kind, kind), kind);
             }
         }},
        {"UnknownAbove", fillUsual,
         [](CraftedFile& file) {
             makeUnknown(file, u"deep", 3);
             makeUnknown(file, u"small", 7);
             makeUnknown(file, u"empty", 4);
         }},
        {"UnusedAbove", fillUsual,
         [](CraftedFile& file) {
             makeUnknown(file, u"empty", 0);
             makeUnknown(file, u"small", 0);
         }},
        {"TreeInACircle", fillUsual,
         [](CraftedFile& file) {
             file.setEntry(file.find(documentName), CraftedFile::rightAt, file.find(u"empty"));
             file.setEntry(file.find(u"small"), CraftedFile::leftAt, file.find(u"small"));
         }},
        {"StoragesShareTheirElements",
         [](CraftedFile& file) {
             fillUsual(file);
             file.add(u"twin", {}, CraftedFile::storage);
         },
         [](CraftedFile& file) {
             file.setEntry(file.find(u"twin"), CraftedFile::childAt, file.find(u"deep"));
         }},
    };
}

std::vector<Oddity> odditiesOfSets() {
    Refused const custom{{"make custom set", STG_E_INVALIDHEADER},
                         {"add", STG_E_INVALIDHEADER},
                         {"change", STG_E_INVALIDHEADER},
                         {"rename", STG_E_INVALIDHEADER},
                         {"remove", STG_E_INVALIDHEADER}};
    Refused const company{{"company", STG_E_INVALIDHEADER}};
    Refused const title{{"make summary set", STG_E_INVALIDHEADER}, {"title", STG_E_INVALIDHEADER}};
    return {
        {"NoSets",
         [](CraftedFile& file) {
             fillWithoutSets(file);
             fillSmallStreams(file);
         }},
        {"EmptySets",
         [](CraftedFile& file) {
             file.add(summaryName, {});
             file.add(documentName, {});
             fillWithoutSets(file);
         }},
        {"DamagedSummary",
         [](CraftedFile& file) {
             file.add(summaryName, summary().replace(52, 4, "\xff\xff\xff\x7f"));
             fillWithoutSets(file);
         },
         [](CraftedFile&) {}, title},
        {"DamagedFirstSection",
         [](CraftedFile& file) {
             file.add(documentName, documentSummary().replace(72, 4, "\xff\xff\xff\x7f"));
             fillWithoutSets(file);
         },
         [](CraftedFile&) {}, company},
        {"DamagedSecondSection",
         [](CraftedFile& file) {
             auto const first = section({{1, codePage(1252)}, {15, text("Us")}});
             file.add(documentName,
                      header({FMTID_DocSummaryInformation, FMTID_UserDefinedProperties},
                             {first, number32(8) + number32(0x10000000)}));
             fillWithoutSets(file);
         },
         [](CraftedFile&) {}, custom},
        {"CustomSectionAlone",
         [](CraftedFile& file) {
             file.add(documentName, header({FMTID_UserDefinedProperties}, {customSection()}));
             fillWithoutSets(file);
         },
         [](CraftedFile&) {}, company},
        {"NoSetsInTheStreams",
         [](CraftedFile& file) {
             file.add(summaryName, pattern(300, 4));
             file.add(documentName, pattern(6000, 4));
             fillWithoutSets(file);
         },
         [](CraftedFile&) {},
         [&] {
             auto all = custom;
             all.insert(title.begin(), title.end());
             all.insert(company.begin(), company.end());
             return all;
         }()},
        {"StoragesWithTheSetsNames",
         [](CraftedFile& file) {
             for (auto const* name : {summaryName, documentName}) {
                 auto const set = file.add(name, {}, CraftedFile::storage);
                 file.add(u"in it", pattern(300, 4), CraftedFile::stream, set);
             }
             fillWithoutSets(file);
         },
         [](CraftedFile&) {},
         {{"make custom set", STG_E_FILEALREADYEXISTS},
          {"add", STG_E_FILEALREADYEXISTS},
          {"change", STG_E_FILEALREADYEXISTS},
          {"rename", STG_E_FILENOTFOUND},
          {"remove", STG_E_FILENOTFOUND},
          {"make summary set", STG_E_FILEALREADYEXISTS},
          {"company", STG_E_FILEALREADYEXISTS},
          {"title", STG_E_FILEALREADYEXISTS}}},
    };
}

Document documentOf(Oddity const& oddity, std::size_t sectorSize) {
    CraftedFile file(sectorSize);
    oddity.fill(file);
    file.build();
    oddity.damage(file);
    Document made{oddity.name + std::to_string(sectorSize), file.bytes(), oddity.refused};
    return made;
}

}  // namespace

std::vector<Document> craftedDocuments() {
    std::vector<Oddity> all{{"Usual", fillUsual}, {"BigSets", fillWithBigSets}};
    for (auto const& more :
         {odditiesOfTables(), odditiesOfChains(), odditiesOfNames(), odditiesOfSets()}) {
        all.insert(all.end(), more.begin(), more.end());
    }
    std::vector<Document> documents;
    for (Oddity const& oddity : all) {
        for (std::size_t const sectorSize : {std::size_t{512}, std::size_t{4096}}) {
            documents.push_back(documentOf(oddity, sectorSize));
        }
    }
    documents.front().isThorough = true;
    return documents;
}

}  // namespace velk::test
