// The folder of a network printer: each job with its pictures, and a page that shows all of them.
#pragma once

#include <cstdint>
#include <deque>
#include <mutex>
#include <string>

#include "viewer/image/png.h"

namespace viewer {

class JobFolder {
 public:
  // Makes the folder and takes in the jobs that lie in it from before; the page is there at once.
  // dpi 0: guessed for each job. Throws CommandError (target).
  JobFolder(std::string folder, double dpi, Colour highlight);

  // The path of a file for a job that begins to come in. Of any thread.
  std::string PathOfComing();

  // Takes in a job whose bytes are all there: gives it its number, draws it and writes the page
  // again. note: what happened on the way, empty when nothing. Returns one line about the job.
  // Of any thread; throws CommandError (target).
  std::string Add(const std::string& comingPath, const std::string& note);

 private:
  std::string Draw(const std::string& name, const std::string& note);
  void WritePage();

  const std::string m_folder;
  const double m_dpi;
  const Colour m_highlight;
  std::mutex m_mutex;
  std::uint64_t m_coming = 0;
  std::uint64_t m_last = 0;            // number of the last job
  std::deque<std::string> m_sections;  // of the page, the last job first
};

}  // namespace viewer
