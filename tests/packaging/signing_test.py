"""Signing and notarising for macOS: what is asked of the system's tools, which stand-ins record."""

import os
import shutil
import unittest

from stand_ins import REPOSITORY, StandInCase

_SCRIPT = os.path.join(REPOSITORY, "packaging", "macos", "sign_and_notarise.sh")
_IDENTITY = "Developer ID Application: Somebody (ABC)"
_ACCEPTED = '{"id":"1","status":"Accepted"}'


class Signing(StandInCase):
    """A program to sign, and whichever of a Mac's tools a test puts beside it."""

    systemTools = ("bash", "basename", "cat", "cp", "grep", "mkdir", "mktemp", "rm", "tee")

    def setUp(self):
        super().setUp()
        self.program = os.path.join(self.directory, "call-monitor")
        with open(self.program, "wb") as file:
            file.write(b"program")

    def standInForAll(self, answer=_ACCEPTED):
        """Puts all of a Mac's tools in the PATH; notarising answers so."""
        self.standIn("codesign")
        self.standIn("ditto")
        self.standIn("xcrun", f"if [[ $1 == notarytool ]]; then echo '{answer}'; fi")

    def sign(self, *arguments):
        """Runs the script to its end."""
        return self.runScript(_SCRIPT, *arguments)

    def test_it_signs_for_a_hardened_runtime_with_a_timestamp_and_no_entitlements(self):
        self.standIn("codesign")
        result = self.sign("--identity", _IDENTITY, self.program)
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
        result = self.sign("--identity", _IDENTITY, "--keychain-profile", "notary", self.program,
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
                result = self.sign("--identity", _IDENTITY, "--keychain-profile", "notary",
                                   self.program)
                self.assertEqual(result.returncode, 1)
                self.assertIn("not accepted", result.stderr)

    def test_a_signature_that_fails_is_not_sent(self):
        self.standInForAll()
        self.standIn("codesign", "exit 3")
        result = self.sign("--identity", _IDENTITY, "--keychain-profile", "notary", self.program)
        self.assertEqual(result.returncode, 1)
        self.assertIn("could not be signed", result.stderr)
        self.assertEqual([call for call in self.made() if "submit" in call], [])

    def test_a_missing_tool_is_named_before_anything_is_signed(self):
        for tool in ("codesign", "xcrun", "ditto"):
            with self.subTest(tool):
                self.standInForAll()
                os.remove(os.path.join(self.tools, tool))
                result = self.sign("--identity", _IDENTITY, "--keychain-profile", "notary",
                                   self.program)
                self.assertEqual(result.returncode, 69)
                self.assertIn(f"{tool} is missing", result.stderr)
                self.assertEqual(self.made(), [])
        with self.subTest("notarytool"):
            self.standInForAll()
            self.standIn("xcrun", "exit 72")
            result = self.sign("--identity", _IDENTITY, "--keychain-profile", "notary",
                               self.program)
            self.assertEqual(result.returncode, 69)
            self.assertIn("notarytool is missing", result.stderr)
            self.assertEqual([call for call in self.made() if call[0] == "codesign"], [])

    def test_a_program_that_is_not_there_is_named(self):
        self.standInForAll()
        result = self.sign("--identity", _IDENTITY, self.program, self.program + "x")
        self.assertEqual(result.returncode, 66)
        self.assertIn(self.program + "x", result.stderr)
        self.assertEqual(self.made(), [])

    def test_wrong_arguments_are_refused(self):
        self.standInForAll()
        for arguments in ((), (self.program,), ("--identity", _IDENTITY), ("--identity",),
                          ("--identity", _IDENTITY, "--unknown", self.program)):
            with self.subTest(arguments):
                self.assertEqual(self.sign(*arguments).returncode, 64)
        self.assertEqual(self.made(), [])


if __name__ == "__main__":
    unittest.main()
