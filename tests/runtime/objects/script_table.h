/// The tables in tests/data/runtime, and what stands in them for values and
/// outcomes of calls.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "sample_objects.h"
#include "support/data_table.h"
#include "support/volumes.h"

namespace velk::test {

/// Objects by the names that a table gives them.
using Objects = std::map<std::string, mzComPtrC, std::less<>>;

/// The values of a cell, set apart by ", ": `"text"`, 5, 2.5, nan, true, false,
/// empty, null (an object reference without object), @name (one of `objects`), and
/// `var VALUE`, a new script variable with that value.
std::vector<mzComVariantC> valuesOf(std::string_view cell, Objects const& objects);

/// A value in the same notation; floating point always with a point or an
/// exponent. Of an object without a name its state, or `object`.
std::string described(mzComVariantC const& value, Objects const& objects = {});

/// What can be seen of an object: [its elements; one after the other], of a
/// dictionary with the items behind, or <the standard text> of a path. Empty for others.
std::string stateOf(mzIUnknown* object, Objects const& objects = {});

/// Runs tables over the script classes. A row makes its calls on an object; what
/// they leave there is told behind " -> ".
class ScriptTable : public testing::Test {
  protected:
    /// `new CLASS`, `path TEXT` or `variable` for a new object, or the name of one
    /// that was kept.
    mzComPtrC objectOf(std::string const& cell);

    /// Holds the table to what its rows answer. Their columns: `object`; `call`, the
    /// kind (do a method, get, put, ask for a method or a read, none) and the
    /// members to call one after the other, () for the default one; `args`; `keep`,
    /// the name of what the call gives, or of the object itself where a row calls nothing.
    void check(char const* table);

    void TearDown() override;

    Servers const servers_;
    DriveC const drive_;
    Objects objects_;
    /// The name of the folder on drive C that a table calls F:.
    std::string folder_;
    /// What words in arguments stand for.
    std::map<std::string, std::string> words_;
    /// Whether rows tell what they leave in their object. To look at it is to call it.
    bool tellsState_ = true;

  private:
    std::string answer(DataRow const& row);
    std::string anonymous(std::string text) const;
    std::string stateAfter(mzIUnknown* object) const;
    std::vector<mzComVariantC> argumentsOf(std::string cell) const;
};

}  // namespace velk::test
