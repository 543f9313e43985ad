// vnctl delete: ends a download and, unless told otherwise, deletes its file.
#include <memory>
#include <optional>

#include "vnctl/client.h"
#include "vnctl/commands.h"
#include "vnctl/failure.h"
#include "vnctl/kept_file.h"
#include "vnctl/request.h"

namespace vnctl {
namespace {

struct Options : Request {
    bool keepFile = false;
};

// A challenge of the client would be written over a file that is to be kept.
void protectFile(const Client& client, const Options& options, std::optional<KeptFile>& kept) {
    Download known(client, options.url);
    known.askOrThrow();
    const FileAttributes& file = known.record();
    if (file.status == FILE_STATUS_COMPLETE && file.path != nullptr) kept.emplace(file.path);
}

int deleteDownload(const Options& options) {
    const Client client(options.cid);
    std::optional<KeptFile> kept;
    if (options.keepFile) protectFile(client, options, kept);
    DownloadOptions download{};
    download.keepPhysicalFileOnDelete = options.keepFile ? 1 : 0;
    check(vn_deleteFile(client.handle(), client.cid(), options.url.c_str(), &download));
    return sayDone(options,
                   options.keepFile
                       ? "The client has forgotten the download; what is on the disk stays."
                       : "The download and its file are deleted.");
}

}  // namespace

void addDelete(CLI::App& app, program::Body& chosen) {
    const auto options = std::make_shared<Options>();
    CLI::App* command = app.add_subcommand("delete", "End a download and delete its file");
    addUrl(*command, *options);
    command->add_flag("--keep-file", options->keepFile, "Leave the file on the disk");
    setWork(*command, chosen, options, [options] { return deleteDownload(*options); });
}

}  // namespace vnctl
