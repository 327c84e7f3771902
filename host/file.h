// Files that are read as a whole.
#pragma once

#include <string>

// The content of a file. Throws HostError (input) that names what it is, its path and the reason.
std::string ReadWholeFile(const std::string& path, const std::string& what);
