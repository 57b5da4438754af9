/// A compound file and its property sets.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include <windows.h>

#include <propidl.h>

#include "com/com_ptr.h"

namespace velk::velkcom {

/// An open document; of one for writing, only what commit() makes lasting
/// reaches the file. Members throw com::Error with words for people.
class Document {
  public:
    enum class Use {
        reading,  ///< others may read and write meanwhile
        writing   ///< nobody else may write meanwhile
    };

    Document(std::string const& path, Use use);

    /// A new document with empty summary sets; an existing file is refused.
    static void create(std::string const& path);

    /// A document that is gone when it is closed, to try changes on.
    static Document temporary();

    /// Opens a set; null when the document has none of the kind.
    com::ComPtr<IPropertyStorage> set(REFFMTID id) const;
    /// The same, and makes a missing one.
    com::ComPtr<IPropertyStorage> setForWriting(REFFMTID id) const;

    /// Makes the changes of a set lasting.
    void commit(IPropertyStorage& set) const;

    /// The sets that are there, the well-known ones first.
    std::vector<FMTID> sets() const;

  private:
    Document(com::ComPtr<IStorage> storage, Use use);

    com::ComPtr<IStorage> storage_;
    com::ComPtr<IPropertySetStorage> sets_;
    Use use_;
};

/// Opens a document for reading when the file is a compound file; nothing for
/// a file of another kind.
std::optional<Document> openCompoundFile(std::string const& path);

/// A set's code page as an unsigned number; nothing when the set does not say.
std::optional<unsigned> codePageOf(IPropertyStorage& set);

}  // namespace velk::velkcom
