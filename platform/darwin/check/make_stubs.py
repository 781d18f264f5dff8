#!/usr/bin/env python3
"""Writes text-based stubs (the linker's .tbd files) that stand for the system's libraries.

    make_stubs.py EXPORTS FOLDER            one for each library of the list EXPORTS
    make_stubs.py --cxx BUILD_FOLDER STUB   one that exports what the objects and archives below
                                            BUILD_FOLDER ask of the C++ library
"""

import pathlib
import re
import subprocess
import sys

TARGETS = "[ x86_64-macos, arm64-macos ]"


def stub(install_name, symbols, classes):
    lines = [
        "--- !tapi-tbd",
        "tbd-version: 4",
        f"targets: {TARGETS}",
        f"install-name: '{install_name}'",
        "exports:",
        f"  - targets: {TARGETS}",
    ]
    if symbols:
        lines.append(f"    symbols: [ {', '.join(sorted(symbols))} ]")
    if classes:
        lines.append(f"    objc-classes: [ {', '.join(sorted(classes))} ]")
    return "\n".join(lines + ["...", ""])


def read_exports(path):
    """The libraries of a list: name -> (install name, symbols, classes)."""
    libraries = {}
    for line in pathlib.Path(path).read_text().splitlines():
        words = line.split()
        if not words or line.startswith("#"):
            continue
        if not line[0].isspace():
            name, install_name = words
            libraries[name] = (install_name, set(), set())
            continue
        _, symbols, classes = libraries[name]
        kind, names = words[0], words[1:]
        if kind == "class":
            classes.update(names)
        else:
            symbols.update("_" + each for each in names)
    return libraries


def write_listed(exports, folder):
    for name, (install_name, symbols, classes) in read_exports(exports).items():
        place = folder / f"{name}.framework" if install_name.startswith("/System") else folder
        place.mkdir(parents=True, exist_ok=True)
        (place / f"{name}.tbd").write_text(stub(install_name, symbols, classes))


def write_cxx(build, path):
    """What is ours is of a namespace of ours, and not looked for in the C++ library."""
    files = [str(f) for f in build.rglob("*") if f.suffix in (".a", ".o")]
    listed = subprocess.run(
        ["llvm-nm", "-u", "-j", "--quiet", *files], check=True, capture_output=True, text=True)
    wanted = set(re.findall(r"^(?:__Z\S+|___cxa_\S+|___gxx_personality_v0|___dynamic_cast)$",
                            listed.stdout, re.MULTILINE))
    ours = re.compile(r"6vantor|7testing")
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_text(stub("/usr/lib/libc++.1.dylib", {s for s in wanted if not ours.search(s)}, set()))


def main():
    if len(sys.argv) == 4 and sys.argv[1] == "--cxx":
        write_cxx(pathlib.Path(sys.argv[2]), pathlib.Path(sys.argv[3]))
    elif len(sys.argv) == 3:
        write_listed(sys.argv[1], pathlib.Path(sys.argv[2]))
    else:
        sys.exit(__doc__)


if __name__ == "__main__":
    main()
