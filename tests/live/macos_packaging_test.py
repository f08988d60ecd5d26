"""The packaging for macOS: what signing asks of the system's tools, which stand-ins record."""

import json
import os
import plistlib
import re
import shutil
import subprocess
import tempfile
import unittest

from stream import REPOSITORY

_SCRIPT = os.path.join(REPOSITORY, "packaging", "macos", "sign_and_notarise.sh")
_BOUND = 60
_IDENTITY = "Developer ID Application: Somebody (ABC)"
# Of this system, what the script and the stand-ins call.
_SYSTEM_TOOLS = ("bash", "basename", "cat", "cp", "grep", "mkdir", "mktemp", "rm", "tee")
_ACCEPTED = '{"id":"1","status":"Accepted"}'
_STAND_IN = """#!/bin/bash
line=${{0##*/}}
for word in "$@"; do line+="|$word"; done
echo "$line" >>"{calls}"
{action}
"""


def _text(*path):
    with open(os.path.join(REPOSITORY, *path), encoding="utf-8") as file:
        return file.read()


class Figures(unittest.TestCase):
    """What several files have to say alike."""

    def setUp(self):
        self.information = plistlib.loads(_text("packaging", "macos", "Info.plist").encode())

    def test_the_minimum_system_is_one_for_all(self):
        presets = json.loads(_text("CMakePresets.json"))["configurePresets"]
        macos = next(preset for preset in presets if preset["name"] == "macos")
        libraries = re.search(r"(?m)^minimumSystem=(.*)$",
                              _text("packaging", "macos", "build_libraries.sh"))
        self.assertEqual(self.information["LSMinimumSystemVersion"], "13.0")
        self.assertEqual(macos["cacheVariables"]["CMAKE_OSX_DEPLOYMENT_TARGET"], "13.0")
        self.assertEqual(libraries.group(1), "13.0")

    def test_the_identifier_is_one_that_is_never_taken_for_a_call(self):
        prefix = re.search(r'ownBundlePrefix = "(.*)"',
                           _text("main", "identity", "process_audio.cpp")).group(1)
        self.assertTrue(self.information["CFBundleIdentifier"].startswith(prefix))

    def test_every_preset_finds_the_libraries_of_its_own_architecture(self):
        presets = {preset["name"]: preset
                   for preset in json.loads(_text("CMakePresets.json"))["configurePresets"]}
        for architecture in ("arm64", "x86_64"):
            preset = presets[f"macos-{architecture}"]
            self.assertEqual(preset["cacheVariables"]["CMAKE_OSX_ARCHITECTURES"], architecture)
            self.assertEqual(preset["environment"]["PKG_CONFIG_LIBDIR"],
                             f"${{sourceDir}}/build/macos-libraries/{architecture}/lib/pkgconfig")


class Signing(unittest.TestCase):
    """Each test has a PATH of its own, with the tools that it names."""

    def setUp(self):
        self.directory = self.enterContext(tempfile.TemporaryDirectory())
        self.tools = os.path.join(self.directory, "tools")
        os.mkdir(self.tools)
        for tool in _SYSTEM_TOOLS:
            os.symlink(shutil.which(tool), os.path.join(self.tools, tool))
        self.calls = os.path.join(self.directory, "calls")
        self.program = os.path.join(self.directory, "call-monitor")
        with open(self.program, "wb") as file:
            file.write(b"program")

    def standIn(self, tool, action=":"):
        """Puts a tool in the PATH that notes how it was called, and then acts."""
        path = os.path.join(self.tools, tool)
        with open(path, "w", encoding="utf-8") as file:
            file.write(_STAND_IN.format(calls=self.calls, action=action))
        os.chmod(path, 0o755)

    def standInForAll(self, answer=_ACCEPTED):
        """Puts all of a Mac's tools in the PATH; notarising answers so."""
        self.standIn("codesign")
        self.standIn("ditto")
        self.standIn("xcrun", f"if [[ $1 == notarytool ]]; then echo '{answer}'; fi")

    def run_(self, *arguments):
        return subprocess.run([_SCRIPT, *arguments], env={"PATH": self.tools},
                              stdin=subprocess.DEVNULL, capture_output=True, text=True,
                              timeout=_BOUND, check=False)

    def made(self):
        """Gives the calls of the tools so far, each as its words."""
        if not os.path.exists(self.calls):
            return []
        with open(self.calls, encoding="utf-8") as file:
            return [line.split("|") for line in file.read().splitlines()]

    def test_it_signs_for_a_hardened_runtime_with_a_timestamp_and_no_entitlements(self):
        self.standIn("codesign")
        result = self.run_("--identity", _IDENTITY, self.program)
        self.assertEqual(result.returncode, 0, result.stderr)
        sign, verify = self.made()
        self.assertEqual(sign, ["codesign", "--force", "--options", "runtime", "--timestamp",
                                "--identifier", "ai.corvana.desktop.call-monitor",
                                "--sign", _IDENTITY, self.program])
        self.assertEqual(verify[:3], ["codesign", "--verify", "--strict"])
        self.assertEqual(verify[-1], self.program)
        self.assertIn("not notarised", result.stderr)

    def test_it_notarises_all_programs_at_once_with_the_profile(self):
        self.standInForAll()
        other = os.path.join(self.directory, "call-monitor-doctor")
        shutil.copy(self.program, other)
        result = self.run_("--identity", _IDENTITY, "--keychain-profile", "notary", self.program,
                           other)
        self.assertEqual(result.returncode, 0, result.stderr)
        made = self.made()
        submitted = [call for call in made if call[:3] == ["xcrun", "notarytool", "submit"]]
        self.assertEqual(len(submitted), 1)
        self.assertEqual(submitted[0][4:7], ["--keychain-profile", "notary", "--wait"])
        self.assertEqual(len([call for call in made if "--sign" in call]), 2)
        self.assertLess(max(made.index(call) for call in made if call[0] == "codesign"),
                        made.index(submitted[0]))

    def test_an_answer_that_is_not_a_yes_is_a_failure(self):
        for answer in ('{"id":"1","status":"Invalid"}', "", '{"message":"Accepted"}'):
            with self.subTest(answer):
                self.standInForAll(answer)
                result = self.run_("--identity", _IDENTITY, "--keychain-profile", "notary",
                                   self.program)
                self.assertEqual(result.returncode, 1)
                self.assertIn("not accepted", result.stderr)

    def test_a_signature_that_fails_is_not_sent(self):
        self.standInForAll()
        self.standIn("codesign", "exit 3")
        result = self.run_("--identity", _IDENTITY, "--keychain-profile", "notary", self.program)
        self.assertEqual(result.returncode, 1)
        self.assertIn("could not be signed", result.stderr)
        self.assertEqual([call for call in self.made() if "submit" in call], [])

    def test_a_missing_tool_is_named_before_anything_is_signed(self):
        for tool in ("codesign", "xcrun", "ditto"):
            with self.subTest(tool):
                self.standInForAll()
                os.remove(os.path.join(self.tools, tool))
                result = self.run_("--identity", _IDENTITY, "--keychain-profile", "notary",
                                   self.program)
                self.assertEqual(result.returncode, 69)
                self.assertIn(f"{tool} is missing", result.stderr)
                self.assertEqual(self.made(), [])
        with self.subTest("notarytool"):
            self.standInForAll()
            self.standIn("xcrun", "exit 72")
            result = self.run_("--identity", _IDENTITY, "--keychain-profile", "notary",
                               self.program)
            self.assertEqual(result.returncode, 69)
            self.assertIn("notarytool is missing", result.stderr)
            self.assertEqual([call for call in self.made() if call[0] == "codesign"], [])

    def test_a_program_that_is_not_there_is_named(self):
        self.standInForAll()
        result = self.run_("--identity", _IDENTITY, self.program, self.program + "x")
        self.assertEqual(result.returncode, 66)
        self.assertIn(self.program + "x", result.stderr)
        self.assertEqual(self.made(), [])

    def test_wrong_arguments_are_refused(self):
        self.standInForAll()
        for arguments in ((), (self.program,), ("--identity", _IDENTITY), ("--identity",),
                          ("--identity", _IDENTITY, "--unknown", self.program)):
            with self.subTest(arguments):
                self.assertEqual(self.run_(*arguments).returncode, 64)
        self.assertEqual(self.made(), [])
