"""What other people write or say is never taken for what the call itself shows."""

from live_case import CallCase

# Markup that would open, change or end a call if it stood anywhere else, and the text of it that
# tells that it has reached the accessibility tree.
_WORDS = {
    "a heading": ("<h3>You left the meeting</h3>", "You left the meeting"),
    "an alert": ('<div role="alert">The meeting has ended</div>', "The meeting has ended"),
    "buttons that leave and mute": ("<button>Leave call</button><button>Mute</button>", "Mute"),
    "a button that unmutes": ("<button>Turn on microphone</button>", "Turn on microphone"),
    "a button that joins": ("<button>Join the call</button><button>Join now</button>",
                            "Join the call"),
    "a text about the connection": ("<p>Reconnecting...</p>", "Reconnecting..."),
}
_PLACES = [("a chat message", "messages"), ("a caption", "captions"),
           ("a transcript", "transcript"), ("a log", "log")]


class WordsOfOthers(CallCase):
    """Chat messages, captions, transcripts and logs, whatever they hold."""

    def setUp(self):
        super().setUp()
        self.addCleanup(self.tab.evaluate, "clearWords()")

    def writeEverythingTo(self, place):
        for markup, _ in _WORDS.values():
            self.tab.evaluate(f"write('{place}', {markup!r})")
        for _, text in _WORDS.values():
            self.waitForText(text)

    def test_words_change_nothing_in_a_call(self):
        self.join(self.stream, self.tab)
        for where, place in _PLACES:
            with self.subTest(where):
                self.writeEverythingTo(place)
                settled = self.stream.mark()
                self.assertStatesSince(self.stream, settled, "joined", cycles=3)
                flags = {record["mediaActive"] for record in self.stream.observations(settled)}
                self.assertEqual(flags, {True})
                self.tab.evaluate("clearWords()")
        self.assertOneSession(self.stream.observations())

    def test_words_end_no_call_while_its_toolbar_is_away(self):
        self.join(self.stream, self.tab)
        mark = self.stream.mark()
        self.tab.evaluate("showToolbar(false)")
        self.waitForState(self.stream, "unknown", mark)
        for where, place in _PLACES:
            with self.subTest(where):
                self.writeEverythingTo(place)
                settled = self.stream.mark()
                self.assertStatesSince(self.stream, settled, "unknown", cycles=3)
                self.tab.evaluate("clearWords()")
        mark = self.stream.mark()
        self.tab.evaluate("showToolbar(true)")
        self.waitForState(self.stream, "joined", mark)
        self.assertOneSession(self.stream.observations())

    def test_words_open_no_call_in_a_lobby(self):
        for where, place in _PLACES:
            with self.subTest(where):
                self.writeEverythingTo(place)
                self.assertTellsOfNoCall()
                self.tab.evaluate("clearWords()")

    def test_the_same_words_elsewhere_do_open_change_and_end_a_call(self):
        self.tab.evaluate(f"write('elsewhere', {_WORDS['buttons that leave and mute'][0]!r})")
        self.waitForState(self.stream, "joined")
        self.tab.evaluate("clearWords(); show('call')")
        self.waitForState(self.stream, "joined", mediaActive=True)
        for name in ("a button that unmutes", "a button that joins"):
            with self.subTest(name):
                mark = self.stream.mark()
                self.tab.evaluate(f"write('elsewhere', {_WORDS[name][0]!r})")
                self.waitForState(self.stream, "joined", mark, mediaActive=False)
                mark = self.stream.mark()
                self.tab.evaluate("clearWords()")
                self.waitForState(self.stream, "joined", mark, mediaActive=True)
        for name in ("a heading", "an alert"):
            with self.subTest(name):
                mark = self.stream.mark()
                self.tab.evaluate(f"showToolbar(false); write('elsewhere', {_WORDS[name][0]!r})")
                self.waitForState(self.stream, "left", mark)
                mark = self.stream.mark()
                self.tab.evaluate("showToolbar(true); clearWords()")
                self.waitForState(self.stream, "joined", mark)
