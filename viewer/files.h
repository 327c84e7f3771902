// Files of the viewer: jobs that come in, pictures and pages that go out.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace viewer {

inline constexpr std::uint64_t kMostJobBytes = std::uint64_t{1} << 30;

// Reads a whole job from a file, or from standard input when the path is "-".
// Throws CommandError (input) when it cannot be read or is longer than a gigabyte.
std::string ReadJobFile(const std::string& path);

// Writes a file so that a reader sees the old one or the whole new one; "-" is standard output.
// Throws CommandError (target).
void WriteWholeFile(const std::string& path, std::string_view content);

// Makes the folder and those above it. Throws CommandError (target).
void MakeFolder(const std::string& path);

// The part of a job's path that its pictures are named after: "out/boxes.job" gives "boxes".
std::string JobStem(const std::string& path);

}  // namespace viewer
