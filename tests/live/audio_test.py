"""Who captures and who plays, as real sound servers tell of it."""

import os
import signal
import tempfile
import unittest
import wave

from private_desktop import PrivateDesktop
from sound import Heard, SoundClient
from waiting import waitUntil

# More than the kernel gives.
_NO_PROCESS = 2**31 - 1
# Enough answers for whatever could still change to have changed.
_SETTLED = 8
# Answers of more than the five seconds after which a server without a socket is there no more.
_LASTING = 32
# Seconds that one answer may take at most: far more than it does, far less than a server that
# hangs would make it take.
_ANSWER_BOUND = 0.3


class ListenerCase(unittest.TestCase):
    """A desktop with a sound server for all tests of a class, and a listener for each test."""

    part = "sound"
    server = "pipewire"

    @classmethod
    def setUpClass(cls):
        cls.desktop = cls.enterClassContext(PrivateDesktop(parts=("session bus", cls.part)))

    def setUp(self):
        self.heard = self.enterContext(Heard(self.desktop))
        self.heard.waitFor("nobody is heard", [])

    def tearDown(self):
        lines = list(self.heard.lines)
        self.assertEqual({line["threads"] for line in lines}, {1})
        self.assertEqual({line["pipeSignalEnds"] for line in lines}, {True})
        self.assertLess(max(line["seconds"] for line in lines), _ANSWER_BOUND)

    def client(self, *arguments, name="client"):
        """Starts a program with one stream; it ends with the test."""
        client = SoundClient(self.desktop, name, *arguments)
        self.addCleanup(client.close)
        return client

    def start(self, name, *command, environment=None):
        """Starts a program on the desktop; it ends with the test."""
        if environment:
            command = ("env", *(f"{key}={value}" for key, value in environment.items()), *command)
        process = self.desktop.start(name, list(command))
        self.addCleanup(self.desktop.processes.stop, name)
        return process

    def assertHeardFromNowOn(self, expected, answers=_SETTLED):
        """Asserts that nothing but this is heard in some answers from now on."""
        self.heard.waitFor(f"{expected} is heard", expected)
        told = self.heard.waitForAnswers(answers)
        self.assertEqual(told, [expected] * len(told))

    def assertNeverHeardOtherwise(self, expected):
        """Asserts that a listener who comes now knows nothing first and then this."""
        with Heard(self.desktop, "late-listener") as late:
            late.waitFor("the late listener hears it", expected)
            self.assertEqual(late.waitForAnswers(_SETTLED), [expected] * _SETTLED)
            self.assertEqual([each for each in late.answers() if each not in ("absent", expected)],
                             [])

    def mainProgram(self):
        """The process id of the server itself."""
        return self.desktop.processes.pid(self.server)


class BothServers:
    """What is true whichever sound server runs."""

    def test_a_program_that_records_has_input(self):
        self.start("recorder", "parec", "--device=virtmic", "/dev/null")
        self.assertHeardFromNowOn([("pacat", True, False)])

    def test_a_program_that_plays_has_output(self):
        self.start("player", "pacat", "/dev/zero")
        self.assertHeardFromNowOn([("pacat", False, True)])

    def test_a_program_that_has_ended_is_in_the_list_no_more(self):
        self.start("player", "pacat", "/dev/zero")
        self.heard.waitFor("it is heard", [("pacat", False, True)])
        self.desktop.processes.stop("player")
        self.assertHeardFromNowOn([])

    def test_a_paused_stream_has_an_entry_that_runs_nothing(self):
        for direction, expected in (("record", (True, False)), ("play", (False, True))):
            with self.subTest(direction):
                client = self.client(direction)
                self.heard.waitFor("it runs", [("sound_client", *expected)])
                client.order("pause")
                self.assertHeardFromNowOn([("sound_client", False, False)])
                client.order("go on")
                self.heard.waitFor("it runs again", [("sound_client", *expected)])
                client.close()
                self.heard.waitFor("its process has ended", [])

    def test_an_ended_stream_leaves_an_entry_while_its_process_lives(self):
        client = self.client("record")
        self.heard.waitFor("it runs", [("sound_client", True, False)])
        client.order("end")
        self.assertHeardFromNowOn([("sound_client", False, False)])
        client.close()
        self.assertHeardFromNowOn([])

    def test_level_meters_and_recordings_of_what_is_played_are_nobodys_microphone(self):
        self.client("record", "meter", name="meter-of-microphone")
        self.client("record", "meter", "speaker.monitor", name="meter-of-speaker")
        self.start("monitor", "parec", "--device=speaker.monitor", "/dev/null")
        # What is heard after the others were started proves that those were taken notice of.
        self.client("record", name="microphone")
        self.assertHeardFromNowOn([("sound_client", True, False)])

    def test_the_inside_of_virtual_devices_is_nobodys(self):
        modules = [("module-remap-source", "master=virtmic", "source_name=remapped"),
                   ("module-loopback", "source=virtmic", "sink=speaker")]
        for module in modules:
            number = self.desktop.query("pactl", "load-module", *module).strip()
            self.assertTrue(number, module)
            self.addCleanup(self.desktop.query, "pactl", "unload-module", number)
        self.client("record", "remapped")
        self.assertHeardFromNowOn([("sound_client", True, False)])

    def test_a_stream_whose_process_is_unknown_is_nobodys(self):
        self.start("player", "pacat", "/dev/zero",
                   environment={"PULSE_PROP_OVERRIDE": "application.process.id=none"})
        self.client("record")
        self.assertHeardFromNowOn([("", False, True), ("sound_client", True, False)])

    def test_a_stream_that_names_another_programs_process_leaves_all_unknown(self):
        other = self.start("other", "sleep", "infinity")
        self.client("record")
        for process in (other.pid, _NO_PROCESS):
            with self.subTest(process):
                self.start("player", "pacat", f"--property=application.process.id={process}",
                           "/dev/zero")
                self.assertHeardFromNowOn("absent")
                self.desktop.processes.stop("player")
                self.assertHeardFromNowOn([("sound_client", True, False)])

    def test_a_stream_of_another_machine_is_nobodys(self):
        self.client("record")
        self.start("player", "pacat", "--property=application.process.host=elsewhere",
                   "--property=application.process.machine_id=0123456789abcdef0123456789abcdef",
                   "/dev/zero")
        self.assertHeardFromNowOn([("", False, True), ("sound_client", True, False)])

    def test_a_server_that_dies_and_comes_back_is_not_known_in_between(self):
        self.client("record")
        self.heard.waitFor("it runs", [("sound_client", True, False)])
        os.kill(self.mainProgram(), signal.SIGKILL)
        self.assertHeardFromNowOn("absent")
        # The sockets that the dead server left behind are still there.
        with Heard(self.desktop, "late-listener") as late:
            self.assertEqual(late.waitForAnswers(_SETTLED), ["absent"] * _SETTLED)
        self.desktop.stopSound(self.server)
        self.desktop.startSound(self.server)
        # The stream went with the server, its program did not.
        self.assertHeardFromNowOn([("sound_client", False, False)])
        self.client("play", name="new-client")
        self.heard.waitFor("the new server is heard",
                           [("sound_client", False, False), ("sound_client", False, True)])

    def test_a_server_that_hangs_delays_nothing_and_is_not_known(self):
        self.client("record")
        self.heard.waitFor("it runs", [("sound_client", True, False)])
        server = self.mainProgram()
        os.kill(server, signal.SIGSTOP)
        try:
            self.assertHeardFromNowOn("absent")
            with Heard(self.desktop, "late-listener") as late:
                self.assertEqual(late.waitForAnswers(_SETTLED), ["absent"] * _SETTLED)
                self.assertLess(max(line["seconds"] for line in late.lines), _ANSWER_BOUND)
        finally:
            os.kill(server, signal.SIGCONT)
        self.assertHeardFromNowOn([("sound_client", True, False)])


def silence(desktop):
    """Gives the path of a minute of silence."""
    path = os.path.join(desktop.directory, "silence.wav")
    with wave.open(path, "wb") as file:
        file.setnchannels(1)
        file.setsampwidth(2)
        file.setframerate(8000)
        file.writeframes(bytes(2 * 8000 * 60))
    return path


class PipeWire(BothServers, ListenerCase):
    """PipeWire, with its service for PulseAudio's clients."""

    def test_a_native_recorder_has_input(self):
        self.start("recorder", "pw-record", "--target=virtmic",
                   os.path.join(self.desktop.directory, "recorded.wav"))
        self.assertHeardFromNowOn([("pw-cat", True, False)])

    def test_a_native_player_has_output(self):
        self.start("player", "pw-play", silence(self.desktop))
        self.assertHeardFromNowOn([("pw-cat", False, True)])

    def test_a_native_recording_of_what_is_played_is_nobodys_microphone(self):
        self.start("monitor", "pw-record", "-P", '{ "stream.capture.sink": true }',
                   os.path.join(self.desktop.directory, "monitored.wav"))
        self.start("loopback", "pw-loopback")
        self.start("player", "pw-play", silence(self.desktop))
        self.assertHeardFromNowOn([("pw-cat", False, True)])

    def test_a_hung_service_for_other_clients_hides_no_native_one(self):
        service = self.desktop.processes.pid("pipewire-pulse")
        os.kill(service, signal.SIGSTOP)
        try:
            self.start("player", "pw-play", silence(self.desktop))
            self.assertHeardFromNowOn([("pw-cat", False, True)])
        finally:
            os.kill(service, signal.SIGCONT)

    def test_a_service_for_other_clients_that_dies_takes_its_streams_to_nobody_knows_where(self):
        self.client("record")
        self.heard.waitFor("it runs", [("sound_client", True, False)])
        os.kill(self.desktop.processes.pid("pipewire-pulse"), signal.SIGKILL)
        try:
            self.assertHeardFromNowOn("absent", _LASTING)
            with Heard(self.desktop, "late-listener") as late:
                self.assertEqual(late.waitForAnswers(_LASTING), ["absent"] * _LASTING)
        finally:
            self.desktop.stopSound(self.server)
            self.desktop.startSound(self.server)
        self.assertHeardFromNowOn([("sound_client", False, False)])


class PulseAudio(BothServers, ListenerCase):
    """PulseAudio where no PipeWire runs."""

    part = "pulse sound"
    server = "pulseaudio"

    def test_no_sound_passes_through_a_suspended_microphone(self):
        self.client("record")
        self.heard.waitFor("it runs", [("sound_client", True, False)])
        self.desktop.query("pactl", "suspend-source", "virtmic", "1")
        try:
            self.assertHeardFromNowOn([("sound_client", False, False)])
        finally:
            self.desktop.query("pactl", "suspend-source", "virtmic", "0")
        self.heard.waitFor("it runs again", [("sound_client", True, False)])

    def test_no_cookie_is_made(self):
        for places in ({}, {"PULSE_COOKIE": "cookie"}):
            with self.subTest(places), tempfile.TemporaryDirectory() as home:
                environment = {"HOME": home, "XDG_CONFIG_HOME": os.path.join(home, "config"),
                               **{key: os.path.join(home, name) for key, name in places.items()}}
                with Heard(self.desktop, "late-listener", environment) as late:
                    late.waitFor("the server is heard", [])
                self.assertEqual(os.listdir(home), [])


class PulseAudioBesidePipeWire(ListenerCase):
    """PulseAudio has the sound, and PipeWire runs for the sharing of screens only."""

    part = "pulse sound"
    server = "pulseaudio"

    def test_pulseaudio_is_heard_until_it_dies_and_then_it_is_not_known(self):
        self.start("pipewire", "pipewire")
        waitUntil("PipeWire runs", lambda: self.desktop.query("pw-cli", "info", "0"))
        self.client("record")
        expected = [("sound_client", True, False)]
        self.heard.waitFor("the listener that was there before PipeWire hears it", expected)
        with Heard(self.desktop, "late-listener") as late:
            late.waitFor("a listener that finds both hears it", expected)
            self.assertEqual(late.waitForAnswers(_SETTLED), [expected] * _SETTLED)
        self.assertHeardFromNowOn(expected)
        os.kill(self.mainProgram(), signal.SIGKILL)
        self.assertHeardFromNowOn("absent")


def startPipeWireWithDevice(desktop):
    """Starts a PipeWire that has a speaker of its own, and no service for PulseAudio's clients."""
    desktop.start("pipewire", ["pipewire"])
    waitUntil("PipeWire runs", lambda: desktop.query("pw-cli", "info", "0"))
    desktop.query("pw-cli", "create-node", "adapter",
                  "{ factory.name=support.null-audio-sink node.name=own-speaker"
                  " media.class=Audio/Sink audio.position=[FL FR] object.linger=true }")
    waitUntil("PipeWire has a device",
              lambda: '"own-speaker"' in desktop.query("pw-cli", "list-objects", "Node"))


class PulseAudioBesidePipeWireWithDevice(ListenerCase):
    """Either server could have the sound, so that only both together know who uses it."""

    part = "pulse sound"
    server = "pulseaudio"

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        startPipeWireWithDevice(cls.desktop)

    def setUp(self):
        super().setUp()
        self.client("record")
        self.running = [("sound_client", True, False)]
        self.heard.waitFor("it runs", self.running)

    def restart(self):
        """Starts a PulseAudio in the place of a dead one."""
        self.desktop.stopSound(self.server)
        self.desktop.startSound(self.server)
        self.heard.waitFor("the new server is heard", [("sound_client", False, False)])

    def test_a_listener_who_comes_late_hears_nothing_wrong(self):
        self.assertNeverHeardOtherwise(self.running)

    def test_a_pulseaudio_that_hangs_is_not_known(self):
        server = self.mainProgram()
        os.kill(server, signal.SIGSTOP)
        try:
            self.assertHeardFromNowOn("absent", _LASTING)
            with Heard(self.desktop, "late-listener") as late:
                self.assertEqual(late.waitForAnswers(_LASTING), ["absent"] * _LASTING)
        finally:
            os.kill(server, signal.SIGCONT)
        self.assertHeardFromNowOn(self.running)

    def test_a_pulseaudio_that_dies_is_not_known_until_it_is_back(self):
        os.kill(self.mainProgram(), signal.SIGKILL)
        self.addCleanup(self.restart)
        self.assertHeardFromNowOn("absent", _LASTING)
        with Heard(self.desktop, "late-listener") as late:
            self.assertEqual(late.waitForAnswers(_LASTING), ["absent"] * _LASTING)

    def test_a_pulseaudio_whose_socket_has_gone_for_good_is_not_waited_for(self):
        os.kill(self.mainProgram(), signal.SIGKILL)
        self.addCleanup(self.restart)
        self.heard.waitFor("it is not known", "absent")
        mark = len(self.heard.lines)
        os.remove(os.path.join(self.desktop.environment["XDG_RUNTIME_DIR"], "pulse", "native"))
        self.assertHeardFromNowOn([("sound_client", False, False)])
        self.assertGreater(self.heard.answers(mark).count("absent"), _SETTLED)


class PipeWireWithoutPulse(unittest.TestCase):
    """PipeWire has the sound, and there never was anything for PulseAudio's clients."""

    def test_it_is_heard_after_a_while(self):
        with PrivateDesktop(parts=("session bus",)) as desktop:
            startPipeWireWithDevice(desktop)
            desktop.start("wireplumber", ["wireplumber"])
            with Heard(desktop) as heard:
                heard.waitFor("nobody is heard", [])
                self.assertEqual(set(map(str, heard.answers())), {"absent", "[]"})
                desktop.start("player", ["pw-cat", "--playback", silence(desktop)])
                heard.waitFor("it is heard", [("pw-cat", False, True)])
