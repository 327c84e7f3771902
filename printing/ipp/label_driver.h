// Describes the printers to clients, and turns the attributes of a job into settings.
#pragma once

#include <pappl/pappl.h>

#include <span>

#include "host/settings/settings.h"
#include "printing/label_pages.h"

inline constexpr const char* kJobFormat = "application/vnd.vlx-job";

// One driver for each resolution of the print head: "vlx-203", ...
std::span<pappl_pr_driver_t> LabelDrivers();

// Fills in what clients can choose; the callbacks remain as they are. attributes: set to the vendor
// attributes with their values; the caller frees them. Returns false if no such driver exists.
bool DescribePrinter(const char* driver, pappl_pr_driver_data_t& data, ipp_t** attributes);

// The settings that the attributes of a job stand for, except the paper's size. defaults: the
// printer's vendor attributes, for those that the job does not give. Throws HostError (settings).
Settings SettingsOf(const pappl_pr_options_t& options, ipp_t* defaults);

// The job's paper, which is exact, and its pages.
PageRequest PageRequestOf(const pappl_pr_options_t& options);
