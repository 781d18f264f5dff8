#include "agent/complaint.h"

#include <cstdio>

namespace vantor::agent {

void complain(const std::string& sentence) {
    std::fprintf(stderr, "vantor-agent: %s\n", sentence.c_str());
}

std::string inSeconds(double seconds) {
    char text[32];
    std::snprintf(text, sizeof text, "%.3g s", seconds);
    return text;
}

} // namespace vantor::agent
