// vnctl status: what the client says about itself.
#include <memory>

#include "vnctl/client.h"
#include "vnctl/commands.h"
#include "vnctl/failure.h"
#include "vnctl/record.h"
#include "vnctl/request.h"

namespace vnctl {
namespace {

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
    printRecord(record.attributes, request.asJSON);
    return 0;
}

}  // namespace

void addStatus(CLI::App& app, program::Body& chosen) {
    const auto request = std::make_shared<Request>();
    CLI::App* command = app.add_subcommand("status", "Show what the client says about itself");
    setWork(*command, chosen, request, [request] { return status(*request); });
}

}  // namespace vnctl
