"""Checks a source tree against the house's rules: who may include whom, the plug-in without the
operating system, no include cycles, files of a readable length. Prints what is wrong; exits 1 if
anything is."""

import os
import re
import sys
import tempfile

MAY_INCLUDE = {
    "platform": set(),
    "config": {"platform"},
    "commands": {"config", "platform"},
    "imaging": {"commands", "config", "platform"},
    "Renderer": {"imaging", "commands", "config", "platform"},
    "vlx_shared": {"config", "platform"},
    "common": set(),
    "host": {"platform", "config", "common"},
    "viewer": {"common"},
    "printing": {"host", "viewer", "platform", "common"},
    "tools": {"host", "viewer", "platform", "common"},
}
PLUGIN = {"config", "commands", "imaging", "Renderer"}
# What host/ sees of config/: data that the driver and its user interface share with the plug-in.
SHARED_DATA = {
    "config/oemdev.h",
    "config/oemdev_fields.h",
    "config/config_record.h",
    "config/ditherers.h",
    "config/renderer_class.h",
    "config/stock_catalogue.h",
}
LONGEST = 400
INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]')


def sources(root):
    for folder in sorted(set(MAY_INCLUDE) | {"tests", "fuzz", "bench"}):
        for path, _, names in os.walk(os.path.join(root, folder)):
            for name in sorted(names):
                if name.endswith((".h", ".cpp")):
                    yield folder, os.path.relpath(os.path.join(path, name), root)


def include_fault(folder, kind, target):
    """What is wrong with one include of a file in the folder; None if nothing is."""
    if folder not in MAY_INCLUDE:
        return None
    if kind == "<":
        standard = re.fullmatch(r"[a-z_]+", target)
        return None if standard or folder not in PLUGIN else f"<{target}> is not the standard library's"
    owner = target.split("/")[0]
    if owner not in MAY_INCLUDE:
        return f'"{target}" is in no folder that may be included'
    if owner == folder:
        return None
    if owner not in MAY_INCLUDE[folder]:
        return f'{folder}/ may not include "{target}"'
    if target == "platform/extensions.h" and folder not in {"vlx_shared", "host"}:
        return f'{folder}/ may use published interfaces only, not "{target}"'
    if target.startswith("platform/linux/"):
        return f'"{target}" is private to platform/'
    if folder == "host" and owner == "config" and target not in SHARED_DATA:
        return f'host/ may include records and catalogue of config/ only, not "{target}"'
    return None


def cycles(includes):
    """The include cycles, with a header and its source as one file, by Tarjan's algorithm."""
    number, lowest, stack, found = {}, {}, [], []

    def visit(file):
        number[file] = lowest[file] = len(number)
        stack.append(file)
        for other in includes.get(file, ()):
            if other not in number:
                visit(other)
            if other in stack:
                lowest[file] = min(lowest[file], lowest[other])
        if lowest[file] == number[file]:
            cycle = stack[stack.index(file):]
            del stack[-len(cycle):]
            if len(cycle) > 1:
                found.append(sorted(cycle))

    for file in sorted(includes):
        if file not in number:
            visit(file)
    return found


def faults(root):
    count = 0
    includes = {}
    for folder, path in sources(root):
        count += 1
        with open(os.path.join(root, path), encoding="utf-8") as file:
            lines = file.read().splitlines()
        if len(lines) > LONGEST:
            yield f"{path}: {len(lines)} lines, {LONGEST} are allowed"
        for number, line in enumerate(lines, 1):
            match = INCLUDE.match(line)
            if match and match.group(1) == '"':
                file, target = (os.path.splitext(name)[0] for name in (path, match.group(2)))
                includes.setdefault(file, set()).add(target)
            fault = match and include_fault(folder, match.group(1), match.group(2))
            if fault:
                yield f"{path}:{number}: {fault}"
    for cycle in cycles({file: others - {file} for file, others in includes.items()}):
        yield f"{cycle[0]}.h: is in an include cycle with {', '.join(cycle[1:])}"
    if count == 0:
        yield f"{root} holds no sources"


def self_test():
    bad = {
        "commands/a.cpp": '#include "imaging/crop.h"',
        "imaging/b.cpp": "#include <unistd.h>",
        "imaging/extended.cpp": '#include "platform/extensions.h"',
        "Renderer/c.cpp": '#include "platform/linux/text/unicode.h"',
        "host/d.cpp": '#include "config/vlx_shared.h"',
        "vlx_shared/e.cpp": '#include "tests/support/record.h"',
        "platform/f.h": '#include "config/oemdev.h"',
        "viewer/i.cpp": '#include "platform/types.h"',
        "vlx_shared/j.h": '#include "vlx_shared/k.h"',
        "tools/g.cpp": "\n" * (LONGEST + 1),
    }
    good = {
        "commands/h.cpp": '#include <vector>\n#include "config/log.h"\n#include "commands/x.h"',
        "vlx_shared/k.cpp": '#include "vlx_shared/j.h"',
    }
    with tempfile.TemporaryDirectory() as root:
        for path, text in {**bad, **good}.items():
            os.makedirs(os.path.dirname(os.path.join(root, path)), exist_ok=True)
            with open(os.path.join(root, path), "w", encoding="utf-8") as file:
                file.write(text)
        found = sorted(fault.split(":")[0] for fault in faults(root))
    return [] if found == sorted(bad) else [f"found {found}, there are faults in {sorted(bad)}"]


wrong = self_test() if sys.argv[1] == "--self-test" else list(faults(sys.argv[1]))
print("\n".join(wrong))
sys.exit(1 if wrong else 0)
