// Reads a property list of any encoding from standard input and writes it to standard output in the
// binary form. Exit code 1, with the reason on standard error, when it cannot be read.

#include "platform/linux/archive/property_list_codec.h"

#include <array>
#include <cstdio>

int main() {
    vantor::Bytes bytes;
    std::array<std::uint8_t, 65536> block;
    for (std::size_t got = 0; (got = std::fread(block.data(), 1, block.size(), stdin)) > 0;) {
        bytes.insert(bytes.end(), block.begin(), block.begin() + got);
    }
    vantor::PropertyListCodec codec;
    const auto list = codec.read(bytes);
    if (!list) {
        std::fprintf(stderr, "%s\n", list.error().message.c_str());
        return 1;
    }
    const vantor::Bytes written = codec.writeBinary(list.value());
    const bool done = std::fwrite(written.data(), 1, written.size(), stdout) == written.size();
    return done && std::fflush(stdout) == 0 ? 0 : 1;
}
