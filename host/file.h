// Reads small files.
#pragma once

#include <string>

// The whole content of a file. Throws HostError (input) that names what the file is, its path and
// the reason, also if it is longer than 16 MiB: a device has no end. what: as "settings file".
std::string ReadWholeFile(const std::string& path, const std::string& what);
