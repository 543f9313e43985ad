// vnctl download: asks for a download and watches it.
#include <algorithm>
#include <iostream>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "program/text.h"
#include "support/owned.h"
#include "support/product.h"
#include "support/shell.h"
#include "support/url.h"
#include "vnctl/client.h"
#include "vnctl/commands.h"
#include "vnctl/follow.h"
#include "vnctl/record.h"
#include "vnctl/secret_file.h"
#include "vnctl/target.h"

namespace vnctl {
namespace {

// Characters of a request that are left for texts when it holds every option and the longest
// numbers.
constexpr size_t kAlwaysFits =
    kLongestPath - (sizeof velnor::kApiVersion - 1) -
    (sizeof
     "api?function=downloadFile&cid=2147483647&apiversion=&url="
     "&targetspeed=2147483647&delayhttp=2147483647&checkcontentmd5&path=&backgroundDownload=1"
     "&cookiestring=&queryauth=&basicauth=&wait=1&originonly&resetdownload=1" -
     1);

struct Options : Request {
    std::vector<std::string> urls;
    std::string path;
    std::string cookieFile;
    std::string queryAuthFile;
    std::string basicAuthFile;
    DownloadOptions download{};  // numbers and flags
    bool mayReplace = false;
    bool isDetached = false;
};

struct Secrets {
    explicit Secrets(const Options& options) {
        if (!options.cookieFile.empty()) cookie = readSecret(options.cookieFile);
        if (!options.queryAuthFile.empty()) queryAuth = readSecret(options.queryAuthFile);
        if (!options.basicAuthFile.empty()) login = readLogin(options.basicAuthFile);
    }

    size_t sizeInRequest() const {
        // User and password go there in Base64.
        const size_t loginSize = (login.user.size() + login.password.size()) * 4 / 3;
        return vnctl::sizeInRequest(cookie) + vnctl::sizeInRequest(queryAuth) + loginSize;
    }

    std::string cookie;
    std::string queryAuth;
    Login login;
};

const char* orNull(const std::string& text) { return text.empty() ? nullptr : text.c_str(); }

// One of the downloads that were asked for.
struct Order {
    Order(const Client& client, const std::string& url) : download(client, url) {}

    Download download;
    bool wasComplete = false;
    int status = kDone;  // what it has come to so far
};
using Orders = std::vector<std::unique_ptr<Order>>;

// Whether every request for the download fits, whatever else it holds.
bool fits(const Secrets& secrets, const std::string& url, const std::string& path) {
    return sizeInRequest(url) + sizeInRequest(path) + secrets.sizeInRequest() <= kAlwaysFits;
}

Failure tooLong() {
    return {INSTALL_ERROR_INTERNAL, "URL, path and secrets are too long together.", kWrongUsage};
}

void start(const Client& client, const Options& options, const Secrets& secrets,
           const std::string& url, const std::string& path) {
    DownloadOptions download = options.download;
    download.path = path.c_str();
    download.cookieString = orNull(secrets.cookie);
    download.queryAuth = orNull(secrets.queryAuth);
    if (!options.basicAuthFile.empty()) {
        download.basicAuthUser = secrets.login.user.c_str();
        download.basicAuthPassword = secrets.login.password.c_str();
    }
    if (vn_downloadFile(client.handle(), client.cid(), url.c_str(), &download) == 0) return;
    const uint32_t code = vn_getLastError();
    if (code == INSTALL_ERROR_INTERNAL && !fits(secrets, url, path)) throw tooLong();
    if (code != INSTALL_ERROR_FILE_NOT_FOUND) throw failureOf(code);
    // It has not come onto the client's list.
    throw Failure(code, "The client does not accept the download. Perhaps it has another one for " +
                            program::printable(path) + ", or cannot write there.");
}

std::string interruptMessage(const Options& options) {
    const velnor::OwnedText word(
        velnor::shellWord(program::printable(options.urls.front()).c_str()));
    if (!word) throw std::bad_alloc();
    std::string arguments = word.get();
    if (options.cid != 0) arguments += " --cid " + std::to_string(options.cid);
    const bool isOne = options.urls.size() == 1;
    return std::string("\n") + (isOne ? "The download goes on." : "The downloads go on.") +
           " To see how far it is:\n  vnctl attributes " + arguments +
           "\nTo stop it:\n  vnctl pause " + arguments + "\n";
}

const char* adviceFor(int32_t status) {
    switch (status) {
        case FILE_STATUS_PAUSED:
            return ". 'vnctl download' takes it up again.";
        case FILE_STATUS_INSUFFICIENTDISKSPACE:
            return ". Make room; then 'vnctl download' goes on with it.";
        case FILE_STATUS_FORBIDDEN:
            return ". The server may want a password or a cookie; 'vnctl download --help' says "
                   "how to give it.";
        default:
            return ".";
    }
}

// Paused by nobody: the client has come to something that it cannot get over, such as a folder
// that it may not write to. A download that somebody pauses while it is disconnected keeps the
// error of that.
bool isStuck(const FileAttributes& file, int32_t before) {
    return file.status == FILE_STATUS_PAUSED && before != FILE_STATUS_DISCONNECTED &&
           file.errorstring != nullptr && (file.error != 0 || file.suberror != 0);
}

void sayComplete(const FileAttributes& file, bool wasComplete) {
    const std::string path = file.path != nullptr ? program::printable(file.path) : "";
    std::cout << (wasComplete ? "Already downloaded" : vn_fileStatusToString(file.status)) << ": "
              << path << ", " << program::humanSize(file.size) << '\n';
}

std::string failureText(const FileAttributes& file, bool isStuck) {
    const std::string reason =
        file.errorstring != nullptr ? program::printable(file.errorstring) : "";
    if (isStuck) return "The client could not go on: " + reason;
    return vn_fileStatusToString(file.status) + (reason.empty() ? "" : ": " + reason) +
           adviceFor(file.status);
}

// What a failure begins with where there are other downloads.
std::string nameOf(const Options& options, const Order& order) {
    return options.urls.size() == 1 ? "" : program::printable(order.download.url()) + ": ";
}

int sayOutcome(const Options& options, const Order& order, bool isStuck) {
    const FileAttributes& file = order.download.record();
    const bool isComplete = file.status == FILE_STATUS_COMPLETE;
    if (options.asJSON) {
        printRecord(file, true);
    } else if (!isComplete) {
        std::cerr << "vnctl: " + nameOf(options, order) + failureText(file, isStuck) + '\n';
    } else if (!options.isQuiet) {
        sayComplete(file, order.wasComplete);
    }
    return isStuck ? kDisk : exitStatusOfState(file.status);
}

bool isOnlyListed(const Options& options) {
    return (options.download.flags & VN_DOWNLOAD_WAIT) != 0;
}

// Asks the client for the download, unless it has the whole file already.
void begin(const Client& client, const Options& options, const Secrets& secrets, Order& order) {
    const std::string& url = order.download.url();
    const Target target = chooseTarget(order.download, options.path, options.mayReplace);
    // Not even asked for again: the client may want its challenge to be written over the file.
    order.wasComplete = target.isComplete && !options.mayReplace;
    if (order.wasComplete) return;
    if (target.isComplete) {
        // The file goes for nothing that cannot be asked for.
        if (!fits(secrets, url, target.path)) throw tooLong();
        check(vn_deleteFile(client.handle(), client.cid(), url.c_str(), nullptr));
    }
    start(client, options, secrets, url, target.path);
    if (isOnlyListed(options)) {
        sayDone(options, "It is on the client's list. 'vnctl download' begins it.",
                target.path.c_str());
    } else if (options.isDetached) {
        sayDone(options, "The client downloads " + program::printable(target.path),
                target.path.c_str());
    }
}

int watch(const Options& options, Order& order) {
    const int32_t before = follow(order.download, options.asJSON || options.isQuiet);
    return sayOutcome(options, order, isStuck(order.download.record(), before));
}

// As attempt(), but a failure names the download where there are others.
template <class Work>
int attemptOne(const Options& options, const Order& order, Work work) {
    return attempt(options, [&] {
        try {
            return work();
        } catch (const Failure& failure) {
            throw Failure(failure.code(), nameOf(options, order) + failure.what(),
                          failure.status());
        }
    });
}

// All begin before the first is watched, so that the client has them even when nobody waits.
int download(const Options& options) {
    const Secrets secrets(options);
    const Client client(options.cid);
    Orders orders;
    for (const std::string& url : options.urls) {
        Order& order = *orders.emplace_back(std::make_unique<Order>(client, url));
        order.status = attemptOne(options, order, [&] {
            begin(client, options, secrets, order);
            return kDone;
        });
    }
    const bool isWatched = !options.isDetached && !isOnlyListed(options);
    if (isWatched) explainInterrupt(interruptMessage(options));
    int firstFailure = kDone;
    for (const std::unique_ptr<Order>& order : orders) {
        const bool hasMore = order->status == kDone && (isWatched || order->wasComplete);
        if (hasMore) {
            order->status = attemptOne(options, *order, [&] { return watch(options, *order); });
        }
        if (firstFailure == kDone) firstFailure = order->status;
    }
    return firstFailure;
}

void addFlag(CLI::App& command, Options& options, const char* name, uint32_t flag,
             const char* description) {
    command.add_flag_callback(
        name, [&options, flag] { options.download.flags |= flag; }, description);
}

void addNumber(CLI::App& command, Options& options, const char* name, uint32_t flag,
               int32_t DownloadOptions::*number, const char* description) {
    command
        .add_option_function<int32_t>(
            name,
            [&options, flag, number](int32_t value) {
                options.download.flags |= flag;
                options.download.*number = value;
            },
            description)
        ->type_name("N")
        ->check(notNegative());
}

void addHowToDownload(CLI::App& command, Options& options) {
    addNumber(command, options, "--speed", VN_DOWNLOAD_TARGET_SPEED, &DownloadOptions::targetSpeed,
              "The speed to aim at, in the client's unit");
    addNumber(command, options, "--http-delay", VN_DOWNLOAD_HTTP_DELAY, &DownloadOptions::httpDelay,
              "Seconds before the URL's own server is asked");
    addFlag(command, options, "--background", VN_DOWNLOAD_BACKGROUND,
            "Give way to other downloads");
    addFlag(command, options, "--origin-only", VN_DOWNLOAD_ORIGIN_ONLY,
            "From the URL's own server only");
    addFlag(command, options, "--md5", VN_DOWNLOAD_CHECK_CONTENT_MD5,
            "Compute and compare the content's MD5");
    addFlag(command, options, "--no-start,--wait", VN_DOWNLOAD_WAIT,
            "Put it on the client's list, do not begin yet");
}

std::string notEmpty(const std::string& path) { return path.empty() ? "It is empty." : ""; }

void addSecrets(CLI::App& command, Options& options) {
    const struct {
        const char* name;
        std::string& file;
        const char* description;
    } rows[] = {
        {"--cookie-file", options.cookieFile, "The file's first line is the value of a Cookie"},
        {"--query-auth-file", options.queryAuthFile,
         "The file's first line is added to the URL's query for the transfer only"},
        {"--basic-auth-file", options.basicAuthFile, "The file's first line is user:password"},
    };
    for (const auto& [name, file, description] : rows) {
        command.add_option(name, file, std::string(description) + "; - is standard input")
            ->type_name("FILE")
            ->check(notEmpty);
    }
}

void checkUrls(const Options& options) {
    for (const std::string& url : options.urls) {
        if (!velnor::hasWebScheme(url.c_str())) {
            throw CLI::ValidationError("URL", "It does not begin with http:// or https://.");
        }
        if (isFolder(options.path) && fileNameOf(url).empty()) {
            throw CLI::ValidationError("URL",
                                       "It does not end with a file name; name one with --path.");
        }
    }
    if (options.urls.size() > 1 && !isFolder(options.path)) {
        throw CLI::ValidationError("--path", "Several files need a folder.");
    }
}

void checkStandardInput(const Options& options) {
    const auto files = {options.cookieFile, options.queryAuthFile, options.basicAuthFile};
    if (std::count(files.begin(), files.end(), "-") <= 1) return;
    throw CLI::ValidationError("Standard input can be read only once.");
}

}  // namespace

void addDownload(CLI::App& app, program::Body& chosen) {
    const auto options = std::make_shared<Options>();
    CLI::App* command = app.add_subcommand(
        "download",
        "Download URLs, or go on with them, and show how far they are until all are there");
    command->add_option("URL", options->urls, "What to download")->required()->check(checkUrl);
    addCid(*command, *options);
    command
        ->add_option("-o,--path", options->path,
                     "The file, or its folder. Without it, the end of the URL's path is the name "
                     "of a file in the current folder")
        ->type_name("PATH")
        ->check(notEmpty);
    command->add_flag("--force", options->mayReplace,
                      "Replace a file that is there; what is complete is fetched anew");
    addHowToDownload(*command, *options);
    addSecrets(*command, *options);
    command->add_flag("--detach", options->isDetached,
                      "Do not watch; the client goes on by itself");
    // While the command line is parsed, because that is where it is to be mended.
    command->parse_complete_callback([options] {
        checkUrls(*options);
        checkStandardInput(*options);
    });
    setWork(*command, chosen, options, {kNotFound, kForbidden, kDisk, kPaused, kInterrupted},
            [options] { return download(*options); });
}

}  // namespace vnctl
