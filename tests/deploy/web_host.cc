// Putting nginx's configuration together, starting it and ending it.
#include "deploy/web_host.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "harness/files.h"
#include "harness/shell.h"
#include "sandbox/servers/tls_files.h"
#include "velnor_deployment.h"

using harness::run;

namespace {

const std::string kFolder = "/tmp/nginx/";

// What Debian's nginx.conf says, as far as it bears on ours, with folders that we may write to.
constexpr char kMain[] = R"(
pid pid;
error_log error.log;
events { }
http {
    types { text/html html; }
    default_type application/octet-stream;
    sendfile on;
    gzip on;
    access_log access.log;
    client_body_temp_path body;
    proxy_temp_path proxy;
    fastcgi_temp_path fastcgi;
    uwsgi_temp_path uwsgi;
    scgi_temp_path scgi;
    include conf.d/*.conf;
}
)";

struct Host {
    explicit Host(const std::string& host)
        : name(host.substr(0, host.find(':'))), port(host.substr(host.find(':') + 1)) {}

    std::string name;
    std::string port;
};

std::string substitutions(const std::string& securePort) {
    const Host config(velnor::deployment::kConfigurationHost);
    const Host content(velnor::deployment::kContentHost);
    const sandbox::TlsFiles tls = sandbox::tlsFiles();
    std::string script;
    const auto replace = [&script](const std::string& pattern, const std::string& text) {
        script += "s|" + pattern + "|" + text + "|;";
    };
    replace("/srv/", kSrv);
    replace("/var/cache/", kFolder);
    replace("/etc/nginx/tls/.*[.]crt;", tls.certificate + ";");
    replace("/etc/nginx/tls/.*[.]key;", tls.key + ";");
    replace("listen 443 ", "listen " + securePort + " ");
    replace("listen 80;", "listen 8080;");
    replace("https://downloads[.]example[.]com/;",
            "https://origin.velnor.example:" + content.port + "/;");
    replace("downloads[.]example[.]com", "origin.velnor.example");
    replace("config[.]example[.]com", config.name);
    replace("content[.]example[.]com", content.name);
    return script;
}

void addConfiguration(const std::string& name) {
    const Host host(name == "config.conf" ? velnor::deployment::kConfigurationHost
                                          : velnor::deployment::kContentHost);
    const harness::CommandResult text =
        run("sed '" + substitutions(host.port) + "' '" HOSTING "/" + name + "'");
    ASSERT_EQ(text.status, 0);
    harness::writeFile(kFolder + "conf.d/" + name, text.output);
}

}  // namespace

WebHost::WebHost(const std::vector<std::string>& configurations) {
    std::filesystem::create_directories(kFolder + "conf.d");
    std::filesystem::create_directories(kSrv + "velnor-logs/logs");
    harness::writeFile(kFolder + "nginx.conf", kMain);
    for (const std::string& name : configurations) addConfiguration(name);
    const harness::CommandResult started = run("'" NGINX "' -e " + kFolder + "error.log -p " +
                                               kFolder + " -c nginx.conf </dev/null 2>&1");
    EXPECT_EQ(started.status, 0) << "nginx does not start; is it missing? (make deps)\n"
                                 << started.output;
    EXPECT_TRUE(harness::eventually([] { return harness::exists(kFolder + "pid"); }));
}

WebHost::~WebHost() {
    run("kill $(cat " + kFolder + "pid)");
    harness::eventually([] { return !harness::exists(kFolder + "pid"); });
}
