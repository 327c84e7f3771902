// Pictures of the last jobs of each printer: a folder a printer, drawn by the virtual printer from
// the very stream that was sent, with a page that shows them.
#pragma once

#include <condition_variable>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "host/targets/job_target.h"
#include "viewer/server/job_folder.h"

// Thread-safe. Jobs are drawn on a thread of their own, so no printer waits for pictures.
class JobPictures {
 public:
  explicit JobPictures(std::string folder);
  // Draws what is left first.
  ~JobPictures();

  std::string FolderOf(int printer) const { return m_folder + "/" + std::to_string(printer); }

  // Makes the printer's folder with its page. Throws CommandError (target).
  void AddPrinter(int printer, int dpi);

  // A target that has the job drawn once it is complete. A failed picture does not fail the job.
  std::unique_ptr<JobTarget> OpenTarget(int printer, int dpi);

  // Whether no target is open and every job is drawn.
  bool Idle();

 private:
  class Target;
  struct Job {
    viewer::JobFolder* printer;
    std::string path;
    std::string folder;
  };
  viewer::JobFolder& Printer(int printer, int dpi);
  void DrawJobs();
  void AddBusy(int count);

  const std::string m_folder;
  std::mutex m_mutex;
  std::condition_variable m_change;
  std::map<int, std::unique_ptr<viewer::JobFolder>> m_printers;
  std::deque<Job> m_jobs;
  int m_busy = 0;  // targets that are open and jobs that are not drawn yet
  bool m_ends = false;
  std::thread m_thread;
};
