// One attempt to fetch what is still missing of a file, by libcurl.
#ifndef SANDBOX_CLIENT_TRANSFER_H
#define SANDBOX_CLIENT_TRANSFER_H

#include <stop_token>
#include <string>

#include "files.h"
#include "record.h"

/// Told of the transfer on the thread that it runs on.
class TransferObserver {
  public:
    virtual ~TransferObserver() = default;

    /// Asked several times a second: whether it is to end where it is.
    virtual bool isInterrupted() = 0;

    /// The first bytes are there.
    virtual void begun(const Announcement& announced) = 0;

    virtual void went(int64_t received, int64_t rate) = 0;
};

struct Outcome {
    enum class End { whole, interrupted, failed };
    End end = End::failed;
    Trouble trouble = {};
    int fileError = 0;  // an errno
    long httpStatus = 0;
};

/// Goes on behind what `part` holds when the server agrees that it is the same file, and begins
/// anew where not. `known` is what an earlier attempt was told.
Outcome transfer(const Order& order, const Announcement& known, PartFile& part,
                 TransferObserver& observer, const std::stop_token& stop);

#endif
