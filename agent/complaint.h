#pragma once

#include <string>

namespace vantor::agent {

/// Writes a sentence to standard error, which the user or the journal reads.
void complain(const std::string& sentence);

} // namespace vantor::agent
