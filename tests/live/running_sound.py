"""The test's own look at the sound server, apart from the monitor's."""

import json

from waiting import waitUntil

_STREAMS = ("Stream/Input/Audio", "Stream/Output/Audio")


def runningStreams(desktop, pids):
    """Gives the properties of each stream of the processes through which sound passes now.

    Only for PipeWire and for clients that reach it as PulseAudio's: those name their process.
    """
    nodes = [each["info"] for each in waitUntil("the sound server tells all", lambda: _all(desktop))
             if each["type"] == "PipeWire:Interface:Node"]
    return [node["props"] for node in nodes
            if node["state"] == "running" and node["props"].get("media.class") in _STREAMS and
            int(node["props"].get("application.process.id", 0)) in pids]


def _all(desktop):
    """Gives the server's objects; nothing where it does not answer or they change meanwhile."""
    try:
        return json.loads(desktop.query("pw-dump"))
    except json.JSONDecodeError:
        return None
