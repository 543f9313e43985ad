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
        return waits >= answersAfter_ ? answer_ : StreamStatus::Opening;
    }
    bool hasBytesAvailable() const override { return waits >= answersAfter_; }
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

  private:
    void wait(int milliseconds) {
        EXPECT_EQ(milliseconds, 50);
        ++waits;
    }

    int answersAfter_;
    StreamStatus answer_;
};

TEST(Waits, EndAfterThreeHundredPolls) {
    const struct {
        int answersAfter;
        bool opened;
        int waitsForOpen;  // none before the first look
        bool found;
        int waitsForBytes;  // the last poll comes too late
    } rows[] = {
        {0, true, 0, true, 0},          {298, true, 298, true, 298},
        {299, false, 299, false, 299},  {300, false, 299, false, 300},
        {1000, false, 299, false, 300},
    };
    for (const auto& row : rows) {
        CountingStream opening(row.answersAfter);
        EXPECT_EQ(velnor::waitUntilOpen(opening), row.opened) << row.answersAfter;
        EXPECT_EQ(opening.waits, row.waitsForOpen) << row.answersAfter;
        CountingStream answering(row.answersAfter);
        EXPECT_EQ(velnor::waitForBytes(answering), row.found) << row.answersAfter;
        EXPECT_EQ(answering.waits, row.waitsForBytes) << row.answersAfter;
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

}  // namespace
