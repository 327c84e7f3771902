"""Changes one operator, comparison or constant at a time in the command builders, the page geometry and
the band capture, and runs the tests that cover it: mutants.py BUILD [--sample N]. BUILD is a built tree.
A mutant that the tests let live is printed; those in mutants_explained.txt have their reason there."""

import argparse
import concurrent.futures
import glob
import json
import os
import random
import re
import shlex
import subprocess
import sys
import tempfile

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
SOURCES = sorted(glob.glob(os.path.join(ROOT, "commands", "*.cpp"))) + [
    os.path.join(ROOT, "Renderer", name) for name in ("page_geometry.cpp", "band_capture.cpp")]
TESTS = {"commands": ["tests/commands/commands_test"], "Renderer": ["tests/Renderer/renderer_test"]}
EXPLAINED = os.path.join(ROOT, "scripts", "mutants_explained.txt")
SECONDS = 60

CHANGES = [(r" == ", " != "), (r" != ", " == "), (r" < ", " <= "), (r" > ", " >= "), (r" <= ", " < "),
           (r" >= ", " > "), (r" && ", " || "), (r" \|\| ", " && "), (r" \+ ", " - "), (r" - ", " + "),
           (r" \* ", " / "), (r" / ", " * "), (r" % ", " / "), (r"\+= ", "-= "),
           (r"\btrue\b", "false"), (r"\bfalse\b", "true"), (r"!(?=[a-z(])", ""),
           (r"(?<![\w.\"'\\])(\d+)(?=[u;,)\]} ])", lambda m: str(int(m.group(1)) + 1)),
           (r"(\d+\.\d+)f", lambda m: m.group(1) + "1f")]
# Checks of our own faults and the room of buffers cannot be noticed, by design.
NO_CODE = re.compile(r"^\s*(assert\(|(WCHAR|char) \w+\[|//|#|\}? ?$|namespace|using|template|static_assert|Log(Trace|Error|Warning)"
                     r"|\"|constexpr const char\*)")


def mutants_of(path):
    """Each mutant as (line number, line as changed); texts and comments stay as they are."""
    with open(path, encoding="utf-8") as file:
        lines = file.read().split("\n")
    for number, line in enumerate(lines):
        if NO_CODE.match(line):
            continue
        code = line.split("//")[0]
        hidden = [match.span() for match in re.finditer(r'"(\\.|[^"])*"|\'(\\.|[^\'])*\'', code)]
        for pattern, change in CHANGES:
            for match in re.finditer(pattern, code):
                if any(start <= match.start() < end for start, end in hidden):
                    continue
                new = match.expand(change) if isinstance(change, str) else change(match)
                yield number, line[:match.start()] + new + line[match.end():]


class Tester:
    def __init__(self, folder):
        self.folder = os.path.abspath(folder)
        with open(os.path.join(self.folder, "compile_commands.json"), encoding="utf-8") as file:
            self.commands = {entry["file"]: entry for entry in json.load(file)}

    def _run(self, command, cwd):
        try:
            return subprocess.run(command, cwd=cwd, capture_output=True, timeout=SECONDS).returncode
        except subprocess.TimeoutExpired:
            return 1  # a test that hangs has noticed

    def verdict(self, path, number, changed):
        """dead, alive, or void when the change does not compile."""
        entry = self.commands[path]
        with tempfile.TemporaryDirectory() as work:
            with open(path, encoding="utf-8") as file:
                lines = file.read().split("\n")
            lines[number] = changed
            source = os.path.join(work, os.path.basename(path))
            with open(source, "w", encoding="utf-8") as file:
                file.write("\n".join(lines))
            command = [part for part in shlex.split(entry["command"]) if not part.startswith("-W")
                       and part != "ccache" and not part.endswith("/ccache") and "FORTIFY" not in part]
            made = command.index("-o") + 1
            original, command[made] = command[made], os.path.join(work, "mutant.o")
            command[command.index(path)] = source
            if self._run(command + ["-O0", "-g0", "-w"], entry["directory"]) != 0:
                return "void"
            for test in TESTS[os.path.basename(os.path.dirname(path))]:
                if not self._test_passes(test, original, command[made], work):
                    return "dead"
        return "alive"

    def _test_passes(self, test, original, mutant, work):
        cwd = os.path.join(self.folder, os.path.dirname(test))
        name = os.path.basename(test)
        with open(os.path.join(cwd, "CMakeFiles", f"{name}.dir", "link.txt"), encoding="utf-8") as file:
            link = shlex.split(file.read())
        program = os.path.join(work, name)
        link[link.index("-o") + 1] = program
        # An object takes the original's place; before a library it keeps the library's own one out.
        kept = [part for part in link if not part.endswith(original)]
        kept.insert(kept.index("-o"), mutant)
        libraries = os.path.join(self.folder, "lib")
        if self._run(kept + [f"-Wl,-rpath,{libraries}"], cwd) != 0:
            sys.exit(f"{name} cannot be linked with a mutant of {original}")
        return self._run([program, "--gtest_brief=1", "--gtest_fail_fast"], work) == 0


def explained():
    with open(EXPLAINED, encoding="utf-8") as file:
        return {line.split(" | ")[0] for line in file.read().split("\n") if " | " in line}


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("build")
    parser.add_argument("--sample", type=int, default=0, help="try so many, chosen at random")
    options = parser.parse_args()
    every = [(path, number, line) for path in SOURCES for number, line in mutants_of(path)]
    if options.sample and options.sample < len(every):
        every = random.Random(7).sample(every, options.sample)
    tester = Tester(options.build)
    reasons = explained()
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        verdicts = list(pool.map(lambda mutant: tester.verdict(*mutant), every))
    tried = [(mutant, verdict) for mutant, verdict in zip(every, verdicts) if verdict != "void"]
    alive = [mutant for mutant, verdict in tried if verdict == "alive"]
    unexplained = 0
    for path, number, line in alive:
        key = f"{os.path.relpath(path, ROOT)}: {line.strip()}"
        unexplained += key not in reasons
        print(f"{'explained' if key in reasons else 'alive'}: {key}  (line {number + 1})")
    dead = 100 * (len(tried) - len(alive)) / max(len(tried), 1)
    print(f"{len(tried)} mutants, {len(alive)} survive, {unexplained} of them unexplained, {dead:.1f} % die")
    sys.exit(1 if unexplained else 0)


main()
