"""Waiting for a condition instead of sleeping and hoping."""

import time

# How long one step of a desktop may take before it counts as not happening. Far above the usual
# second or two, because a loaded machine is slow and not wrong.
STEP_BOUND = 30.0
_PAUSE = 0.05


def waitUntil(description, condition, bound=STEP_BOUND):
    """Gives the first true value of `condition()`.

    `bound` is in seconds. A condition that does not come true in time is a TimeoutError that names
    `description`; an exception out of `condition` passes through.
    """
    deadline = time.monotonic() + bound
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() >= deadline:
            raise TimeoutError(f"not seen within {bound:.0f} s: {description}")
        time.sleep(_PAUSE)
