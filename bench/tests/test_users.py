"""What users compare: which figures are held to which goals, how a client that fails is shown, and how the clients are
called, with made-up runs and no server."""

import dataclasses
import pathlib
import shutil
import tempfile
import unittest
from types import SimpleNamespace
from unittest import mock

import daemons
import effort
import serving
import user_clients
import user_folders
import user_large
import user_limits
import user_operations
import user_works
import users
from figures import Goals
from measuring import Failure, Run

EFFORT = SimpleNamespace(
    user_rounds=6,
    user_large_size=50_000_000,
    user_files={"SFtpClient": 2, "SFtpSession": 9, "curl": 4, "lftp": 5, "rclone": 7, "sftp": 6},
)
FTP = ["SFtpClient", "SFtpSession", "curl", "lftp", "rclone"]


def walls(*seconds):
    return [Run(wall, 0.1, 0.1, 1000) for wall in seconds]


class Unserved(daemons.Daemon):
    """What the clients are told of a server that is not there."""

    def __enter__(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(dir=serving.place()))
        self.served = self.folder / "served"
        self.served.mkdir()
        self.port = 2121
        self.password = "secret"
        self.certificate = self.folder / "ca.pem"
        self.machine_trust, self.small_trust = self.folder / "machine.pem", self.folder / "small.pem"
        self.known_hosts().write_text("the server's key\n")
        return self

    def __exit__(self, *_):
        shutil.rmtree(self.folder)


class Recorder:
    """Gives runs of a second each; the exit status of those who are to fail."""

    def __init__(self, **failing):
        self.failing = failing
        self.asked = []
        self.done = set()

    def say(self, text):
        pass

    def alternate_able(self, suite, work, rounds, clients, done):
        self.asked.append((work, rounds, list(clients)))
        # Nothing runs, and so nothing may be taken for done.
        for name, prepare in clients.items():
            prepare()
            if done(name):
                self.done.add((work.partition(": ")[2], name))
        failing = {name: Failure(code, 0) for name, code in self.failing.items()}
        return {name: failing.get(name) or walls(*[1] * rounds) for name in clients}


def row(goal=users.TIME_GOAL, **seconds):
    goals = Goals()
    cells = users.cells(seconds, goals, goal, "subject", "{:.0f}", lambda taken: 1000 * taken)
    return cells, {goal: (met, undecided, missed) for goal, met, undecided, missed in goals.summary()}


MET, MISSED = ("1 of 1", "–", "–"), ("0 of 1", "–", "subject")


class OneRow(unittest.TestCase):
    def test_it_shows_the_median_of_each_client(self):
        cells, _ = row(SFtpSession=[0.1, 0.3, 0.2], curl=[2, 1, 3])
        self.assertEqual(["–", "200", "2000", "–", "–", "–"], [str(cell) for cell in cells[:6]])

    def test_the_ratio_is_to_the_best_other_of_each_round(self):
        cells, _ = row(SFtpSession=[1, 1, 2], curl=[2, 4, 8], lftp=[4, 2, 1])
        self.assertEqual((0.5, 0.5, 2), (cells[-2].median, cells[-2].least, cells[-2].greatest))

    def test_it_may_take_two_percent_more(self):
        for goal in (users.TIME_GOAL, users.RATE_GOAL):
            cells, goals = row(goal, SFtpSession=[1.02] * 6, curl=[1] * 6, lftp=[5] * 6)
            self.assertEqual(("met", {users.DOES_GOAL: MET, goal: MET}), (cells[-1], goals))
            cells, goals = row(goal, SFtpSession=[1.021] * 6, curl=[1] * 6, lftp=[5] * 6)
            self.assertEqual("best other NOT MET", cells[-1])
            self.assertEqual({users.DOES_GOAL: MET, goal: MISSED}, goals)

    def test_a_client_that_fails_is_shown_with_its_exit_status_and_is_not_the_best(self):
        cells, goals = row(SFtpSession=[3] * 6, SFtpClient=Failure(67, 0), curl=[3] * 6)
        self.assertEqual(["fails (67)", "3000", "3000"], [str(cell) for cell in cells[:3]])
        self.assertEqual((1, {users.DOES_GOAL: MET, users.TIME_GOAL: MET}), (cells[-2].median, goals))

    def test_a_session_that_fails_misses_that_it_does_it(self):
        cells, goals = row(SFtpSession=Failure(9, 0), curl=[3] * 6)
        self.assertEqual(["fails (9)", "–", "does it NOT MET"], [str(cells[1]), *cells[-2:]])
        self.assertEqual({users.DOES_GOAL: MISSED}, goals)

    def test_alone_it_has_nobody_to_be_compared_with(self):
        cells, goals = row(SFtpSession=[3] * 6, curl=Failure(1, 0))
        self.assertEqual(["–", "met"], cells[-2:])
        self.assertEqual({users.DOES_GOAL: MET}, goals)


class Suites(unittest.TestCase):
    def setUp(self):
        self.enterContext(mock.patch.object(users, "serve", lambda condition, build: Unserved(build, condition.server)))
        self.enterContext(mock.patch.object(users, "newer_libcurl", lambda: "newer"))
        self.recorder = Recorder(SFtpClient=67)

    def rows(self, suite):
        table = suite.suite("/build", self.recorder, Goals(), EFFORT)[0]
        for each in table.rows:
            self.assertEqual(len(table.head), len(each), each)
        return table.rows

    def test_each_condition_has_its_operations_in_six_rounds(self):
        rows = self.rows(user_operations)
        expected = [(condition.name, name, 6) for condition in users.CONDITIONS for name in condition.small]
        self.assertEqual(expected, [tuple(row[:3]) for row in rows])
        self.assertEqual(["fails (67)", "1000"], [str(cell) for cell in rows[0][3:5]])

    def test_what_has_not_been_done_is_seen(self):
        for suite in (user_operations, user_large, user_folders):
            self.rows(suite)
        # A listing is the client's own, and of SFtpClient's many files there is one.
        lists = {(users.LIST, client) for client in users.CLIENTS}
        calls = {(f"{way} of many files, 1 at a time", "SFtpClient") for way in ("download", "upload")}
        self.assertEqual(lists | calls, self.recorder.done)

    def test_what_has_been_done_is_seen_by_its_size(self):
        with Unserved("/build", "vsftpd") as server:
            works = user_works.small(server)
            for name, path in {users.DOWNLOAD: "got.bak", users.UPLOAD: "served/up/up.bak"}.items():
                for size, expected in {19_999: False, 20_000: True}.items():
                    (server.folder / path).write_bytes(bytes(size))
                    self.assertEqual(expected, works[name].done(), (name, size))
            works[users.RENAME].before()
            (server.served / "one-file/old.bak").rename(server.served / "one-file/new.bak")
            self.assertTrue(works[users.RENAME].done())

    def test_who_is_there_depends_on_the_server_and_the_libcurl(self):
        self.rows(user_operations)
        of_condition = {work.partition(": ")[0]: clients for work, _, clients in self.recorder.asked}
        self.assertEqual(FTP, of_condition["vsftpd"])
        self.assertEqual([*FTP, "sftp"], of_condition["OpenSSH"])
        self.assertEqual(FTP[:3], of_condition["vsftpd, libcurl 8.14.1"])

    def test_the_first_condition_is_measured_in_every_way(self):
        first = users.CONDITIONS[0]
        every = (users.RENAME, users.LIST, users.DOWNLOAD, users.UPLOAD)
        self.assertEqual((every, True, True), (first.small, first.large, first.folders))

    def test_a_large_file_is_told_in_megabytes_a_second(self):
        rows = self.rows(user_large)
        large = [condition.name for condition in users.CONDITIONS if condition.large]
        expected = [(name, way) for name in large for way in ("download", "upload")]
        self.assertEqual(expected, [tuple(row[:2]) for row in rows])
        self.assertEqual("50", str(rows[0][4]))

    def test_many_files_are_told_by_each_clients_number_of_them(self):
        rows = self.rows(user_folders)
        several = [condition.name for condition in users.CONDITIONS if condition.folders]
        expected = [(name, way, number) for name in several for way in ("download", "upload") for number in (1, 4)]
        self.assertEqual(expected, [tuple(row[:3]) for row in rows])
        self.assertEqual(["fails (67)", "9", "4", "5", "–", "–"], [str(cell) for cell in rows[0][4:10]])
        self.assertEqual(["–", "9", "–", "5", "7", "–"], [str(cell) for cell in rows[1][4:10]])
        over_ssh = rows[4 * several.index("OpenSSH")]
        self.assertEqual(["fails (67)", "9", "4", "5", "–", "6"], [str(cell) for cell in over_ssh[4:10]])


class Called(unittest.TestCase):
    def words(self, name, client, operation=users.UPLOAD):
        server = self.enterContext(Unserved("/build", name))
        words, environment = user_clients.each(server, user_works.small(server)[operation])[client]()
        return " ".join(map(str, words)).replace(str(server.folder), "FOLDER"), environment

    def test_urls_say_how_tls_begins(self):
        for name, expected in {
            "vsftpd": "ftp://localhost:2121/up/up.bak",
            "vsftpd-implicit": "ftps://localhost:2121/up/up.bak",
            daemons.SSH: "sftp://localhost:2121/run/served/up/up.bak",
        }.items():
            self.assertIn(expected, self.words(name, "SFtpSession")[0])

    def test_each_trusts_the_servers_ca_by_its_own_option(self):
        self.assertIn("--cacert FOLDER/small.pem", self.words("vsftpd", "curl")[0])
        self.assertIn("set ssl:ca-file FOLDER/small.pem", self.words("vsftpd", "lftp")[0])
        self.assertTrue(self.words("vsftpd", "rclone")[1]["SSL_CERT_FILE"].endswith("small.pem"))
        for client in ("SFtpClient", "SFtpSession"):
            self.assertTrue(self.words("vsftpd", client)[1]["BENCH_CA"].endswith("ca.pem"))

    def test_each_knows_the_servers_host_key_by_its_own_option(self):
        known = "known_hosts"
        self.assertTrue(self.words(daemons.SSH, "SFtpSession")[1]["BENCH_KNOWN_HOSTS"].endswith(known))
        self.assertTrue(self.words(daemons.SSH, "rclone")[1]["RCLONE_CONFIG_SERVER_KNOWN_HOSTS_FILE"].endswith(known))
        for client in ("lftp", "sftp"):
            self.assertIn("UserKnownHostsFile=FOLDER/known_hosts", self.words(daemons.SSH, client)[0])
        home = pathlib.Path(self.words(daemons.SSH, "curl")[1]["HOME"])
        self.assertEqual("the server's key\n", (home / ".ssh/known_hosts").read_text())

    def test_tools_leave_out_tls_1_3_only_where_there_is_another(self):
        self.assertIn("-VERS-TLS1.3", self.words("vsftpd", "lftp")[0])
        self.assertNotIn("-VERS-TLS1.3", self.words("vsftpd-1.3", "lftp")[0])
        self.assertEqual("true", self.words("vsftpd", "rclone")[1]["RCLONE_CONFIG_SERVER_DISABLE_TLS13"])
        self.assertNotIn("RCLONE_CONFIG_SERVER_DISABLE_TLS13", self.words("vsftpd-1.3", "rclone")[1])

    def test_rclone_is_told_how_tls_begins(self):
        for name, expected in {"vsftpd": "EXPLICIT_TLS", "vsftpd-implicit": "TLS"}.items():
            environment = self.words(name, "rclone")[1]
            found = [each for each in ("TLS", "EXPLICIT_TLS") if f"RCLONE_CONFIG_SERVER_{each}" in environment]
            self.assertEqual([expected], found)

    def test_another_libcurl_is_for_those_who_use_it(self):
        server = self.enterContext(Unserved("/build", "vsftpd"))
        clients = user_clients.each(server, user_works.small(server)[users.LIST])
        condition = dataclasses.replace(users.CONDITIONS[0], newer_libcurl=True)
        with mock.patch.object(users, "newer_libcurl", lambda: "newer"):
            others = users.clients_of(condition, clients)
        self.assertEqual(["newer"] * 3, [call()[1]["LD_LIBRARY_PATH"] for call in others.values()])
        self.assertEqual(clients, users.clients_of(users.CONDITIONS[0], clients))

    def test_an_older_libcurl_is_not_taken_for_the_newer(self):
        with (
            tempfile.TemporaryDirectory() as empty,
            mock.patch.object(users, "UNPACKED", empty),
            mock.patch.object(users, "NEWER_LIBCURL", "libcurl 99.1.0"),
        ):
            self.assertRaisesRegex(RuntimeError, "does not hold libcurl 99.1.0: run scripts/", users.newer_libcurl)


class Limits(unittest.TestCase):
    def test_the_rate_of_a_cipher_is_in_megabytes(self):
        self.assertEqual(1975.25, user_limits.cipher_rate("+H:16384\n+F:25:AES-256-GCM:1975250000.00\n"))

    def test_handshakes_are_counted_where_all_are_of_the_kind(self):
        self.assertEqual(3, user_limits.handshakes("starting\n***\n\n3 connections\n", "*"))
        self.assertEqual(2, user_limits.handshakes("No CIPHER\nstarting\nrr\n", "r"))
        for printed in ("starting\nr*r\n", "starting\n***\n", "starting\n"):
            self.assertRaises(RuntimeError, user_limits.handshakes, printed, "r")

    def test_bytes_come_over_loopback(self):
        self.assertGreater(user_limits._tcp(1 << 20), 0)

    def test_bytes_that_do_not_come_end_the_benchmark(self):
        with mock.patch.object(user_limits, "CHUNK", 1000):
            self.assertRaisesRegex(RuntimeError, "2000 of 2500 bytes", user_limits._tcp, 2500)

    def test_the_share_is_the_sessions_rate_to_the_limit(self):
        one_way = {"SFtpSession": [2] * 6, "OpenSSL": [1] * 6}
        runs = {"download": one_way, "upload": {"SFtpSession": [4] * 6, "OpenSSL": [1] * 6}}
        rows = user_limits._rates({"TCP": 1000}, runs, 1_000_000_000).rows
        told = [[str(cell) for cell in row] for row in rows]
        self.assertEqual(["TCP", "1,000", "0.50", "0.25"], told[0])
        self.assertEqual(["OpenSSL alone, download", "1,000", "0.50 (0.50–0.50)", "–"], told[1])
        self.assertEqual(["OpenSSL alone, upload", "1,000", "–", "0.25 (0.25–0.25)"], told[2])
        self.assertEqual(["SFtpSession", "–", "500", "250"], told[3])


class AFullRun(unittest.TestCase):
    def test_it_has_the_rounds_that_decide_goals(self):
        full = dataclasses.asdict(effort.FULL)
        rounds = {name: value for name, value in full.items() if name.endswith("rounds") or name == "small_pairs"}
        self.assertEqual(11, len(rounds), rounds)
        rounds |= {f"sizes, {size}": pairs for size, pairs in full["sizes"].items()}
        rounds |= {f"names, {names}": pairs for names, pairs in full["names"].items()}
        self.assertEqual({}, {name: value for name, value in rounds.items() if value < 6})


if __name__ == "__main__":
    unittest.main()
