// Removes temporary files when the program is ended by SIGINT, SIGTERM or SIGHUP.
#pragma once

#include "host/targets/file_target.h"

// The program's only instance. It installs the signal handlers when the first file is made. Not
// thread-safe.
TemporaryFiles* InterruptedFiles();
