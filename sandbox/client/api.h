// The stand-in client's part in a conversation: which request gets which reply.
#ifndef SANDBOX_CLIENT_API_H
#define SANDBOX_CLIENT_API_H

#include <string>

/// The whole reply to a request with this head. Notes every request but a ping on standard output:
/// a line with the user agent ("-" for none), the target and the reply's body, separated by tabs.
std::string answer(const std::string& head);

#endif
