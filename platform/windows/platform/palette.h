// Palettes of the graphics engine: the system's own.
#pragma once

#include "platform/ddi.h"
