// Which signatures verify, and what is logged about the others.
#include "install/signature.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "api/last_error.h"
#include "harness/allocations.h"
#include "harness/files.h"
#include "harness/signing.h"

namespace {

using harness::Content;
using velnor::SignatureCheck;

const std::string kData = "an artifact";
constexpr char kUrl[] = "https://origin.velnor.example/artifact";

SignatureCheck check(const std::string& signature, const std::string& data = kData) {
    return velnor::checkSignature(signature.c_str(), data.data(),
                                  static_cast<uint32_t>(data.size()));
}

std::string upper(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), ::toupper);
    return text;
}

TEST(Signature, OnlyTheMakersBareDigestVerifies) {
    const std::string good = harness::sign(kData);
    ASSERT_EQ(good.size(), 256U);
    const struct {
        const char* what;
        std::string signature;
        SignatureCheck result;
    } rows[] = {
        {"right", good, SignatureCheck::Verified},
        {"upper case", upper(good), SignatureCheck::Verified},
        {"odd digit behind", good + "0", SignatureCheck::Verified},
        {"empty", "", SignatureCheck::InvalidParameters},
        {"one digit", "a", SignatureCheck::Mismatch},
        {"too short", good.substr(2), SignatureCheck::Mismatch},
        {"half a byte short", good.substr(1), SignatureCheck::Mismatch},
        {"too long", good + "00", SignatureCheck::Mismatch},
        {"no hex", std::string(256, 'z'), SignatureCheck::Mismatch},
        {"zeros", std::string(256, '0'), SignatureCheck::Mismatch},
        {"foreign key", harness::signWithForeignKey(kData), SignatureCheck::Mismatch},
        {"other data", harness::sign(kData + "x"), SignatureCheck::Mismatch},
        {"wrapped digest", harness::sign(kData, Content::DigestInfo), SignatureCheck::Mismatch},
        {"over nothing", harness::sign(kData, Content::Nothing), SignatureCheck::EmptySignature},
        {"huge", std::string(1'000'000, 'a'), SignatureCheck::Mismatch},
    };
    for (const auto& row : rows) EXPECT_EQ(check(row.signature), row.result) << row.what;
}

TEST(Signature, EveryFlippedBitIsFound) {
    const std::string good = harness::sign(kData);
    for (size_t i = 0; i < good.size(); ++i) {
        std::string flipped = good;
        flipped[i] = good[i] == '0' ? '1' : '0';
        EXPECT_NE(check(flipped), SignatureCheck::Verified) << i;
    }
    for (size_t bit = 0; bit < 8 * kData.size(); ++bit) {
        std::string flipped = kData;
        flipped[bit / 8] = static_cast<char>(flipped[bit / 8] ^ (1 << bit % 8));
        EXPECT_EQ(check(good, flipped), SignatureCheck::Mismatch) << bit;
    }
}

TEST(Signature, FailedAllocationsNeverVerify) {
    const std::string bad = harness::sign(kData + "x");
    const std::string good = harness::sign(kData);
    for (size_t number = 1; number < 50; ++number) {
        for (const std::string& signature : {bad, good}) {
            harness::FailingAllocation fail(number);
            const SignatureCheck result = check(signature);
            if (!fail.end()) return;
            EXPECT_NE(result, SignatureCheck::Verified) << number;
        }
    }
    FAIL() << "no end of allocations";
}

TEST(Signature, LogSaysWhyAndAMismatchIsLeftToTheCaller) {
    harness::makeInstallDirectory();
    const std::string good = harness::sign(kData);
    const std::string nothing = harness::sign(kData, Content::Nothing);
    const auto verify = [](const std::string& signature, const char* url) {
        return _vn_checkAgainstSignature(signature.c_str(), url, kData.data(),
                                         static_cast<uint32_t>(kData.size()));
    };
    EXPECT_EQ(verify(good, kUrl), 1);
    EXPECT_EQ(verify(std::string(256, '0'), kUrl), 0);
    EXPECT_EQ(harness::logMessages().size(), 0U);
    EXPECT_EQ(verify(good, ""), 0);
    EXPECT_EQ(verify(good, nullptr), 0);
    EXPECT_EQ(verify(nothing, kUrl), 0);
    EXPECT_EQ(harness::logMessages(),
              (std::vector<std::string>{
                  "[eror] _vn_checkAgainstSignature: Invalid parameters received",
                  "[eror] _vn_checkAgainstSignature: Invalid parameters received",
                  "[eror] _vn_mac_cryptPublicKeyDecrypt: Couldn't decrypt signature."}));
}

TEST(Signature, EveryAllocationThatFailsHasItsLine) {
    harness::makeInstallDirectory();
    const std::string good = harness::sign(kData);
    std::vector<std::string> expected;
    for (const char* text :
         {"_vn_checkAgainstSignature: Unable to calculate hash of binary. URL: ",
          "_vn_checkAgainstSignature: Unable to calculate hash of binary. URL: ",
          "_vn_checkAgainstSignature: Couldn't allocate enough memory for hashBuffer",
          "_vn_mac_cryptPublicKeyDecrypt: Couldn't allocate enough memory for keyBuffer",
          "_vn_mac_cryptPublicKeyDecrypt: Unable to allocate memory for the decrypted buffer"}) {
        const std::string message = std::string("[eror] ") + text;
        expected.push_back(message.back() == ' ' ? message + kUrl : message);
    }
    for (size_t number = 1; number <= expected.size(); ++number) {
        const harness::FailingAllocation fail(number);
        EXPECT_EQ(_vn_checkAgainstSignature(good.c_str(), kUrl, kData.data(),
                                            static_cast<uint32_t>(kData.size())),
                  0);
    }
    EXPECT_EQ(harness::logMessages(), expected);
}

}  // namespace
