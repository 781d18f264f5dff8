#pragma once
// Where the installed system stands: the folder that holds the extension's bundle and the
// "PrivateFrameworks" of the agent.

#include <filesystem>
#include <sys/types.h>

namespace vantor {

/// The running program's file.
std::filesystem::path runningProgram();

/// The environment variable VANTOR_SYSTEM_ROOT, else the folder above the bundle that holds the
/// running program, else "../lib/vantor" from the running program's folder.
std::filesystem::path systemRoot();

/// The folder that the running installation's programs stand below: "PREFIX" of "PREFIX/bin" and
/// "PREFIX/lib/vantor".
std::filesystem::path installationPrefix();

/// The user to whom the running program belongs, as this process sees users: in a user namespace
/// that does not know root, root's files belong to somebody else.
uid_t installationOwner();

} // namespace vantor
