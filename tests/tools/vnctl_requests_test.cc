// vnctl's other requests to the client: exit statuses, and answers for people and for scripts.
#include <gtest/gtest.h>
#include <rapidjson/document.h>

#include <string>

#include "harness/files.h"
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
    EXPECT_EQ(vnctl("download " + host + "/letter").status, 0);
    harness::run("cd /tmp/work; mkdir -m 500 locked; echo secret >s");
    const struct {
        const char* mode;
        std::string arguments;
        int status;
        const char* message;
    } rows[] = {
        {"", "download " + host + "/none", 5, "Not Found: "},
        {"", "download " + host + "/forbidden", 6, "Forbidden: "},
        {"", "download " + vastUrl, 7, "Insufficient Disk Space"},
        {"", "download " + host + "/x --path /nowhere/x", 7, "The folder /nowhere"},
        {"", "download " + host + "/x --path locked/x", 7, "could not go on: Permission denied"},
        {"", "download " + host + "/x --path s", 7, "Choose another file"},
        {"", "attributes ftp://h/x", 1, "does not take the URL"},
        {"", "download " + host + "/" + std::string(1000, 'x'), 2, "URL is longer than 960"},
        {"", "download " + host + "/x --path " + std::string(900, 'x'), 2, "too long together"},
        {"", "download " + host + "/", 2, "name one with --path"},
        {"", "download " + host + "/x --basic-auth-file s", 2, "must be user:password"},
        {"", "attributes " + host + "/other", 5, "knows no such download"},
        {"", "pause " + host + "/other", 5, "knows no such download"},
        {"", "pause " + host + "/letter", 8, "There is nothing to pause"},
        {"", "delete " + host + "/other", 5, "knows no such download"},
        {"inuse 9", "delete " + host + "/letter", 10, "File In Use"},
        {"throttle", "run-tasks", 9, "throttled"},
        {"drop", "run-tasks", 3, "does not run"},
        {"garbage", "run-tasks", 1, "makes no sense"},
        {"", "status >/dev/full", 1, "No space left"},
    };
    for (const auto& [mode, arguments, status, message] : rows) {
        setClientMode(mode);
        const harness::CommandResult result = vnctl("2>&1 " + arguments);
        EXPECT_EQ(result.status, status) << arguments;
        EXPECT_NE(result.output.find(message), std::string::npos) << result.output;
    }
}

TEST(VnctlRequests, SayThatTheClientDoesNotRun) {
    for (const char* request : {"status", "run-tasks", "pause http://h/x", "delete http://h/x",
                                "attributes http://h/x", "download http://h/x"}) {
        const harness::CommandResult result = vnctl(std::string(request) + " 2>&1");
        EXPECT_EQ(result.status, 3) << request;
        EXPECT_NE(result.output.find("'vnctl install'"), std::string::npos) << result.output;
        EXPECT_EQ(answerTo(request)["code"].GetInt(), 2) << request;
        EXPECT_EQ(harness::readFile("/tmp/errors"), "");
    }
}

TEST(VnctlRequests, AnswerInJSON) {
    const RunningClient client;
    sandbox::FileServer server;
    server.serve("/letter", "content");
    const std::string url = "http://127.0.0.1:" + std::to_string(server.port()) + "/letter";
    const std::string path = "\xff\\\n\xc3\xa4";
    const std::string name = "$'\\xff\\\\\\n\\xc3\\xa4'";
    harness::writeFile("/tmp/script",
                       "cd /tmp/work; '" VNCTL "' download " + url + " --json --path " + name);
    EXPECT_EQ(vnctl("status >/dev/null").status, 0);
    for (const Document& file :
         {parse(harness::run("bash /tmp/script").output), answerTo("attributes --cid 7 " + url)}) {
        EXPECT_EQ(textIn(file, "state"), "Complete");
        EXPECT_EQ(textIn(file, "url"), url);
        EXPECT_EQ(file["size"].GetInt64(), 7);
        EXPECT_TRUE(file["errorstring"].IsNull());
        EXPECT_EQ(textIn(file, "path"), "/tmp/work/\xef\xbf\xbd\\\n\xc3\xa4");
    }
    EXPECT_EQ(harness::readFile("/tmp/work/" + path), "content");
    EXPECT_NE(
        vnctl("attributes " + url).output.find("\nPath         /tmp/work/\\xff\\\\x0a\xc3\xa4\n"),
        std::string::npos);

    EXPECT_EQ(textIn(answerTo("status"), "executableversion"), "1.6.5");
    EXPECT_NE(vnctl("status").output.find("\nExecutable     1.6.5\n"), std::string::npos);
    EXPECT_EQ(answerTo("attributes " + url + "x")["code"].GetInt(), 13);
    for (const std::string& request :
         {std::string("run-tasks"), "delete --keep-file " + url,
          "download --wait --path kept " + url, "download --detach --path kept " + url}) {
        const Document answer = answerTo(request);
        EXPECT_EQ(textIn(answer, "result"), "ok") << request;
        const bool hasPath = request.starts_with("download");
        EXPECT_EQ(textIn(answer, "path"), hasPath ? "/tmp/work/kept" : "") << request;
    }
    EXPECT_TRUE(harness::exists("/tmp/work/" + path));
}

// A folder that has come to its place is in its way.
TEST(VnctlRequests, TellWhereAKeptFileIsThatCannotGoBack) {
    const RunningClient client;
    const sandbox::RawServer server([](int fd, const std::string&) {
        sandbox::sendAll(fd, "HTTP/1.0 200 OK\r\nContent-Length: 7\r\n\r\ncontent");
    });
    const std::string url = "http://127.0.0.1:" + std::to_string(server.port()) + "/film";
    EXPECT_EQ(vnctl("download " + url).status, 0);
    setClientMode("inuse 2");
    const std::string said =
        harness::run("cd /tmp/work; '" VNCTL "' delete --keep-file " + url +
                     " 2>&1 & until mkdir film 2>/dev/null; do sleep 0.1; done; touch film/x; wait")
            .output;
    const size_t place = said.find("It is /tmp/work/film.");
    ASSERT_NE(place, std::string::npos) << said;
    const size_t begin = place + 6;
    EXPECT_EQ(harness::readFile(said.substr(begin, said.find('\n', begin) - begin)), "content");
}

TEST(VnctlRequests, KeepWhatAClientSaysFromTheTerminal) {
    const std::string body = "{\"status\":\"FORBIDDEN\",\"errorstring\":\"\x1b]0;%n\x07\xff\"}";
    const sandbox::RawServer client(
        [&body](int fd, const std::string& head) {
            const bool isPing = head.find("function=ping") != std::string::npos;
            const std::string reply = isPing ? "{\"result\":\"pong\"}" : body;
            sandbox::sendAll(fd, "HTTP/1.1 200 OK\r\nContent-Length: " +
                                     std::to_string(reply.size()) + "\r\n\r\n" + reply);
        },
        9421);
    EXPECT_NE(vnctl("attributes http://h/x").output.find("\nError        \\x1b]0;%n\\x07\\xff\n"),
              std::string::npos);
    EXPECT_EQ(textIn(answerTo("attributes http://h/x"), "errorstring"),
              "\x1b]0;%n\x07\xef\xbf\xbd");
}

}  // namespace
