#include "tools/printer_list.h"

#include <future>

#include "host/driver/printer.h"
#include "host/error.h"
#include "host/targets/job_target.h"
#include "host/unicode.h"

namespace {

std::string Probe(const std::string& target) {
  try {
    return SchemeOf(target).probe(target);
  } catch (const HostError& error) {
    return error.what();
  }
}

}  // namespace

std::vector<ListedPrinter> ListPrinters() {
  std::vector<ListedPrinter> printers;
  for (const PrinterProfile& profile : PrinterProfiles()) printers.push_back({profile, {}});
  if (printers.empty()) {
    const Printer known("");
    printers.emplace_back().profile.name = Narrowed(known.Name());
  }
  std::vector<std::future<std::string>> answers;
  for (const ListedPrinter& printer : printers) {
    answers.push_back(std::async(std::launch::async, [target = printer.profile.target] {
      return target.empty() ? std::string() : Probe(target);
    }));
  }
  for (std::size_t i = 0; i < printers.size(); ++i) {
    std::string fault = answers[i].get();
    if (!printers[i].profile.target.empty()) printers[i].fault = std::move(fault);
  }
  return printers;
}
