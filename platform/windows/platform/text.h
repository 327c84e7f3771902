// Text conversion and local time: all of it in windows.h.
#pragma once

#include "platform/types.h"
