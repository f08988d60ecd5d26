"""The test's own hearing: what the sound server says that a program records and plays.

It asks the server itself, so that an expectation never comes out of the program under test.
"""

import json

from processes import descendants

_LISTS = {"microphone": "source-outputs", "speaker": "sink-inputs"}


def runningStreams(desktop, pid):
    """Gives which of "microphone" and "speaker" a process and those below it use right now.

    Nothing at all, not even an empty set, while the sound server does not answer.
    """
    family = {pid, *descendants(pid)}
    running = set()
    for direction, name in _LISTS.items():
        answer = desktop.query("timeout", "5", "pactl", "--format=json", "list", name)
        if not answer:
            return None
        for stream in json.loads(answer):
            owner = stream["properties"].get("application.process.id", "")
            if owner.isdigit() and int(owner) in family and not stream["corked"]:
                running.add(direction)
    return running
