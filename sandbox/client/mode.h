// How a rehearsal tells a running stand-in client to misbehave.
#ifndef SANDBOX_CLIENT_MODE_H
#define SANDBOX_CLIENT_MODE_H

#include <string>

/// The word in /tmp/standin_client.mode: `mute` (accepts and never answers), `garbage` (answers
/// something else), `refuse` (ends as soon as it is started), `unacknowledged` (never says that its
/// servers know of an uninstallation); empty for normal.
std::string currentMode();

#endif
