// Pictures of each printer's last jobs, drawn by the virtual printer from the very stream that was
// sent: one folder per printer, with a page that shows them.
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
  // folder: holds the printers' folders. The destructor draws the waiting jobs first.
  explicit JobPictures(std::string folder);
  ~JobPictures();

  std::string FolderOf(int printer) const { return m_folder + "/" + std::to_string(printer); }

  // Makes the printer's folder with its page. printer: its number in PAPPL. dpi: of its head.
  // Throws CommandError (target).
  void AddPrinter(int printer, int dpi);

  // A target that keeps a copy of the job and has it drawn once it is finished. A picture that
  // fails does not fail the job. The target must not outlive this object. Throws as AddPrinter
  // does.
  std::unique_ptr<JobTarget> OpenTarget(int printer, int dpi);

  // True if no target is open and every job has been drawn.
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
  int m_busy = 0;  // open targets, and jobs that are not drawn yet
  bool m_ends = false;
  std::thread m_thread;
};
