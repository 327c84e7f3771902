// client PLUGIN FOLDER CALL...
// Plays the calls to the plug-in and writes the files "job" and "calls" into the folder, which
// exists. Log and page images are the plug-in's own (VLX_LOG, VLX_SAVE_BITMAPS). Exits 1 if a call
// cannot be made; what the calls return is no error.

#include <cstdio>
#include <exception>

#include "tests/windows/client.h"

int main(int argc, char** argv) try {
  if (argc < 3) throw std::runtime_error("Usage: client PLUGIN FOLDER CALL...");
  Client client(argv[1], argv[2]);
  for (int i = 3; i < argc; ++i) client.Call(argv[i]);
  return 0;
} catch (const std::exception& error) {
  std::fprintf(stderr, "%s\n", error.what());
  return 1;
}
