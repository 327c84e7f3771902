// The label of a print system's job, and how the system's pages fit it. Print systems round sizes
// to points, so a page within one point of the label's size is accepted as that size.
#pragma once

#include <optional>
#include <string>

#include "host/pages/page_raster.h"
#include "host/settings/settings.h"

struct LabelPaper {
  PaperSize size = {100000, 150000};
  bool rounded = false;  // the size is known in whole points only
};

// The paper that a print system names "Custom.83x47mm", "83x47mm", "na_index-4x6_4x6in" or, in
// points, "Custom.235x133"; nullopt for any other name. Throws HostError (settings) for a size out
// of range.
std::optional<LabelPaper> PaperOfName(const std::string& name);

// The label's size: the paper's; or the page's, if the paper is rounded and the page is within a
// point of it. dpi, landscape: of the page.
PaperSize LabelFor(const LabelPaper& paper, const PageImage& page, int dpi, bool landscape);

// Sets paper.size.
void SetPaper(Settings& settings, const PaperSize& size);

// orientation: an IPP value of orientation-requested. SetOrientation sets paper.orientation and,
// for the reverse orientations, paper.rotation.
bool IsLandscape(int orientation);
void SetOrientation(Settings& settings, int orientation);

// Crops a page that is up to one point larger than the label; one that is up to a point smaller is
// left to be padded. Throws HostError (settings) with both sizes for any other page. mayBeSmaller:
// accepts any smaller page, for pictures, which have no page size. name: of the page, for messages.
void CropToLabel(PageImage& page, const DevicePage& label, const std::string& name,
                 bool mayBeSmaller);
