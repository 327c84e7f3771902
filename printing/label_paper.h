// The label of a job that comes from a print system, and how the system's pages lie on it. Print
// systems round sizes to points, so a page within one point of the label is taken for it.
#pragma once

#include <optional>
#include <string>

#include "host/pages/page_raster.h"
#include "host/settings/settings.h"

struct LabelPaper {
  PaperSize size = {100000, 150000};
  bool rounded = false;  // known to whole points only
};

// The paper of a print system's name for it: "Custom.83x47mm", "83x47mm", "na_index-4x6_4x6in",
// "Custom.235x133" (points); nullopt if it is none.
std::optional<LabelPaper> PaperOfName(const std::string& name);

// The label's size: the paper's, or the page's if the paper is rounded and the page within a point
// of it.
PaperSize LabelFor(const LabelPaper& paper, const PageImage& page, int dpi, bool landscape);

void SetPaper(Settings& settings, const PaperSize& size);

// How a print system wants pages to lie: one of IPP's values of orientation-requested.
bool LiesDown(int orientation);
void SetOrientation(Settings& settings, int orientation);

// Crops a page that is up to one point larger than the label; smaller pages are padded later.
// Throws HostError (settings) with both sizes for any other size. mayBeSmaller: for pictures, which
// have no page size.
void CropToLabel(PageImage& page, const DevicePage& label, const std::string& name,
                 bool mayBeSmaller);
