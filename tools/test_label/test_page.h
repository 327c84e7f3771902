// The test label as a page: a frame with rulers, and in it as many blocks as fit.
#pragma once

#include "host/pages/page_raster.h"
#include "host/pages/page_source.h"
#include "tools/test_label/blocks.h"

class TestPage final : public PageSource {
 public:
  TestPage(const DevicePage& device, TestLabelJob job);

  bool Next(PageImage& page) override;
  std::optional<std::size_t> Count() const override { return 1; }

  // The titles of the blocks for which there was no room.
  const std::vector<std::string>& LeftOut() const { return m_leftOut; }

 private:
  void DrawFrame(Canvas& canvas) const;
  void DrawBlocks(Canvas& canvas);

  const DevicePage m_device;
  const TestLabelJob m_job;
  bool m_drawn = false;
  std::vector<std::string> m_leftOut;
};
