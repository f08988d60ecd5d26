"""The test's own hearing: what the sound server says that a program records and plays.

It asks the server itself, so that an expectation never comes out of the program under test.
"""

import json

from processes import descendants

_LISTS = {"microphone": "source-outputs", "speaker": "sink-inputs"}


def runningStreams(desktop, pid):
    """Gives what a process and those below it use right now, one entry a stream, sorted.

    An entry is "microphone", "speaker", or "meter" for the mere level of a microphone. Nothing at
    all, not even an empty list, while the sound server does not answer.
    """
    family = {pid, *descendants(pid)}
    running = []
    for direction, name in _LISTS.items():
        answer = desktop.query("timeout", "5", "pactl", "--format=json", "list", name)
        if not answer:
            return None
        for stream in json.loads(answer):
            properties = stream["properties"]
            owner = properties.get("application.process.id", "")
            if owner.isdigit() and int(owner) in family and not stream["corked"]:
                running.append("meter" if "resample.peaks" in properties else direction)
    return sorted(running)
