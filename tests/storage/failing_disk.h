/// Transfers to and from files that can be told to fail, and are written down.
#pragma once

#include <string>
#include <vector>

namespace velk::test {

enum class DiskCall { none, read, write, sync };

/// What happens to the calls of one kind, counted from now on.
struct DiskFault {
    DiskCall call = DiskCall::none;
    /// How many go well before one fails with `error`.
    long before = 0;
    int error = 0;
    /// All that come after it fail too.
    bool isLasting = false;
};

void failDisk(DiskFault fault);

/// No call fails any more. Whether one did.
bool endFailingDisk();

/// Has every transfer move some of the bytes only, and every third be
/// interrupted before it moves any.
void shortenTransfers(bool isOn);

/// How many transfers were shortened.
long shortTransfers();

/// A write to a file, or a sync, which has no bytes.
struct DiskStep {
    std::size_t offset = 0;
    std::string bytes = {};

    bool isSync() const { return bytes.empty(); }
    void apply(std::string& file) const {
        if (file.size() < offset + bytes.size()) file.resize(offset + bytes.size());
        file.replace(offset, bytes.size(), bytes);
    }
};

/// Has writes and syncs be written down from now on.
void recordDisk();

/// Ends that and gives what was.
std::vector<DiskStep> recordedSteps();

}  // namespace velk::test
