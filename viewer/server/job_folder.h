// The folder of the network printer: its jobs, their pictures and a page that shows them.
#pragma once

#include <cstdint>
#include <deque>
#include <mutex>
#include <string>

#include "viewer/image/png.h"

namespace viewer {

class JobFolder {
 public:
  // Creates the folder if needed, draws the jobs that it already holds and writes the page.
  // dpi 0: guessed for each job. Throws CommandError (target).
  JobFolder(std::string folder, double dpi, Colour highlight);

  // Returns a new path for a job that is being received. Thread-safe.
  std::string NewIncomingPath();

  // Adds a received job: numbers it, draws it and updates the page. note: what went wrong while it
  // was received, empty if nothing did. Returns a line of text about the job.
  // Thread-safe. Throws CommandError (target).
  std::string Add(const std::string& incomingPath, const std::string& note);

 private:
  std::string Draw(std::uint64_t number, const std::string& note);
  void WritePage();

  const std::string m_folder;
  const double m_dpi;
  const Colour m_highlight;
  std::mutex m_mutex;
  std::uint64_t m_incoming = 0;
  std::uint64_t m_last = 0;            // number of the newest job
  std::deque<std::string> m_sections;  // of the page, newest job first
};

}  // namespace viewer
