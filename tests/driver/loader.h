// The system's module loader.
#pragma once

#include <string>

namespace loader {

// Throws std::runtime_error if the module cannot be loaded.
void* Load(const std::string& path);
void Unload(void* module);

// The address of an export; null if there is none of that name.
void* Find(void* module, const char* name);

bool IsLoaded(const std::string& path);

}  // namespace loader
