// The limits of the polled waits, counted on a stream that answers when it is told to.
#include "net/stream_polls.h"

#include <gtest/gtest.h>

namespace {

using velnor::platform::StreamStatus;

// Opens, or has bytes, after so many waits.
class CountingStream final : public velnor::platform::HttpStream {
  public:
    explicit CountingStream(int answersAfter, StreamStatus answer = StreamStatus::Open)
        : answersAfter_(answersAfter), answer_(answer) {}

    bool open() override { return true; }
    StreamStatus status() const override {
        ++looks;
        return waits >= answersAfter_ ? answer_ : StreamStatus::Opening;
    }
    bool hasBytesAvailable() const override {
        ++looks;
        return waits >= answersAfter_;
    }
    void waitUntilOpen(int milliseconds) override { wait(milliseconds); }
    void waitForBytes(int milliseconds) override { wait(milliseconds); }
    int32_t read(void*, uint32_t) override { return 0; }
    int32_t responseCode() const override { return 0; }
    bool hasResponseHeader(const char*, const char*) const override { return false; }
    int64_t announcedLength() const override { return -1; }
    std::unique_ptr<velnor::platform::ProxyAuthentication> proxyAuthentication() const override {
        return nullptr;
    }

    int waits = 0;
    mutable int looks = 0;

  private:
    void wait(int milliseconds) {
        EXPECT_EQ(milliseconds, 50);
        ++waits;
    }

    int answersAfter_;
    StreamStatus answer_;
};

TEST(WaitUntilOpen, LooksThreeHundredTimesAndSleepsBetween) {
    const struct {
        int opensAfter;
        bool opened;
        int waits;
    } rows[] = {
        {0, true, 0}, {1, true, 1}, {298, true, 298}, {299, false, 299}, {1000, false, 299}};
    for (const auto& row : rows) {
        CountingStream stream(row.opensAfter);
        EXPECT_EQ(velnor::waitUntilOpen(stream), row.opened) << row.opensAfter;
        EXPECT_EQ(stream.waits, row.waits) << row.opensAfter;
        EXPECT_LE(stream.looks, 300);
    }
}

TEST(WaitUntilOpen, AnErrorEndsItAndOtherStatesDoNot) {
    for (const StreamStatus status : {StreamStatus::Reading, StreamStatus::AtEnd}) {
        CountingStream stream(0, status);
        EXPECT_FALSE(velnor::waitUntilOpen(stream));
        EXPECT_EQ(stream.waits, 299);
    }
    CountingStream failing(5, StreamStatus::Error);
    EXPECT_FALSE(velnor::waitUntilOpen(failing));
    EXPECT_EQ(failing.waits, 5);
}

TEST(WaitForBytes, TheLastPollComesTooLate) {
    const struct {
        int showAfter;
        bool found;
        int waits;
    } rows[] = {
        {0, true, 0}, {298, true, 298}, {299, false, 299}, {300, false, 300}, {400, false, 300}};
    for (const auto& row : rows) {
        CountingStream stream(row.showAfter);
        EXPECT_EQ(velnor::waitForBytes(stream), row.found) << row.showAfter;
        EXPECT_EQ(stream.waits, row.waits) << row.showAfter;
    }
}

}  // namespace
