#pragma once
// GNUstep looks for the blocks runtime here; it stands elsewhere.

#include <Block.h>
