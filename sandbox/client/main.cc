// The client that rehearsed installations download, verify and start. It stays in the foreground,
// as an agent's program must, until it is told to stop.
#include <cstdio>
#include <exception>

#include "mode.h"
#include "server.h"

int main() try {
    if (currentMode() == "refuse") {
        std::fputs("standin_client: told to refuse\n", stderr);
        return 1;
    }
    serve(9421);
    return 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "standin_client: %s\n", error.what());
    return 1;
}
