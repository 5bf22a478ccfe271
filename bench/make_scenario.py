#!/usr/bin/python3
"""Writes a big scenario for the headless benchmark: PEOPLE people on AIM, every
other one also on Jabber, statuses spread over the scale, a few groups.

    bench/make_scenario.py 50000 > big.json
"""
import json
import random
import sys

FIRST = ["Alex", "Renée", "Jürgen", "Zoë", "Maria", "John", "Ｓａｍ", "Chloé",
         "Anna", "Björn", "Kate", "Luis", "Ｍｉｋａ", "Søren", "Paul", "Nina"]
LAST = ["Smith", "Müller", "García", "Lee", "Novák", "Brown", "Dubois", "Ito",
        "Olsen", "Kowalski", "Núñez", "Chen", "Rossi", "Ångström", "Park", "Khan"]
STATUSES = ["available", "away", "idle", "offline", "available", "offline"]
GROUPS = ["Buddies", "Co-Workers", "Family", "Friends"]


def scenario(people, seed=20240601):
    rng = random.Random(seed)
    world = {
        "description": f"{people} generated people for the headless benchmark",
        "services": [{"name": "AIM"}, {"name": "Jabber"}],
        "accounts": [
            {"id": "aim", "service": "AIM", "login": "kib.runner",
             "capabilities": ["textChat", "fileTransfer", "buddyList"]},
            {"id": "jabber", "service": "Jabber", "login": "kib@jabber.velmo.example",
             "capabilities": ["textChat", "buddyList"]},
        ],
        "people": [],
    }
    for i in range(people):
        person = {"id": f"p{i}", "firstName": rng.choice(FIRST), "lastName": rng.choice(LAST), "handles": []}
        accounts = ["aim", "jabber"] if i % 2 == 0 else ["aim"]
        for account in accounts:
            handle = {"account": account, "id": f"buddy{i}.{account}", "groups": [rng.choice(GROUPS)],
                      "status": rng.choice(STATUSES)}
            if handle["status"] == "idle":
                handle["idle"] = rng.randrange(60, 7200)
            if rng.random() < 0.2:
                handle["message"] = "Back at " + str(rng.randrange(1, 12))
            person["handles"].append(handle)
        world["people"].append(person)
    return world


def main():
    if len(sys.argv) != 2 or not sys.argv[1].isdigit():
        sys.stderr.write("usage: make_scenario.py PEOPLE\n")
        return 2
    json.dump(scenario(int(sys.argv[1])), sys.stdout, ensure_ascii=False, indent=None)
    sys.stdout.write("\n")
    return 0


if __name__ == "__main__":
    sys.exit(main())
