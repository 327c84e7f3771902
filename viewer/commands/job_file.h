// The job file that a command of the viewer is given.
#pragma once

#include <string>
#include <string_view>

namespace viewer {

// Says what a file is that holds no job: "a PNG picture", "empty", "text without a command of the
// printer". Returns an empty string for a job, a damaged one included.
std::string WhatInsteadOfJob(std::string_view file);

// Reads a job from a file, or from standard input if the path is "-". Throws CommandError (input)
// if it cannot be read or is no job.
std::string ReadJob(const std::string& path);

// Throws CommandError (usage) if the output's path leads to the file of a job that is read, or has
// the name of a picture, document or job.
void CheckSheet(const std::string& output, const std::string& job);

}  // namespace viewer
