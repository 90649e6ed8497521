"""What the documents say, compared with the sources. Each check returns what is wrong, a line for each."""

import re

from documents import (ROOT, all_blocks, anchors_of, blocks_of, code_spans, rows_of, section, without_blocks)
from sources import options_of, records_of

FOLDERS = "src|session|scripts|include|platform|host|cli|docs|tests|examples|cmake"

# The releases of libcurl that the tests run with: Debian 12's, and that of scripts/versions and Debian 13.
LIBCURLS = ("7.88.1", "8.14.1")

OPERATIONS = {
    "`sftpSetCertTmp`": "src/tls/SftpSetCertTmp.cpp",
    "size check": "src/transfer/SizeCheck.cpp",
    "download": "src/transfer/Download.cpp",
    "upload": "src/transfer/Upload.cpp",
    "listing": "src/transfer/Listing.cpp",
    "rename": "src/transfer/Rename.cpp",
    "delete": "src/transfer/Delete.cpp",
    "connection test": "src/transfer/TestSConnect.cpp",
}


def runners(block):
    """The names of the tests that run such a block."""
    stem = re.sub(r"^.*/|\.md$", "", block.document)
    return {
        "cpp": ["docs.programs"],
        "cmake": ["docs.projects"],
        "sh": ["docs.commands"],
        "": ["docs.commands"],
        "ini": ["docs.settings"],
        "console": [f"Each/Document.ShowsWhatHappens/{stem}"],
        "text": ["docs.facts"],
    }.get(block.language, [])


def check_blocks(documents, tests):
    """Each block is run by a test that is there."""
    wrong = [f"{document}: write blocks between lines of ```, where tests find them"
             for document, text in documents.items() if "<pre" in text]
    for block in all_blocks(documents):
        names = runners(block)
        if not names:
            wrong.append(f"{block}: no test runs blocks of the language {block.language}")
        wrong += [f"{block}: its test, {name}, is not there: build again" for name in names if name not in tests]
        if block.language == "console" and not block.text.startswith("$ "):
            wrong.append(f"{block}: a session begins with a command, after $")
    return wrong


def check_pictures(documents, sources):
    """Files and names in pictures are there."""
    wrong = []
    everything = "\n".join(sources.values())
    for block in all_blocks(documents):
        if block.language != "text":
            continue
        paths = re.findall(r"\bsrc/[\w/.]+", block.text)
        names = re.findall(r"\b(?:\w+_\w+|\w*[a-z][A-Z]\w*)\b", re.sub(r"\bsrc/[\w/.]+", "", block.text))
        if not paths or not names:
            wrong.append(f"{block}: a picture without files or names")
        wrong += [f"{block}: there is no {path}" for path in paths if path not in sources]
        wrong += [f"{block}: no source knows {name}" for name in names if not re.search(rf"\b{name}\b", everything)]
    return wrong


def check_results(documents, codes, hints):
    """Numbers and names of results are libcurl's, and whatever is a result somewhere is in the list of all."""
    page = "docs/troubleshooting.md"
    wrong, listed = [], {}
    for number, name, *_ in (row for row in rows_of(section(documents[page], "By result")) if row[0] != "result"):
        listed[number] = name.strip("`")
        if number != "-1" and codes.get(name.strip("`")) != int(number):
            wrong.append(f"{page}: {number} is not libcurl's {name}")
    if list(listed) != sorted(listed, key=int):
        wrong.append(f"{page}: the results are not in order")
    for row in rows_of(documents["docs/operations.md"]):
        for number in re.findall(r"-?\d+", row[0]) if re.fullmatch(r"[-\d, ]+", row[0]) and len(row) == 2 else []:
            if number not in listed:
                wrong.append(f"docs/operations.md: {number} is missing in {page}")
    wrong += [f"{page}: {name} has a hint, but no row" for name in re.findall(r"\{(CURLE_\w+)", hints)
              if name not in listed.values()]
    for document, text in documents.items():
        names = set(re.findall(r"\bCURLE_\w+", text))
        wrong += [f"{document}: libcurl has no {name}" for name in sorted(names - set(codes))]
    return wrong


def check_records(documents, sources):
    """docs/operations.md has the records of the sources: all of them, and no others."""
    page = "docs/operations.md"
    told = set()
    for row in rows_of(documents[page]):
        if len(row) == 4 and row[0] in ("1", "2", "4"):
            text = re.fullmatch(r"`(.*)`", row[2]).group(1)
            told.add((row[0], row[1].strip("`"), re.sub(r"<\w+>", "<>", text)))
    written = records_of(sources)
    wrong = [f"{page}: no source writes level {level}, {by}: \"{text}\"" for level, by, text in sorted(told - written)]
    wrong += [f"{page} lacks level {level}, {by}: \"{text}\"" for level, by, text in sorted(written - told)]
    return wrong


def check_libcurl_options(documents, sources):
    """docs/internals.md has each operation's options in their order; an option that is named is set somewhere."""
    page = "docs/internals.md"
    rows = rows_of(section(documents[page], "Options, in their order"))
    told = {row[0]: re.findall(r"`(\w+)`", row[1]) for row in rows}
    wrong = []
    for operation, path in OPERATIONS.items():
        if told.get(operation) != options_of(sources[path]):
            wrong.append(f"{page}: the options of {operation} are {' '.join(options_of(sources[path]))}")
    known = {name for text in sources.values() for name in re.findall(r"\bCURLOPT_\w+", text)}
    for document, text in documents.items():
        wrong += [f"{document}: nobody sets {name}" for name in re.findall(r"\bCURLOPT_\w+", text) if name not in known]
    return wrong


def check_libcurl_releases(texts, header, presets):
    """Each release of libcurl that is named is one that the tests run with; so 8.14 for 8.14.1."""
    run = {re.search(r'^#define LIBCURL_VERSION "([^"]+)"', header, re.MULTILINE).group(1),
           *re.findall(r'"SFTPCLIENT_LIBCURL": "([^"]+)"', presets)}
    wrong = [f"libcurl {each} is tested, but not in the list of this check" for each in sorted(run - set(LIBCURLS))]
    for path, text in texts.items():
        named = re.findall(r"\blibcurl\s+(?:before\s+)?(\d+\.\d+(?:\.\d+)?)|\b(\d+\.\d+(?:\.\d+)?)\s+does\s+not", text)
        wrong += [f"{path}: no test runs with libcurl {release}" for release in sorted({a or b for a, b in named})
                  if not any(f"{each}.".startswith(f"{release}.") for each in LIBCURLS)]
    return wrong


def check_command_options(documents, help_text):
    """Each option that stands with the command, or alone, is one of the command's."""
    known = set(re.findall(r"--[a-z][a-z-]*", help_text))
    wrong = []
    for document, text in documents.items():
        lines = [span for span in code_spans(without_blocks(document, text)) if re.match(r"--[a-z]|sftpclient ", span)]
        lines += [line for block in blocks_of(document, text) for line in block.text.split("\n")
                  if re.search(r"(^|[|;$] )sftpclient ", line)]
        for line in lines:
            # What follows the command in a pipe is another's.
            own = re.split(r" \| | && |; ", line[line.find("sftpclient") if "sftpclient " in line else 0 :])[0]
            wrong += [f"{document}: the command has no {option}: {line}"
                      for option in re.findall(r"(?<!\S)--[a-z][a-z-]*", own)
                      if option not in known and f"There is no option {option};" not in text]
    return wrong


def check_names(documents, everything, variables):
    """Variables, qualified names and paths in code are there."""
    wrong = []
    for document, text in documents.items():
        wrong += [f"{document}: nobody knows {name}" for name in re.findall(r"\bSFTPCLIENT_[A-Z_]+", text)
                  if name not in everything and name not in variables]
        for span in code_spans(without_blocks(document, text)):
            for scope, name in re.findall(r"\b(\w+)::~?(\w+)", span):
                if scope not in ("std", "boost") and not re.search(rf"\b{name}\b", everything):
                    wrong.append(f"{document}: nobody knows {scope}::{name}")
            path = re.fullmatch(rf"(?:\./)?((?:{FOLDERS})/[\w./-]*)", span)
            if path and not (ROOT / path.group(1)).exists():
                wrong.append(f"{document}: there is no {path.group(1)}")
    return wrong


def check_links(documents):
    """Each link within the repository leads somewhere."""
    wrong = []
    for document, text in documents.items():
        plain = without_blocks(document, text)
        for target in re.findall(r"\]\(([^)]+)\)", plain):
            if re.match(r"https?:", target):
                continue
            path, _, anchor = target.partition("#")
            file = (ROOT / document).parent / path if path else ROOT / document
            if not file.exists():
                wrong.append(f"{document}: there is no {target}")
            elif anchor:
                page = str(file.resolve().relative_to(ROOT))
                there = documents[page] if page in documents else file.read_text()
                if anchor not in anchors_of(without_blocks(page, there)):
                    wrong.append(f"{document}: {page} has no heading for #{anchor}")
    return wrong


def check_guides(documents):
    """The README leads to every document."""
    guides = section(documents["README.md"], "The guides")
    return [f"README.md: the guides lack {document}" for document in documents
            if document != "README.md" and f"({document})" not in guides]


def check_reference(doxyfile, installed):
    """The reference is made from the headers that are installed."""
    read = re.search(r"^INPUT +=((?:.*\\\n)*.*)", doxyfile, re.MULTILINE).group(1).replace("\\\n", " ").split()
    headers = set()
    for path in read:
        found = (ROOT / path).glob("*.h") if (ROOT / path).is_dir() else [ROOT / path]
        headers |= {file.name for file in found}
    expected = set(re.findall(r"^include/.*/(\w+\.h)$", installed, re.MULTILINE))
    return [f"docs/Doxyfile and tests/package/installed.txt differ in {name}" for name in sorted(headers ^ expected)]
