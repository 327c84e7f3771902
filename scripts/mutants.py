"""Changes one operator, comparison, condition or constant, empties one text or removes one statement, at a
time, in the plug-in and the library's devmode, and runs the tests that cover it:

    mutants.py BUILD [--sanitized BUILD2] [--sample N [--seed S]] [--shard K/N] [--only TEXT]

The builds are built trees; what lives in BUILD is tried again in BUILD2, whose sanitizers see reads and
writes that go beyond a block. A mutant that the tests let live is printed; those in mutants_explained.txt
have their reason there."""

import argparse
import collections
import concurrent.futures
import glob
import json
import os
import random
import re
import shlex
import struct
import subprocess
import sys
import tempfile

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
SOURCES = sorted(path for pattern in ("Renderer/*.cpp", "imaging/*.cpp", "commands/*.cpp", "config/stock_catalogue.cpp",
                                      "vlx_shared/devmode*.cpp")
                 for path in glob.glob(os.path.join(ROOT, pattern)))
# For each folder: what is linked with a mutant, and the test program that runs on it.
CHECKS = {"Renderer": [("vlx_renderer", "plugin_test"), ("renderer_test", "renderer_test")],
          "imaging": [("renderer_test", "renderer_test"), ("vlx_renderer", "plugin_test")],
          "commands": [("commands_test", "commands_test"), ("vlx_renderer", "plugin_test")],
          "config": [("config_test", "config_test"), ("vlx_renderer", "plugin_test")],
          "vlx_shared": [("vlx_shared", "shared_test"), ("vlx_shared", "plugin_test")]}
EXPLAINED = os.path.join(ROOT, "scripts", "mutants_explained.txt")
SECONDS = 120  # of a test program that hangs; the slowest takes 12 with the sanitizers
MOST_BYTES = 2 << 30  # of a mutant that asks for memory without end


def single(text, steps=0):
    """The single-precision value of a text, or the one that many steps above it."""
    bits = struct.unpack("<i", struct.pack("<f", float(text)))[0]
    return struct.unpack("<f", struct.pack("<i", bits + steps))[0]


def other_fraction(match):
    """Adds a decimal; takes the next single-precision value if that changes nothing."""
    number, suffix = match.groups()
    if suffix and single(number + "1") == single(number):
        return f"{single(number, 1):.9g}f"
    return f"{number}1{suffix}"


CHANGES = [(r" == ", " != "), (r" != ", " == "), (r" < ", " <= "), (r" > ", " >= "), (r" <= ", " < "),
           (r" >= ", " > "), (r" && ", " || "), (r" \|\| ", " && "), (r" \+ ", " - "), (r" - ", " + "),
           (r" \* ", " / "), (r" / ", " * "), (r" % ", " / "), (r"\+= ", "-= "), (r" & ", " | "),
           (r" \| ", " & "), (r" << ", " >> "), (r"\+\+", "--"), (r"(?<=[(,=] )-(?=\w)|(?<=\()-(?=\w)", ""),
           (r"\btrue\b", "false"), (r"\bfalse\b", "true"), (r"!(?=[a-z(])", ""),
           (r"(?<![=<>] )\b([a-z]\w*(?:[.:>-]+\w+)*(?:\([^()]*\))?) \? ", r"!\1 ? "),
           (r"(?<![\w.\"'\\])(\d+)(?=[u;:,)\]} ])", lambda match: str(int(match.group(1)) + 1)),
           (r"\b0x[0-9A-F]+\b", lambda match: hex(int(match.group(), 16) ^ 1)),
           (r"\b(\d+\.\d+)(f?)\b", other_fraction)]
# Assertions, deleted functions and the size of local buffers cannot be noticed, by design.
NO_CODE = re.compile(r"^\s*(assert\(|(WCHAR|char) \w+\[|//|#|\}? ?$|namespace|using|template|static_assert"
                     r"|.* = delete;|\"|constexpr const char\*)")
TEXT = re.compile(r'"(?:\\.|[^"])*"|\'(?:\\.|[^\'])*\'')
NO_STATEMENT = re.compile(r"\s*(return\b|if\b|else\b|case\b|default\b|}|[\w:<>*& ]+ \w+;$|[\w:]+<.*> \w+;$)")

Mutant = collections.namedtuple("Mutant", "path number key text")


def blank_texts(line):
    """A line without its comment, its string literals blanked out."""
    return TEXT.sub(lambda match: "\a" * len(match.group()), line).split("//")[0].rstrip()


def condition_end(code, start):
    """The index of the parenthesis that closes the one at start; -1 if that is on another line."""
    depth = 0
    for i in range(start, len(code)):
        depth += {"(": 1, ")": -1}.get(code[i], 0)
        if depth == 0:
            return i
    return -1


def changed_lines(code, line):
    for pattern, change in CHANGES:
        for match in re.finditer(pattern, code):
            new = match.expand(change) if isinstance(change, str) else change(match)
            yield line[:match.start()] + new + line[match.end():]
    for match in re.finditer(r"\bif \(", code):
        end = condition_end(code, match.end() - 1)
        for value in ("true", "false") if end > 0 else ():
            yield line[:match.end()] + value + line[end:]


def emptied_texts(code, line):
    for match in TEXT.finditer(line, 0, 0 if line.startswith("#") else len(code)):
        if match.group() not in ('""', match.group().replace('"', "'")):
            yield line[:match.start()] + '""' + line[match.end():]


def statement_end(codes, first):
    """The last line of the statement that starts on line first; -1 if it cannot be removed."""
    before = next((code for code in reversed(codes[:first]) if code), "")
    if not before.endswith((";", "{", "}", ":")) or NO_STATEMENT.match(codes[first]):
        return -1
    text = ""
    for number in range(first, min(first + 6, len(codes))):
        text += codes[number]
        if "{" in text and not text.endswith(("};", "});")):
            return -1
        if text.endswith(";"):
            return number if text.count("(") == text.count(")") else -1
    return -1


def mutants_of(path):
    with open(path, encoding="utf-8") as file:
        lines = file.read().split("\n")
    codes = [blank_texts(line) for line in lines]
    seen = set()

    def mutant(first, last, new):
        if ((first, new)) not in seen:
            seen.add((first, new))
            key = f"{os.path.relpath(path, ROOT)}: {new.strip() or 'without ' + lines[first].strip()}"
            yield Mutant(path, first + 1, key, "\n".join(lines[:first] + [new] + lines[last + 1:]))

    for number, line in enumerate(lines):
        for new in emptied_texts(codes[number], line):
            yield from mutant(number, number, new)
        if NO_CODE.match(line):
            continue
        for new in changed_lines(codes[number], line):
            yield from mutant(number, number, new)
        last = statement_end(codes, number) if line.startswith("  ") else -1
        if last >= 0:
            yield from mutant(number, last, "")


class Tester:
    """Compiles and links mutants as a built tree does and runs the tests of that tree on them."""

    def __init__(self, folder, paths, work):
        self.folder = os.path.abspath(folder)
        with open(os.path.join(self.folder, "compile_commands.json"), encoding="utf-8") as file:
            entries = {entry["file"]: entry for entry in json.load(file)}
        self.commands = {path: self._prepared(entries[path], os.path.join(work, str(number)))
                         for number, path in enumerate(paths)}
        targets = {target for path in paths for target, _ in self._checks(path)}
        self.links = {target: self._link(target) for target in targets}

    @staticmethod
    def _checks(path):
        return CHECKS[os.path.basename(os.path.dirname(path))]

    def _prepared(self, entry, headers):
        """The folder, command and object of a source; its headers are compiled once for all mutants."""
        command = [part for part in shlex.split(entry["command"]) if not part.startswith("-W")
                   and part != "ccache" and not part.endswith("/ccache") and "FORTIFY" not in part]
        at = command.index("-o")
        made, command[at:] = command[at + 1], ["-O0", "-g0", "-w"]
        with open(entry["file"], encoding="utf-8") as file:
            includes = [line for line in file if line.startswith("#include")]
        with open(headers, "w", encoding="utf-8") as file:
            file.writelines(includes)
        self._run([*command, "-x", "c++-header", headers, "-o", headers + ".gch"], entry["directory"])
        return entry["directory"], [*command, "-include", headers], os.path.basename(made)

    def _link(self, target):
        """The folder and command that link a target, by the tree's generator."""
        if os.path.exists(os.path.join(self.folder, "build.ninja")):
            lines = subprocess.run(["ninja", "-t", "commands", target], cwd=self.folder, text=True, check=True,
                                   capture_output=True).stdout.splitlines()
            cwd, line = self.folder, lines[-1].split(" && ")[1]  # what follows runs the program
        else:
            [path] = glob.glob(os.path.join(self.folder, "**", f"{target}.dir", "link.txt"), recursive=True)
            cwd = os.path.dirname(os.path.dirname(os.path.dirname(path)))
            with open(path, encoding="utf-8") as file:
                line = file.readline()
        return cwd, [part for part in shlex.split(line) if part != "ccache" and not part.endswith("/ccache")]

    def _run(self, command, cwd, environment=None):
        try:
            return subprocess.run(command, cwd=cwd, env=environment, capture_output=True, timeout=SECONDS).returncode
        except subprocess.TimeoutExpired:
            return 1  # a test that hangs has noticed

    def verdict(self, mutant):
        """dead, alive, or void if the change does not compile."""
        directory, command, original = self.commands[mutant.path]
        with tempfile.TemporaryDirectory() as work:
            source = os.path.join(work, os.path.basename(mutant.path))
            with open(source, "w", encoding="utf-8") as file:
                file.write(mutant.text)
            made = os.path.join(work, "mutant.o")
            if self._run([*command, "-c", source, "-o", made], directory) != 0:
                return "void"
            passes = all(self._test_passes(*check, original, made, work) for check in self._checks(mutant.path))
            return "alive" if passes else "dead"

    def _test_passes(self, target, test, original, mutant, work):
        cwd, link = self.links[target]
        name = os.path.basename(link[link.index("-o") + 1])
        made = os.path.join(work, name)
        # An object takes the original's place; before a library it keeps the library's own one out.
        kept = [part for part in link if os.path.basename(part) != original]
        at = kept.index("-o")
        kept[at:at + 2] = [mutant, "-o", made]
        if self._run(kept, cwd) != 0:
            sys.exit(f"{name} cannot be linked with a mutant of {original}")
        # The sanitizers need addresses without end, and have a limit of their own.
        limit = "" if "-fsanitize" in " ".join(link) else f"ulimit -v {MOST_BYTES >> 10}; "
        environment = {**os.environ, "TMPDIR": work, "LD_LIBRARY_PATH": f"{work}:{self.folder}/lib",
                       "ASAN_OPTIONS": f"hard_rss_limit_mb={MOST_BYTES >> 20}"}
        if target == "vlx_renderer":
            environment["VLX_TEST_PLUGIN"] = made
        program = made if target == test else os.path.join(self.folder, "bin", test)
        run = ["sh", "-c", f"{limit}exec {program} --gtest_brief=1 --gtest_fail_fast"]
        return self._run(run, work, environment) == 0


def verdicts_of(folder, mutants, jobs):
    with tempfile.TemporaryDirectory() as work, concurrent.futures.ThreadPoolExecutor(jobs) as pool:
        paths = sorted({mutant.path for mutant in mutants})
        tester = Tester(folder, paths, work)
        for path in paths:
            with open(path, encoding="utf-8") as file:
                if tester.verdict(Mutant(path, 0, "", file.read())) != "alive":
                    sys.exit(f"{path} fails its tests as it stands: build {folder} anew")
        return list(pool.map(tester.verdict, mutants))


def explained():
    with open(EXPLAINED, encoding="utf-8") as file:
        return {line.split(" | ")[0] for line in file.read().split("\n") if " | " in line}


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawTextHelpFormatter)
    parser.add_argument("build")
    parser.add_argument("--sanitized", metavar="BUILD2", help="a tree built with the sanitizers")
    parser.add_argument("--sample", type=int, default=0, help="try that many, chosen at random")
    parser.add_argument("--seed", type=int, default=7, help="of the choice")
    parser.add_argument("--shard", default="1/1", help="K/N: every N-th of them, from the K-th on")
    parser.add_argument("--jobs", type=int, default=os.cpu_count(), help="mutants at a time")
    parser.add_argument("--only", default="", help="those whose line in the list contains this text")
    options = parser.parse_args()
    every = [mutant for path in SOURCES for mutant in mutants_of(path) if options.only in mutant.key]
    chosen = every
    if options.sample and options.sample < len(every):
        chosen = random.Random(options.seed).sample(every, options.sample)
    shard, shards = map(int, options.shard.split("/"))
    chosen = chosen[shard - 1::shards]
    verdicts = verdicts_of(options.build, chosen, options.jobs)
    tried = len(chosen) - verdicts.count("void")
    alive = [mutant for mutant, verdict in zip(chosen, verdicts) if verdict == "alive"]
    alone = len(alive)
    if options.sanitized:
        verdicts = verdicts_of(options.sanitized, alive, options.jobs)
        alive = [mutant for mutant, verdict in zip(alive, verdicts) if verdict != "dead"]
    reasons, unexplained = explained(), 0
    for mutant in alive:
        unexplained += mutant.key not in reasons
        print(f"{'explained' if mutant.key in reasons else 'alive'}: {mutant.key}  (line {mutant.number})")

    def dead(count):
        return f"{100 * (tried - count) / max(tried, 1):.1f} %"

    print(f"{len(chosen)} of {len(every)} changes, of which {tried} compile")
    print(f"{tried} mutants, {len(alive)} survive, {unexplained} of them unexplained, {dead(len(alive))} die"
          + (f" ({dead(alone)} without the sanitizers)" if options.sanitized else ""))
    sys.exit(1 if unexplained else 0)


main()
