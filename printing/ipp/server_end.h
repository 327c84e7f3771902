// Ends the server without losing jobs, and resumes them at the next start. By itself PAPPL waits a
// minute at the end for jobs that wait for a printer, and never resumes one that was being printed.
#pragma once

#include <pappl/pappl.h>

#include <string>

#include "printing/ipp/job_pictures.h"

// Edits the state file before it is loaded: jobs that were printing when the last server ended will
// be printed again, and those whose data was not kept are aborted. Does nothing if there is no
// file.
void ResumeSavedJobs(const std::string& stateFile);

// Once the system runs, starts the jobs that it has loaded. When it is asked to end, saves its
// state and ends the process as soon as no job is on its way to a printer; jobs that wait for a
// printer are kept for the next start. pictures must outlive the system.
void EndWithoutWaiting(pappl_system_t* system, JobPictures& pictures, const std::string& stateFile);
