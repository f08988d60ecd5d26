"""Which servers of a desktop a process is connected to, and by how many sockets each."""

import contextlib
import os
import re

_KINDS = (("display", re.compile(r"/\.X11-unix/")),
          ("session bus", re.compile(r"/runtime/bus$")),
          ("accessibility bus", re.compile(r"/at-spi/bus")),
          ("sound", re.compile(r"/(pipewire-0|pulse/native)$")))


def connectionsOf(desktop, pid):
    """Gives {kind of server: number of connections to it}, "other" for all other sockets."""
    counts = {kind: 0 for kind, _ in _KINDS} | {"other": 0}
    peers = _peers(desktop)
    for socket in _sockets(pid):
        name = peers.get(socket, "")
        kind = next((kind for kind, pattern in _KINDS if pattern.search(name)), "other")
        counts[kind] += 1
    return counts


def _sockets(pid):
    """Gives the numbers of the sockets that a process holds."""
    numbers = []
    for descriptor in os.listdir(f"/proc/{pid}/fd"):
        with contextlib.suppress(OSError):
            target = os.readlink(f"/proc/{pid}/fd/{descriptor}")
            if target.startswith("socket:"):
                numbers.append(target.strip("socket:[]"))
    return numbers


def _peers(desktop):
    """Gives {number of a socket: name of the socket at its other end}."""
    peers = {}
    for line in desktop.query("ss", "-x", "-n", "-H").splitlines():
        # Type, state, two queues, then name and number of either end.
        fields = line.split()
        if len(fields) >= 8:
            peers[fields[7]] = fields[4]
    return peers
