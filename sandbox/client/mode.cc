// The mode file, read anew each time so that it can change while the client runs.
#include "mode.h"

#include <fstream>

Mode currentMode() {
    Mode mode;
    std::ifstream file("/tmp/standin_client.mode");
    std::getline(file, mode.word);
    const size_t space = mode.word.find(' ');
    if (space != std::string::npos) {
        mode.argument = mode.word.substr(space + 1);
        mode.word.resize(space);
    }
    return mode;
}
