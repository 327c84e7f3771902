// The page of the network printer: its jobs, the newest first. A script on the page looks for new
// jobs and puts them on top without a reload, which would lose the reader's place. From a web
// server it reads the page itself. A page opened as a file may not read other files, but it may
// load scripts: one names the newest job, and each job has one of its own.
#pragma once

#include <cstdint>
#include <deque>
#include <string>

#include "viewer/drawing/job_view.h"
#include "viewer/reports/contact_sheet.h"

namespace viewer {

inline constexpr const char* kPageName = "index.html";
inline constexpr const char* kNewestName = "newest.js";

// "job-0007": the name that the files of a job start with.
std::string JobName(std::uint64_t number);

// A job's part of the page. note: what went wrong, empty if nothing did.
std::string JobSection(const std::string& name, const std::string& note, std::uint64_t bytes,
                       const JobView& view, const JobTotals& totals, const LabelStrip& strip);

// The page. sections: newest first, the first one is of job number `newest`.
std::string PrinterPage(const std::deque<std::string>& sections, std::uint64_t newest);

// The scripts: the content of kNewestName and of a job's .js file.
std::string NewestScript(std::uint64_t newest);
std::string JobScript(std::uint64_t number, const std::string& section);

}  // namespace viewer
