#include "printing/ipp/job_pictures.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <vector>

#include "common/error.h"
#include "common/file.h"

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kMostJobs = 20;
constexpr const char* kJobName = "job-0000";

// Removes old jobs with their pictures. The page lists them until the next start.
void RemoveOldJobs(const fs::path& folder) {
  std::vector<std::string> jobs;
  std::error_code error;
  for (const fs::directory_entry& entry : fs::directory_iterator(folder, error)) {
    if (entry.path().extension() == ".job") jobs.push_back(entry.path().stem().string());
  }
  if (jobs.size() <= kMostJobs) return;
  std::sort(jobs.begin(), jobs.end());
  jobs.resize(jobs.size() - kMostJobs);
  for (const fs::directory_entry& entry : fs::directory_iterator(folder, error)) {
    const std::string name = entry.path().filename().string();
    const std::string job = name.substr(0, std::min(name.size(), std::string(kJobName).size()));
    if (std::binary_search(jobs.begin(), jobs.end(), job)) fs::remove(entry.path(), error);
  }
}

}  // namespace

class JobPictures::Target final : public JobTarget {
 public:
  Target(JobPictures& pictures, Job job)
      : m_pictures(pictures), m_job(std::move(job)), m_file(std::fopen(m_job.path.c_str(), "wbe")) {
    m_pictures.AddBusy(1);
  }
  ~Target() override {
    m_pictures.AddBusy(-1);
    if (m_file == nullptr) return;
    m_file.reset();
    std::error_code error;
    fs::remove(m_job.path, error);
  }
  void Write(std::string_view bytes) override {
    if (m_file != nullptr) std::fwrite(bytes.data(), 1, bytes.size(), m_file.get());
  }
  void Finish() override {
    if (m_file == nullptr || std::fflush(m_file.get()) != 0 || std::ferror(m_file.get())) return;
    m_file.reset();
    const std::lock_guard lock(m_pictures.m_mutex);
    m_pictures.m_jobs.push_back(m_job);
    ++m_pictures.m_busy;
    m_pictures.m_change.notify_one();
  }

 private:
  JobPictures& m_pictures;
  const Job m_job;
  FilePtr m_file;
};

JobPictures::JobPictures(std::string folder)
    : m_folder(std::move(folder)), m_thread([this] { DrawJobs(); }) {}

JobPictures::~JobPictures() {
  {
    const std::lock_guard lock(m_mutex);
    m_ends = true;
  }
  m_change.notify_one();
  m_thread.join();
}

void JobPictures::DrawJobs() {
  for (;;) {
    std::unique_lock lock(m_mutex);
    m_change.wait(lock, [this] { return m_ends || !m_jobs.empty(); });
    if (m_jobs.empty()) return;
    const Job job = std::move(m_jobs.front());
    m_jobs.pop_front();
    lock.unlock();
    try {
      job.printer->Add(job.path, "");
    } catch (const CommandError&) {  // the disk is full or the folder is gone
      std::error_code error;
      fs::remove(job.path, error);
    }
    RemoveOldJobs(job.folder);
    AddBusy(-1);
  }
}

void JobPictures::AddBusy(int count) {
  const std::lock_guard lock(m_mutex);
  m_busy += count;
}

bool JobPictures::Idle() {
  const std::lock_guard lock(m_mutex);
  return m_busy == 0;
}

viewer::JobFolder& JobPictures::Printer(int printer, int dpi) {
  const std::lock_guard lock(m_mutex);
  std::unique_ptr<viewer::JobFolder>& folder = m_printers[printer];
  if (folder == nullptr) {
    folder = std::make_unique<viewer::JobFolder>(FolderOf(printer), dpi, viewer::Colour{255, 0, 0});
  }
  return *folder;
}

void JobPictures::AddPrinter(int printer, int dpi) { Printer(printer, dpi); }

std::unique_ptr<JobTarget> JobPictures::OpenTarget(int printer, int dpi) {
  viewer::JobFolder& folder = Printer(printer, dpi);
  return std::make_unique<Target>(*this, Job{&folder, folder.NewIncomingPath(), FolderOf(printer)});
}
