// C streams that close themselves.
#pragma once

#include <cstdio>
#include <memory>

struct FileCloser {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using FilePtr = std::unique_ptr<std::FILE, FileCloser>;
