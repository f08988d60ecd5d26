"""What the files of the packaging have to say alike, and that every script can be read at all."""

import json
import os
import plistlib
import re
import subprocess
import unittest

from stand_ins import REPOSITORY, textOf

_MINIMUM_SYSTEM = "13.0"


def _presets():
    presets = json.loads(textOf("CMakePresets.json"))["configurePresets"]
    return {preset["name"]: preset for preset in presets}


class Figures(unittest.TestCase):
    """What several files have to say alike."""

    def setUp(self):
        self.information = plistlib.loads(textOf("packaging", "macos", "Info.plist").encode())

    def assigned(self, name, *path):
        """Gives what a script sets one of its variables to."""
        return re.search(rf"(?m)^{name}=(.*)$", textOf(*path)).group(1)

    def test_the_minimum_system_is_one_for_all(self):
        check = "tools", "macho", "check.sh"
        told = {
            "the information list": self.information["LSMinimumSystemVersion"],
            "the presets": _presets()["macos"]["cacheVariables"]["CMAKE_OSX_DEPLOYMENT_TARGET"],
            "the libraries": self.assigned("minimumSystem", "packaging", "macos",
                                           "build_libraries.sh"),
            "the check on Linux": f"{self.assigned('SYSTEM', *check)}.0",
            "the paper": re.search(r"(?m)^Minimum system: macOS (\d+)\.",
                                   textOf("docs", "macos.md")).group(1) + ".0",
        }
        self.assertEqual(told, dict.fromkeys(told, _MINIMUM_SYSTEM))

    def test_the_check_on_linux_hands_its_system_on_and_nothing_of_it_has_another(self):
        self.assertEqual(textOf("tools", "macho", "check.sh").count("$SYSTEM.0"), 1)
        system = _MINIMUM_SYSTEM.removesuffix(".0")
        for name in ("toolchain.cmake", "check_imports.py"):
            self.assertNotRegex(textOf("tools", "macho", name), rf"(?<!\d){system}(?!\d)")

    def test_the_identifier_is_one_that_is_never_taken_for_a_call(self):
        prefix = re.search(r'ownBundlePrefix = "(.*)"',
                           textOf("main", "identity", "process_audio.cpp")).group(1)
        self.assertTrue(self.information["CFBundleIdentifier"].startswith(prefix))

    def test_the_information_list_takes_the_program_for_no_bundle(self):
        self.assertNotIn("CFBundlePackageType", self.information)

    def test_every_preset_finds_the_libraries_of_its_own_architecture(self):
        for architecture in ("arm64", "x86_64"):
            preset = _presets()[f"macos-{architecture}"]
            self.assertEqual(preset["cacheVariables"]["CMAKE_OSX_ARCHITECTURES"], architecture)
            self.assertEqual(preset["environment"]["PKG_CONFIG_LIBDIR"],
                             f"${{sourceDir}}/build/macos-libraries/{architecture}/lib/pkgconfig")


class Scripts(unittest.TestCase):
    """Those that nothing here can run to their ends among them."""

    def test_a_shell_can_read_every_script(self):
        scripts = [os.path.join(REPOSITORY, name) for name in ("run", "test", ".ci/run")]
        for room in ("packaging", "tools"):
            for directory, _, names in os.walk(os.path.join(REPOSITORY, room)):
                scripts += [os.path.join(directory, name) for name in names
                            if name.endswith(".sh")]
        self.assertGreaterEqual(len(scripts), 8)
        for script in scripts:
            with self.subTest(os.path.relpath(script, REPOSITORY)):
                result = subprocess.run(["bash", "-n", script], capture_output=True, text=True,
                                        check=False)
                self.assertEqual((result.returncode, result.stderr), (0, ""))


if __name__ == "__main__":
    unittest.main()
