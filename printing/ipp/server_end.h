// The end of the server and its next start. PAPPL waits a minute for jobs that wait for a printer,
// and leaves what was being printed as it was when the server starts again.
#pragma once

#include <pappl/pappl.h>

#include <string>

#include "printing/ipp/job_pictures.h"

// Restarts jobs that were printing when the last server ended, and aborts those whose data was not
// kept: changes the state file that is about to be loaded. Does nothing if there is none.
void ResumeSavedJobs(const std::string& stateFile);

// Once the system runs, starts the jobs that it has loaded. When it is asked to end, saves its
// state and ends the process within some seconds unless a job is on its way to a printer; jobs that
// wait for one are kept for the next start. Both must outlive the system.
void EndWithoutWaiting(pappl_system_t* system, JobPictures& pictures, const std::string& stateFile);
