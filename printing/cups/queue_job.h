// What a print job of CUPS asks for: the defaults of the queue's description (PPD), then a preset
// of the administrator, then the options of the job. Later ones override earlier ones.
#pragma once

#include <cups/ppd.h>

#include <memory>
#include <string>
#include <vector>

#include "host/settings/setting_keys.h"
#include "host/settings/settings.h"
#include "printing/label_pages.h"

class QueueJob {
 public:
  // ppdPath: the queue's description. options: "name=value name=value ...", as a filter gets them.
  // Throws HostError (settings) for a choice that the queue does not have, for a setting that only
  // the administrator may make (command blocks, raw fields of the record), and for page options
  // that make no sense for labels, such as several pages on one.
  QueueJob(const std::string& ppdPath, const std::string& options);

  // All settings but the paper's size and the copies.
  const Settings& JobSettings() const { return m_settings; }
  // The pages to print. The caller sets the repeats, if copies are collated.
  const PageRequest& Pages() const { return m_pages; }
  bool Collated() const { return m_collated; }

 private:
  struct PpdCloser {
    void operator()(ppd_file_t* ppd) const { ppdClose(ppd); }
  };
  class Options;
  enum class Marked { All, Changed };

  void ApplyPreset(const Options& options);
  void ApplyOptions(const Options& options);
  void ApplyOption(const std::string& name, const std::string& value);
  void ApplyChoice(const ppd_option_t& option, const ppd_choice_t& choice);
  void ApplyMarked(Marked marked);
  LabelPaper PaperOf(const Options& options) const;
  void ReadPageRanges(const std::string& ranges);

  std::unique_ptr<ppd_file_t, PpdCloser> m_ppd;
  Settings m_settings;
  PageRequest m_pages;
  bool m_collated = false;
};
