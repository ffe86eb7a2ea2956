"""veltrum-farm as a user runs it: on folders of scenes, killed, resumed, and over ssh.

    farm_test.py PROGRAMS SAMPLES [unittest arguments]

PROGRAMS is the folder of the built programs, SAMPLES that of the sample scenes.
"""
import getpass
import json
import os
import random
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
import time
import unittest
import unittest.mock

PROGRAMS = ""
SAMPLES = ""


def tree(folder):
    """Relative path to bytes and time of change, without the farm's work folder and lock."""
    found = {}
    for place, _, names in os.walk(folder):
        for name in names:
            path = os.path.join(place, name)
            if "/.farm" in path:
                continue
            with open(path, "rb") as file:
                found[os.path.relpath(path, folder)] = (file.read(), os.stat(path).st_mtime_ns)
    return found


def contents(folder):
    """The files of the scenes without the records, which hold times."""
    return {name: data for name, (data, _) in tree(folder).items()
            if os.path.basename(name) not in ("farm.json", "report.json", "report.html")}


class FarmTest(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.mkdtemp()
        self.addCleanup(shutil.rmtree, self.folder)
        self.source = os.path.join(self.folder, "in")
        self.output = os.path.join(self.folder, "out")
        os.mkdir(self.source)

    def command(self, *more, output=None):
        return [os.path.join(PROGRAMS, "veltrum-farm"), self.source, "-o", output or self.output,
                *more]

    def farm(self, *more, output=None, status=0):
        done = subprocess.run(self.command(*more, output=output), capture_output=True, text=True,
                              check=False)
        self.assertEqual(done.returncode, status, done.stdout + done.stderr)
        return done

    def report(self, output=None):
        with open(os.path.join(output or self.output, "report.json"), encoding="utf-8") as file:
            return json.load(file)

    def copy(self, sample, name):
        path = os.path.join(self.source, name)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        shutil.copy(os.path.join(SAMPLES, sample), path)
        return path

    def script(self, text, name="program"):
        path = os.path.join(self.folder, name)
        with open(path, "w", encoding="utf-8") as file:
            file.write("#!/bin/bash\nscene=${@: -3:1}; out=${@: -1}\n" + text)
        os.chmod(path, 0o755)
        return ["--program", path] if name == "program" else path

    def test_killed_and_resumed(self):
        names = random.Random(1)
        for i in range(300):
            self.copy("room.fbx" if i % 10 == 0 else "avatar.fbx",
                      f"d{i % 7}/sub {i % 3}/scene{i}." + names.choice(["fbx", "FBX"]))
        for i in range(10):
            path = self.copy("avatar.fbx", f"damaged/{i}.fbx")
            with open(path, "r+b") as file:
                file.seek(names.randrange(40))
                file.write(names.randbytes(200))
        for odd in ("it's \"odd\" $x.fbx", "line\nend.fbx", "\udcff.fbx", "-o.fbx"):
            self.copy("avatar.fbx", "odd/" + odd)
        process = subprocess.Popen(self.command(), stdout=subprocess.DEVNULL,
                                   stderr=subprocess.DEVNULL, start_new_session=True)
        wait_until(lambda: sum("farm.json" in name for name in tree_names(self.output)) >= 60)
        process.kill()
        process.wait()
        before = tree(self.output)
        done = {name for name in before if name.endswith("farm.json")}
        self.assertLess(len(done), 314)
        # Every folder that is there is whole.
        for name in done:
            record = json.loads(before[name][0])
            self.assertEqual(record["bytes"], sum(
                len(data) for other, (data, _) in before.items()
                if other.startswith(os.path.dirname(name) + "/") and other != name))
        resumed = self.farm("--resume", status=1)
        self.assertIn("scenes are done already", resumed.stderr)
        after = tree(self.output)
        kept = [name for name in done if json.loads(before[name][0])["state"] == "done"]
        self.assertTrue(kept)
        for name in kept:
            self.assertEqual(before[name], after[name])
        fresh = os.path.join(self.folder, "fresh")
        self.farm(status=1, output=fresh)
        self.assertEqual(contents(self.output), contents(fresh))
        rows = self.report()["scenes"]
        self.assertEqual(len(rows), 314)
        bad = [row["folder"] for row in rows if row["state"] != "done"]
        self.assertTrue(bad)
        self.assertTrue(all(folder.startswith("damaged/") for folder in bad), bad)
        # The same reason is told once, whatever the scene is called.
        self.assertLess(len(self.report()["reasons"]), len(bad))
        # Once more over what did not change: no byte does, and no file is written anew.
        again = tree(fresh)
        self.farm(status=1, output=fresh)
        self.assertEqual(tree(fresh), again)

    def test_limits_cost_their_own_scene_only(self):
        program = self.script("""
case $scene in
  */slow.fbx) sleep 600 ;;
  */crash.fbx) kill -SEGV $$ ;;
  */large.fbx) head -c 900000000 /dev/zero | tail > /dev/null || exit 3 ;;
  */once.fbx) [ -e "$0.ran" ] || { touch "$0.ran"; kill -KILL $$; } ;;
esac
echo made > "$out/file"
""")
        # Nothing else has to be done within its second.
        slow = self.copy("avatar.fbx", "slow.fbx")
        self.farm(*program, "--time", "1", status=1)
        self.assertEqual(self.report()["reasons"][0]["reason"], "longer than 1 s")
        os.remove(slow)
        for name in ("a.fbx", "crash.fbx", "large.fbx", "z.fbx", "once.fbx"):
            self.copy("avatar.fbx", name)
        self.farm(*program, "--memory", "300", "--retries", "1", status=1)
        rows = {row["folder"]: row for row in self.report()["scenes"]}
        self.assertEqual({name: row["state"] for name, row in rows.items()},
                         {"a.fbx": "done", "z.fbx": "done", "once.fbx": "done",
                          "crash.fbx": "failed", "large.fbx": "failed"})
        self.assertEqual(rows["crash.fbx"]["reason"], "ended by signal 11")
        self.assertEqual(rows["large.fbx"]["reason"], "status 3")

    def check_no_job_outlives(self, number, *more):
        """Ends a farm by a signal while its jobs are at work."""
        log = os.path.join(self.folder, "jobs")
        if os.path.exists(log):
            os.remove(log)
        # Jobs elsewhere tidy up when they are asked to end.
        deaf = "" if more else 'trap "" TERM;'
        program = self.script(f"{deaf} echo $$ >> {log}; sleep 60 & wait; sleep 60\n")
        process = subprocess.Popen(self.command(*program, *more), stderr=subprocess.PIPE)
        wait_until(lambda: os.path.exists(log) and os.path.getsize(log))
        process.send_signal(number)
        said = process.communicate()[1].decode()
        with open(log, encoding="ascii") as file:
            for job in file.read().split():
                wait_until(lambda job=job: not os.path.exists(f"/proc/{job}"))
        wait_until(lambda: not os.path.exists(os.path.join(self.output, ".farm")))
        if number == signal.SIGKILL:
            self.assertEqual(process.returncode, -number)
        else:
            self.assertEqual(process.returncode, 128 + number)
            self.assertIn("--resume goes on", said)
        self.assertEqual([name for name in tree_names(self.output) if ".farm" not in name], [])

    def test_no_job_outlives_the_farm(self):
        for name in "abc":
            self.copy("avatar.fbx", name + ".fbx")
        for number in (signal.SIGTERM, signal.SIGINT, signal.SIGKILL):
            self.check_no_job_outlives(number)

    def test_changed_scenes_and_options_are_made_again(self):
        self.copy("avatar.fbx", "a.fbx")
        self.copy("avatar.fbx", "b.fbx")
        self.farm()
        first = tree(self.output)
        self.copy("room.fbx", "b.fbx")
        self.farm("--resume")
        second = tree(self.output)
        self.assertEqual(first["a.fbx/a.json"], second["a.fbx/a.json"])
        self.assertNotEqual(first["b.fbx/b.json"][0], second["b.fbx/b.json"][0])
        self.farm("--resume", "--scale", "2")
        self.assertNotEqual(contents(self.output)["a.fbx/Body.xmf"], second["a.fbx/Body.xmf"][0])

    def test_pages_and_pictures(self):
        self.copy("avatar.fbx", "a #1/a.fbx")
        self.copy("avatar.fbx", "b.fbx")
        # Two skeletons in the first scene; no page of the second.
        program = self.script("""
mkdir "$out/L?" "$out/R"; touch "$out/L?/x.xsf" "$out/R/x.xmf"
case $scene in */b.fbx) rm -r "$out/L?"; touch "$out/bad.xsf" ;; esac
""")
        self.script("""
case ${@: -1} in */files) echo "veltrum-view: bad" >&2; exit 2 ;; esac
while [ "$1" != -o ]; do shift; done; echo page > "$2"
""", "veltrum-view")
        browser = """
for word; do case $word in --screenshot=*) picture=${word#*=} ;; esac; done
[ ! -e "$0.broken" ] && echo "$word" > "$picture"
"""
        browser = self.script(browser, "chromium")
        with open(browser + ".broken", "w", encoding="ascii"):
            pass
        path = {"PATH": self.folder + ":" + os.environ["PATH"]}
        with unittest.mock.patch.dict(os.environ, path):
            done = self.farm(*program, "--view")
            self.assertEqual(done.stderr.count("no-picture: chromium made none"), 1)
            self.assertEqual(done.stderr.count("no-page: veltrum-view: bad"), 1)
            self.assertEqual(self.report()["warnings"], {"no-picture": 3, "no-page": 1})
            os.remove(browser + ".broken")
            self.farm(*program, "--view", "--resume")
        report = self.report()
        self.assertEqual(report["warnings"], {"no-page": 1})
        self.assertEqual([page for row in report["scenes"] for page in row["pages"]], [
            {"page": "L?/L?.html", "picture": "L?/L?.html.png"},
            {"page": "R/R.html", "picture": "R/R.html.png"},
            {"page": "R/R.html", "picture": "R/R.html.png"}])
        files = contents(self.output)
        self.assertTrue(files["a #1/a.fbx/L?/L?.html.png"].endswith(
            b"/0/files/L%3F/L%3F.html#picture\n"))
        with open(os.path.join(self.output, "report.html"), encoding="utf-8") as file:
            page = file.read()
        self.assertIn('<a href="a%20%231/a.fbx/L%3F/L%3F.html"><img '
                      'src="a%20%231/a.fbx/L%3F/L%3F.html.png"', page)

    def test_what_cannot_begin(self):
        missing = os.path.join(self.folder, "none")
        self.assertIn("no scenes", self.farm(status=2).stderr)
        self.copy("avatar.fbx", "a.fbx")
        self.assertIn("none: no such file or folder", self.farm(missing, status=1).stderr)
        self.assertIn("no such file of hosts", self.farm("--hosts", missing, status=2).stderr)
        self.assertIn("not found", self.farm("--program", missing, status=2).stderr)
        # The scene's own place, and one that a file bars.
        kept = tree(self.source)
        self.assertIn("isn't a farm's", self.farm(output=self.source, status=2).stderr)
        self.assertEqual(tree(self.source), kept)
        self.copy("avatar.fbx", "sub/a.fbx")
        with open(os.path.join(self.output, "sub"), "w", encoding="ascii"):
            pass
        self.assertIn("out/sub: File exists; --resume", self.farm(status=2).stderr)

    @unittest.skipUnless(os.path.exists("/usr/sbin/sshd"), "no sshd")
    def test_two_hosts(self):
        for i in range(12):
            self.copy("room.fbx" if i % 2 else "avatar.fbx", f"sub/scene {i}'.fbx")
        local = os.path.join(self.folder, "local")
        self.farm("--textures", output=local)
        logins = [self.host(), self.host()]
        hosts = os.path.join(self.folder, "hosts")
        with open(hosts, "w", encoding="utf-8") as file:
            file.write("".join(f"1/{login}\n" for login in logins))
        # The programs aren't installed in this test's hosts.
        program = ["--program", os.path.join(PROGRAMS, "veltrum-all")]
        self.farm("--textures", "--hosts", hosts, *program)
        self.assertEqual(contents(self.output), contents(local))
        shared = os.path.join(self.folder, "shared")
        self.farm("--textures", "--hosts", hosts, "--shared", *program, output=shared)
        self.assertEqual(contents(shared), contents(local))
        shutil.rmtree(self.output)
        with open(hosts + "-gone", "w", encoding="utf-8") as file:
            file.write("1/ssh -p 1 127.0.0.1\n")
        with open(hosts + "-here", "w", encoding="utf-8") as file:
            file.write(f"1/:\n1/{logins[0]}\n")
        self.farm("--textures", "--hosts", hosts + "-here", *program)
        self.assertEqual(contents(self.output), contents(local))
        shutil.rmtree(self.output)
        self.farm("--hosts", hosts + "-gone", *program, status=1)
        self.assertIn("the machine can't be reached", self.report()["reasons"][0]["reason"])
        shutil.rmtree(self.output)
        self.check_no_job_outlives(signal.SIGKILL, "--hosts", hosts)

    def host(self):
        """Starts an sshd of our own; returns the command that logs in to it."""
        home = tempfile.mkdtemp(dir=self.folder)
        for name in ("key", "host"):
            subprocess.run(["ssh-keygen", "-q", "-t", "ed25519", "-N", "", "-f", f"{home}/{name}"],
                           check=True)
        with socket.socket() as probe:
            probe.bind(("127.0.0.1", 0))
            port = probe.getsockname()[1]
        if os.getuid() == 0:
            os.makedirs("/run/sshd", exist_ok=True)
        server = subprocess.Popen(
            ["/usr/sbin/sshd", "-D", "-e", "-f", "/dev/null", "-p", str(port),
             "-o", "ListenAddress=127.0.0.1", "-o", f"HostKey={home}/host", "-o", "StrictModes=no",
             "-o", f"AuthorizedKeysFile={home}/key.pub", "-o", "PidFile=none",
             "-o", "UsePAM=no"], stderr=subprocess.DEVNULL)

        def stop():
            server.terminate()
            server.wait()
        self.addCleanup(stop)

        def answers():
            with socket.socket() as probe:
                return probe.connect_ex(("127.0.0.1", port)) == 0
        wait_until(answers)
        return (f"ssh -p {port} -i {home}/key -o StrictHostKeyChecking=no "
                f"-o UserKnownHostsFile=/dev/null -o LogLevel=ERROR {getpass.getuser()}@127.0.0.1")


def wait_until(holds):
    limit = time.monotonic() + 120
    while not holds():
        if time.monotonic() > limit:
            raise AssertionError("nothing happens")
        time.sleep(0.02)


def tree_names(folder):
    return [os.path.join(place, name) for place, _, names in os.walk(folder) for name in names]


def write_results(result, path):
    """The sums that the test script adds up, as the other test programs write them."""
    skipped = '<testcase result="skipped"/>\n' * len(result.skipped)
    with open(path, "w", encoding="utf-8") as file:
        file.write(f'<testsuites tests="{result.testsRun}" failures="{len(result.failures)}" '
                   f'disabled="0" errors="{len(result.errors)}">\n{skipped}</testsuites>\n')


if __name__ == "__main__":
    # Started in the background it would be ignored, by the farms as well.
    signal.signal(signal.SIGINT, signal.default_int_handler)
    PROGRAMS, SAMPLES = (os.path.abspath(word) for word in sys.argv[1:3])
    ran = unittest.main(argv=sys.argv[:1] + sys.argv[3:], exit=False).result
    results = os.environ.get("GTEST_OUTPUT", "")
    if results.startswith("xml:"):
        write_results(ran, os.path.join(results[4:], "farm_tests.xml"))
    sys.exit(0 if ran.wasSuccessful() else 1)
