"""The web pages of each meeting client: what opens a call, what holds it and what ends it."""

import base64
import json

from live_case import CallCase
from meeting_pages import TEAMS_HOST, ZOOM_HOST
from story import CALL_KEY

_ZOOM_KEY = "zoom:91234567890"
_ZOOM_ADDRESS = f"https://{ZOOM_HOST}/wc/91234567890/join?fromPWA=1&pwd=AbCdEf"
_TEAMS_KEY = "teams:19:meeting_MadeUp0Id@thread.v2"
_TEAMS_ADDRESS = f"https://{TEAMS_HOST}/l/meetup-join/19%3ameeting_MadeUp0Id%40thread.v2/0"
_REJOIN = "<button>Rejoin the call</button>"
_STAY = "Stay connected after your meeting Chat with everyone or pick specific people"


def _launchAddress(meeting):
    """The address of a page that names its meeting in a payload, its letters safe in an address."""
    payload = json.dumps({"meetingUrl": meeting}).encode()
    coordinates = base64.urlsafe_b64encode(payload).decode().rstrip("=")
    return f"https://teams.live.com/light-meetings/launch?anon=true&coords={coordinates}"


class ClientCase(CallCase):
    """What the calls of every client have in common; `key` is the meeting that a test has opened.

    One browser serves the pages of all clients, because its start takes longer than a test.
    """

    def openMeeting(self, address, key):
        """Opens a meeting's page, which shows its lobby."""
        self.tab.navigate(address)
        self.key = key

    def joinHere(self):
        """Joins the client's call and gives the first record that says so."""
        return self.join(self.stream, self.tab, self.key)

    def assertEnds(self, html):
        """Asserts that a page with nothing but the markup ends a call at once."""
        with self.subTest(html=html):
            session = self.joinHere()["sessionId"]
            mark = self.stream.mark()
            self.showOnly(html)
            self.waitForState(self.stream, "left", mark, sessionId=session, mediaActive=False)
            told = {record["state"] for record in self.stream.observations(mark)}
            # The page's change may fall into the middle of a cycle that had begun to read it.
            self.assertLessEqual(told, {"joined", "left"})

    def assertEndsNothing(self, *pages):
        """Asserts that none of the pages ends the one call that is joined between them."""
        session = self.joinHere()["sessionId"]
        for html in pages:
            with self.subTest(html=html):
                mark = self.stream.mark()
                self.showOnly(html)
                self.waitForState(self.stream, "unknown", mark, sessionId=session)
                settled = self.stream.mark()
                self.assertStatesSince(self.stream, settled, "unknown", cycles=2)
                self.assertEqual(self.joinHere()["sessionId"], session)
        self.assertOneSession(self.stream.observations())

    def assertReconnects(self, *banners):
        """Asserts that a banner leaves a call as it is while it shows its controls, and unknown
        without them; and that it is the same call afterwards."""
        session = self.joinHere()["sessionId"]
        for html in banners:
            with self.subTest(html=html):
                self.tab.evaluate(f"banner({json.dumps(html)})")
                self.stream.waitForCycles(1)
                mark = self.stream.mark()
                self.assertStatesSince(self.stream, mark, "joined", cycles=2)
                mark = self.stream.mark()
                self.tab.evaluate("element('toolbar').hidden = true")
                self.waitForState(self.stream, "unknown", mark, sessionId=session)
                settled = self.stream.mark()
                self.assertStatesSince(self.stream, settled, "unknown", cycles=2)
                mark = self.stream.mark()
                self.tab.evaluate("banner(''); element('toolbar').hidden = false")
                self.waitForState(self.stream, "joined", mark, sessionId=session)
        self.assertOneSession(self.stream.observations())

    def assertMedia(self, rows):
        """Asserts the flag of each row (microphone, camera, expected), which differ from row to
        row, so that none is answered by a record of the row before."""
        for microphone, camera, expected in rows:
            with self.subTest(microphone=microphone, camera=camera):
                mark = self.stream.mark()
                self.tab.evaluate(f"turn('microphone', {microphone}); turn('camera', {camera})")
                self.waitForState(self.stream, "joined", mark, mediaActive=expected)
        self.assertOneSession(self.stream.observations())

    def showOnly(self, html):
        """Replaces every screen of the page by markup."""
        self.tab.evaluate(f"showOnly({json.dumps(html)})")


class TheWebPagesOfTheClients(ClientCase):
    """The pages of each client, in its own words."""

    def test_a_zoom_page_is_no_call_before_its_join_button_and_one_after_it(self):
        self.openMeeting(_ZOOM_ADDRESS, _ZOOM_KEY)
        self.waitForText("Stop Video")
        self.assertTellsOfNoCall()
        record = self.joinHere()
        self.assertEqual((record["provider"], record["sequence"], record["mediaActive"]),
                         ("zoom", 1, True))

    def test_zoom_media_is_active_exactly_while_both_devices_can_be_turned_off(self):
        self.openMeeting(_ZOOM_ADDRESS, _ZOOM_KEY)
        self.joinHere()
        self.assertMedia([("true", "false", False), ("true", "true", True),
                          ("false", "true", False), ("true", "true", True)])

    def test_a_zoom_call_that_reconnects_is_the_same_call(self):
        self.openMeeting(_ZOOM_ADDRESS, _ZOOM_KEY)
        self.assertReconnects("<p>Trying to reconnect</p>", "<div role=alert>Connecting...</div>")

    def test_a_zoom_call_ends_with_each_notice_that_its_page_heads_or_alerts(self):
        self.openMeeting(_ZOOM_ADDRESS, _ZOOM_KEY)
        self.assertEnds("<h1>You have left the meeting</h1>")
        self.assertEnds("<div role=alert>This meeting has been ended by host</div>")
        self.assertEnds("<h2>The host has ended this meeting.</h2>")

    def test_what_a_zoom_page_says_otherwise_ends_no_call(self):
        self.openMeeting(_ZOOM_ADDRESS, _ZOOM_KEY)
        self.assertEndsNothing(
            # The words of a dialog are no notice in a browser: a page may show anything in one.
            "<div role=dialog><p>This meeting has been ended by host</p><button>OK</button></div>",
            "<h1>Your host ended the meeting for everyone</h1>")

    def test_a_teams_page_is_no_call_before_its_join_button_and_one_after_it(self):
        self.openMeeting(_TEAMS_ADDRESS, _TEAMS_KEY)
        self.waitForText("Join now")
        self.assertTellsOfNoCall()
        record = self.joinHere()
        self.assertEqual((record["provider"], record["sequence"]), ("teams", 1))

    def test_teams_media_is_active_where_the_camera_button_says_what_it_turns_off(self):
        self.openMeeting(_TEAMS_ADDRESS, _TEAMS_KEY)
        self.assertFalse(self.joinHere()["mediaActive"])  # "Turn camera off"
        self.tab.evaluate("labels.call.camera = ['Turn off camera', 'Turn on camera']")
        self.assertMedia([("true", "true", True), ("true", "false", False),
                          ("true", "true", True), ("false", "true", False)])

    def test_a_teams_call_that_reconnects_is_the_same_call(self):
        self.openMeeting(_TEAMS_ADDRESS, _TEAMS_KEY)
        self.assertReconnects("<h2>Reconnecting…</h2>")

    def test_a_teams_call_ends_with_each_screen_that_follows_one(self):
        self.openMeeting(_TEAMS_ADDRESS, _TEAMS_KEY)
        self.assertEnds("<h1>You left the call</h1><button>Rejoin</button>")
        self.assertEnds("<div role=alert>The host has ended this meeting.</div>")
        self.assertEnds(f"<p>Did you leave by mistake?</p>{_REJOIN}")
        self.assertEnds(f"<p>{_STAY}</p>{_REJOIN}")
        self.assertEnds("<h2>How was the call quality?</h2><button>Dismiss</button>"
                        "<button>Send feedback</button>")

    def test_what_a_teams_page_says_otherwise_ends_no_call(self):
        self.openMeeting(_TEAMS_ADDRESS, _TEAMS_KEY)
        self.assertEndsNothing(
            "<p>Did you leave by mistake?</p><button>Rejoin</button>",
            f"<p>Did you leave by mistake?</p>{_REJOIN}<div role=alert>Reconnecting...</div>",
            "<h2>How was the call quality?</h2><button>Dismiss</button>")

    def test_a_meet_call_ends_with_each_notice_of_its_host(self):
        self.key = CALL_KEY
        self.assertEnds("<h1>Your host ended the meeting for everyone</h1>")
        self.assertEnds("<div role=alert>The meeting has been ended by the host</div>")
        self.assertEnds("<h1>You’ve ended the meeting for everyone</h1>")

    def test_each_address_of_a_meeting_names_it(self):
        for address, key in (
                # A meeting of its own each: the call at the address before it is not over.
                ("https://zoom.us/wc/join/91234567890?pwd=AbCdEf", _ZOOM_KEY),
                ("https://us02web.zoom.us/j/81234567890", "zoom:81234567890"),
                ("https://app.zoom.com/wc/71234567890/start", "zoom:71234567890"),
                ("https://teams.live.com/meet/9312345678901?p=AbCdEfGh", "teams:9312345678901"),
                ("https://teams.live.com/v2/#/meet/9412345678901?p=A", "teams:9412345678901"),
                (_launchAddress("https://teams.live.com/meet/9512345678901?p=AbCdEfGhIj"),
                 "teams:9512345678901"),
                ("https://teams.cloud.microsoft/v2/meet/meeting_ID", "teams:meeting_ID")):
            with self.subTest(address=address):
                self.openMeeting(address, key)
                self.assertEqual(self.joinHere()["sequence"], 1)

    def test_the_controls_of_a_call_open_none_at_an_address_that_names_no_meeting(self):
        for address, text in (("https://app.zoom.us/wc/home", "mute my microphone"),
                              (_launchAddress(_ZOOM_ADDRESS), "Mute mic")):
            with self.subTest(address=address):
                mark = self.stream.mark()
                self.tab.navigate(address)
                self.tab.evaluate("show('call')")
                self.waitForText(text)
                self.assertTellsOfNoCall(mark)
