// A download: waiting, transferring, trying again, verifying, moving.
#include "worker.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <exception>
#include <system_error>
#include <utility>

#include "files.h"
#include "transfer.h"

using namespace std::chrono_literals;

namespace {

constexpr auto kBeforeNextAttempt = 1500ms;
constexpr int64_t kLongestDelay = 24L * 3600;

Status afterFileError(int error) {
    const bool isFull = error == ENOSPC || error == EDQUOT || error == EFBIG;
    return isFull ? Status::insufficientDiskSpace : Status::paused;
}

Status after(const Outcome& outcome) {
    if (outcome.fileError != 0) return afterFileError(outcome.fileError);
    switch (outcome.httpStatus) {
        case 404:
        case 410:
            return Status::notFound;
        case 408:
        case 416:
        case 429:
            return Status::disconnected;
        default:
            return outcome.httpStatus / 100 == 4 ? Status::forbidden : Status::disconnected;
    }
}

class Worker : private TransferObserver {
  public:
    Worker(Ledger& ledger, Record& record, const std::stop_token& stop)
        : ledger_(ledger), record_(record), stop_(stop), order_(record.order) {}

    void run() {
        ledger_.rest(stop_, std::chrono::seconds(std::min(order_.delay, kLongestDelay)));
        while (!stop_.stop_requested() && record_.wanted) {
            awaitTurn();
            if (!stop_.stop_requested()) attempt();
            if (record_.status == Status::disconnected) ledger_.rest(stop_, kBeforeNextAttempt);
        }
    }

    void fail(Status status, Trouble trouble) {
        ledger_.change(record_, [&](Record& record) {
            record.status = status;
            record.wanted = status == Status::disconnected;
            record.trouble = std::move(trouble);
        });
    }

  private:
    void enter(Status status) {
        ledger_.change(record_, [status](Record& record) { record.status = status; });
    }

    void awaitTurn() {
        if (isInterrupted()) {
            enter(Status::waiting);
            ledger_.awaitBackground(stop_);
        }
        if (record_.status != Status::disconnected && !stop_.stop_requested())
            enter(Status::searching);
    }

    void attempt() {
        PartFile part(order_.partPath());
        if (part.error() != 0) return failFile(part.error());
        const Announcement known = record_.announced;
        const bool isWhole = known.size > 0 && part.size() == known.size;
        Outcome outcome{.end = Outcome::End::whole};
        if (!isWhole) outcome = transfer(order_, known, part, *this, stop_);
        if (outcome.end == Outcome::End::failed) fail(after(outcome), outcome.trouble);
        if (outcome.end == Outcome::End::whole) finish(part);
        if (outcome.end != Outcome::End::whole) ledger_.note(record_, part.size(), 0);
    }

    bool isInterrupted() override { return order_.background && ledger_.foregroundRuns(); }

    void begun(const Announcement& announced) override {
        ledger_.change(record_, [&announced](Record& record) {
            record.announced = announced;
            record.status = Status::downloading;
            record.trouble = {};
        });
    }

    void went(int64_t received, int64_t rate) override { ledger_.note(record_, received, rate); }

    void finish(PartFile& part) {
        ledger_.note(record_, part.size(), 0);
        enter(Status::moving);
        part.sync();
        if (part.error() == 0 && order_.checksMd5 && !verify()) return;
        const int error =
            part.error() != 0 ? part.error() : moveFile(order_.partPath(), order_.path, stop_);
        if (error == ECANCELED) return;
        if (error != 0) return failFile(error);
        ledger_.change(record_, [](Record& record) {
            record.status = Status::complete;
            record.announced.size = record.received;
            record.wanted = false;
            record.trouble = {};
        });
    }

    /// False when the file is not what the server says that it is, or may not be judged.
    bool verify() {
        const auto md5 = md5Of(order_.partPath(), stop_);
        if (stop_.stop_requested()) return false;
        const std::string& expected = record_.announced.expectedMd5;
        const bool isGood = md5 && (expected.empty() || expected == md5->base64);
        if (isGood)
            ledger_.change(record_, [&md5](Record& record) { record.md5 = md5->hex; });
        else
            discard();
        return isGood;
    }

    void discard() {
        PartFile(order_.partPath()).clear();
        fail(Status::paused, {.text = "The content is not what its MD5 says."});
    }

    void failFile(int error) {
        fail(afterFileError(error), {0, error, std::generic_category().message(error)});
    }

    Ledger& ledger_;
    Record& record_;
    const std::stop_token& stop_;
    const Order order_;
};

}  // namespace

void work(Ledger& ledger, Record& record, const std::stop_token& stop) {
    Worker worker(ledger, record, stop);
    try {
        worker.run();
    } catch (const std::exception& error) {
        worker.fail(Status::paused, {.text = error.what()});
    }
}
