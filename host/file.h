// Reads small files.
#pragma once

#include <string>

// The whole content of a file. what: the kind of file for messages, such as "settings file". Throws
// HostError (input) that names the path and the reason, also for more than 16 MiB, because a device
// may never end.
std::string ReadWholeFile(const std::string& path, const std::string& what);
