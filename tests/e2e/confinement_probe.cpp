// A program in the extension's place: launched and confined as the extension is, it tries what the
// file "tries.txt" in its home says and writes what came of it to "found.txt".

#include <arpa/inet.h>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

extern "C" int NSExtensionMain(int argc, char** argv);

namespace {

int opened(const std::string& path, int flags) {
    const int descriptor = open(path.c_str(), flags | O_CLOEXEC, 0600);
    if (descriptor < 0) {
        return errno;
    }
    close(descriptor);
    return 0;
}

int runs(const std::string& program) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) {
        return errno;
    }
    const pid_t child = fork();
    if (child == 0) {
        execl(program.c_str(), program.c_str(), nullptr);
        const int reason = errno;
        _exit(write(ends[1], &reason, sizeof(reason)) == sizeof(reason) ? 1 : 2);
    }
    close(ends[1]);
    int reason = 0;
    if (read(ends[0], &reason, sizeof(reason)) != sizeof(reason)) {
        reason = 0;
    }
    close(ends[0]);
    waitpid(child, nullptr, 0);
    return reason;
}

int connects(const std::string& address) {
    const int made = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in peer{};
    peer.sin_family = AF_INET;
    peer.sin_port = htons(9);
    inet_pton(AF_INET, address.c_str(), &peer.sin_addr);
    const int status = connect(made, reinterpret_cast<const sockaddr*>(&peer), sizeof(peer));
    const int reason = status == 0 ? 0 : errno;
    close(made);
    return reason;
}

int attempt(const std::string& verb, const std::string& object) {
    if (verb == "read") {
        return opened(object, O_RDONLY);
    }
    if (verb == "list") {
        return opened(object, O_RDONLY | O_DIRECTORY);
    }
    if (verb == "write") {
        std::error_code ignored;
        std::filesystem::create_directories(std::filesystem::path(object).parent_path(), ignored);
        return opened(object, O_WRONLY | O_CREAT | O_TRUNC);
    }
    if (verb == "remove") {
        return unlink(object.c_str()) == 0 ? 0 : errno;
    }
    return verb == "run" ? runs(object) : connects(object);
}

} // namespace

extern "C" __attribute__((visibility("default"))) int VantorExtensionEntry(int, char**) {
    const std::filesystem::path home = std::getenv("HOME");
    std::ifstream tries(home / "tries.txt");
    std::ofstream found(home / "found.txt");
    std::string verb;
    std::string object;
    while (tries >> verb && tries.get() == ' ' && std::getline(tries, object)) {
        const int reason = attempt(verb, object);
        found << verb << ' ' << object << ": " << (reason == 0 ? "ok" : std::strerror(reason))
              << '\n';
    }
    return 0;
}

int main(int argc, char** argv) { return NSExtensionMain(argc, argv); }
