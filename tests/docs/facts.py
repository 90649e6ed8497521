#!/usr/bin/env python3
"""usage: facts.py CTEST BUILD CURL_H SFTPCLIENT CLI_TEST
Compares what the documents say with the sources, with libcurl's header and with the command's help."""

import json
import re
import subprocess
import sys

import checks
from documents import ROOT, read_all
from sources import curl_codes, read_libcurl, read_sources


def output_of(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def names_of_tests(ctest, build, cli_test):
    """What ctest runs, and the cases of the command's test, which it runs as one."""
    said = json.loads(output_of(ctest, "--test-dir", build, "--show-only=json-v1"))
    names = {test["name"] for test in said["tests"]}
    suite = ""
    for line in output_of(cli_test, "--gtest_list_tests").splitlines():
        if line.startswith("  "):
            names.add(suite + line.split()[0])
        else:
            suite = line.split()[0]
    return names


def help_of(command):
    forms = [[], ["get"], ["put"], ["ls"], ["mv"], ["rm"], ["test"], ["push"], ["pull"], ["doctor"]]
    return "\n".join(output_of(command, *form, "--help") for form in forms)


def everything_else():
    """Where names may stand that are not C++."""
    folders = ["cmake", "scripts", "tests/live/servers", "cli", "host", "src", "session", "include", "platform"]
    files = [ROOT / "CMakeLists.txt", ROOT / "tests/server/FtpServer.h"]
    files += [file for folder in folders for file in (ROOT / folder).rglob("*") if file.is_file()]
    return "\n".join(file.read_text() for file in files)


def texts_of_command():
    """What the command and its manual page say, by path from the top."""
    return {str(file.relative_to(ROOT)): file.read_text() for file in (ROOT / "cli").rglob("*")
            if file.suffix in (".cpp", ".1")}


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
        "libcurl's releases": checks.check_libcurl_releases(
            {**documents, **texts_of_command()}, header, (ROOT / "CMakePresets.json").read_text()),
        "the command's options": checks.check_command_options(documents, help_text),
        "names": checks.check_names(documents, everything_else(), variables),
        "links": checks.check_links(documents),
        "guides": checks.check_guides(documents),
        "reference": checks.check_reference((ROOT / "docs/Doxyfile").read_text(),
                                            (ROOT / "tests/package/installed.txt").read_text()),
    }


def main(ctest, build, curl_h, command, cli_test):
    found = findings(read_all(), names_of_tests(ctest, build, cli_test), read_libcurl(curl_h), help_of(command))
    for check, wrong in found.items():
        print(f"{check}: {'well' if not wrong else ''}")
        for line in wrong:
            print(f"  {line}")
    return 1 if any(found.values()) else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
