/// Transfers to and from files that can be told to fail.
#pragma once

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

}  // namespace velk::test
