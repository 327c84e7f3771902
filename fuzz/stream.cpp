// Job streams as a printer receives them. Every byte belongs to one piece, every label is drawn or
// has a reason why not, and reports on a job are valid text.

#include <cstdlib>
#include <new>

#include "viewer/reports/contact_sheet.h"
#include "viewer/reports/explain.h"
#include "viewer/reports/label_json.h"
#include "viewer/reports/lint.h"

namespace {

constexpr int kMostLabels = 8;  // drawn of one case

void Require(bool holds) {
  if (!holds) std::abort();
}

void DrawLabels(std::string_view job) {
  viewer::JobView view(job, 25.4);
  viewer::JobTotals totals;
  viewer::LabelStrip strip;
  for (int i = 0; i < kMostLabels; ++i) {
    const auto drawn = view.Next();
    if (!drawn) break;
    totals.Add(drawn->label);
    Require(drawn->picture.has_value() != !drawn->why.empty());
    Require(!drawn->picture || drawn->picture->black.width > 0);
    viewer::ToJson(*drawn).dump(-1, ' ', false, nlohmann::json::error_handler_t::strict);
    strip.AddLinked(*drawn, "label.png");
  }
  viewer::ContactSheet("case", job.size(), view, totals, strip);
}

}  // namespace

extern "C" const char* __asan_default_options() {
  return "allocator_may_return_null=1:max_allocation_size_mb=256";
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view job(reinterpret_cast<const char*>(data), size);
  try {
    std::size_t bytes = 0;
    viewer::ExplainJob(job, [&](const viewer::Explanation& it) {
      Require(it.place.offset == bytes && it.bytes > 0 && !it.words.empty());
      bytes += it.bytes;
    });
    Require(bytes == size);
    for (const viewer::Fault& fault : viewer::LintJob(job, 0).faults) {
      Require(fault.place.offset <= size && !fault.text.empty());
    }
    DrawLabels(job);
  } catch (const std::bad_alloc&) {
  }
  return 0;
}
