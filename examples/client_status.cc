// Prints what the client says about itself. The handle and the record are released, whichever way
// the program goes.
#include <velnor/capi.h>

#include <iostream>
#include <stdexcept>

namespace {

constexpr int32_t kApplication = 42;

void check(int32_t result) {
    if (result != 0) throw std::runtime_error(vn_errorToString(vn_getLastError()));
}

class Client {
  public:
    explicit Client(const char* userAgent) { check(vn_initialize(userAgent, &handle_)); }
    ~Client() { vn_uninitialize(handle_, 0); }
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;

    ApiHandle* get() const { return handle_; }

  private:
    ApiHandle* handle_ = nullptr;
};

class Attributes {
  public:
    explicit Attributes(const Client& client) : client_(client) {
        check(vn_getAttributes(client_.get(), kApplication, &record_, 0));
    }
    ~Attributes() { vn_cleanAttributes(client_.get(), &record_, 0); }
    Attributes(const Attributes&) = delete;
    Attributes& operator=(const Attributes&) = delete;

    const ClientAttributes* operator->() const { return &record_; }

  private:
    const Client& client_;
    ClientAttributes record_{};
};

const char* orUnknown(const char* text) { return text != nullptr ? text : "unknown"; }

}  // namespace

int main() try {
    const Client client("Example/1.0");
    const Attributes attributes(client);
    std::cout << "version        " << orUnknown(attributes->executableversion) << '\n'
              << "configuration  " << orUnknown(attributes->configurationversion) << '\n'
              << "machine        " << orUnknown(attributes->guid) << '\n'
              << "online         " << (attributes->isonline != 0 ? "yes" : "no") << '\n'
              << "EULA accepted  " << (attributes->acceptedeula != 0 ? "yes" : "no") << '\n'
              << "download rate  " << attributes->downloadrate << '\n';
    return 0;
} catch (const std::exception& error) {
    std::cerr << "client_status: " << error.what() << '\n';
    return 1;
}
