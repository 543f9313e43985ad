// What is on the servers, as an installation meets it.
#ifndef VELNOR_DEPLOY_PUBLISH_LIVE_H
#define VELNOR_DEPLOY_PUBLISH_LIVE_H

#include <string>

namespace deploy {

/// Fetches the client.ini that the configuration host of this build gives to the machine `guid`,
/// and the artifacts that it offers, with the installer's own downloader and verifier. Prints a
/// line for each: accepted, or refused, why, and what to do. Returns whether an installation would
/// accept all of it. Nothing is written to the disk.
bool checkLive(const std::string& guid);

}  // namespace deploy

#endif
