// Reading files in text mode: the C library's own.
#pragma once

#include <share.h>

#include <cstdio>

#include "platform/types.h"
