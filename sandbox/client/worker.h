// The course of one download, from its order to the finished file.
#ifndef SANDBOX_CLIENT_WORKER_H
#define SANDBOX_CLIENT_WORKER_H

#include <stop_token>

#include "ledger.h"

/// Works at a download until it is complete, or cannot be, or it is told to stop; `record` is of
/// this ledger and tells how far it is. Nobody else changes the record meanwhile.
void work(Ledger& ledger, Record& record, const std::stop_token& stop);

#endif
