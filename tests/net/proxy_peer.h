// Real peers of the proxy scenarios: a web proxy that may ask for a password, and a keyring.
#ifndef TESTS_NET_PROXY_PEER_H
#define TESTS_NET_PROXY_PEER_H

#include <string>
#include <vector>

enum class Demand { Nothing, Basic, Digest };

/// An Apache web server as forward proxy on 127.0.0.1, for user "alice" with password "s3cret
/// pass".
class ProxyPeer {
  public:
    explicit ProxyPeer(Demand demand, int port = 3128);
    ~ProxyPeer();
    ProxyPeer(const ProxyPeer&) = delete;
    ProxyPeer& operator=(const ProxyPeer&) = delete;

    /// Compares "METHOD status" of every request so far, once as many show as are expected: in any
    /// order, since those of two connections are logged as their processes come to it.
    void expectRequests(std::vector<std::string> expected) const;

  private:
    std::string folder_;
};

/// A session bus and a keyring that is unlocked, for the rest of the test.
void startKeyring();

/// Stores a network password for the proxy at 127.0.0.1:`port`, kind "http" or "https".
void storePassword(const std::string& protocol, const std::string& password, int port = 3128);

#endif
