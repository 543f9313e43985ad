// What ends up in the records, and whose it is.
#include <cstring>
#include <filesystem>
#include <string>

#include "api/client.h"
#include "api/scripted_client.h"
#include "harness/files.h"

namespace {

using test::Handle;
using test::kUrl;
using test::outcome;
using test::ScriptedClient;

const std::string kGuid = "0123456789abcdef0123456789ABCDEF";

TEST(FileAttributes, HoldWhatTheClientSaid) {
    const ScriptedClient client({{"getFileAttributes",
                                  {R"({"status":"complete","path" : "\/tmp\/x y","size":1000,
"uniquerecv":9007199254740993,"progress":-1,"downloadrate":44,"errorstring":"a\"b",
"error":7.9,"suberror":99999999999999999999,"verifiedcontentmd5":""})",
                                   R"({"status":"nonsense","progress":"5"})", ""}}});
    const Handle handle;
    FileAttributes file{};
    file.reserved = 5;
    EXPECT_EQ(outcome(vn_getFileAttributes(handle, 3, kUrl, &file, 0)), 0U);
    EXPECT_EQ(file.reserved, 0U);
    EXPECT_EQ(file.cid, 3);
    EXPECT_STREQ(file.url, kUrl);
    EXPECT_EQ(file.status, FILE_STATUS_COMPLETE);
    EXPECT_STREQ(file.path, "/tmp/x y");
    EXPECT_EQ(file.size, 1000);
    EXPECT_EQ(file.uniquerecv, 9007199254740993);
    EXPECT_EQ(file.progress, 0) << "a sign is no digit";
    EXPECT_EQ(file.downloadrate, 44);
    EXPECT_STREQ(file.errorstring, "a") << "an escaped quote ends a text";
    EXPECT_EQ(file.error, 7);
    EXPECT_EQ(file.suberror, INT64_MAX);
    EXPECT_STREQ(file.verifiedcontentmd5, "");

    // What is in the record is released by the next call, whatever becomes of it; the leak checker
    // looks.
    EXPECT_EQ(outcome(vn_getFileAttributes(handle, 4, kUrl, &file, 0)), 0U);
    EXPECT_EQ(file.status, FILE_STATUS_UNKNOWN);
    EXPECT_EQ(file.path, nullptr);
    EXPECT_EQ(file.progress, 0) << "nor is a quote";
    EXPECT_EQ(outcome(vn_getFileAttributes(handle, 4, kUrl, &file, 0)), 4U) << "no reply at all";
    EXPECT_EQ(file.url, nullptr);
}

TEST(ClientAttributes, HoldWhatTheClientAndTheInstallationSay) {
    const ScriptedClient client(
        {{"getClientAttributes",
          {R"({"isonline":true,"sharerate":11,"downloadrate":22,"version":4294967297,
"acceptedeula":true,"executableversion":"1.6.5","configurationversion":"c"})",
           R"({"isonline":true,"acceptedeula":false})", "{}",
           R"({"isonline":True,"acceptedeula":true,"downloadrate":3,"version":7})", ""}}});
    const Handle handle;
    harness::makeInstallDirectory();
    harness::writeFile(harness::installed("guid.ini"), kGuid + "4");
    ClientAttributes attributes{};
    attributes.reserved = 5;
    EXPECT_EQ(outcome(vn_getAttributes(handle, 0, &attributes, 0)), 0U);
    EXPECT_EQ(attributes.reserved, 5U) << "not touched";
    EXPECT_EQ(attributes.isonline, 1);
    EXPECT_EQ(attributes.sharerate, 11);
    EXPECT_EQ(attributes.downloadrate, 22);
    EXPECT_EQ(attributes.version, 1) << "its lower 32 bits";
    EXPECT_EQ(attributes.acceptedeula, 1);
    EXPECT_STREQ(attributes.executableversion, "1.6.5");
    EXPECT_STREQ(attributes.configurationversion, "c");
    EXPECT_EQ(attributes.guid, kGuid);

    EXPECT_EQ(outcome(vn_getAttributes(handle, 0, &attributes, 0)), 0U);
    EXPECT_EQ(attributes.isonline, 1);
    EXPECT_EQ(attributes.acceptedeula + attributes.sharerate + attributes.version, 0);
    EXPECT_EQ(attributes.executableversion, nullptr);
    EXPECT_EQ(attributes.guid, kGuid);

    std::filesystem::permissions(harness::installed("guid.ini"), std::filesystem::perms::none);
    EXPECT_EQ(outcome(vn_getAttributes(handle, 0, &attributes, 0)), 0U) << "also unreadable";
    EXPECT_EQ(attributes.guid, nullptr);
    std::filesystem::remove(harness::installed("guid.ini"));
    EXPECT_EQ(outcome(vn_getAttributes(handle, 0, &attributes, 0)), 0U) << "also without it";
    EXPECT_EQ(attributes.isonline, 0);
    EXPECT_EQ(attributes.version, 7);
    EXPECT_EQ(attributes.guid, nullptr);
    EXPECT_EQ(outcome(vn_getAttributes(handle, 0, &attributes, 0)), 4U) << "no reply at all";
    EXPECT_EQ(attributes.version, 7) << "and the record stays";

    EXPECT_EQ(vn_cleanAttributes(handle, &attributes, 0), 0);
    EXPECT_EQ(attributes.version, 7);
    EXPECT_EQ(attributes.acceptedeula, 1);
    EXPECT_EQ(attributes.downloadrate, 3);
}

}  // namespace
