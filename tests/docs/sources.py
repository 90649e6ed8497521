"""What the sources say: records, options, results, names."""

import pathlib
import re

from documents import ROOT

LEVELS = {"kLogDetail": "1", "kLogEnd": "2", "kLogFailure": "4"}


def read_sources(*folders):
    """The text of each C++ file below these folders, by its path from the top."""
    paths = [path for folder in folders for path in (ROOT / folder).rglob("*") if path.suffix in (".h", ".cpp")]
    return {str(path.relative_to(ROOT)): path.read_text() for path in sorted(paths)}


def statements(text, opening):
    """Position and argument text of each "opening(...)", whatever parentheses and strings are in it."""
    for found in re.finditer(re.escape(opening) + r"\(", text):
        depth, position, quoted = 1, found.end(), False
        while depth:
            letter = text[position]
            if letter == "\\":
                position += 1
            elif letter == '"':
                quoted = not quoted
            elif not quoted:
                depth += {"(": 1, ")": -1}.get(letter, 0)
            position += 1
        yield found.start(), text[found.end() : position - 1]


def function_at(text, position):
    """The function that encloses the position, as records name it."""
    heads = re.findall(r"^(?:static )?[\w:<>*& ]*?((?:\w+::)?\w+)\([^;\n]*$", text[:position], re.MULTILINE)
    return heads[-1] + "()"


def merged(template):
    """Two things in a row that differ are one."""
    return re.sub("(<>)+", "<>", template)


def records_of(sources):
    """(level, function, text) of every record; "<>" stands in the text for what differs."""
    records = set()
    for path, text in sources.items():
        if path.endswith(".h"):
            continue
        for opening in ("SFTP_LOG", "SFTP_LOG_WITHOUT_REQUEST"):
            for position, arguments in statements(text, opening):
                level, message = arguments.split(",", 1)
                parts = re.findall(r'"((?:[^"\\]|\\.)*)"|<< *((?:[^"<]|<(?!<))+)', message)
                template = "".join("<>" if differs else literal for literal, differs in parts)
                records.add((LEVELS[level.strip()], function_at(text, position), merged(template)))
    return records


def options_of(text):
    """The options that a source file sets, in their order, without their prefix; the TLS step under its own name."""
    found = re.findall(r"curl_easy_setopt\([^,]+, CURLOPT_(\w+)|^ +(sftpSetCertTmp)\(", text, re.MULTILINE)
    return [option or step for option, step in found]


def read_libcurl(curl_h):
    """libcurl's header, and the one beside it that has the release."""
    path = pathlib.Path(curl_h)
    return path.read_text() + path.with_name("curlver.h").read_text()


def curl_codes(header):
    """The number of each name in libcurl's enumeration of results."""
    enumeration = re.search(r"typedef enum \{\s*CURLE_OK = 0,(.*?)\} CURLcode;", header, re.DOTALL).group(1)
    enumeration = re.sub(r"/\*.*?\*/", "", enumeration, flags=re.DOTALL)
    names = ["CURLE_OK", *re.findall(r"\bCURLE_\w+", enumeration)]
    return {name: number for number, name in enumerate(names)}
