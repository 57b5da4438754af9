/// "velkcom props list": the properties of many documents.
#pragma once

#include <ostream>
#include <string>
#include <vector>

namespace velk::velkcom {

/// Prints the property sets of files, and of the documents in folders and in
/// what is below these, in the order of `paths`, the files of a folder by name.
/// Reads several at a time. In a folder, files that are no documents are passed
/// over. Text for people goes with failures on `errors`; JSON lines have them in
/// themselves. A bar shows how far it is when `errors` is a terminal.
///
/// Result: 0, or 1 when any of them could not be read.
int listDocuments(std::vector<std::string> const& paths, bool asJson, std::ostream& out,
                  std::ostream& errors);

}  // namespace velk::velkcom
