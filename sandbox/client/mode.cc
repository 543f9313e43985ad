// The mode file, read anew each time so that it can change while the client runs.
#include "mode.h"

#include <fstream>

std::string currentMode() {
    std::string word;
    std::ifstream("/tmp/standin_client.mode") >> word;
    return word;
}
