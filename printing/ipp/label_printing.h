// Prints the jobs of the printer application: documents from files, and raster as it comes in.
#pragma once

#include <pappl/pappl.h>

#include "printing/ipp/job_pictures.h"

// Sets a printer's callbacks for raster and for finished jobs (kJobFormat). pictures must outlive
// the system.
void SetPrintCallbacks(pappl_pr_driver_data_t& data, JobPictures& pictures);

// Lets the system print PDF, PNG and PNM documents through the driver's own page readers. pictures:
// as above.
void AddDocumentFormats(pappl_system_t* system, JobPictures& pictures);
