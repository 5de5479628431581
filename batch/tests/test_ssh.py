"""Jobs on another host: an sshd on 127.0.0.1 with keys and a port of its own."""

import getpass
import os
import shutil
import socket
import subprocess
import time
import unittest

from support import FAILED, BatchTest

SSHD = shutil.which("sshd") or shutil.which("/usr/sbin/sshd")


@unittest.skipUnless(SSHD and shutil.which("ssh"),
                     "openssh-server is not installed: jobs over ssh are not tested")
class Ssh(BatchTest):
    def start_sshd(self) -> str:
        """Returns the login for --sshlogin."""
        folder = self.folder / "ssh"
        folder.mkdir(mode=0o700)
        for name in ("host_key", "user_key"):
            subprocess.run(["ssh-keygen", "-q", "-t", "ed25519", "-N", "", "-f", folder / name],
                           check=True)
        with socket.socket() as probe:
            probe.bind(("127.0.0.1", 0))
            port = probe.getsockname()[1]
        if os.geteuid() == 0:
            os.makedirs("/run/sshd", mode=0o755, exist_ok=True)
        options = [
            f"HostKey={folder}/host_key", f"AuthorizedKeysFile={folder}/user_key.pub",
            "ListenAddress=127.0.0.1", f"Port={port}", f"PidFile={folder}/pid", "StrictModes=no",
            "UsePAM=no", "PasswordAuthentication=no", "PermitRootLogin=yes", "MaxStartups=100"
        ]
        log = open(folder / "log", "wb")
        command = [SSHD, "-D", "-e", "-f", "/dev/null", *(f"-o{option}" for option in options)]
        server = subprocess.Popen(command, stdout=log, stderr=log)
        self.addCleanup(log.close)
        self.addCleanup(server.wait)
        self.addCleanup(server.terminate)
        login = (f"ssh -F none -p {port} -i {folder}/user_key -o StrictHostKeyChecking=no "
                 f"-o LogLevel=ERROR -o UserKnownHostsFile={folder}/known "
                 f"{getpass.getuser()}@127.0.0.1")
        for _ in range(100):
            tried = subprocess.run([*login.split(), "true"], capture_output=True, check=False)
            if tried.returncode == 0:
                return login
            time.sleep(0.1)
        self.skipTest("sshd lets nobody in here: " + (folder / "log").read_text())

    def test_jobs_over_ssh(self) -> None:
        login = self.start_sshd()
        where = '[ -n "$SSH_CONNECTION" ] && finding over-ssh "over ssh"; '
        self.asset("bl ank's\nline", where + FAILED)
        self.asset("crash", where + "kill -SEGV $$")
        self.asset("hang", where + "sleep 60")
        done = self.batch(self.catalogue, "--sshlogin", login, "-t", "2", "-j", "2")
        self.assertEqual(done.returncode, 2, done)
        records = self.records()
        states = {record["state"] for record in records.values()}
        self.assertEqual(states, {"failed", "no_verdict"}, done)
        for name, record in records.items():
            self.assertIn("over-ssh", [finding["id"] for finding in record["findings"]])
            self.assertEqual(record["attempts"], 2 if name in ("crash", "hang") else 1)

    def test_host_with_another_version(self) -> None:
        self.set_version('echo Version 1.${SSH_CONNECTION:+1}')
        self.asset("a")
        login = self.start_sshd()
        done = self.batch(self.catalogue, "--sshlogin", login)
        self.assertEqual((done.returncode, self.records()["a"]["state"]), (2, "not_run"), done)
        self.assertRegex(self.summary()["problems"][0], ": refused: it has Version 1.1, not Version 1.")
        done = self.batch(self.catalogue, "--sshlogin", login + ",:", "-j1")
        self.assertEqual((done.returncode, self.records()["a"]["state"]), (0, "passed"), done)

    def test_host_that_is_not_there(self) -> None:
        self.asset("a")
        done = self.batch(self.catalogue, "--sshlogin",
                          "ssh -F none -o BatchMode=yes -p 1 nobody@127.0.0.1")
        self.assertEqual(done.returncode, 2, done)
        self.assertEqual(self.records()["a"]["state"], "not_run")
