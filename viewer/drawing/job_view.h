// The labels of a job with their pictures, one at a time.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "viewer/drawing/drawing.h"
#include "viewer/language/job.h"

namespace viewer {

struct DrawnLabel {
  Label label;
  std::optional<LabelPicture> picture;  // as it leaves the printer
  std::string why;                      // why there is no picture
  double dpi = 0;
  int turn = 0;  // counter-clockwise degrees that bring it upright
};

class JobView {
 public:
  // dpi 0: guessed from the job, 300 if that fails. The job must outlive the view.
  JobView(std::string_view job, double dpi);

  // Returns the next label, or nullopt after the last.
  std::optional<DrawnLabel> Next();

  double Dpi() const { return m_dpi; }
  bool DpiIsGuessed() const { return m_guessed; }
  const JobReader& Reader() const { return m_reader; }

 private:
  JobReader m_reader;
  double m_dpi;
  bool m_guessed = false;
  int m_turn = 0;
};

// Sums over the labels of a job.
struct JobTotals {
  std::uint64_t labels = 0;
  std::int64_t copies = 0;
  std::int64_t cuts = 0;

  void Add(const Label& label);
  // "1 label, printed once", "3 labels, each printed once" or "3 labels, 12 with copies".
  std::string Text() const;
};

}  // namespace viewer
