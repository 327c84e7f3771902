// The job file that a command of the viewer is given.
#pragma once

#include <string>

namespace viewer {

// Reads a job from a file, or from standard input if the path is "-". Throws CommandError (input)
// if it cannot be read or is not a job.
std::string ReadJob(const std::string& path);

// Checks the path given to --sheet. Throws CommandError (usage) if it leads to the job's own file
// or has the extension of a picture, document or job.
void CheckSheet(const std::string& sheet, const std::string& job);

}  // namespace viewer
