#include "props/list_documents.h"

#include <algorithm>
#include <deque>
#include <future>
#include <iterator>
#include <optional>
#include <span>
#include <thread>

#include "com/error.h"
#include "commands/object_creation.h"
#include "props/document_listing.h"
#include "props/progress_bar.h"
#include "system.h"
#include "text/result_codes.h"

namespace velk::velkcom {
namespace {

namespace fs = std::filesystem;

/// So many at a time that starting a thread for them costs little beside reading
/// them.
constexpr std::size_t fewFiles = 32;
/// How often a thread is started where there are many files; more would cost,
/// fewer leave the last one alone for long.
constexpr std::size_t startsOfEach = 8;

/// A file to list; what stands in a folder is passed over when it is no
/// document.
struct Candidate {
    std::string path;
    bool isFromFolder = false;
    /// Why a folder cannot be searched.
    std::string failure;
};

/// Adds the files of a folder and the folders in it. What fails at one place
/// is reported as that place, and the search goes on at the others.
void searchFolder(fs::path const& folder, std::vector<Candidate>& found,
                  std::vector<fs::path>& inner) {
    std::error_code error;
    fs::directory_iterator entry(folder, fs::directory_options::skip_permission_denied, error);
    for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
        std::error_code unknown;
        bool const isLink = entry->is_symlink(unknown);
        if (entry->is_regular_file(unknown)) found.push_back({pathToUtf8(entry->path()), true, {}});
        if (!isLink && entry->is_directory(unknown)) inner.push_back(entry->path());
    }
    if (error) {
        found.push_back(
            {pathToUtf8(folder), true, "the folder cannot be read: " + error.message()});
    }
}

void addFolder(fs::path const& folder, std::vector<Candidate>& found) {
    std::vector<Candidate> files;
    std::vector<fs::path> folders{folder};
    while (!folders.empty()) {
        auto const next = std::move(folders.back());
        folders.pop_back();
        searchFolder(next, files, folders);
    }
    std::ranges::sort(files, {}, &Candidate::path);
    std::ranges::move(files, std::back_inserter(found));
}

std::vector<Candidate> candidates(std::vector<std::string> const& paths) {
    std::vector<Candidate> found;
    for (std::string const& operand : paths) {
        std::error_code error;
        auto const path = pathFromUtf8(operand);
        if (fs::is_directory(path, error)) {
            addFolder(path, found);
        } else {
            found.push_back({operand, false, {}});
        }
    }
    return found;
}

/// Nothing for a file in a folder that is no document.
std::optional<DocumentListing> listCandidate(Candidate const& candidate) {
    if (!candidate.failure.empty()) {
        return DocumentListing{candidate.path, candidate.failure, {}};
    }
    try {
        if (auto const document = openCompoundFile(candidate.path)) {
            return listDocument(candidate.path, *document);
        }
        if (candidate.isFromFolder) return {};
        return DocumentListing{candidate.path, "the file is no compound file", {}};
    } catch (com::Error const& error) {
        return DocumentListing{candidate.path, withMeaning(error), {}};
    }
}

/// What is printed of one file.
struct Printed {
    std::string text;
    std::string failure;
};

Printed printCandidate(Candidate const& candidate, bool asJson) {
    auto const listing = listCandidate(candidate);
    if (!listing) return {};
    if (asJson) return {listingJson(*listing), listing->error};
    bool const isEmpty = listing->sets.empty() && !listing->error.empty();
    return {isEmpty ? "" : listingText(*listing), listing->error};
}

std::vector<Printed> printSome(std::span<Candidate const> files, bool asJson) {
    ComSession const session;
    std::vector<Printed> all;
    for (Candidate const& file : files) all.push_back(printCandidate(file, asJson));
    return all;
}

/// Reads files on as many threads as the machine has, and gives the results in
/// the order of the files.
class ReadAhead {
  public:
    ReadAhead(std::span<Candidate const> files, bool asJson)
        : toStart_(files),
          atATime_(std::max(fewFiles, files.size() / (threads_ * startsOfEach))),
          asJson_(asJson) {}

    bool isAtEnd() const { return started_.empty() && toStart_.empty(); }

    /// Of the next few files. Throws what reading one of them threw.
    std::vector<Printed> next() {
        while (started_.size() < threads_ && !toStart_.empty()) {
            auto const some = toStart_.first(std::min(atATime_, toStart_.size()));
            started_.push_back(std::async(std::launch::async, printSome, some, asJson_));
            toStart_ = toStart_.subspan(some.size());
        }
        auto first = std::move(started_.front());
        started_.pop_front();
        return first.get();
    }

  private:
    std::size_t const threads_ = std::max(1U, std::thread::hardware_concurrency());
    std::span<Candidate const> toStart_;
    std::size_t const atATime_;
    bool const asJson_;
    std::deque<std::future<std::vector<Printed>>> started_;
};

}  // namespace

int listDocuments(std::vector<std::string> const& paths, bool asJson, std::ostream& out,
                  std::ostream& errors) {
    auto const files = candidates(paths);
    ProgressBar bar(errors, files.size(), isTerminal(errors), terminalWidth());
    bool const isRead = isTerminal(out);
    int code = 0;
    auto file = files.begin();
    for (ReadAhead all(files, asJson); !all.isAtEnd();) {
        for (Printed const& printed : all.next()) {
            bar.advance();
            bool const isWell = printed.failure.empty();
            if (isRead || !isWell) bar.erase();
            out << printed.text;
            if (!isWell && !asJson) {
                errors << "velkcom: \"" << file->path << "\": " << printed.failure << "\n";
            }
            if (!isWell) code = 1;
            ++file;
        }
    }
    return code;
}

}  // namespace velk::velkcom
