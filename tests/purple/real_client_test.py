#!/usr/bin/python3
"""The extra over a real libpurple client, end to end.

Starts, all on 127.0.0.1 and in one temporary folder: prosody with its own
configuration (two accounts made with prosodyctl, rosters written in advance
so no authorization waits), a private session bus, finch under tmux (its own
tmux socket and configuration folder), a scripted buddy (slixmpp), and then
`kibbar --backend purple` headless on real_client.kbs. The script's notes are
cues the driver answers (the buddy acts, finch quits and starts again); the
driver checks the transcript's menus, what the buddy saw, and finch's
conversations. Every process is ended by its PID; every wait is bounded.

Exit status: 0 passed, 1 failed, 77 a component is not installed (skipped).
"""
import argparse
import json
import os
import queue
import re
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
import threading
import time

HERE = os.path.dirname(os.path.abspath(__file__))
PURPLE = ["im.pidgin.purple.PurpleService", "/im/pidgin/purple/PurpleObject", "im.pidgin.purple.PurpleInterface"]
BUDDY_ALIAS = "Bud Dy"


class Failure(Exception):
    pass


def free_port():
    with socket.socket() as s:
        s.bind(("127.0.0.1", 0))
        return s.getsockname()[1]


def wait_until(what, predicate, seconds, interval=0.1):
    deadline = time.monotonic() + seconds
    while time.monotonic() < deadline:
        value = predicate()
        if value:
            return value
        time.sleep(interval)
    raise Failure("timed out after %gs waiting for %s" % (seconds, what))


class Processes:
    """Every process the test starts, ended by PID in reverse order."""

    def __init__(self):
        self.started = []  # (name, pid, popen or None)

    def add(self, name, pid, popen=None):
        self.started.append((name, pid, popen))

    @staticmethod
    def alive(pid, popen):
        if popen is not None:
            return popen.poll() is None
        try:
            os.kill(pid, 0)
            return True
        except ProcessLookupError:
            return False

    def end(self, pid):
        for name, candidate, popen in self.started:
            if candidate == pid:
                self._end(pid, popen)

    def _end(self, pid, popen):
        if not self.alive(pid, popen):
            return
        try:
            os.kill(pid, signal.SIGTERM)
        except ProcessLookupError:
            return
        deadline = time.monotonic() + 3
        while time.monotonic() < deadline and self.alive(pid, popen):
            time.sleep(0.05)
        if self.alive(pid, popen):
            try:
                os.kill(pid, signal.SIGKILL)
            except ProcessLookupError:
                pass
            if popen is not None:
                popen.wait(timeout=3)

    def end_all(self):
        for _name, pid, popen in reversed(self.started):
            self._end(pid, popen)


class Lines:
    """Lines of the children's outputs, as they come, in one queue."""

    def __init__(self):
        self.queue = queue.Queue()

    def follow(self, name, stream):
        def pump():
            for raw in stream:
                self.queue.put((name, raw.decode(errors="replace").rstrip("\n")))
            self.queue.put((name, None))

        threading.Thread(target=pump, daemon=True).start()


class World:
    def __init__(self, args, folder, processes):
        self.args = args
        self.folder = folder
        self.processes = processes
        self.port = free_port()
        self.bus_address = None
        self.tmux_socket = "kibpurple-%d" % os.getpid()
        self.lines = Lines()
        self.finch_pid = None

    # prosody -------------------------------------------------------------
    def start_server(self):
        server = os.path.join(self.folder, "prosody")
        data = os.path.join(server, "data")
        os.makedirs(os.path.join(data, "localhost", "roster"))
        os.makedirs(os.path.join(server, "certs"))
        config = os.path.join(server, "prosody.cfg.lua")
        with open(config, "w") as out:
            out.write(PROSODY_CONFIG.format(folder=server, port=self.port))
        for user in ("me", "buddy"):
            subprocess.run(["prosodyctl", "--config", config, "register", user, "localhost", "secret"],
                           check=True, timeout=20, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        # Both rosters in prosody's storage format, subscribed both ways.
        for user, contact, name in (("me", "buddy@localhost", BUDDY_ALIAS), ("buddy", "me@localhost", "Me")):
            with open(os.path.join(data, "localhost", "roster", user + ".dat"), "w") as out:
                out.write(ROSTER.format(contact=contact, name=name))
        log = open(os.path.join(server, "console.log"), "w")
        popen = subprocess.Popen(["prosody", "--config", config, "-F"], stdout=log, stderr=log,
                                 start_new_session=True)
        self.processes.add("prosody", popen.pid, popen)

        def listening():
            with socket.socket() as s:
                s.settimeout(0.2)
                return s.connect_ex(("127.0.0.1", self.port)) == 0

        wait_until("prosody to listen on 127.0.0.1:%d" % self.port, listening, 15)

    # the session bus -----------------------------------------------------
    def start_bus(self):
        popen = subprocess.Popen(["dbus-daemon", "--session", "--nofork", "--print-address=1"],
                                 stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, start_new_session=True)
        self.processes.add("dbus-daemon", popen.pid, popen)
        self.bus_address = popen.stdout.readline().decode().strip()
        if not self.bus_address:
            raise Failure("dbus-daemon printed no address")

    def purple(self, method, *args):
        """A call to the libpurple client; the answer's ints and strings, or None when it fails."""
        command = ["dbus-send", "--bus=" + self.bus_address, "--print-reply", "--reply-timeout=2000",
                   "--dest=" + PURPLE[0], PURPLE[1], PURPLE[2] + "." + method]
        for arg in args:
            command.append(("int32:%d" % arg) if isinstance(arg, int) else ("string:" + arg))
        result = subprocess.run(command, capture_output=True, timeout=5)
        if result.returncode != 0:
            return None
        return re.findall(r'(?:int32 (-?\d+))|(?:string "([^"]*)")', result.stdout.decode())

    def purple_ints(self, method, *args):
        answer = self.purple(method, *args)
        return None if answer is None else [int(i) for i, _ in answer if i]

    # finch ---------------------------------------------------------------
    def write_finch_config(self):
        config = os.path.join(self.folder, "finch")
        os.makedirs(config, exist_ok=True)
        for name, text in (("accounts.xml", ACCOUNTS), ("blist.xml", BLIST), ("prefs.xml", PREFS)):
            with open(os.path.join(config, name), "w") as out:
                out.write(text.format(port=self.port, alias=BUDDY_ALIAS))
        return config

    def start_finch(self):
        config = os.path.join(self.folder, "finch")
        command = "exec env DBUS_SESSION_BUS_ADDRESS='%s' finch -c '%s'" % (self.bus_address, config)
        pane = subprocess.run(["tmux", "-L", self.tmux_socket, "new-session", "-d", "-P", "-F", "#{pane_pid}",
                               "-x", "120", "-y", "40", command], capture_output=True, timeout=10, check=True)
        self.finch_pid = int(pane.stdout.decode().strip())
        self.processes.add("finch", self.finch_pid)
        server = subprocess.run(["tmux", "-L", self.tmux_socket, "display-message", "-p", "#{pid}"],
                                capture_output=True, timeout=10)
        if server.returncode == 0 and server.stdout.strip():
            self.processes.add("tmux server", int(server.stdout.decode().strip()))

        def connected():
            accounts = self.purple_ints("PurpleAccountsGetAll")
            return accounts and self.purple_ints("PurpleAccountIsConnected", accounts[0]) == [1]

        wait_until("finch to log in", connected, 20, 0.2)

    def quit_finch(self):
        self.purple("PurpleCoreQuit")
        try:
            wait_until("finch to quit", lambda: not Processes.alive(self.finch_pid, None), 5)
        except Failure:
            self.processes.end(self.finch_pid)

    def stop_tmux(self):
        subprocess.run(["tmux", "-L", self.tmux_socket, "kill-server"], capture_output=True, timeout=10)

    # the buddy -----------------------------------------------------------
    def start_buddy(self):
        popen = subprocess.Popen(["/usr/bin/python3", os.path.join(HERE, "xmpp_buddy.py"), "buddy@localhost",
                                  "secret", str(self.port), "me@localhost"],
                                 stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                                 start_new_session=True)
        self.processes.add("buddy", popen.pid, popen)
        self.buddy = popen
        self.lines.follow("buddy", popen.stdout)

    def tell_buddy(self, command):
        self.buddy.stdin.write((command + "\n").encode())
        self.buddy.stdin.flush()


class Run:
    """Plays the script and answers its cues; collects what happened."""

    def __init__(self, world, transcript_path):
        self.world = world
        self.transcript = open(transcript_path, "w")
        self.menus = []  # (the last note before it, titles)
        self.note = "start"
        self.presences = []  # (show, status) the buddy saw of the user
        self.buddy_connected = False
        self.failures = []
        self.activities = []

    def check(self, condition, message):
        if not condition:
            self.failures.append(message)
            print("FAIL: " + message, file=sys.stderr)

    def wait_for_buddy(self, what, predicate, seconds):
        deadline = time.monotonic() + seconds
        while time.monotonic() < deadline:
            if predicate():
                return True
            self.pump(0.1)
        return False

    def pump(self, seconds):
        try:
            name, line = self.world.lines.queue.get(timeout=seconds)
        except queue.Empty:
            return
        self.handle(name, line)

    def handle(self, name, line):
        if line is None:
            if name == "kibbar":
                self.kibbar_done = True
            return
        if name == "buddy":
            if line == "connected":
                self.buddy_connected = True
            match = re.match(r"presence \S+ (\S+) ?(.*)", line)
            if match:
                self.presences.append((match.group(1), match.group(2)))
            return
        self.transcript.write(line + "\n")
        entry = json.loads(line)
        if entry["type"] == "menu":
            self.menus.append((self.note, [item.get("title") for item in entry["items"] if "title" in item]))
        elif entry["type"] == "application":
            self.activities.append(entry["activity"])
        elif entry["type"] == "step" and entry["command"].startswith("note "):
            self.note = json.loads(entry["command"][5:])
            self.cue(self.note)

    def cue(self, note):
        world = self.world
        if note == "buddy comes online" or note == "buddy comes back":
            world.tell_buddy("online")
        elif note == "buddy goes away":
            world.tell_buddy("away Out to lunch")
        elif note == "buddy changes its message":
            world.tell_buddy("away Back at two")
        elif note == "buddy goes offline":
            world.tell_buddy("offline")
        elif note == "check the buddy sees away":
            self.check(self.wait_for_buddy("away", lambda: ("away", "Away") in self.presences, 10),
                       "the buddy did not see the user away with the message \"Away\" (saw %s)" % self.presences)
            self.presences.clear()
        elif note == "check the buddy sees available":
            self.check(self.wait_for_buddy("available", lambda: ("available", "") in self.presences, 10),
                       "the buddy did not see the user available again (saw %s)" % self.presences)
        elif note == "check the conversation":
            def conversation():
                names = []
                for conversation in world.purple_ints("PurpleGetConversations") or []:
                    answer = world.purple("PurpleConversationGetName", conversation) or []
                    names += [text for _, text in answer]
                return "buddy@localhost" in names

            self.check(self.wait_for_buddy("conversation", conversation, 10),
                       "finch has no conversation with buddy@localhost")
        elif note == "finch quits":
            world.quit_finch()
        elif note == "finch starts again":
            world.start_finch()

    def play(self, args):
        world = self.world
        env = dict(os.environ, DBUS_SESSION_BUS_ADDRESS=world.bus_address,
                   KIBBAR_CONFIG_DIR=os.path.join(world.folder, "kibbar"))
        command = [args.kibbar, "--backend", "purple", "--script", os.path.join(HERE, "real_client.kbs"),
                   "--no-queries"]
        if args.bundle:
            command += ["--bundle", args.bundle]
        popen = subprocess.Popen(command, env=env, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                                 start_new_session=True)
        world.processes.add("kibbar", popen.pid, popen)
        world.lines.follow("kibbar", popen.stdout)
        self.kibbar_done = False
        deadline = time.monotonic() + args.limit
        while not self.kibbar_done and time.monotonic() < deadline:
            self.pump(0.2)
        if not self.kibbar_done:
            raise Failure("kibbar did not finish within %gs" % args.limit)
        status = popen.wait(timeout=10)
        errors = popen.stderr.read().decode()
        self.check(status == 0, "kibbar exited with %d: %s" % (status, errors.strip()))

    def menus_after(self, note):
        return [titles for seen, titles in self.menus if seen == note]

    def verify(self):
        def shown(note, present, absent=(), which=0):
            menus = self.menus_after(note)
            if len(menus) <= which:
                self.check(False, "no menu after the note \"%s\"" % note)
                return
            titles = menus[which]
            for title in present:
                self.check(title in titles, "\"%s\" missing from the menu after \"%s\": %s" % (title, note, titles))
            for title in absent:
                self.check(title not in titles, "\"%s\" in the menu after \"%s\": %s" % (title, note, titles))

        shown("start", ["My Status: Available", "Nobody Available"], [BUDDY_ALIAS])
        shown("buddy comes online", ["Buddies", BUDDY_ALIAS, "Display Jabber Buddies"], ["Nobody Available"])
        shown("buddy goes away", ["Nobody Available"], [BUDDY_ALIAS])
        shown("buddy goes offline", ["Nobody Available"], [BUDDY_ALIAS])
        shown("buddy comes back", ["My Status: Available", BUDDY_ALIAS])
        shown("buddy comes back", ["My Status: Away", BUDDY_ALIAS], which=1)
        shown("check the buddy sees away", ["My Status: Invisible"], which=1)
        shown("check the buddy sees available", ["My Status: Available", BUDDY_ALIAS])
        shown("finch quits", ["No Account Enabled"], ["My Status: Available"])
        shown("finch starts again", ["My Status: Available", BUDDY_ALIAS])
        self.check(any(a.startswith("conversation with buddy@localhost") for a in self.activities),
                   "no conversation was asked of finch: %s" % self.activities)
        self.check("client went away" in self.activities, "the client's leaving was not noticed")


def missing_components():
    missing = [tool for tool in ("prosody", "prosodyctl", "finch", "tmux", "dbus-daemon", "dbus-send")
               if not shutil.which(tool)]
    if subprocess.run(["/usr/bin/python3", "-c", "import slixmpp"], capture_output=True).returncode != 0:
        missing.append("python3-slixmpp")
    return missing


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--kibbar", required=True)
    parser.add_argument("--bundle")
    parser.add_argument("--transcript", help="where the transcript is kept")
    parser.add_argument("--limit", type=float, default=90, help="seconds the script may take")
    args = parser.parse_args()
    missing = missing_components()
    if missing:
        print("skipped: not installed: " + ", ".join(missing))
        return 77
    # Without a session bus: one error line and exit status 2.
    # (libsystemd leaks the half-made bus of a failed open; that is not this program's leak.)
    sanitizer = os.environ.get("ASAN_OPTIONS", "")
    nobus = subprocess.run([args.kibbar, "--backend", "purple", "--script", os.path.join(HERE, "real_client.kbs")],
                           env=dict(os.environ, DBUS_SESSION_BUS_ADDRESS="unix:path=/nonexistent/kibpurple-bus",
                                    ASAN_OPTIONS=(sanitizer + ":" if sanitizer else "") + "detect_leaks=0"),
                           capture_output=True, timeout=20)
    if nobus.returncode != 2 or len(nobus.stderr.decode().splitlines()) != 1:
        print("FAIL: without a bus kibbar exited with %d and said %r" % (nobus.returncode, nobus.stderr.decode()))
        return 1
    folder = tempfile.mkdtemp(prefix="kibpurple-")
    processes = Processes()
    world = World(args, folder, processes)
    transcript = args.transcript or os.path.join(folder, "transcript.jsonl")
    signal.signal(signal.SIGTERM, lambda *_: (_ for _ in ()).throw(Failure("terminated")))
    try:
        world.start_server()
        world.start_bus()
        world.write_finch_config()
        world.start_buddy()
        run = Run(world, transcript)
        run.wait_for_buddy("connection", lambda: run.buddy_connected, 15) or Failure("the buddy did not log in")
        if not run.buddy_connected:
            raise Failure("the buddy did not log in")
        world.start_finch()
        run.play(args)
        run.verify()
        run.transcript.close()
        if run.failures:
            print("%d check(s) failed; transcript: %s" % (len(run.failures), transcript))
            return 1
        print("passed; transcript: %s" % transcript)
        return 0
    except (Failure, subprocess.SubprocessError, OSError) as error:
        print("FAIL: %s (folder %s)" % (error, folder), file=sys.stderr)
        return 1
    finally:
        world.stop_tmux()
        processes.end_all()
        if not os.environ.get("KIB_KEEP_TEST_FOLDER"):
            shutil.rmtree(folder, ignore_errors=True)


PROSODY_CONFIG = """
pidfile = "{folder}/prosody.pid"
run_as_root = true
data_path = "{folder}/data"
certificates = "{folder}/certs"
interfaces = {{ "127.0.0.1" }}
c2s_interfaces = {{ "127.0.0.1" }}
c2s_ports = {{ {port} }}
c2s_direct_tls_ports = {{ }}
s2s_ports = {{ }}
http_ports = {{ }}
https_ports = {{ }}
c2s_require_encryption = false
allow_unencrypted_plain_auth = true
authentication = "internal_plain"
storage = "internal"
modules_enabled = {{ "roster"; "saslauth"; "disco"; "ping"; "presence"; "message"; "iq" }}
modules_disabled = {{ "s2s"; "tls"; "offline"; "admin_socket" }}
log = {{ {{ levels = {{ min = "info" }}, to = "file", filename = "{folder}/prosody.log" }} }}
VirtualHost "localhost"
"""

ROSTER = """return {{
\t[false] = {{ ["version"] = 1; ["pending"] = {{}}; }};
\t["{contact}"] = {{ ["subscription"] = "both"; ["groups"] = {{ ["Friends"] = true; }}; ["name"] = "{name}"; }};
}};
"""

ACCOUNTS = """<?xml version='1.0' encoding='UTF-8' ?>
<account version='1.0'>
 <account>
  <protocol>prpl-jabber</protocol>
  <name>me@localhost/finch</name>
  <password>secret</password>
  <settings>
   <setting name='connect_server' type='string'>127.0.0.1</setting>
   <setting name='port' type='int'>{port}</setting>
   <setting name='connection_security' type='string'>opportunistic_tls</setting>
   <setting name='auth_plain_in_clear' type='bool'>1</setting>
  </settings>
  <settings ui='gnt-purple'>
   <setting name='auto-login' type='bool'>1</setting>
  </settings>
 </account>
</account>
"""

BLIST = """<?xml version='1.0' encoding='UTF-8' ?>
<purple version='1.0'>
 <blist>
  <group name='Friends'>
   <contact>
    <buddy account='me@localhost/finch' proto='prpl-jabber'>
     <name>buddy@localhost</name>
     <alias>{alias}</alias>
    </buddy>
   </contact>
  </group>
 </blist>
</purple>
"""

# No idle reporting and no automatic away: the test's user sits still.
PREFS = """<?xml version='1.0' encoding='UTF-8' ?>
<pref version='1' name='/'>
 <pref name='purple'>
  <pref name='away'>
   <pref name='idle_reporting' type='string' value='none'/>
   <pref name='away_when_idle' type='bool' value='0'/>
  </pref>
 </pref>
</pref>
"""

if __name__ == "__main__":
    sys.exit(main())
