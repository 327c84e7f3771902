// Prints the jobs of the printer application: documents as files, and raster as it comes in.
#pragma once

#include <pappl/pappl.h>

#include "printing/ipp/job_pictures.h"

// Sets the callbacks of a printer for raster and for finished jobs. pictures must outlive the
// system.
void SetPrintCallbacks(pappl_pr_driver_data_t& data, JobPictures& pictures);

// Lets a system print PDF, PNG and PNM documents by the driver's own page readers.
void AddDocumentFormats(pappl_system_t* system, JobPictures& pictures);
