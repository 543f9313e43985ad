// A listener whose queue is full of connections of our own: the system ignores all further ones.
#include "silent_port.h"

#include <unistd.h>

#include "loopback.h"

namespace sandbox {

SilentPort::SilentPort(int port) {
    sockets_.push_back(listenOnLoopback(port, 0));
    port_ = portOf(sockets_.front());
    // A queue of length 0 holds one connection; the second is there to be on the safe side.
    for (int i = 0; i < 2; ++i) sockets_.push_back(beginConnecting(port_));
}

SilentPort::~SilentPort() {
    for (const int fd : sockets_) close(fd);
}

}  // namespace sandbox
