// What vlx-ipp tells clients of a printer, and how their attributes become settings.
#pragma once

#include <pappl/pappl.h>

#include <span>

#include "host/settings/settings.h"
#include "printing/label_pages.h"

inline constexpr const char* kJobFormat = "application/vnd.vlx-job";

// One driver for each resolution of the print head: "vlx-203", ...
std::span<pappl_pr_driver_t> LabelDrivers();

// Fills in what clients can choose; the callbacks are left as they are. Returns false if there is
// no such driver. attributes: gets the vendor attributes with their values; the caller frees it.
bool DescribePrinter(const char* driver, pappl_pr_driver_data_t& data, ipp_t** attributes);

// The settings that the attributes of a job stand for, without the paper's size. defaults: the
// printer's vendor attributes, since PAPPL's options have only those that the job gives. Throws
// HostError (settings).
Settings SettingsOf(const pappl_pr_options_t& options, ipp_t* defaults);

// The paper, exact, and the pages that are wanted.
PageOrder OrderOf(const pappl_pr_options_t& options);
