// A machine of the maker's: a real nginx with the published configurations.
#ifndef TESTS_DEPLOY_WEB_HOST_H
#define TESTS_DEPLOY_WEB_HOST_H

#include <string>
#include <vector>

/// Takes the place of /srv, on the disk whose size the sandbox can limit.
inline const std::string kSrv = "/Applications/srv/";
inline const std::string kLogUrl = "http://127.0.0.1:8080/logs/";
inline const std::string kAccessLog = "/tmp/nginx/access.log";

/// Runs from construction to destruction. The files of deploy/hosting are used as they are, but for
/// names, ports, folders and certificates, in whose place stand those of the sandbox: config and
/// content answer as the deployment's hosts, downloads as origin.velnor.example on the content
/// host's port.
class WebHost {
  public:
    explicit WebHost(const std::vector<std::string>& configurations);
    ~WebHost();
    WebHost(const WebHost&) = delete;
    WebHost& operator=(const WebHost&) = delete;
};

#endif
