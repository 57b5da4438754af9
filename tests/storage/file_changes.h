/// A compound file, and changes of every kind for it.
#pragma once

#include <array>
#include <map>

#include "conformance/storage/storage_file.h"

namespace velk::test {

/// What is in streams, by their paths; the root's state bits by no path.
using Content = std::map<Text, std::string>;

/// One change, which counts wholly or not at all.
struct Step {
    char const* name;
    HRESULT (*run)(IStorage& root);
};

extern std::array<Step, 14> const steps;

/// Makes the file that the steps change.
void makeFile(FilePlace const& place);

Content contentOf(FilePlace const& place);
std::string stateBitsOf(IStorage& storage);

/// What a client gets that stops at the first failure.
struct Outcome {
    HRESULT code = S_OK;
    std::size_t completed = 0;
};

/// Makes the first `count` steps and commits them.
Outcome make(IStorage& root, std::size_t count = steps.size());

/// The file before its changes, and a copy to change.
class ChangedFile : public testing::Test {
  protected:
    FilePlace const original_;
    FilePlace const place_;
    /// What is in the file after so many steps.
    std::vector<Content> states_;

    void SetUp() override;
    void restore() const;
};

}  // namespace velk::test
