// Counts what a job costs as its bytes are written: labels, cuts, media, bytes, images.
#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

class JobCost {
 public:
  // Takes the next write of the job, which must not end within a command line: the plug-in never
  // splits one. The bytes of an image are only hashed, never read as commands.
  void Count(std::string_view write);

  std::uint64_t Bytes() const { return m_bytes; }
  std::uint64_t Labels() const { return m_labels; }  // copies included
  std::uint64_t Cuts() const { return m_cuts; }
  double MediaMm() const { return m_mediaMm; }
  std::size_t Images() const { return m_digests.size(); }  // distinct ones

  // What a printer prints when it receives only this many bytes of the job.
  struct Printed {
    std::uint64_t pages = 0;   // one for each print command
    std::uint64_t labels = 0;  // copies included
  };
  Printed PrintedWithin(std::uint64_t bytes) const;

  // The share of image bytes saved against sending an image for every placement, in percent.
  int SavedPercent() const;

  // "200 labels, 1 cut, 30600 mm of media, 51234 bytes, 3 images, 96 % of the image bytes saved"
  std::string Line() const;

 private:
  struct Image {
    std::uint64_t bytes = 0;
    bool fresh = false;  // downloaded but not placed yet
  };
  void CountLine(std::string_view line);
  void EndImage();
  void Place(std::string_view name);
  void PrintLabels(std::uint64_t count);

  struct PrintCommand {
    std::uint64_t endBytes;  // of the job, up to the end of the command's write
    std::uint64_t labels;    // printed so far, this command included
  };

  std::uint64_t m_bytes = 0;
  std::uint64_t m_labels = 0;
  std::vector<PrintCommand> m_prints;
  double m_mediaMm = 0;  // labels with their gaps
  double m_pitchMm = 0;  // from label to label

  std::uint64_t m_cuts = 0;
  std::uint64_t m_cutEvery = 0;  // labels; 0: no cut
  std::uint64_t m_uncut = 0;     // labels since the last cut
  bool m_cutAtEnd = false;       // after the last copy of the next label

  bool m_inImage = false;
  std::string m_imageName;
  std::size_t m_imageDigest = 0;
  std::uint64_t m_imageBytes = 0;
  std::map<std::string, Image, std::less<>> m_images;  // held by the printer, by name
  std::set<std::size_t> m_digests;
  std::uint64_t m_sentImageBytes = 0;
  std::uint64_t m_savedImageBytes = 0;
};
