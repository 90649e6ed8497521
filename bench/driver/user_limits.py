"""Suite: what no client can be faster than: the cipher, the loopback interface, OpenSSL alone, a handshake."""

import contextlib
import re
import socket
import subprocess
import threading
import time

import user_clients
import user_works
import users
from clients import program
from figures import Spread, ratios
from report import Table
from works import size_name

SUITE = "users, limits"
CIPHERS = ["AES-128-GCM", "AES-256-GCM"]
BLOCK = 16384
CHUNK = 1 << 18
VERSIONS = {"TLS 1.2": "-tls1_2", "TLS 1.3": "-tls1_3"}
KINDS = {"full": "-new", "resumed": "-reuse"}
# What s_time prints for each connection.
MARKS = {"full": "*", "resumed": "r"}
WAYS = ("download", "upload")
RATE = "{:,.0f}"
SHARE = "{:.2f} ({:.2f}–{:.2f})"
MB = 1_000_000


def suite(build, recorder, goals, effort):
    with users.serve(users.CONDITIONS[0], build) as server:
        runs = {way: _beside_openssl(server, way, recorder, effort) for way in WAYS}
        handshakes = _handshakes(server, recorder, effort)
    recorder.say(f"{SUITE}: ciphers and TCP")
    limits = {f"{name}, blocks of 16 KiB": _cipher(name, effort.limit_seconds) for name in CIPHERS}
    limits["TCP over loopback"] = _tcp(effort.limit_bytes)
    return [_rates(limits, runs, effort.limit_size), handshakes]


def _beside_openssl(server, way, recorder, effort):
    make = {"download": user_works.download, "upload": user_works.upload}[way]
    work = make(server, size_name(effort.limit_size), effort.limit_size)
    both = {users.OURS: user_clients.session(server, work), "OpenSSL": program(server, "openssl", work)}
    runs = recorder.alternate(SUITE, work.name, effort.user_rounds, both)
    work.before()
    return {name: [run.wall for run in of_client] for name, of_client in runs.items()}


def _rates(limits, runs, size):
    table = Table(
        "The physical limit of a large file",
        f"MB (1,000,000 bytes) a second, and the share of it that SFtpSession reaches with {size_name(size)} to and "
        "from vsftpd over explicit TLS. OpenSSL alone moves the same bytes on one connection and does nothing with "
        "them; beside it, the share is that of the same round: median (least–greatest).",
        ["limit", "MB/s", *(f"share, {way}" for way in WAYS)],
    )
    rates = {way: Spread.of((size / MB / wall for wall in runs[way][users.OURS]), RATE) for way in WAYS}
    for name, limit in limits.items():
        table.rows.append([name, RATE.format(limit), *(f"{rates[way].median / limit:.2f}" for way in WAYS)])
    for way in WAYS:
        alone = Spread.of((size / MB / wall for wall in runs[way]["OpenSSL"]), RATE)
        share = ratios(runs[way]["OpenSSL"], runs[way][users.OURS], SHARE)
        shares = [share if each == way else users.NONE for each in WAYS]
        table.rows.append([f"OpenSSL alone, {way}", alone, *shares])
    table.rows.append([users.OURS, users.NONE, *rates.values()])
    return table


def _cipher(name, seconds):
    """MB a second."""
    words = ["speed", "-mr", "-elapsed", "-seconds", str(seconds), "-bytes", str(BLOCK), "-evp", name.lower()]
    done = subprocess.run(["openssl", *words], capture_output=True, text=True, check=True)
    return cipher_rate(done.stdout)


def cipher_rate(printed):
    """Of "+F:25:AES-256-GCM:1975683295.05"."""
    return float(re.search(r"^\+F:\d+:[^:]+:([\d.]+)$", printed, re.MULTILINE)[1]) / MB


def _tcp(size):
    """MB a second."""
    with socket.create_server(("127.0.0.1", 0)) as listening:
        sender = threading.Thread(target=_send, args=(listening.getsockname(), size))
        sender.start()
        connection, _ = listening.accept()
        begin = time.perf_counter()
        received = _receive(connection)
        seconds = time.perf_counter() - begin
        sender.join()
    if received != size:
        raise RuntimeError(f"{received} of {size} bytes came over loopback.")
    return size / MB / seconds


def _send(address, size):
    chunk = bytes(CHUNK)
    with socket.create_connection(address) as connection:
        for _ in range(size // CHUNK):
            connection.sendall(chunk)


def _receive(connection):
    chunk = bytearray(CHUNK)
    received = 0
    with connection:
        while count := connection.recv_into(chunk):
            received += count
    return received


def _handshakes(server, recorder, effort):
    recorder.say(f"{SUITE}: handshakes")
    table = Table(
        "A handshake",
        "By OpenSSL's s_time, with its s_server and vsftpd's certificate, in milliseconds of wall time: with the TCP "
        "connection, and a page of 4 kB, without which no TLS 1.3 session could be resumed.",
        ["handshake", "ms", "a second"],
    )
    with _tls_server(server) as port:
        for version in VERSIONS:
            for kind in KINDS:
                seconds = _handshake(server, port, version, kind, effort.limit_seconds)
                table.rows.append([f"{version}, {kind}", f"{1000 * seconds:.2f}", RATE.format(1 / seconds)])
    return table


@contextlib.contextmanager
def _tls_server(server):
    certificate = ["-cert", server.folder / "daemon/cert.pem", "-key", server.folder / "daemon/key.pem"]
    words = ["openssl", "s_server", "-accept", "127.0.0.1:0", *certificate, "-www"]
    process = subprocess.Popen(words, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
    try:
        yield next(int(line.rpartition(":")[2]) for line in process.stdout if line.startswith("ACCEPT"))
    finally:
        process.terminate()
        process.wait()
        process.stdout.close()


def _handshake(server, port, version, kind, seconds):
    """Seconds for one."""
    trust = ["-CAfile", str(server.small_trust), "-verify", "1"]
    words = ["openssl", "s_time", "-connect", f"localhost:{port}", *trust, KINDS[kind], VERSIONS[version]]
    begin = time.perf_counter()
    done = subprocess.run([*words, "-time", str(seconds), "-www", "/"], capture_output=True, text=True, check=True)
    return (time.perf_counter() - begin) / handshakes(done.stdout, MARKS[kind])


def handshakes(printed, mark):
    """How many there were, all of this kind."""
    marks = next((line for line in printed.splitlines() if line and set(line) <= set("*rt")), "")
    if set(marks) != {mark}:
        raise RuntimeError(f"Not all handshakes were as wanted: {set(marks)}.")
    return len(marks)
