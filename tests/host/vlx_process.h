// vlx as a process, in a folder of its own with a page to print.
#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>

#include "tests/support/png_image.h"
#include "tests/support/temp_home.h"

class VlxProcess : public ::testing::Test {
 protected:
  VlxProcess() {
    std::string pixels;
    for (int i = 0; i < 81 * 47; ++i) pixels += i * i / 7 % 3 == 0 ? '\0' : '\xFF';
    home.WriteFile("page.pgm", "P5 81 47 255\n" + pixels);
    page = pixels;
  }
  // Runs a command and gives its exit code; {} is the folder.
  int RunProgram(std::string command) {
    for (std::size_t at; (at = command.find("{}")) != command.npos;) {
      command.replace(at, 2, home.Path(""));
    }
    const std::string output = " >" + home.Path("out.txt") + " 2>" + home.Path("err.txt");
    return WEXITSTATUS(std::system((m_environment + command + output).c_str()));
  }
  int RunVlx(const std::string& arguments) { return RunProgram("'" VLX_PATH "' " + arguments); }
  int Run(const std::string& arguments) { return RunVlx("print " + arguments); }
  // Sets a variable for the runs that follow.
  void SetEnvironment(const std::string& assignment) { m_environment += assignment + " "; }
  std::string Read(const std::string& name) const {
    std::ifstream file(home.Path(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }
  // The job without its first line, which holds the time.
  std::string Job(const std::string& name) const {
    const std::string job = Read(name);
    return job.substr(std::min(job.find('\n'), job.size()));
  }
  static PngImage ImageOf(const std::string& job) {
    return DecodePng(job.substr(std::min(job.find("\x89PNG"), job.size())));
  }

  TempHome home;
  std::string page;
  const std::string paper = " --paper 12x7mm --dpi 203 ";

 private:
  std::string m_environment;
};
