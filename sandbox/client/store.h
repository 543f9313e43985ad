// The list of downloads as a file, so that it survives the client.
#ifndef SANDBOX_CLIENT_STORE_H
#define SANDBOX_CLIENT_STORE_H

#include <string>
#include <vector>

#include "record.h"

/// The records in the file; none when there is no file. One that nobody understands is put aside
/// under the same name and ".bad", with a message.
std::vector<Record> loadRecords(const std::string& file);

/// Replaces the file all at once, or leaves it as it was: then with a message. Only its owner can
/// read it, because of the passwords. Makes the folder.
void saveRecords(const std::string& file, const std::vector<const Record*>& records);

#endif
