#!/usr/bin/env python3
"""Checks rules of the source tree that no compiler checks.

usage: check_tree.py rules ROOT
       check_tree.py headers ROOT CXX GENERATED   every header compiles alone
       check_tree.py format ROOT CLANG_FORMAT
Prints each breach as file:line: text and ends with 1 if there is one.
"""
import concurrent.futures
import os
import re
import subprocess
import sys

# Which folders a folder may include besides itself. Arrows point down this table only.
ALLOWED = {
    "platform": [],
    "foundation": ["platform"],
    "settings": ["foundation", "platform"],
    "capture": ["foundation", "platform"],
    "driver": ["settings", "capture", "foundation", "platform"],
    "resources": [],
    "options": ["resources", "settings", "foundation", "platform"],
    "cab": ["foundation", "platform"],
    "automation": ["cab", "foundation", "platform"],
    "objects": ["automation", "cab", "resources", "foundation", "platform"],
    "browser": ["options", "resources", "driver", "capture", "settings", "objects", "automation",
                "foundation", "platform"],
    "chromium": ["platform"],
    "converter": ["chromium", "platform"],
    "host": ["chromium", "platform"],
}
# Public faces that the host may see of the module it loads.
PUBLIC_FACES = {"host": ["browser/addin_class.h"]}
FREE = ["tests", "bench", "fuzz"]
MAX_LINES = 600
RESERVED_NAMES = re.compile(r"^(aux|con|prn|nul|com[1-9]|lpt[1-9])(\.|$)", re.I)

INCLUDE = re.compile(r'^\s*#\s*include\s*"([^"]+)"')
SYSTEM_IF = re.compile(r"^\s*#\s*(el)?if.*\b(_WIN32|__linux__|__MINGW32__|__unix__|_MSC_VER)\b")
WIDE = re.compile(r"\bwchar_t\b|\bstd::wstring\b|(?<![A-Za-z0-9_\"'])L[\"']")
LONG_TYPE = re.compile(r"\b(unsigned|signed)\s+long\b|\blong\s+(int|long)\b|\blong\s+[a-z]\w*\s*[;=,)]")


def sources(root):
    names = []
    for folder, subfolders, files in os.walk(root):
        subfolders[:] = [s for s in subfolders if s not in (".git", "build", "dist")]
        names += [os.path.relpath(os.path.join(folder, f), root) for f in files]
    return sorted(names)


def code_only(line):
    """The line without its comment and without the text of its string literals."""
    line = re.sub(r'"(\\.|[^"\\])*"', '""', line)
    return line.split("//")[0]


def check_rules(root):
    faults = []
    for name in sources(root):
        if any(RESERVED_NAMES.match(part) for part in name.split("/")):
            faults.append(f"{name}:1: a Windows machine cannot check this name out")
        if not name.endswith((".h", ".cpp")):
            continue
        folder = name.split("/")[0]
        with open(os.path.join(root, name), encoding="utf-8") as file:
            lines = file.read().split("\n")
        if len(lines) > MAX_LINES:
            faults.append(f"{name}:{MAX_LINES}: longer than {MAX_LINES} lines")
        if name.endswith(".h") and "#pragma once" not in lines[:3]:
            faults.append(f"{name}:1: #pragma once must be among the first lines")
        for number, line in enumerate(lines, 1):
            where = f"{name}:{number}"
            match = INCLUDE.match(line)
            if match:
                target = match.group(1)
                if not os.path.exists(os.path.join(root, target)) and "/" not in target:
                    faults.append(f"{where}: include {target} with its folder")
                elif folder in ALLOWED:
                    other = target.split("/")[0]
                    if (other != folder and other not in ALLOWED[folder]
                            and target not in PUBLIC_FACES.get(folder, [])):
                        faults.append(f"{where}: {folder}/ may not include {target}")
            elif folder not in FREE and folder not in ALLOWED:
                faults.append(f"{where}: unknown folder {folder}/")
                break
            if folder == "platform":
                continue
            if SYSTEM_IF.match(line):
                faults.append(f"{where}: #if on the system belongs into platform/")
            if WIDE.search(code_only(line)):
                faults.append(f"{where}: text is WCHAR and TEXT(\"...\")")
            if LONG_TYPE.search(code_only(line)):
                faults.append(f"{where}: long differs between the builds; name the width")
    return faults


def check_headers(root, compiler, generated):
    headers = [n for n in sources(root) if n.endswith(".h") and "windows" not in n
               and n.split("/")[0] in ALLOWED]

    def compile_alone(name):
        run = subprocess.run(
            [compiler, "-std=c++20", "-fsyntax-only", "-Wall", "-Wextra", "-I", root, "-I", generated,
             "-I", "/usr/src/googletest/googletest/include", "-I", "/usr/include/libxml2",
             "-x", "c++", "-"],
            input=f'#include "{name}"\n', capture_output=True, text=True, check=False)
        return [] if run.returncode == 0 else [f"{name}:1: does not compile alone\n{run.stderr}"]

    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        return [fault for faults in pool.map(compile_alone, headers) for fault in faults]


def check_format(root, clang_format):
    names = [n for n in sources(root) if n.endswith((".h", ".cpp"))]
    run = subprocess.run([clang_format, "--dry-run", "--Werror", *names], cwd=root,
                         capture_output=True, text=True, check=False)
    return [line for line in run.stderr.split("\n") if ": error:" in line]


def main():
    kind, root = sys.argv[1], sys.argv[2]
    check = {"rules": check_rules, "headers": check_headers, "format": check_format}[kind]
    faults = check(root, *sys.argv[3:])
    print("\n".join(faults))
    return 1 if faults else 0


sys.exit(main())
