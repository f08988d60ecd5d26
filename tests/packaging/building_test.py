"""Building the universal programs and their libraries: what is asked of the system's tools."""

import os
import shutil
import tarfile
import unittest

from stand_ins import REPOSITORY, StandInCase

_ARCHITECTURES = ("arm64", "x86_64")
_PROGRAMS = ("call-monitor", "call-monitor-doctor")
# What the system's tool tells of a program that needs nothing but the system.
_SYSTEMS_OWN = (r"printf '%s:\n\t%s (compatibility version 1.0.0)\n' "
                '"$2" /usr/lib/libSystem.B.dylib')
# Makes what a build of one preset leaves.
_CMAKE = """
if [[ $1 == --build ]]; then
  mkdir -p "build/$3/main"
  for program in call-monitor call-monitor-doctor; do
    echo "$3 $program" >"build/$3/main/$program"
  done
fi
"""
_LIPO = 'if [[ $1 == -create ]]; then cat "$2" "$3" >"$5"; fi'
_MAC = 'if [[ ${1-} == -m ]]; then echo arm64; else echo Darwin; fi'


class BuildingCase(StandInCase):
    """A tree with the scripts alone, on what takes itself for a Mac with Apple silicon."""

    systemTools = ("bash", "cat", "dirname", "getconf", "grep", "mkdir", "rm", "tar", "touch")

    def setUp(self):
        super().setUp()
        self.tree = os.path.join(self.directory, "tree")
        shutil.copytree(os.path.join(REPOSITORY, "packaging"), os.path.join(self.tree, "packaging"))
        os.mkdir(os.path.join(self.tree, "tools"))
        shutil.copy(os.path.join(REPOSITORY, "tools", "setup.sh"), os.path.join(self.tree, "tools"))
        self.standIn("uname", _MAC)

    def script(self, name):
        return os.path.join(self.tree, "packaging", "macos", name)

    def callsOf(self, *start):
        """Gives the calls that begin with these words."""
        return [call for call in self.made() if tuple(call[:len(start)]) == start]


class BuildingTheProgram(BuildingCase):
    """The libraries are there."""

    def setUp(self):
        super().setUp()
        self.standIn("build_libraries.sh", path=self.script("build_libraries.sh"))
        for tool, action in (("brew", ":"), ("cmake", _CMAKE), ("lipo", _LIPO),
                             ("otool", _SYSTEMS_OWN)):
            self.standIn(tool, action)

    def build(self):
        return self.runScript(self.script("build_universal.sh"))

    def test_each_program_is_merged_from_both_architectures(self):
        result = self.build()
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertEqual(result.stdout.split(),
                         [f"build/macos-universal/{program}" for program in _PROGRAMS])
        for program in _PROGRAMS:
            with open(os.path.join(self.tree, "build", "macos-universal", program),
                      encoding="utf-8") as file:
                self.assertEqual(file.read(),
                                 f"macos-arm64 {program}\nmacos-x86_64 {program}\n")
        self.assertEqual(self.callsOf("build_libraries.sh"),
                         [["build_libraries.sh", name] for name in _ARCHITECTURES])
        self.assertEqual(self.callsOf("cmake", "--preset"),
                         [["cmake", "--preset", f"macos-{name}"] for name in _ARCHITECTURES])
        for program in _PROGRAMS:
            merged = f"build/macos-universal/{program}"
            self.assertIn(["lipo", merged, "-verify_arch", *_ARCHITECTURES], self.made())

    def test_a_library_that_is_not_the_systems_is_named(self):
        self.standIn("otool", _SYSTEMS_OWN + r"; printf '\t/opt/homebrew/lib/libicu.dylib\n'")
        result = self.build()
        self.assertEqual(result.returncode, 1)
        self.assertIn("/opt/homebrew/lib/libicu.dylib", result.stderr)
        self.assertNotIn("libSystem", result.stderr)

    def test_libraries_that_cannot_be_listed_are_not_taken_for_the_systems(self):
        for action in ("exit 1", _SYSTEMS_OWN + "; exit 1", ":"):
            with self.subTest(action):
                self.standIn("otool", action)
                result = self.build()
                self.assertNotEqual(result.returncode, 0)
                self.assertIn("cannot be told", result.stderr)
                self.assertEqual(result.stdout, "")

    def test_what_the_build_needs_is_installed_before_it(self):
        self.standIn("brew", "[[ $1 != list ]]")
        result = self.build()
        self.assertEqual(result.returncode, 0, result.stderr)
        install, = self.callsOf("brew", "install")
        self.assertLessEqual({"cmake", "ninja", "pkgconf", "nlohmann-json"}, set(install))
        self.assertLess(self.made().index(install),
                        self.made().index(self.callsOf("build_libraries.sh")[0]))

    def test_what_cannot_be_installed_ends_it(self):
        self.standIn("brew", "exit 1")
        self.assertNotEqual(self.build().returncode, 0)
        self.assertEqual(self.callsOf("cmake"), [])

    def test_a_missing_tool_is_named_before_anything_is_done(self):
        for tool in ("lipo", "otool"):
            with self.subTest(tool):
                os.rename(os.path.join(self.tools, tool), os.path.join(self.directory, tool))
                result = self.build()
                self.assertEqual(result.returncode, 69)
                self.assertIn(f"{tool} is missing", result.stderr)
                self.assertEqual(self.made(), [])
                os.rename(os.path.join(self.directory, tool), os.path.join(self.tools, tool))


class BuildingTheLibraries(BuildingCase):
    """Sources that hold no more than what the script calls."""

    def setUp(self):
        super().setUp()
        archives = os.path.join(self.directory, "archives")
        os.mkdir(archives)
        configure = os.path.join(archives, "configure")
        # What is installed goes where the configuration said.
        self.standIn("configure", 'echo "flags|$CXXFLAGS" >>"' + self.calls + '"\n'
                     'for word in "$@"; do\n'
                     '  if [[ $word == --prefix=* ]]; then echo "${word#*=}" >prefix; fi\n'
                     'done', path=configure)
        for formula, inside in (("icu4c", "icu/source/configure"),
                                ("uriparser", "uriparser/CMakeLists.txt")):
            with tarfile.open(os.path.join(archives, formula), "w") as archive:
                archive.add(configure, inside)
        self.standIn("brew", f'if [[ $1 == --cache ]]; then echo "{archives}/$3"; fi')
        self.standIn("make", 'if [[ $1 == install ]]; then mkdir -p "$(cat prefix)"; fi')
        for tool in ("cmake", "ninja", "xcrun"):
            self.standIn(tool)

    def build(self, *arguments):
        return self.runScript(self.script("build_libraries.sh"), *arguments)

    def prefix(self, architecture):
        return os.path.join(self.tree, "build", "macos-libraries", architecture)

    def test_the_machines_own_architecture_is_built_once(self):
        result = self.build("arm64")
        self.assertEqual(result.returncode, 0, result.stderr)
        configured, = self.callsOf("configure")
        self.assertIn(f"--prefix={self.prefix('arm64')}", configured)
        self.assertLessEqual({"--enable-static", "--disable-shared"}, set(configured))
        self.assertFalse([word for word in configured if word.startswith("--host")])

    def test_the_other_takes_its_tools_from_a_build_for_this_machine(self):
        result = self.build("x86_64")
        self.assertEqual(result.returncode, 0, result.stderr)
        native, cross = self.callsOf("configure")
        self.assertFalse([word for word in native if word.startswith(("--host", "--prefix"))])
        self.assertIn("--host=x86_64-apple-darwin", cross)
        self.assertIn("--with-cross-build=" + os.path.join(
            self.tree, "build", "macos-libraries", "work", "icu-native"), cross)

    def test_everything_is_of_the_architecture_and_for_the_minimum_system(self):
        for architecture in _ARCHITECTURES:
            with self.subTest(architecture):
                self.assertEqual(self.build(architecture).returncode, 0)
                flags = self.callsOf("flags")[-1][1]
                self.assertIn(f"-arch {architecture} -mmacosx-version-min=13.0", flags)
                cmake = self.callsOf("cmake", "-S")[-1]
                self.assertLessEqual({f"-DCMAKE_OSX_ARCHITECTURES={architecture}",
                                      "-DCMAKE_OSX_DEPLOYMENT_TARGET=13.0",
                                      f"-DCMAKE_INSTALL_PREFIX={self.prefix(architecture)}",
                                      "-DBUILD_SHARED_LIBS=OFF"}, set(cmake))

    def test_what_is_there_is_not_built_again(self):
        self.assertEqual(self.build("arm64").returncode, 0)
        os.remove(self.calls)
        self.assertEqual(self.build("arm64").returncode, 0)
        self.assertEqual(self.made(), [])

    def test_what_failed_is_not_taken_for_complete(self):
        self.standIn("make", "exit 1")
        self.assertNotEqual(self.build("arm64").returncode, 0)
        self.assertFalse(os.path.exists(os.path.join(self.prefix("arm64"), "complete")))

    def test_wrong_arguments_and_missing_tools_are_refused(self):
        for arguments in ((), ("arm",), ("",)):
            with self.subTest(arguments):
                self.assertEqual(self.build(*arguments).returncode, 64)
        os.remove(os.path.join(self.tools, "ninja"))
        result = self.build("arm64")
        self.assertEqual(result.returncode, 69)
        self.assertIn("ninja is missing", result.stderr)
        self.assertEqual(self.made(), [])


if __name__ == "__main__":
    unittest.main()
