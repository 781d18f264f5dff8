#pragma once

#include <string>

namespace vantor::agent {

/// Writes a sentence to standard error, which the user or the journal reads.
void complain(const std::string& sentence);

/// A time as sentences say it: "0.25 s".
std::string inSeconds(double seconds);

} // namespace vantor::agent
