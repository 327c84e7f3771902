#include "viewer/reports/contact_sheet.h"

namespace viewer {

const char* const kPageStyle = R"(
:root { color-scheme: light dark; --mm: 2.6px; --page: #f3f4f6; --card: #fff; --ink: #16202c;
  --soft: #5d6b7a; --line: #d8dde3; --liner: #e6dfc6; --edge: #cfc6a6; --warn: #fff4d6;
  --warn-line: #e3b341; --accent: #0b62d6; --red: #e3000f; }
@media screen and (prefers-color-scheme: dark) { :root { --page: #12171d; --card: #1b232c; --ink: #e7ecf1;
  --soft: #9aa7b4; --line: #313c48; --liner: #4a4535; --edge: #5d573f; --warn: #3a2f12;
  --warn-line: #a67c1a; --accent: #6ea8ff; } }
* { box-sizing: border-box; }
body { margin: 0; background: var(--page); color: var(--ink);
  font: 15px/1.45 system-ui, "Segoe UI", Roboto, "DejaVu Sans", sans-serif; }
main { max-width: 1280px; margin: 0 auto; padding: 28px 24px 40px; }
h1 { margin: 0; font-size: 26px; line-height: 1.2; overflow-wrap: anywhere; }
h2 { margin: 0; font-size: 19px; overflow-wrap: anywhere; }
.notes { margin: 4px 0 0; color: var(--soft); overflow-wrap: anywhere; }
.facts { display: flex; flex-wrap: wrap; gap: 10px; margin: 18px 0; padding: 0; }
.facts div { flex: 1 1 122px; white-space: nowrap; background: var(--card); border: 1px solid var(--line);
  border-radius: 10px; padding: 9px 13px; }
.facts dt { color: var(--soft); font-size: 12.5px; }
.facts dd { margin: 0; font-size: 19px; font-weight: 600; font-variant-numeric: tabular-nums; }
.facts small { font-size: 12.5px; font-weight: 400; color: var(--soft); }
.faults { background: var(--warn); border: 1px solid var(--warn-line); border-radius: 10px;
  margin: 0 0 18px; padding: 10px 16px; }
.faults ul { margin: 4px 0 0; padding-left: 20px; overflow-wrap: anywhere; }
.strip { display: flex; flex-wrap: wrap; align-items: stretch; list-style: none; margin: 0;
  padding: 0; row-gap: 16px; }
.few { --mm: 4.2px; }
.strip > li { display: flex; flex-direction: column; max-width: 100%; background: var(--card);
  border-block: 1px solid var(--line); border-inline-end: 1px dashed var(--line); }
.web { position: relative; display: flex; flex: 1; align-items: center; justify-content: center;
  padding: 20px 16px 8px; background: var(--liner); border-block: 1px solid var(--edge); }
.web figure { margin: 0; max-width: 100%; }
.web img, .web .none { display: block; width: calc(var(--w) * var(--mm)); max-width: 100%;
  height: auto; aspect-ratio: auto var(--w) / var(--h); background: #fff; border-radius: 4px; box-shadow: 0 1px 3px #0005; }
.web .none { display: grid; place-items: center; aspect-ratio: var(--w) / var(--h); min-width: 120px;
  max-height: 400px; padding: 8px; color: #5d6b7a; text-align: center; font-size: 13px; }
.more img { box-shadow: 0 1px 2px #0006, 4px 4px 0 -1px #fff, 4px 4px 0 0 #0003,
  8px 8px 0 -1px #fff, 8px 8px 0 0 #0002; margin: 0 8px 8px 0; }
.wide { display: flex; align-items: center; gap: 6px; color: #4b4531; font-size: 12px; height: 24px;
  white-space: nowrap; }
.wide::before, .wide::after { content: ""; flex: 1; border-top: 1px solid currentColor; }
@media screen and (prefers-color-scheme: dark) { .wide { color: #d8cfae; } }
.copies { position: absolute; top: 5px; right: 8px; background: var(--accent); color: #fff;
  border-radius: 99px; padding: 0 10px; font-weight: 700; font-size: 13px; line-height: 22px; }
@media screen and (prefers-color-scheme: dark) { .copies { color: #0b1420; } }
.what { padding: 8px 14px 12px; font-size: 13px; color: var(--soft); }
.what b { color: var(--ink); font-size: 14.5px; }
.what ul { list-style: none; margin: 4px 0 0; padding: 0; }
.what li::before { content: ""; display: inline-block; width: 9px; height: 9px; margin-right: 6px;
  border-radius: 50%; background: var(--ink); }
.what li.highlight::before { background: var(--red); }
.kept { color: #1a7f4b; font-weight: 600; }
@media screen and (prefers-color-scheme: dark) { .kept { color: #58c48b; } }
.strip > li.cut { border-inline-end: 2px dashed var(--red); margin-inline-end: 20px;
  position: relative; }
.cutmark { position: absolute; right: -11px; top: -4px; color: var(--red); font-size: 19px;
  line-height: 1; background: var(--page); transform: rotate(90deg); }
.rest { padding: 14px 4px; color: var(--soft); }
.job { margin-top: 26px; }
.job .notes { margin-bottom: 12px; }
.job .strip { --mm: 1.9px; }
a { color: var(--accent); }
h2 a { color: inherit; text-decoration-color: var(--soft); }
.legend { display: flex; flex-wrap: wrap; gap: 4px 20px; list-style: none; margin: 16px 0 0; padding: 0; }
.legend span { display: inline-block; width: 13px; height: 13px; margin-right: 7px; vertical-align: -1px;
  border: 1px solid var(--soft); }
.diff { display: block; max-width: 100%; height: auto; border: 1px solid var(--line); }
footer { margin-top: 26px; color: var(--soft); font-size: 12.5px; }
@media (max-width: 640px) {
  main { padding: 18px 14px 30px; }
  h1 { font-size: 22px; }
  .facts div { flex-basis: 104px; padding: 7px 10px; }
  .facts dd { font-size: 17px; }
  .strip { flex-direction: column; row-gap: 0; }
  .strip > li { border-inline: 1px solid var(--line); border-bottom-style: dashed; }
  .strip > li.cut { border-inline-end: 1px solid var(--line); margin-inline-end: 0;
    border-bottom: 2px dashed var(--red); margin-bottom: 18px; }
  .cutmark { right: auto; left: 6px; top: auto; bottom: -11px; transform: none; }
}
@media print {
  @page { margin: 12mm; }
  noscript { display: none; }
  :root { color-scheme: light; --mm: 0.6mm; --page: #fff; }
  body { font-size: 10pt; }
  main { padding: 0; max-width: none; }
  * { print-color-adjust: exact; -webkit-print-color-adjust: exact; }
  .few { --mm: 0.9mm; }
  .facts div { flex-basis: 84px; padding: 4px 8px; }
  .facts dd { font-size: 14px; }
  .strip > li, .facts, .faults { break-inside: avoid; }
}
)";

}  // namespace viewer
