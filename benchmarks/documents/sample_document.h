/// Documents to measure with.
#pragma once

#include <cstddef>
#include <filesystem>

#include <windows.h>

#include <propidl.h>

#include "com/owners.h"

/// One property set in an open document.
struct OpenSet {
    velk::com::ComPtr<IStorage> storage;
    velk::com::ComPtr<IPropertyStorage> set;
};

/// These throw std::runtime_error when the document cannot be made or opened.
OpenSet openSet(std::filesystem::path const& file, REFFMTID id, DWORD access);
/// A document whose custom set has `count` properties: texts and numbers by
/// turns, times among them.
void makeCustomSet(std::filesystem::path const& file, int count);
/// A document of about `size` bytes: one stream, and a summary with a title.
void makeOfSize(std::filesystem::path const& file, std::size_t size);
/// A document as programs for texts write them: a stream of 20 kB, a summary
/// of ten properties, five of the document, five of the user's own.
void makeUsual(std::filesystem::path const& file);
void writeTitle(IPropertyStorage& set, char const* title);

/// Throws std::runtime_error unless `code` is S_OK.
void requireSuccess(HRESULT code, char const* what);
