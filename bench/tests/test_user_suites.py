"""What users compare, from end to end, with the least that there can be: each client can do what it is measured with,
and each server is there. As root, with Debian's daemons."""

import dataclasses
import os
import unittest
from unittest import mock

import daemons
import measuring
import user_clients
import user_folders
import user_large
import user_limits
import user_operations
import user_works
import users
from effort import QUICK
from figures import Goals
from works import MIB

BUILD = os.environ["BENCH_BUILD"]
EFFORT = dataclasses.replace(
    QUICK,
    user_large_size=MIB,
    user_files={"SFtpClient": 1, "SFtpSession": 3, "curl": 2, "lftp": 3, "rclone": 3, "sftp": 3},
    limit_size=MIB,
    limit_bytes=MIB,
)
IMPLICIT = users.Condition("implicit", "vsftpd-implicit", large=True)
SSH = users.Condition("SSH", daemons.SSH, folders=True)


class Suites(unittest.TestCase):
    def setUp(self):
        self.recorder = measuring.Recorder(BUILD, lambda text: None)
        self.goals = Goals()

    def rows(self, suite, *conditions):
        with mock.patch.object(users, "CONDITIONS", conditions):
            tables = suite.suite(BUILD, self.recorder, self.goals, EFFORT)
        for table in tables:
            for row in table.rows:
                self.assertEqual(len(table.head), len(row), table.title)
        return [row for table in tables for row in table.rows]

    def failing(self, rows, columns):
        """What the clients cannot do, by what stands in the first columns; the columns after it are the clients'."""
        cells = {
            (*row[:columns], client): str(cell)
            for row in rows
            for client, cell in zip(users.CLIENTS, row[columns + 1 :])
        }
        self.assertEqual(len(rows), len({row[:-1] for row in cells}))
        return {where: cell for where, cell in cells.items() if cell.startswith("fails")}

    def absent(self, rows, columns):
        return [[client for client, cell in zip(users.CLIENTS, row[columns + 1 :]) if cell == "–"] for row in rows]

    def test_operations(self):
        rows = self.rows(user_operations, IMPLICIT, SSH)
        # vsftpd has no command `rename`.
        self.assertEqual({("implicit", "rename", "SFtpClient"): "fails (21)"}, self.failing(rows, 2))
        self.assertEqual([["sftp"]] * 4 + [[]] * 4, self.absent(rows, 2))

    def test_large_files(self):
        rows = self.rows(user_large, IMPLICIT)
        self.assertEqual({}, self.failing(rows, 2))
        self.assertEqual([["sftp"]] * 2, self.absent(rows, 2))

    def test_folders(self):
        rows = self.rows(user_folders, SSH)
        self.assertEqual({}, self.failing(rows, 3))
        self.assertEqual([["rclone"], ["SFtpClient", "curl", "sftp"]] * 2, self.absent(rows, 3))

    def test_limits(self):
        with (
            mock.patch.object(user_limits, "CIPHERS", ["AES-128-GCM"]),
            mock.patch.object(user_limits, "VERSIONS", {"TLS 1.3": "-tls1_3"}),
        ):
            rows = self.rows(user_limits, users.CONDITIONS[0])
        alone = ["OpenSSL alone, download", "OpenSSL alone, upload", "SFtpSession"]
        limits = ["AES-128-GCM, blocks of 16 KiB", "TCP over loopback", *alone]
        self.assertEqual([*limits, "TLS 1.3, full", "TLS 1.3, resumed"], [row[0] for row in rows])


class Servers(unittest.TestCase):
    def took(self, name):
        """The seconds of an upload by a session."""
        with daemons.Daemon(BUILD, name) as server:
            work = user_works.small(server)[users.UPLOAD]
            run = measuring.measure(BUILD, *user_clients.session(server, work)())
            self.assertTrue(work.done(), name)
        return run.wall

    def test_each_is_there(self):
        for name in {condition.server for condition in users.CONDITIONS}:
            self.took(name)

    def test_one_is_far_away(self):
        # Connecting, greeting, AUTH, handshake, USER, PASS and EPSV are six round trips of 50 ms at least.
        self.assertGreater(self.took(daemons.FAR), 0.3)

    def test_another_one_is_not_known(self):
        with self.assertRaisesRegex(RuntimeError, "did not start"), daemons.Daemon(BUILD, "unknown"):
            pass


class TlsVersions(unittest.TestCase):
    def spoken(self, name, version):
        """Whether the server completes a handshake of this version."""
        with daemons.Daemon(BUILD, name) as server:
            words = ["openssl", "s_client", "-connect", f"localhost:{server.port}", version, "-starttls", "ftp"]
            _, code = measuring.spend(BUILD, words, server.environment())
        return code == 0

    def test_there_is_one_alone_where_the_name_says_so(self):
        found = {
            (name, version): self.spoken(name, version)
            for name in ("vsftpd", "vsftpd-1.2", "vsftpd-1.3")
            for version in ("-tls1_2", "-tls1_3")
        }
        refused = [(name, version) for (name, version), spoken in found.items() if not spoken]
        self.assertEqual([("vsftpd-1.2", "-tls1_3"), ("vsftpd-1.3", "-tls1_2")], refused)


if __name__ == "__main__":
    unittest.main()
