#include "props/known_sets.h"

#include <algorithm>

namespace velk::velkcom {
namespace {

constexpr KnownProperty summary[] = {
    {2, "Title", VT_LPSTR},          {3, "Subject", VT_LPSTR},
    {4, "Author", VT_LPSTR},         {5, "Keywords", VT_LPSTR},
    {6, "Comments", VT_LPSTR},       {7, "Template", VT_LPSTR},
    {8, "LastAuthor", VT_LPSTR},     {9, "RevNumber", VT_LPSTR},
    {10, "EditTime", VT_FILETIME},   {11, "LastPrinted", VT_FILETIME},
    {12, "CreateTime", VT_FILETIME}, {13, "LastSaveTime", VT_FILETIME},
    {14, "PageCount", VT_I4},        {15, "WordCount", VT_I4},
    {16, "CharCount", VT_I4},        {17, "Thumbnail", VT_CF},
    {18, "AppName", VT_LPSTR},       {19, "Security", VT_I4}};

constexpr KnownProperty documentSummary[] = {{2, "Category", VT_LPSTR},
                                             {3, "PresentationFormat", VT_LPSTR},
                                             {4, "ByteCount", VT_I4},
                                             {5, "LineCount", VT_I4},
                                             {6, "ParagraphCount", VT_I4},
                                             {7, "SlideCount", VT_I4},
                                             {8, "NoteCount", VT_I4},
                                             {9, "HiddenCount", VT_I4},
                                             {10, "MultimediaClipCount", VT_I4},
                                             {11, "ScaleCrop", VT_BOOL},
                                             {12, "HeadingPairs", VT_VECTOR | VT_VARIANT},
                                             {13, "TitlesOfParts", VT_VECTOR | VT_LPSTR},
                                             {14, "Manager", VT_LPSTR},
                                             {15, "Company", VT_LPSTR},
                                             {16, "LinksDirty", VT_BOOL},
                                             {17, "CharCountWithSpaces", VT_I4},
                                             {19, "SharedDoc", VT_BOOL},
                                             {22, "HyperlinksChanged", VT_BOOL},
                                             {23, "Version", VT_I4},
                                             {24, "DigitalSignature", VT_BLOB},
                                             {26, "ContentType", VT_LPSTR},
                                             {27, "ContentStatus", VT_LPSTR},
                                             {28, "Language", VT_LPSTR},
                                             {29, "DocVersion", VT_LPSTR}};

constexpr KnownProperty media[] = {{2, "Editor", VT_LPWSTR},        {3, "Supplier", VT_LPWSTR},
                                   {4, "Source", VT_LPWSTR},        {5, "SequenceNo", VT_LPWSTR},
                                   {6, "Project", VT_LPWSTR},       {7, "Status", VT_UI4},
                                   {8, "Owner", VT_LPWSTR},         {9, "Rating", VT_LPWSTR},
                                   {10, "Production", VT_FILETIME}, {11, "Copyright", VT_LPWSTR}};

bool equalNames(std::string_view left, std::string_view right) {
    auto const lower = [](char c) { return c >= 'A' && c <= 'Z' ? char(c - 'A' + 'a') : c; };
    return std::ranges::equal(left, right, {}, lower, lower);
}

}  // namespace

KnownProperty const* KnownSet::find(PROPID wanted) const {
    auto const found = std::ranges::find(properties, wanted, &KnownProperty::id);
    return found == properties.end() ? nullptr : &*found;
}

KnownProperty const* KnownSet::find(std::string_view wanted) const {
    auto const found = std::ranges::find_if(properties, [&](KnownProperty const& property) {
        return equalNames(property.name, wanted);
    });
    return found == properties.end() ? nullptr : &*found;
}

std::span<KnownSet const> knownSets() {
    static KnownSet const sets[] = {
        {FMTID_SummaryInformation, "SummaryInformation", "summary", false, summary},
        {FMTID_DocSummaryInformation, "DocSummaryInformation", "docsummary", false,
         documentSummary},
        {FMTID_MediaFileSummaryInformation, "MediaFileSummaryInfo", "media", false, media},
        {FMTID_UserDefinedProperties, "Custom", "custom", true, {}}};
    return sets;
}

KnownSet const* knownSet(REFFMTID id) {
    for (KnownSet const& set : knownSets()) {
        if (IsEqualGUID(set.id, id)) return &set;
    }
    return nullptr;
}

}  // namespace velk::velkcom
