// vnctl's other requests to the client: exit statuses, and answers for people and for scripts.
#include <gtest/gtest.h>
#include <rapidjson/document.h>

#include <string>

#include "harness/harness.h"
#include "sandbox/servers/file_server.h"
#include "tools/client_world.h"

namespace {

using rapidjson::Document;

// Parses one line of valid UTF-8; anything else fails the test and gives an empty object.
Document parse(const std::string& line) {
    Document document;
    document.Parse<rapidjson::kParseValidateEncodingFlag>(line.c_str());
    EXPECT_FALSE(document.HasParseError()) << line;
    EXPECT_EQ(line.find('\n'), line.size() - 1);
    if (document.HasParseError()) document.SetObject();
    return document;
}

Document answerTo(const std::string& arguments) {
    return parse(vnctl(arguments + " --json 2>/tmp/errors").output);
}

std::string textIn(const Document& document, const char* key) {
    return document.HasMember(key) && document[key].IsString() ? document[key].GetString() : "";
}

TEST(VnctlRequests, ExitStatusTellsTheKindOfFailure) {
    const RunningClient client;
    sandbox::FileServer server;
    server.serve("/forbidden", sandbox::Reply{.status = 403});
    server.serve("/letter", "content");
    const sandbox::RawServer vast([](int fd, const std::string& /*head*/) {
        sandbox::sendAll(fd, "HTTP/1.1 200 OK\r\nContent-Length: 4611686018427387904\r\n\r\nx");
    });
    const std::string host = "http://127.0.0.1:" + std::to_string(server.port());
    const std::string vastUrl = "http://127.0.0.1:" + std::to_string(vast.port()) + "/vast";
    harness::run("mkdir -p /tmp/work/locked; chmod 500 /tmp/work/locked");
    expectOutcomes({
        {"download " + host + "/letter", 0, "Complete"},
        {"download " + host + "/none", 5, "Not Found: "},
        {"download " + host + "/forbidden", 6, "Forbidden: "},
        {"download " + vastUrl, 7, "Insufficient Disk Space"},
        {"download " + host + "/x --path /nowhere/x", 7, "The folder /nowhere"},
        {"download " + host + "/x --path locked/x", 7, "could not go on: Permission denied"},
        {"attributes ftp://h/x", 1, "does not take the URL"},
        {"download " + host + "/" + std::string(1000, 'x'), 2, "URL is longer than 960"},
        {"download " + host + "/x --path " + std::string(900, 'x'), 2, "too long together"},
        {"download " + host + "/", 2, "name one with --path"},
        {"pause " + host + "/other", 5, "knows no such download"},
        {"pause " + host + "/letter", 8, "There is nothing to pause"},
        {"status >/dev/full", 1, "No space left"},
    });
    for (const auto& [mode, outcome] :
         {std::pair("inuse 9", Outcome{"delete " + host + "/letter", 10, "File In Use"}),
          {"throttle", {"run-tasks", 9, "throttled"}},
          {"drop", {"run-tasks", 3, "does not run"}},
          {"garbage", {"run-tasks", 1, "makes no sense"}}}) {
        setClientMode(mode);
        expectOutcomes({outcome});
    }
}

TEST(VnctlRequests, SayThatTheClientDoesNotRun) {
    for (const char* request : {"status", "run-tasks", "pause http://h/x", "delete http://h/x",
                                "attributes http://h/x", "download http://h/x"}) {
        expectOutcomes({{request, 3, "'vnctl install'"}});
        EXPECT_EQ(answerTo(request)["code"].GetInt(), 2) << request;
        EXPECT_EQ(harness::readFile("/tmp/errors"), "");
    }
}

TEST(VnctlRequests, AnswerInJSON) {
    const RunningClient client;
    sandbox::FileServer server;
    server.serve("/letter", "content");
    const std::string url = "http://127.0.0.1:" + std::to_string(server.port()) + "/letter";
    const std::string name = "\"$(printf '\\377\\\\\\n\\303\\244')\"";
    for (const std::string& request :
         {"download --path " + name + " " + url, "attributes " + url}) {
        const Document file = answerTo(request);
        EXPECT_EQ(textIn(file, "state"), "Complete");
        EXPECT_EQ(textIn(file, "url"), url);
        EXPECT_EQ(file["size"].GetInt64(), 7);
        EXPECT_TRUE(file["errorstring"].IsNull());
        EXPECT_EQ(textIn(file, "path"), "/tmp/work/\xef\xbf\xbd\\\n\xc3\xa4");
    }
    EXPECT_EQ(textIn(answerTo("status"), "executableversion"), "1.6.5");
    expectOutcomes({
        {"attributes " + url, 0, "\nPath         /tmp/work/\\xff\\\\x0a\xc3\xa4\n"},
        {"status", 0, "\nExecutable     1.6.5\n"},
        {"attributes --json " + url + "x", 5, R"({"code":13,)"},
    });
    for (const std::string& request :
         {std::string("run-tasks"), "delete --keep-file " + url,
          "download --wait --path kept " + url, "download --detach --path kept " + url}) {
        const Document answer = answerTo(request);
        EXPECT_EQ(textIn(answer, "result"), "ok") << request;
        const bool hasPath = request.starts_with("download");
        EXPECT_EQ(textIn(answer, "path"), hasPath ? "/tmp/work/kept" : "") << request;
    }
    EXPECT_EQ(harness::readFile("/tmp/work/\xff\\\n\xc3\xa4"), "content");
}

// A folder that has come to its place is in its way.
TEST(VnctlRequests, TellWhereAKeptFileIsThatCannotGoBack) {
    const RunningClient client;
    sandbox::FileServer server;
    server.serve("/film", "content");
    const std::string url = "http://127.0.0.1:" + std::to_string(server.port()) + "/film";
    EXPECT_EQ(vnctl("download " + url).status, 0);
    setClientMode("inuse 4");
    const std::string said =
        vnctl("delete --keep-file " + url +
              " 2>&1 & until mkdir film 2>/dev/null; do sleep 0.1; done; touch film/x; wait")
            .output;
    EXPECT_NE(said.find("It is /tmp/work/film."), std::string::npos) << said;
    EXPECT_EQ(harness::run("cat /tmp/work/film.*/file").output, "content");
}

}  // namespace
