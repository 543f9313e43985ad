// Fuzz targets: the one that TARGET names gives what comes from outside to a room of the engine,
// and compares what is made of it with what must hold for any input.
#include <sys/socket.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <map>
#include <sstream>
#include <stdexcept>

#include "api/handle.h"
#include "harness/harness.h"
#include "install/client_ini.h"
#include "logs/log_reader.h"
#include "logs/readable.h"
#include "net/body.h"
#include "net/socket_http.h"
#include "publish/addresses.h"
#include "publish/client_ini.h"
#include "support/encodings.h"
#include "support/url.h"

namespace {

using namespace velnor;
int g_ends[2];  // of the connection: the engine's, the other
bool g_replies = false;
std::istringstream g_texts;  // of the input, between NUL bytes

#define REQUIRE(condition) \
    if (!(condition)) fprintf(stderr, "not so: %s\n", #condition), abort()

struct Connection {
    Connection() { REQUIRE(socketpair(AF_UNIX, SOCK_STREAM, 0, g_ends) == 0); }
    ~Connection() { close(g_ends[0]), close(g_ends[1]); }
};

std::string next() {
    std::string text;
    std::getline(g_texts, text, '\0');
    return text;
}

void text(const std::string& /*input*/) {
    const std::string key = next(), all = next();
    const OwnedText value(_vn_pluckString(all.c_str(), key.c_str()));
    const size_t found = all.find(key), begin = found + key.size();
    const size_t end = found == all.npos ? found : all.find_first_of("\r\n", begin);
    REQUIRE(value ? all.substr(begin, end - begin) == value.get() : end == all.npos);
    const OwnedText quoted(_vn_easyPluckJSONString(all.c_str(), key.c_str()));
    const OwnedText plain(_vn_copyStringAndUnescape(all.c_str()));
    REQUIRE(!quoted || std::strstr(plain.get(), quoted.get()));
}

void encodings(const std::string& input) {
    const std::string plain = next();
    auto size = static_cast<uint32_t>(input.size());
    const OwnedText hex(_vn_toHex(reinterpret_cast<const uint8_t*>(input.data()), size));
    std::string back(size, 0), encoded;
    REQUIRE(!hex || _vn_fromHex(hex.get(), reinterpret_cast<uint8_t*>(back.data()), &size));
    REQUIRE(back == input && size == input.size());
    for (size_t i = 0; i < plain.size(); ++i)
        encoded += _vn_isLegalURLChar(plain[i]) ? plain.substr(i, 1)
                                                : '%' + std::string(hex.get() + 2 * i, 2);
    REQUIRE(encoded == OwnedText(_vn_urlEncode(plain.c_str())).get());
}

void reply(const std::string& input) {
    const Connection connection;
    REQUIRE(write(g_ends[1], input.data(), input.size()) >= 0);
    shutdown(g_ends[1], SHUT_WR);
    OwnedText headers;
    uint32_t size = 0;
    const OwnedText body(
        _vn_downloadPathFromSocket("a", "p", "h", g_ends[0], headers.out(), &size));
    if (!body) return;
    const std::string head = headers.get();
    REQUIRE(input.starts_with(head) && head.ends_with("\r\n\r\n") && head.size() <= 4096);
    REQUIRE(input.compare(head.size(), size, body.get(), size) == 0 && body.get()[size] == '\0');
    int64_t announced = size;
    // Of all that a first read holds: white space before the number may lead past the blank line.
    _vn_pluckInt(input.substr(0, 4096).c_str(), "Content-Length: ", &announced);
    REQUIRE(announced == size);
}

bool inflatesTo(const std::string& expected, const std::string& data) {
    Body packed{{}, static_cast<uint32_t>(data.size())};
    packed.data.resize(packed.size);
    std::memcpy(packed.data.get(), data.data(), data.size());
    const Body plain = inflateGzip(std::move(packed));
    return plain.data && std::string(plain.data.get(), plain.size) == expected;
}

void gzip(const std::string& input) {
    inflatesTo("", input + "x");
    const std::string packed = harness::gzip(input, 1);
    REQUIRE(inflatesTo(input, packed) && !inflatesTo(input, packed.substr(0, packed.size() - 1)));
}

// The first byte chooses the call, and the texts behind it are the replies.
void api(const std::string& input) {
    // A file in use is waited for, and one in a folder might be anybody's.
    if (input.empty() || input.find("use") < input.size() || input.find('/') < input.size()) return;
    const Connection connection;
    g_replies = true;
    ApiHandle handle{const_cast<char*>("a"), g_ends[0]};
    FileAttributes file{};
    ClientAttributes client{};
    DownloadOptions options{};
    options.path = "challenge";
    const int kind = g_texts.get();
    const int32_t result = kind == 'd'   ? vn_downloadFile(&handle, 1, "u", &options)
                           : kind == 'e' ? vn_deleteFile(&handle, 1, "u", &options)
                           : kind == 'p' ? vn_pauseFile(&handle, 1, "u", 0)
                           : kind == 'c' ? vn_getAttributes(&handle, 1, &client, 0)
                                         : vn_getFileAttributes(&handle, 1, "u", &file, 0);
    REQUIRE((result == 0) == (vn_getLastError() == 0));
    REQUIRE(result == 0 || (file.url == nullptr && file.size == 0 && client.guid == nullptr));
    vn_cleanFileAttributes(&handle, &file, 0);
    vn_cleanAttributes(&handle, &client, 0);
    g_replies = false;
    for (const auto& entry : std::filesystem::directory_iterator(".")) remove(entry.path());
}

// A log tells the same in one piece and in pieces, and nothing that a terminal would obey.
void fleet(const std::string& input) {
    const auto read = [&input](size_t piece) {
        std::string told;
        logs::LogReader reader([&told](const logs::Installation& installation) {
            REQUIRE(!installation.seconds || installation.outcome == logs::Outcome::Succeeded);
            for (const std::string* text : {&installation.release, &installation.error,
                                            &installation.cause, &installation.last}) {
                for (const char c : *text) REQUIRE(c < 0 || (c >= ' ' && c != 0x7F));
                const std::string counted = logs::withoutParticulars(*text);
                REQUIRE(counted.find_first_of("0123456789") == counted.npos);
                told += *text + '\n';
            }
            told += logs::nameOf(installation.outcome) + logs::dateOf(installation.begin);
        });
        for (size_t at = 0; at < input.size(); at += piece) {
            reader.read(std::string_view(input).substr(at, piece));
        }
        REQUIRE(reader.finish() != logs::Kind::NoLog || told.empty());
        return told;
    };
    REQUIRE(read(input.size() + 1) == read(input.size() % 97 + 1));
}

// What vn-publish accepts, an installation finds in client.ini.
void ini(const std::string& /*input*/) try {
    const std::string client = next(), tool = next(), log = next();
    const deploy::Settings settings{
        {kClientUrlKey, client}, {kUiToolUrlKey, tool}, {kLogUploadUrlKey, log}};
    const std::string text = deploy::compose(settings);
    deploy::checkSettings(text, settings);
    deploy::checkClientUrl(client);
    deploy::checkLogUrl(log);
    REQUIRE(fileNameOf(client.c_str()) && isHttpUrlWithPath(log.c_str()));
    for (const auto& [key, url] : settings) {
        OwnedText value;
        REQUIRE(iniValue(text.c_str(), key, &value) == Found::Here);
        REQUIRE(value.get() == *url && text.find(key) == text.rfind(key));
    }
} catch (const std::runtime_error&) {
}

}  // namespace

extern "C" {
// A request goes nowhere, and is replied to as it is sent, on the same thread.
ssize_t __wrap_send(int /*fd*/, const void* /*bytes*/, size_t size, int /*flags*/) {
    if (!g_replies) return static_cast<ssize_t>(size);
    const std::string body = next();
    dprintf(g_ends[1], "HTTP/1.1 200 OK\r\nContent-Length: %zu\r\n\r\n%s", body.size(),
            body.c_str());
    return static_cast<ssize_t>(size);
}

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const std::map<std::string, void (*)(const std::string&)> targets{
        {"text", text}, {"encodings", encodings}, {"reply", reply}, {"gzip", gzip}, {"api", api},
        {"ini", ini},   {"fleet", fleet}};
    static const auto target = targets.at(getenv("TARGET"));
    const std::string input(reinterpret_cast<const char*>(data), size);
    g_texts = std::istringstream(input);
    target(input);
    return 0;
}
}
