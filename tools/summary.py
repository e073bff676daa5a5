#!/usr/bin/env python3
"""Counts what a test run said: one line per door, and the totals alone on the last line.

A CTest entry that is one GoogleTest program under Wine is counted case by case from the program's own report. A
program that died leaves no report, or one without the failure, and counts as one failure.
"""
import pathlib
import re
import sys
import xml.etree.ElementTree as xml

BUILD = pathlib.Path(__file__).resolve().parent.parent / "build"
NAMES = {"native": "native", "win32": "wine32", "win64": "wine64", "asan": "asan"}


class Count:
    def __init__(self, passed=0, failed=0, skipped=0):
        self.passed, self.failed, self.skipped = passed, failed, skipped

    def add(self, other):
        self.passed += other.passed
        self.failed += other.failed
        self.skipped += other.skipped

    def __str__(self):
        return f"{self.passed} passed, {self.failed} failed, {self.skipped} skipped"


def count_program(report):
    """The cases of one GoogleTest program, None when its report is missing or unreadable."""
    try:
        root = xml.parse(report).getroot()
    except (OSError, xml.ParseError):
        return None
    count = Count()
    for case in root.iter("testcase"):
        if case.find("failure") is not None:
            count.failed += 1
        elif case.get("status") == "notrun" or case.get("result") in ("skipped", "suppressed"):
            count.skipped += 1
        else:
            count.passed += 1
    return count


def count_entry(case, reports):
    status = case.get("status")
    count = count_program(reports / f"{case.get('name')}_test.xml")
    if count is not None:
        if status == "fail" and count.failed == 0:
            count.failed = 1
        return count
    if status == "run":
        return Count(passed=1)
    if status == "fail":
        return Count(failed=1)
    # CTest says "notrun" also of a program it could not find, which is a failure and not a choice.
    message = (case.find("skipped").get("message", "") if case.find("skipped") is not None else "").lower()
    skipped = status == "disabled" or "skip" in message
    return Count(skipped=1) if skipped else Count(failed=1)


def count_door(results):
    skipped = results / "skipped.txt"
    if skipped.exists():
        total = re.search(r"Total Tests: (\d+)", skipped.read_text())
        return Count(skipped=int(total.group(1)) if total else 1)
    try:
        cases = list(xml.parse(results / "ctest.xml").getroot().iter("testcase"))
    except (OSError, xml.ParseError):
        return Count(failed=1)
    count = Count()
    for case in cases:
        count.add(count_entry(case, results / "gtest"))
    return count


def main():
    total = Count()
    lines = []
    for door in sys.argv[1:]:
        count = count_door(BUILD / door / "results")
        total.add(count)
        lines.append((NAMES.get(door, door), count))
    checks = BUILD / "checks" / "results.txt"
    if checks.exists():
        words = [line.split()[0] for line in checks.read_text().splitlines()]
        lines.append(("checks", Count(words.count("passed"), words.count("failed"))))
        total.add(lines[-1][1])
    print()
    for name, count in lines:
        print(f"{name:8} {count}")
    ran = sum(count.passed + count.failed for name, count in lines if name != "checks")
    if ran == 0:
        print("no test ran")
    print(total)
    return 1 if total.failed or ran == 0 else 0


if __name__ == "__main__":
    sys.exit(main())
