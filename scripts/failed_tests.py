#!/usr/bin/env python3
"""Prints, of a JUnit file, each failed test with the last lines that it wrote."""

import sys
import xml.etree.ElementTree

LINES = 40


def main() -> int:
    if len(sys.argv) != 2:
        print("usage: failed_tests.py <JUnit file>", file=sys.stderr)
        return 2
    try:
        suite = xml.etree.ElementTree.parse(sys.argv[1]).getroot()
    except (OSError, xml.etree.ElementTree.ParseError) as error:
        print(f"failed_tests.py: {error}", file=sys.stderr)
        return 1
    for case in suite.iter("testcase"):
        if case.get("status") != "fail":
            continue
        print(f"-- {case.get('name')}")
        output = case.findtext("system-out") or ""
        print("\n".join(output.splitlines()[-LINES:]))
    return 0


if __name__ == "__main__":
    sys.exit(main())
