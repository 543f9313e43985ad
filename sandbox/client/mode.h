// How a rehearsal tells a running stand-in client to misbehave.
#ifndef SANDBOX_CLIENT_MODE_H
#define SANDBOX_CLIENT_MODE_H

#include <string>

/// The first line of /tmp/standin_client.mode: a word, which sandbox/README.md explains, and what
/// follows it behind one space. Both are empty for normal.
struct Mode {
    std::string word;
    std::string argument;

    bool operator==(const Mode&) const = default;
};

Mode currentMode();

#endif
