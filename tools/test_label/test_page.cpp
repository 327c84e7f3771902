#include "tools/test_label/test_page.h"

#include <algorithm>

namespace {

constexpr double kFrameMm = 1;  // from the edge of what the printer reaches
constexpr double kCornerMm = 4;
constexpr double kRulerMm = 9;  // the rulers with their numbers, from the same edge

}  // namespace

TestPage::TestPage(const DevicePage& device, TestLabelJob job)
    : m_device(device), m_job(std::move(job)) {}

bool TestPage::Next(PageImage& page) {
  if (m_drawn) return false;
  m_drawn = true;
  ShapePage(page, static_cast<std::uint64_t>(m_device.physicalWidthPx),
            static_cast<std::uint64_t>(m_device.physicalHeightPx), "test label");
  Canvas canvas(page, m_job.TextDots());
  DrawFrame(canvas);
  DrawBlocks(canvas);
  return true;
}

// Corner marks on a line 1 mm inside, and ticks on that line at every millimetre of the paper. The
// columns and rows from the surface's size on are lost, see LosesContent.
void TestPage::DrawFrame(Canvas& canvas) const {
  const int stroke = std::max(1, m_job.Dots(0.15)), arm = m_job.Dots(kCornerMm);
  const int left = m_device.offsetXPx + m_job.Dots(kFrameMm);
  const int top = m_device.offsetYPx + m_job.Dots(kFrameMm);
  const int right = m_device.surfaceWidthPx - m_job.Dots(kFrameMm);
  const int bottom = m_device.surfaceHeightPx - m_job.Dots(kFrameMm);
  for (const int y : {top, bottom - stroke}) {
    canvas.Fill({left, y}, {arm, stroke});
    canvas.Fill({right - arm, y}, {arm, stroke});
  }
  for (const int x : {left, right - stroke}) {
    canvas.Fill({x, top}, {stroke, arm});
    canvas.Fill({x, bottom - arm}, {stroke, arm});
  }
  const auto tick = [&](int mm) { return m_job.Dots(mm % 10 == 0 ? 3 : mm % 5 == 0 ? 2 : 1); };
  const auto number = [&](Spot at, int mm) {
    if (mm % 10 == 0) canvas.Text(at, std::to_string(mm));
  };
  for (int mm = 1; m_job.Dots(mm) < right - arm; ++mm) {
    const int x = m_job.Dots(mm);
    if (x < left + arm) continue;
    canvas.Fill({x, top}, {stroke, tick(mm)});
    number({x + 2 * stroke, top + m_job.Dots(2)}, mm);
  }
  for (int mm = 1; m_job.Dots(mm) < bottom - arm; ++mm) {
    const int y = m_job.Dots(mm);
    if (y < top + arm) continue;
    canvas.Fill({left, y}, {tick(mm), stroke});
    number({left + m_job.Dots(2), y + 2 * stroke}, mm);
  }
}

// Blocks stand in rows. A block goes to the first row that has room for it; the last row may grow.
void TestPage::DrawBlocks(Canvas& canvas) {
  const int left = m_device.offsetXPx + m_job.Dots(kRulerMm);
  const int right = m_device.surfaceWidthPx - m_job.Dots(2 * kFrameMm);
  const int bottom = m_device.surfaceHeightPx - m_job.Dots(2 * kFrameMm);
  const int gap = m_job.Dots(2);
  struct Row {
    Spot next;
    int bottom;
  };
  std::vector<Row> rows = {{{left, m_device.offsetYPx + m_job.Dots(kRulerMm)}, 0}};
  for (const Block& block : TestBlocks(m_job, right - left)) {
    const int title = block.title.empty() ? 0 : m_job.LineDots();
    const int width = std::max(block.size.width, m_job.TextWidth(block.title));
    const int height = block.size.height + title;
    const auto fits = [&](const Row& row) {
      const int end = &row == &rows.back() ? bottom : row.bottom;
      return row.next.x + width <= right && row.next.y + height <= end;
    };
    auto row = std::find_if(rows.begin(), rows.end(), fits);
    if (row == rows.end()) {
      const Row below = {{left, rows.back().bottom + gap}, 0};
      if (rows.back().bottom == 0 || left + width > right || below.next.y + height > bottom) {
        m_leftOut.push_back(block.title.empty() ? "the settings" : block.title);
        continue;
      }
      row = rows.insert(rows.end(), below);
    }
    canvas.Text(row->next, block.title);
    block.draw(canvas, {row->next.x, row->next.y + title});
    row->bottom = std::max(row->bottom, row->next.y + height);
    row->next.x += width + gap;
  }
}
