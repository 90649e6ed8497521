#!/usr/bin/env python3
"""usage: facts.py CTEST BUILD CURL_H SFTPCLIENT
Compares what the documents say with the sources, with libcurl's header and with the command's help."""

import json
import re
import subprocess
import sys

import checks
from documents import ROOT, read_all
from sources import curl_codes, read_sources


def names_of_tests(ctest, build):
    command = [ctest, "--test-dir", build, "--show-only=json-v1"]
    said = subprocess.run(command, check=True, capture_output=True, text=True)
    return {test["name"].split("  #")[0] for test in json.loads(said.stdout)["tests"]}


def help_of(command):
    forms = [[], ["get"], ["put"], ["ls"], ["mv"], ["rm"], ["test"], ["push"], ["doctor"]]
    said = [subprocess.run([command, *form, "--help"], check=True, capture_output=True, text=True) for form in forms]
    return "\n".join(each.stdout for each in said)


def everything_else():
    """Where names may stand that are not C++."""
    folders = ["cmake", "scripts", "tests/live/servers", "cli", "host", "src", "session", "include", "platform"]
    files = [ROOT / "CMakeLists.txt", ROOT / "tests/server/FtpServer.h"]
    files += [file for folder in folders for file in (ROOT / folder).rglob("*") if file.is_file()]
    return "\n".join(file.read_text() for file in files)


def findings(documents, tests, header, help_text):
    """What each check found."""
    sources = read_sources("src")
    codes = curl_codes(header)
    variables = {"SFTPCLIENT_" + option[2:].upper().replace("-", "_")
                 for option in re.findall(r"--[a-z][a-z-]*", help_text)}
    return {
        "blocks": checks.check_blocks(documents, tests),
        "pictures": checks.check_pictures(documents, read_sources("src", "include", "platform")),
        "results": checks.check_results(documents, codes, (ROOT / "cli/output/Hint.cpp").read_text()),
        "records": checks.check_records(documents, sources),
        "libcurl's options": checks.check_libcurl_options(documents, sources),
        "the command's options": checks.check_command_options(documents, help_text),
        "names": checks.check_names(documents, everything_else(), variables),
        "links": checks.check_links(documents),
        "guides": checks.check_guides(documents),
        "reference": checks.check_reference((ROOT / "docs/Doxyfile").read_text(),
                                            (ROOT / "tests/package/installed.txt").read_text()),
    }


def main(ctest, build, curl_h, command):
    with open(curl_h, encoding="utf-8") as file:
        found = findings(read_all(), names_of_tests(ctest, build), file.read(), help_of(command))
    for check, wrong in found.items():
        print(f"{check}: {'well' if not wrong else ''}")
        for line in wrong:
            print(f"  {line}")
    return 1 if any(found.values()) else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
