// What the stand-in client wants to know of URLs.
#ifndef SANDBOX_CLIENT_URL_H
#define SANDBOX_CLIENT_URL_H

#include <string>

/// Whether it is an http or https URL with a host.
bool isFetchable(const std::string& url);

/// The name of the file that a fetchable URL leads to; "download" where it has none.
std::string fileNameOf(const std::string& url);

/// A fetchable URL with more of a query.
std::string withQuery(const std::string& url, std::string query);

#endif
