// What ends up in the records, and the texts of codes and states.
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include "api/client.h"
#include "api/result/result_codes.h"
#include "harness/files.h"

namespace test {
namespace {

using Numbers = std::vector<int64_t>;

TEST(FileAttributes, HoldWhatTheClientSaid) {
    const ScriptedClient client({{"getFileAttributes",
                                  {R"({"status":"complete","path" : "\/\b\f\r\t\u0041 y",
"size":  1000,"uniquerecv":9007199254740993,"progress":-1,"downloadrate":44,"errorstring":"a\"b",
"error":7.9,"suberror":99999999999999999999,"verifiedcontentmd5":""})",
                                   R"({"status":"PAUSED"})", ""}}});
    const Handle handle;
    FileAttributes file{};
    file.reserved = 5;
    EXPECT_EQ(outcome(vn_getFileAttributes(handle, 3, kUrl, &file, 0)), 0U);
    EXPECT_EQ(file.reserved, 0U);
    EXPECT_EQ((Numbers{file.cid, file.status, file.size, file.uniquerecv, file.progress,
                       file.downloadrate, file.error, file.suberror}),
              (Numbers{3, 5, 1000, 9007199254740993, 0, 44, 7, INT64_MAX}));
    EXPECT_STREQ(file.url, kUrl);
    EXPECT_STREQ(file.path, "/\b\f\r\tu0041 y");
    EXPECT_STREQ(file.errorstring, "a") << "an escaped quote ends a text";
    EXPECT_STREQ(file.verifiedcontentmd5, "");
    // What is in the record is released by the next call, whatever becomes of it; the leak checker
    // looks.
    EXPECT_EQ(outcome(vn_getFileAttributes(handle, 4, kUrl, &file, 0)), 0U);
    EXPECT_EQ(file.path, nullptr);
    EXPECT_EQ(outcome(vn_getFileAttributes(handle, 4, kUrl, &file, 0)), 4U) << "no reply at all";
    EXPECT_EQ(file.url, nullptr);
}

TEST(FileAttributes, StatesHaveKeywordsInAnyLetterCaseAndTexts) {
    std::istringstream keywords(
        "COMPLETED SEARCHING waiting DOWNLOADING PAUSED complete InsufficientDiskSpace "
        "DISCONNECTED NOTFOUND moving FORBIDDEN");
    std::string keyword, texts;
    for (int32_t status = 0; keywords >> keyword;) {
        const ScriptedClient client({{"getFileAttributes", {R"({"status":")" + keyword + "\"}"}}});
        const Handle handle;
        FileAttributes file{};
        EXPECT_EQ(outcome(vn_getFileAttributes(handle, 0, kUrl, &file, 0)), 0U);
        EXPECT_EQ(file.status, status) << keyword;
        vn_cleanFileAttributes(handle, &file, 0);
        texts += vn_fileStatusToString(status++) + std::string(".");
    }
    EXPECT_EQ(texts,
              "Unknown State.Searching.Waiting.Downloading.Paused.Complete.Insufficient Disk Space."
              "Disconnected.Not Found.Moving.Forbidden.");
}

TEST(ClientAttributes, HoldWhatTheClientAndTheInstallationSay) {
    const ScriptedClient client(
        {{"getClientAttributes",
          {R"({"isonline":true,"sharerate":11,"downloadrate":22,"version":4294967297,
"acceptedeula":true,"executableversion":"1.6.5","configurationversion":"c"})",
           R"({"isonline":True,"acceptedeula":true,"version":7})", ""}}});
    const Handle handle;
    const std::string guid = "0123456789abcdef0123456789ABCDEF";
    harness::makeInstallDirectory();
    harness::writeFile(harness::installed("guid.ini"), guid + "4");
    ClientAttributes record{};
    record.reserved = 5;
    const auto numbers = [&record] {
        Numbers all{record.isonline, record.sharerate, record.downloadrate, record.version};
        all.insert(all.end(), {record.acceptedeula, static_cast<int64_t>(record.reserved)});
        return all;
    };
    EXPECT_EQ(outcome(vn_getAttributes(handle, 0, &record, 0)), 0U);
    EXPECT_EQ(numbers(), (Numbers{1, 11, 22, 1, 1, 5})) << "with the version's lower 32 bits";
    EXPECT_STREQ(record.executableversion, "1.6.5");
    EXPECT_STREQ(record.configurationversion, "c");
    EXPECT_EQ(record.guid, guid);

    std::filesystem::remove(harness::installed("guid.ini"));
    EXPECT_EQ(outcome(vn_getAttributes(handle, 0, &record, 0)), 0U) << "also without it";
    EXPECT_EQ(record.executableversion, nullptr);
    EXPECT_EQ(record.guid, nullptr);
    EXPECT_EQ(outcome(vn_getAttributes(handle, 0, &record, 0)), 4U) << "no reply at all";
    EXPECT_EQ(numbers(), (Numbers{0, 0, 0, 7, 1, 5})) << "and the record stays";
}

TEST(ResultCodes, HaveTextsAndKeysUpToALast) {
    EXPECT_STREQ(vn_errorToString(24), "File download was reset");
    EXPECT_STREQ(vn_errorToString(25), "Unknown Error");
    EXPECT_STREQ(velnor::resultKey(21), "INSTALL_ERROR_VERIFICATION_FAILURE");
    EXPECT_STREQ(velnor::resultKey(22), "INSTALL_ERROR_UNKNOWN");
}

}  // namespace
}  // namespace test
