#!/usr/bin/python3
"""A scripted XMPP buddy for the real-client test.

Logs in to 127.0.0.1:PORT as JID without announcing itself, then obeys one
command per line on standard input:
  online            available, no message
  away TEXT         away with a status message (again to change the message)
  offline           unavailable (stays logged in, hears nobody)
  quit              logs out and ends
and writes one line per thing it sees on standard output:
  connected
  presence WATCHED-JID SHOW STATUS   (SHOW: available, away, xa, dnd, chat, unavailable)
  error TEXT
"""
import asyncio
import os
import sys

import slixmpp


def say(line):
    sys.stdout.write(line + "\n")
    sys.stdout.flush()


class Buddy(slixmpp.ClientXMPP):
    def __init__(self, jid, password, watched):
        super().__init__(jid, password)
        self.watched = watched
        self.add_event_handler("session_start", self.started)
        self.add_event_handler("presence", self.presence_seen)
        self.add_event_handler("failed_auth", lambda _: say("error authentication failed"))
        self.add_event_handler("disconnected", lambda _: say("disconnected"))

    async def started(self, _event):
        await self.get_roster()
        say("connected")

    def presence_seen(self, presence):
        if presence["from"].bare != self.watched:
            return
        say("presence %s %s %s" % (self.watched, presence["type"], presence["status"]))

    def obey(self, line):
        command, _, text = line.strip().partition(" ")
        if command == "online":
            self.send_presence()
        elif command == "away":
            self.send_presence(pshow="away", pstatus=text)
        elif command == "offline":
            self.send_presence(ptype="unavailable")
        elif command == "quit":
            self.disconnect()
            asyncio.get_event_loop().call_later(1.0, sys.exit, 0)
        elif command:
            say("error unknown command " + command)
            return
        say("done " + command)


def main():
    jid, password, port, watched = sys.argv[1], sys.argv[2], int(sys.argv[3]), sys.argv[4]
    buddy = Buddy(jid, password, watched)
    buddy["feature_mechanisms"].unencrypted_plain = True
    loop = asyncio.get_event_loop()
    pending = b""

    def readable():
        nonlocal pending
        data = os.read(sys.stdin.fileno(), 4096)
        if not data:
            loop.stop()
            return
        pending += data
        while b"\n" in pending:
            line, pending = pending.split(b"\n", 1)
            buddy.obey(line.decode())

    loop.add_reader(sys.stdin.fileno(), readable)
    buddy.connect(address=("127.0.0.1", port), force_starttls=False, disable_starttls=True)
    loop.run_forever()


if __name__ == "__main__":
    main()
