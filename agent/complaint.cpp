#include "agent/complaint.h"

#include <cstdio>

namespace vantor::agent {

void complain(const std::string& sentence) {
    std::fprintf(stderr, "vantor-agent: %s\n", sentence.c_str());
}

} // namespace vantor::agent
