// A state folder of its own for a test: VLX_HOME points to it, and VLX_LOG into it at trace level.
#pragma once

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

class TempHome {
 public:
  TempHome() {
    std::string pattern = (std::filesystem::temp_directory_path() / "vlx_home_XXXXXX").string();
    m_folder = mkdtemp(pattern.data());
    setenv("VLX_HOME", m_folder.c_str(), 1);
    setenv("VLX_LOG", Path("log.txt").c_str(), 1);
    setenv("VLX_LOG_LEVEL", "trace", 1);
  }
  ~TempHome() {
    for (const char* name : {"VLX_HOME", "VLX_LOG", "VLX_LOG_LEVEL"}) unsetenv(name);
    std::filesystem::remove_all(m_folder);
  }
  TempHome(const TempHome&) = delete;
  TempHome& operator=(const TempHome&) = delete;

  std::string Path(const std::string& name) const { return m_folder + "/" + name; }
  void WriteFile(const std::string& name, const std::string& content) const {
    std::ofstream(Path(name), std::ios::binary) << content;
  }
  // The log so far: each line from its level on, "trace<TAB>category<TAB>text".
  std::vector<std::string> LogLines() const {
    std::ifstream log(Path("log.txt"));
    std::vector<std::string> lines;
    for (std::string line; std::getline(log, line);) {
      const std::size_t thread = line.find('\t');
      lines.push_back(line.substr(line.find('\t', thread + 1) + 1));
    }
    return lines;
  }

 private:
  std::string m_folder;
};
