"""Where what is tried lies."""

import os

REPOSITORY = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
# The build that `./run` and `./test` try. Another one, such as the sanitized, can be named.
_BUILD = os.environ.get("CALL_MONITOR_BUILD", "release")


def built(*path):
    """Gives the path of what was built."""
    return os.path.join(REPOSITORY, "build", _BUILD, *path)
