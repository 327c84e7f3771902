// Reads jobs and writes pictures and pages.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace viewer {

inline constexpr std::uint64_t kMostJobBytes = std::uint64_t{1} << 30;

// Reads a whole job from a file, or from standard input if the path is "-".
// Throws CommandError (input) if it cannot be read or is longer than kMostJobBytes.
std::string ReadJobFile(const std::string& path);

// Replaces a file atomically: a reader sees the old or the new one. "-" is standard output.
// Throws CommandError (target).
void WriteWholeFile(const std::string& path, std::string_view content);

// Creates the folder and its parents if needed. Throws CommandError (target).
void MakeFolder(const std::string& path);

// Whether the path has the extension of a picture, document or job and is not a folder.
bool NamesFile(const std::string& path);

// Creates the folder for a command's pictures. Throws CommandError: usage if NamesFile(path),
// target if it cannot be created.
void MakePictureFolder(const std::string& path);

// Returns the name that a job's pictures start with: "boxes" for "out/boxes.job".
std::string JobStem(const std::string& path);

}  // namespace viewer
