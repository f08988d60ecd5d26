"""A call whose page is nearly as large as one look may be."""

from live_case import CallCase
from waiting import waitUntil

# So many people make a page of some 1450 elements, close to the 1600 that one look takes in, and
# with the browser's own a window of more than so many.
_PEOPLE = 350
_CROWDED = 1500
_JOINED_CYCLES = 5


class ALargePage(CallCase):
    """What is read in one look, and in its half second."""

    def test_a_call_of_many_people_is_joined(self):
        self.tab.evaluate(f"crowd({_PEOPLE}); show('call')")
        # One cycle that a loaded machine cuts short says unknown; several in a row do not.
        waitUntil(f"{_JOINED_CYCLES} cycles in a row say joined",
                  lambda: self.lastStates() == ["joined"] * _JOINED_CYCLES)
        self.assertOneSession(self.stream.observations())
        self.assertGreater(len(self.tree.below(self.frame())), _CROWDED)

    def lastStates(self):
        """The states of the latest records of calls, as many as `_JOINED_CYCLES`."""
        return [record["state"] for record in self.stream.observations()][-_JOINED_CYCLES:]
