"""What the figures were measured on."""

import datetime
import os
import pathlib
import platform
import resource
import subprocess


def _first_line(*command):
    return subprocess.run(command, capture_output=True, text=True, check=True).stdout.splitlines()[0]


def _processor():
    for line in pathlib.Path("/proc/cpuinfo").read_text().splitlines():
        if line.startswith("model name"):
            return line.partition(":")[2].strip()
    return platform.machine()


def _distribution():
    for line in pathlib.Path("/etc/os-release").read_text().splitlines():
        if line.startswith("PRETTY_NAME="):
            return line.partition("=")[2].strip('"')
    return "unknown"


_PROCESSORS = os.sched_getaffinity(0)


def everywhere():
    """The processors for the client and those for the server: wherever the kernel puts them."""
    return _PROCESSORS, _PROCESSORS


def together():
    """With a processor each, large downloads without libcurl's wait come in two kinds, one of which takes 1.4 times as
    long, and chance decides."""
    first = {min(_PROCESSORS)}
    return first, first


def apart():
    """Left to itself, the kernel would put the two together and apart by turns."""
    first = {min(_PROCESSORS)}
    return first, _PROCESSORS - first or first


def load():
    return f"{os.getloadavg()[0]:.2f}"


def _memory():
    return f"{os.sysconf('SC_PHYS_PAGES') * os.sysconf('SC_PAGE_SIZE') / (1 << 30):.0f} GiB"


def allow_many_files():
    """256 threads have more sockets than most systems let a process open unasked."""
    needed = 4096
    now, most = resource.getrlimit(resource.RLIMIT_NOFILE)
    if most != resource.RLIM_INFINITY and most < needed:
        raise RuntimeError(f"A process may open only {most} files here; {needed} are needed: ulimit -Hn {needed}.")
    if now != resource.RLIM_INFINITY and now < needed:
        resource.setrlimit(resource.RLIMIT_NOFILE, (needed, most))


def _certificates(bundle):
    return bundle.read_text().count("-----BEGIN CERTIFICATE-----")


def describe(load_before, place, trust_store):
    return [
        ("day", datetime.datetime.now(datetime.timezone.utc).strftime("%-d %B %Y, %H:%M UTC")),
        ("processor", f"{_processor()}, {os.cpu_count()} cores, {_memory()} of memory"),
        ("system", f"{_distribution()}, Linux {platform.release()}"),
        # "curl 7.88.1 (x86_64-pc-linux-gnu) libcurl/7.88.1 OpenSSL/3.0.19 zlib/1.2.13 ..."
        ("libcurl and its TLS", " ".join(_first_line("curl", "--version").split()[3:5])),
        ("lftp", _first_line("lftp", "--version").split("|")[1].strip()),
        ("rclone", _first_line("rclone", "--version").split()[1]),
        ("compiler", _first_line("g++", "--version")),
        ("the server's files", str(place)),
        ("certificates in the trust store", _certificates(trust_store)),
        ("load before", load_before),
    ]
