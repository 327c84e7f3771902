// What a job tells the front end while it runs, and how the front end stops it.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

// All functions are called on the thread that runs the job. They must not throw.
class JobObserver {
 public:
  virtual ~JobObserver() = default;

  // Something that does not stop the job but may spoil it. text: a sentence without a period.
  virtual void Warning(const std::string& /*text*/) {}

  // A page has been handed to the plug-in. printed: pages so far. count: of all pages, if it is
  // known (PageSource::Count).
  virtual void Progress(std::size_t /*printed*/, std::optional<std::size_t> /*count*/) {}

  // Asked before each page; true ends the job after the pages printed so far, with a complete
  // stream. To cancel from another thread or a signal handler, let this return an atomic flag.
  virtual bool Cancelled() { return false; }
};
