#include "viewer/server/printer_page.h"

#include <cstdio>
#include <nlohmann/json.hpp>

#include "viewer/language/text.h"

namespace viewer {

namespace {

constexpr std::uint64_t kMostLabelsInSection = 12;

// Jobs are inserted in their order. One whose script is gone is skipped. The part of the page
// that is being read stays where it is.
constexpr const char* kScript = R"(<script>
(() => {
  const jobs = document.getElementById("jobs"), count = document.getElementById("count");
  const mostAtOnce = 100;
  let shown = Number(jobs.dataset.newest), newest = shown, loading = false;
  const load = (file, done) => {
    const script = document.createElement("script");
    script.src = file + "?" + Date.now();
    script.onload = script.onerror = () => { script.remove(); done(); };
    document.head.append(script);
  };
  const next = () => {
    loading = shown < newest;
    if (!loading) return;
    shown = Math.max(shown + 1, newest - mostAtOnce);
    load("job-" + String(shown).padStart(4, "0") + ".js", next);
  };
  window.newestJob = number => { newest = number; };
  window.showJob = (number, html) => {
    const seen = [...jobs.children].find(job => job.getBoundingClientRect().bottom > 0);
    const before = seen && seen.getBoundingClientRect().top;
    jobs.insertAdjacentHTML("afterbegin", html);
    if (seen && scrollY > 0) scrollBy(0, seen.getBoundingClientRect().top - before);
    count.textContent = number + (number === 1 ? " job" : " jobs") + " so far";
    document.getElementById("waiting")?.remove();
  };
  const read = text => {  // the page as it is now
    const now = new DOMParser().parseFromString(text, "text/html").getElementById("jobs");
    const last = Number(now.dataset.newest);
    [...now.children].slice(0, Math.max(0, last - shown)).reverse().forEach(job => showJob(last, job.outerHTML));
    shown = Math.max(shown, last);
  };
  const look = () => {
    if (loading || document.hidden) return;
    if (!location.protocol.startsWith("http")) return load("newest.js", next);
    fetch("index.html", {cache: "no-cache"}).then(answer => answer.text()).then(read, () => {});
  };
  document.documentElement.style.overflowAnchor = "none";
  look();
  setInterval(look, 2000);
})();
</script>
)";

}  // namespace

std::string JobName(std::uint64_t number) {
  char text[32];
  std::snprintf(text, sizeof text, "job-%04llu", static_cast<unsigned long long>(number));
  return text;
}

std::string JobSection(const std::string& name, const std::string& note, std::uint64_t bytes,
                       const JobView& view, const JobTotals& totals, const LabelStrip& strip) {
  const JobNotes& notes = view.Reader().Notes();
  std::string html = "<section class=\"job\"><h2><a href=\"" + name + ".html\">" +
                     Escaped(notes.name.empty() ? name : notes.name) +
                     "</a></h2><p class=\"notes\">" + name + " · " + totals.Text() + " · " +
                     Counted(bytes, "byte");
  if (!notes.created.empty()) html += " · " + Escaped(notes.created);
  html += "</p>";
  if (!note.empty()) html += "<p class=\"faults\">" + Escaped(note) + "</p>";
  if (view.Reader().FaultCount() > 0) {
    html += "<p class=\"faults\">" + Counted(view.Reader().FaultCount(), "mistake") +
            " found: <a href=\"" + name + ".html\">see the sheet</a></p>";
  }
  html += strip.Html(kMostLabelsInSection);
  if (totals.labels > kMostLabelsInSection) {
    html += "<p class=\"rest\"><a href=\"" + name + ".html\">and " +
            Counted(totals.labels - kMostLabelsInSection, "more label") + "</a></p>";
  }
  return html + "</section>\n";
}

std::string PrinterPage(const std::deque<std::string>& sections, std::uint64_t newest) {
  std::string html =
      PageStart("Label printer", "") +
      "<h1>Label printer</h1><p class=\"notes\"><span id=\"count\" role=\"status\">" +
      Counted(newest, "job") + " so far</span>, the newest first.<noscript> <a href=\"" +
      kPageName + "\">Show new jobs</a></noscript></p>\n";
  if (sections.empty()) {
    html += "<p class=\"rest\" id=\"waiting\">Waiting for the first job.</p>\n";
  }
  html += "<div id=\"jobs\" data-newest=\"" + std::to_string(newest) + "\">\n";
  for (const std::string& section : sections) html += section;
  html += "</div>\n";
  if (newest > sections.size()) {
    html += "<p class=\"rest\">and " + Counted(newest - sections.size(), "older job") +
            " in this folder</p>\n";
  }
  return html + "</main>" + kScript + "</body></html>\n";
}

std::string NewestScript(std::uint64_t newest) {
  return "newestJob(" + std::to_string(newest) + ");\n";
}

std::string JobScript(std::uint64_t number, const std::string& section) {
  using nlohmann::json;
  return "showJob(" + std::to_string(number) + ", " +
         json(section).dump(-1, ' ', false, json::error_handler_t::replace) + ");\n";
}

}  // namespace viewer
