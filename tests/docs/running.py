"""Runs the documents' blocks. Each function returns what went wrong, a line or more for each."""

import os
import pathlib
import re
import shutil
import subprocess

from documents import ROOT, all_blocks
from server import HOST, Server


class Place:
    """A folder for the blocks of one document, and what the build has to offer them."""

    def __init__(self, setup, folder):
        self.setup = setup
        self.folder = pathlib.Path(folder)
        shutil.rmtree(self.folder, ignore_errors=True)
        (self.folder / "work").mkdir(parents=True)
        self.work = self.folder / "work"

    def run(self, command, **more):
        """The command's exit status and all that it said. The machine's trust store is the test server's CA."""
        environment = {
            **os.environ,
            "PKG_CONFIG_PATH": self.setup["prefix"] + "/" + self.setup["libdir"] + "/pkgconfig",
            "SFTPCLIENT_PASSWORD": "secret",
            **more,
        }
        # The tests of the package compile the same sources, by their full names: a compiler's cache has them.
        environment.pop("CCACHE_BASEDIR", None)
        ended = subprocess.run(command, cwd=self.work, env=environment, stdin=subprocess.DEVNULL, text=True,
                               stdout=subprocess.PIPE, stderr=subprocess.STDOUT, errors="replace", check=False)
        return ended.returncode, ended.stdout

    def flags(self, *packages):
        status, said = self.run(["pkg-config", "--cflags", "--libs", *packages])
        if status:
            raise RuntimeError(said)
        return [*said.split(), "-Wl,-rpath," + self.setup["prefix"] + "/" + self.setup["libdir"], *self.sanitizer()]

    def sanitizer(self):
        return ["-fsanitize=" + self.setup["sanitize"]] if self.setup["sanitize"] else []

    def run_against_server(self, command):
        """Runs a program that was built for it, and looks whether it logged in."""
        shutil.rmtree(self.folder / "server", ignore_errors=True)
        with Server(self.setup["server"], self.folder / "server", "implicit") as server:
            shutil.copy(server.ca, self.work / "ca.pem")
            # The program has the host and the port of the document; the loader gives it these.
            status, said = self.run(command, LD_PRELOAD=self.setup["trust"], SFTPCLIENT_DEFAULT_TRUST=str(server.ca),
                                    DOCUMENT_PORT=str(server.port), ASAN_OPTIONS="verify_asan_link_order=0")
        if status:
            return status, said
        return (0, said) if server.logins() else (1, said + "It ended with 0, but did not log in.")


def for_this_server(text):
    """A program's text with the test server's host and port, which is known only when it runs."""
    adapted = text.replace(HOST, "localhost")
    adapted = re.sub(r"port = 990;", 'port = static_cast<unsigned>(std::stoul(std::getenv("DOCUMENT_PORT")));', adapted)
    return adapted if adapted == text else "#include <cstdlib>\n#include <string>\n" + adapted


def write_files(place, blocks):
    """Puts blocks that have a name into the folder, programs for the test server."""
    for block in blocks:
        if block.name:
            (place.work / block.name).write_text(for_this_server(block.text) if block.language == "cpp" else block.text)


def is_program(block):
    return re.search(r"^int main\(", block.text, re.MULTILINE) is not None


def with_the_core(readme):
    """The README's program as its comments say that it is written with SFtpClient."""
    text = readme.text.replace("<SFtpSession.h> // or <SFtpClient.h>", "<SFtpClient.h>")
    return text.replace("SFtpSession client; // or SFtpClient", "SFtpClient client;")


def with_own_services(text):
    """The program without the library of ready services, of which it takes libcurl's initialisation."""
    text = text.replace("<CurlProcess.h>", "<curl/curl.h>")
    return text.replace("const CurlProcess curl;", "curl_global_init(CURL_GLOBAL_DEFAULT);")


def compile_and_run(place, block, sources, packages, record):
    """A program of these files must run well against the test server, and write this record, if any."""
    status, said = place.run([place.setup["compiler"], "-std=c++17", "-O0", "-Wall", "-Wextra", "-Werror", *sources,
                              "-o", "block", *place.flags(*packages)])
    if not status:
        status, said = place.run_against_server(["./block"])
    if not status and record not in said:
        status = f"no record {record}"
    return [f"{block}: {status}\n{said}"] if status else []


def run_readme(place, block):
    """Runs the README's program with both classes."""
    core = with_the_core(block)
    if "SFtpSession" not in block.text or "SFtpSession" in core:
        return [f"{block}: it does not say how SFtpClient takes the place of SFtpSession"]
    wrong = []
    for text, record in ((block.text, "SFtpSession::DownLoadSFtpFile()"), (core, "DownLoadSFtpFile():end")):
        (place.work / "block.cpp").write_text(for_this_server(text))
        wrong += compile_and_run(place, block, ["block.cpp"], ["sftpclient-host", "sftpclient-session"], record)
    return wrong


def run_program(place, block, blocks, readme):
    """Compiles and runs a program; host services without one with the README's program."""
    if block == readme:
        return run_readme(place, block)
    write_files(place, blocks)
    (place.work / "block.cpp").write_text(for_this_server(block.text))
    if is_program(block):
        packages = ["sftpclient-host", "libcurl"]
        if "<SFtpSession.h>" in block.text:
            packages.append("sftpclient-session")
        return compile_and_run(place, block, ["block.cpp"], packages, "")
    (place.work / "readme.cpp").write_text(for_this_server(with_own_services(with_the_core(readme))))
    return compile_and_run(place, block, ["readme.cpp", "block.cpp"], ["sftpclient", "libcurl"],
                           "DownLoadSFtpFile():end")


def build_project(place, block, blocks, readme):
    """Configures and builds with the installed package, or with the sources, and runs what was built."""
    write_files(place, blocks)
    text = block.text
    target = re.search(r"target_link_libraries\((\S+)", text)
    if not target:
        return [f"{block}: it links nothing"]
    if "add_executable(" not in text:
        (place.work / "block.cpp").write_text(for_this_server(readme.text))
        executable = f"add_executable({target.group(1)} block.cpp)\n"
        text = text.replace("target_link_libraries(", executable + "target_link_libraries(", 1)
    if "project(" not in text:
        text = "cmake_minimum_required(VERSION 3.25)\nproject(consumer LANGUAGES CXX)\n" + text
    # The sources, by the name that the tests of the package have for them.
    text = text.replace("add_subdirectory(libSFtpClient)", f"add_subdirectory({ROOT} libSFtpClient)")
    (place.work / "CMakeLists.txt").write_text(text)
    configure = ["cmake", "-S", ".", "-B", "build", "-G", "Ninja",
                 "-DCMAKE_BUILD_TYPE=Debug", "-DCMAKE_CXX_FLAGS_DEBUG=-O0",
                 "-DCMAKE_PREFIX_PATH=" + place.setup["prefix"], "-DCMAKE_CXX_COMPILER=" + place.setup["compiler"],
                 "-DCMAKE_CXX_FLAGS=" + " ".join(place.sanitizer()),
                 "-DSFTPCLIENT_SANITIZE=" + place.setup["sanitize"]]
    build = ["cmake", "--build", "build", "--parallel", "2", "--target", target.group(1)]
    for command in (configure, build):
        status, said = place.run(command)
        if status:
            return [f"{block}: {status}\n{said}"]
    status, said = place.run_against_server([f"build/{target.group(1)}"])
    return [f"{block}: {status}\n{said}"] if status else []


def read_settings(place, block, known_keys):
    """Reads a configuration file as hosts do."""
    (place.work / "block.ini").write_text(block.text)
    status, said = place.run([place.setup["settings"], "block.ini"])
    wrong = [f"{block}: {said}"] if status else []
    return wrong + [f"{block}: host/README.md does not know {key}" for key in keys_in(block.text) - known_keys]


def keys_in(ini):
    """Every key with its section."""
    keys, begun = set(), ""
    for line in ini.split("\n"):
        if line.startswith("["):
            begun = line
        elif "=" in line and line[0] not in ";#":
            keys.add(begun + line.split("=")[0])
    return keys


def blocks_by_document(documents, *languages):
    """Pairs of a block and all blocks of its document."""
    every = all_blocks(documents)
    return [(block, [other for other in every if other.document == block.document])
            for block in every if block.language in languages]
