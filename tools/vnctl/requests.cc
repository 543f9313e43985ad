// The subcommands that are one request to the client: status, attributes, pause, delete, run-tasks.
#include <memory>
#include <optional>
#include <string>

#include "support/product.h"
#include "vnctl/client.h"
#include "vnctl/commands.h"
#include "vnctl/kept_file.h"
#include "vnctl/record.h"

namespace vnctl {
namespace {

struct DeleteRequest : Request {
    bool keepFile = false;
};

class ClientRecord {
  public:
    explicit ClientRecord(const Client& client) : client_(client) {}
    ~ClientRecord() { vn_cleanAttributes(client_.handle(), &attributes, 0); }
    ClientRecord(const ClientRecord&) = delete;
    ClientRecord& operator=(const ClientRecord&) = delete;

    ClientAttributes attributes{};

  private:
    const Client& client_;
};

int status(const Request& request) {
    const Client client(request.cid);
    ClientRecord record(client);
    check(vn_getAttributes(client.handle(), client.cid(), &record.attributes, 0));
    const ClientAttributes& said = record.attributes;
    // The library takes any JSON for an answer, in which a client's would have all of these.
    if (said.executableversion == nullptr && said.configurationversion == nullptr &&
        said.guid == nullptr) {
        throw Failure(
            INSTALL_ERROR_INTERNAL,
            "What answers on port " + std::to_string(velnor::kClientPort) + " is not the client.");
    }
    printRecord(record.attributes, request.asJSON);
    return kDone;
}

int attributes(const Request& request) {
    const Client client(request.cid);
    Download download(client, request.url);
    download.askOrThrow();
    printRecord(download.record(), request.asJSON);
    return kDone;
}

int pause(const Request& request) {
    const Client client(request.cid);
    if (vn_pauseFile(client.handle(), client.cid(), request.url.c_str(), 0) != 0) {
        const uint32_t code = vn_getLastError();
        // The client's words for a download that it does not know are not always understood here,
        // but those for its state are.
        if (code == INSTALL_ERROR_INTERNAL) Download(client, request.url).askOrThrow();
        if (code == INSTALL_ERROR_ALREADY_DOWNLOADED) {
            throw Failure(code, resultText(code, "") + ". There is nothing to pause.");
        }
        throw failureOf(code);
    }
    return sayDone(request, "The download is paused. 'vnctl download' takes it up again.");
}

// A challenge of the client would be written over a file that is to be kept.
void protectFile(const Client& client, const Request& request, std::optional<KeptFile>& kept) {
    Download known(client, request.url);
    known.askOrThrow();
    const FileAttributes& file = known.record();
    if (file.status == FILE_STATUS_COMPLETE && file.path != nullptr) kept.emplace(file.path);
}

int deleteDownload(const DeleteRequest& request) {
    const Client client(request.cid);
    std::optional<KeptFile> kept;
    if (request.keepFile) protectFile(client, request, kept);
    DownloadOptions options{};
    options.keepPhysicalFileOnDelete = request.keepFile ? 1 : 0;
    check(vn_deleteFile(client.handle(), client.cid(), request.url.c_str(), &options));
    return sayDone(request,
                   request.keepFile
                       ? "The client has forgotten the download; what is on the disk stays."
                       : "The download and its file are deleted.");
}

int runTasks(const Request& request) {
    const Client client(request.cid);
    check(vn_runPeriodicTasks(client.handle(), client.cid(), 0));
    return sayDone(request, "The client does its periodic tasks.");
}

}  // namespace

void addStatus(CLI::App& app, program::Body& chosen) {
    const auto request = std::make_shared<Request>();
    CLI::App* command = app.add_subcommand("status", "Show what the client says about itself");
    addCid(*command, *request);
    setWork(*command, chosen, request, {}, [request] { return status(*request); });
}

void addAttributes(CLI::App& app, program::Body& chosen) {
    const auto request = std::make_shared<Request>();
    CLI::App* command = app.add_subcommand("attributes", "Show the state of a download");
    addUrl(*command, *request);
    addCid(*command, *request);
    setWork(*command, chosen, request, {kNotFound}, [request] { return attributes(*request); });
}

void addPause(CLI::App& app, program::Body& chosen) {
    const auto request = std::make_shared<Request>();
    CLI::App* command =
        app.add_subcommand("pause", "Pause a download; 'vnctl download' takes it up again");
    addUrl(*command, *request);
    addCid(*command, *request);
    setWork(*command, chosen, request, {kNotFound, kAlreadyDownloaded},
            [request] { return pause(*request); });
}

void addDelete(CLI::App& app, program::Body& chosen) {
    const auto request = std::make_shared<DeleteRequest>();
    CLI::App* command = app.add_subcommand("delete", "End a download and delete its file");
    addUrl(*command, *request);
    command->add_flag("--keep-file", request->keepFile, "Leave the file on the disk");
    addCid(*command, *request);
    setWork(*command, chosen, request, {kNotFound, kDisk, kInUse},
            [request] { return deleteDownload(*request); });
}

void addRunTasks(CLI::App& app, program::Body& chosen) {
    const auto request = std::make_shared<Request>();
    CLI::App* command = app.add_subcommand("run-tasks", "Let the client do its periodic tasks now");
    addCid(*command, *request);
    setWork(*command, chosen, request, {kTooSoon}, [request] { return runTasks(*request); });
}

}  // namespace vnctl
