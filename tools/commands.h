#pragma once
// The commands, each made by a function beside its implementation.

#include "tools/command.h"

#include <memory>

namespace vantor {

std::unique_ptr<Command> makeListCommand();
std::unique_ptr<Command> makeSetCommand();
std::unique_ptr<Command> makeShowCommand();
std::unique_ptr<Command> makeUnsetCommand();
std::unique_ptr<Command> makeMainCommand();
std::unique_ptr<Command> makeNonShaderCommand();
std::unique_ptr<Command> makeNotifyCommand();
std::unique_ptr<Command> makeRenderCommand();
std::unique_ptr<Command> makeGalleryCommand();
std::unique_ptr<Command> makeCheckCommand();
std::unique_ptr<Command> makeWatchCommand();

} // namespace vantor
