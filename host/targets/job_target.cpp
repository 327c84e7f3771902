#include "host/targets/job_target.h"

#include <strings.h>

#include "host/error.h"

const TargetScheme& SchemeOf(const std::string& address) {
  std::string forms;
  for (const TargetScheme& row : kTargetSchemes) {
    if (strncasecmp(address.c_str(), row.scheme.data(), row.scheme.size()) == 0) {
      return row;
    }
    forms.append(forms.empty() ? "" : " or ").append(row.form);
  }
  throw HostError(kExitUsage, "\"" + address + "\" is no address of a printer", "write " + forms);
}

std::unique_ptr<JobTarget> OpenTarget(const std::string& address) {
  return SchemeOf(address).open(address);
}
