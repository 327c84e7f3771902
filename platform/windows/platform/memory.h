// Local and global memory blocks: all of it in windows.h.
#pragma once

#include "platform/types.h"
