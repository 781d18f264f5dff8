// The wallpaper agent's program.

#include "agent/command_line.h"
#include "platform/platform.h"

int main(int argc, char** argv) {
    vantor::installPlatform(&vantor::systemPlatform());
    return static_cast<int>(vantor::agent::CommandLine().run(argc, argv));
}
