// Reads a property list of any encoding from standard input and writes it to standard output in the
// binary form. Exit code 1, with the reason on standard error, when it cannot be read.

#include "platform/linux/archive/property_list_codec.h"

#include <cstdio>
#include <iostream>
#include <iterator>

int main() {
    std::cin >> std::noskipws;
    const vantor::Bytes bytes{std::istreambuf_iterator<char>(std::cin), {}};
    vantor::PropertyListCodec codec;
    const auto list = codec.read(bytes);
    if (!list) {
        std::fprintf(stderr, "%s\n", list.error().message.c_str());
        return 1;
    }
    const vantor::Bytes written = codec.writeBinary(list.value());
    std::cout.write(reinterpret_cast<const char*>(written.data()),
                    static_cast<std::streamsize>(written.size()));
    return std::cout.flush() ? 0 : 1;
}
