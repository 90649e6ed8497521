#!/usr/bin/env python3
"""usage: can_fail.py FOLDER CURL_H NAME=VALUE...
Plants one mistake after the other in the documents, or in what they are compared with, and fails unless the check
that must find it names it. Values as for run.py."""

import pathlib
import sys

import checks
import run
from documents import ROOT, Block, read_all
from running import Place, run_readme
from sources import curl_codes, read_libcurl, read_sources

OPERATIONS, TROUBLE, INTERNALS = "docs/operations.md", "docs/troubleshooting.md", "docs/internals.md"
ROW = "| 2 | `CurlSFtpResponse::DelSFtpFile()` | `DelSFtpFile():end ` | success |\n"


class Planted(dict):
    """The documents with a mistake in one of them."""

    def __init__(self, document, old, new):
        super().__init__(read_all())
        if self[document].count(old) < 1:
            raise ValueError(f"{document} does not hold: {old}")
        self[document] = self[document].replace(old, new, 1)


def added(text, document="docs/using.md"):
    documents = Planted(document, "\n", "\n")
    documents[document] += text
    return documents


def cases_of_blocks():
    """What the check must say, the check, and what it gets."""
    tests = {"docs.programs", "docs.projects", "docs.commands", "docs.settings", "docs.facts"}
    pictures = read_sources("src", "include", "platform")
    return [
        ("no test runs blocks of the language yaml", checks.check_blocks, added("\n```yaml\nx\n```\n"), tests),
        ("write blocks between", checks.check_blocks, added("<pre>true</pre>\n"), tests),
        ("is not there: build again", checks.check_blocks, read_all(), set()),
        ("/using, is not there", checks.check_blocks, added("\n```console\n$ true\n```\n"), tests),
        ("begins with a command", checks.check_blocks, added("\n```console\ntrue\n```\n"), tests),
        ("docs.commands, is not there", checks.check_blocks, added("\n    true\n"), tests - {"docs.commands"}),
        ("there is no src/transfer/Load.cpp", checks.check_pictures,
         Planted(INTERNALS, "src/transfer/Download.cpp", "src/transfer/Load.cpp"), pictures),
        ("no source knows CheckFileSize", checks.check_pictures,
         Planted(INTERNALS, "CheckFileSizeBeforeDownload(request) ", "CheckFileSize(request) "), pictures),
    ]


def cases_of_results(header):
    """The same, about results."""
    codes, hints = curl_codes(header), (ROOT / "cli/output/Hint.cpp").read_text()

    def case(expected, old, new):
        return expected, checks.check_results, Planted(TROUBLE, old, new), codes, hints

    return [
        case("66 is not libcurl's `CURLE_LOGIN_DENIED`", "| 67 |", "| 66 |"),
        case("67 is missing in", "| 67 |", "| 66 |"),
        case("are not in order", "| 17 |", "| 71 |"),
        case("libcurl has no CURLE_SSH_FAILED", "CURLE_SSH`", "CURLE_SSH_FAILED`"),
        case("CURLE_QUOTE_ERROR has a hint, but no row", "CURLE_QUOTE_ERROR", "CURLE_RANGE_ERROR"),
    ]


def cases_of_sources():
    """The same, about records and options."""
    src = read_sources("src")
    changed = {**src, "src/transfer/Delete.cpp": src["src/transfer/Delete.cpp"].replace(":end ", ":ende ")}
    swapped = {**src, "src/transfer/Rename.cpp": src["src/transfer/Rename.cpp"].replace("CURLOPT_PORT", "CURLOPT_URL")}
    help_text = "--user --ca --password-file --password-stdin --quiet --trace --json --retry --retry-delay --config"
    return [
        ("lacks level 2, CurlSFtpResponse::DelSFtpFile()", checks.check_records, Planted(OPERATIONS, ROW, ""), src),
        ("no source writes level 2, CurlSFtpResponse::DelSFtpFile()", checks.check_records, read_all(), changed),
        ("no source writes level 4, CurlSFtpResponse::DelSFtpFile()", checks.check_records,
         Planted(OPERATIONS, ROW, ROW.replace("| 2 |", "| 4 |")), src),
        ("the options of rename are", checks.check_libcurl_options, read_all(), swapped),
        ("nobody sets CURLOPT_TIMEOUT", checks.check_libcurl_options, added("`CURLOPT_TIMEOUT`\n"), src),
        ("the command has no --usr", checks.check_command_options, added("`sftpclient get --usr backup`\n"), help_text),
        ("the command has no --retyr", checks.check_command_options, added("`--retyr`\n"), help_text),
        ("the command has no --al", checks.check_command_options,
         added("\n```console\n$ sftpclient ls --al\n```\n"), help_text),
    ]


def cases_of_releases(header):
    """The same, about releases of libcurl."""
    presets = (ROOT / "CMakePresets.json").read_text()
    return [
        ("docs/using.md: no test runs with libcurl 8.9", checks.check_libcurl_releases,
         added("Use libcurl 8.9 or newer.\n"), header, presets),
        ("docs/using.md: no test runs with libcurl 8.1", checks.check_libcurl_releases,
         added("libcurl before 8.1 waits.\n"), header, presets),
        ("docs/using.md: no test runs with libcurl 8.5.0", checks.check_libcurl_releases,
         added("This one waits;\n8.5.0 does not.\n"), header, presets),
        ("libcurl 9.0.0 is tested, but not", checks.check_libcurl_releases, read_all(), header,
         presets.replace("8.14.1", "9.0.0")),
    ]


def cases_of_names():
    """The same, about names and links."""
    doxyfile, installed = (ROOT / "docs/Doxyfile").read_text(), (ROOT / "tests/package/installed.txt").read_text()
    return [
        ("nobody knows SFTPCLIENT_USR", checks.check_names, added("`SFTPCLIENT_USR`\n"), "", {"SFTPCLIENT_USER"}),
        ("nobody knows SFtpClient::Move", checks.check_names, added("`SFtpClient::Move`\n"), "Listsftpdir", set()),
        ("there is no src/gone.cpp", checks.check_names, added("`src/gone.cpp`\n"), "", set()),
        ("there is no gone.md", checks.check_links, added("[x](gone.md)\n")),
        ("no heading for #gone", checks.check_links, added("[x](schemes.md#gone)\n")),
        ("the guides lack docs/schemes.md", checks.check_guides,
         Planted("README.md", "(docs/schemes.md) |", "(docs) |")),
        ("differ in IniFile.h", checks.check_reference, doxyfile.replace("host/config/IniFile.h \\\n", "\\\n"), installed),
    ]


def run_cases():
    """What must be said, the kind of block, its language and its text."""
    return [
        ("has no member named", "programs", "cpp",
         "#include <SFtpClient.h>\nint main()\n{\n    SFtpRequest().gate = 1;\n}\n"),
        ("did not log in", "programs", "cpp", "int main()\n{\n}\n"),
        (": 3", "programs", "cpp", "int main()\n{\n    return 3;\n}\n"),
        ("it links nothing", "projects", "cmake", "find_package(SFtpClient 1)\n"),
        ("SFtpClientt", "projects", "cmake",
         "find_package(SFtpClientt 1 REQUIRED)\ntarget_link_libraries(x PRIVATE y)\n"),
        ("there is no script", "commands", "sh", "scripts/gone\n"),
        ("no such preset", "commands", "sh", "cmake --preset gone\n"),
        ("none of our packages", "commands", "sh", "sudo apt-get install ./gone.deb\n"),
        ("false: 1", "commands", "sh", "true && false\n"),
        ("sftpclient doctor", "commands", "", "sftpclient doctor ftp://backup.example.com/ --gone\n"),
        ("Levle", "settings", "ini", "[Log]\nLevle=info\n"),
        ("host/README.md does not know [General]CertAuth", "settings", "ini", "[General]\nCertAuth=0\n"),
    ]


def main(folder, curl_h, *values):
    setup = dict(value.split("=", 1) for value in values)
    missed = []

    def expect(expected, wrong):
        print(f"{'found' if any(expected in line for line in wrong) else 'MISSED'}: {expected}")
        if not any(expected in line for line in wrong):
            missed.append(f"{expected}\n  but only: {wrong}")

    header = read_libcurl(curl_h)
    cases = cases_of_blocks() + cases_of_results(header) + cases_of_releases(header) + cases_of_sources()
    cases += cases_of_names()
    for expected, check, *arguments in cases:
        expect(expected, check(*arguments))
    for number, (expected, kind, language, text) in enumerate(run_cases()):
        block = Block("planted", 1, language, text)
        place = Place(setup, pathlib.Path(folder) / str(number))
        expect(expected, run.run_block(kind, place, block, [block], read_all()))
    unsaid = Block("planted", 1, "cpp", "SFtpSession client;\n")
    expect("how SFtpClient takes the place", run_readme(Place(setup, pathlib.Path(folder) / "readme"), unsaid))
    print("\n".join(missed))
    return 1 if missed else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
