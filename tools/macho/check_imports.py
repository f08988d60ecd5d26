#!/usr/bin/python3
"""Compares what programs for macOS take from libraries with what their stubs allow them.

The stubs are the list of every library and every function that the programs may use. Linking proves
that nothing else is used; here it is proved that nothing stands in the list for no reason, for each
architecture, and that the libraries which can be looked into have what their stubs promise. No
framework can be looked into away from its own system: what is listed of those rests on their
documentation.
"""

import argparse
import pathlib
import re
import subprocess
import sys

LLVM = pathlib.Path('/usr/lib/llvm-19')
ARCHITECTURES = ('arm64', 'x86_64')
# Functions of the C++ library that are kept in libraries of their own on this system.
CXX_LIBRARIES = ('libc++.so.1', 'libc++abi.so.1')


def output(tool, *arguments):
    """What a tool of the compiler prints; a tool that fails ends the check."""
    command = [LLVM / 'bin' / tool, *arguments]
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def stub_symbols(stub, architecture):
    """The functions, constants and classes that a stub lists."""
    lines = output('llvm-nm', '-j', f'--arch={architecture}', stub).splitlines()
    # A class comes with its metaclass, which only a class derived from it would name.
    return {line for line in lines if line.startswith('_')
            and not line.startswith('_OBJC_METACLASS_$_')}


def install_name(stub):
    """The name under which the system loads the library of a stub."""
    return re.search(r"^install-name: '(.+)'$", stub.read_text(), re.MULTILINE).group(1)


def short_name(installed):
    """A library's name without its place and version: /usr/lib/libc++.1.dylib is libc++."""
    return pathlib.PurePath(installed).name.split('.')[0]


def imports(program, architecture):
    """Pairs of library and symbol that the linked program takes."""
    text = output('llvm-nm', '-m', '-u', f'--arch={architecture}', program)
    pairs = re.findall(r'\(undefined\).* external (\S+) \(from ([^)]+)\)', text)
    return {(symbol, short_name(library)) for symbol, library in pairs}


def linked_libraries(program, architecture):
    """The libraries that the system loads with the program."""
    text = output('llvm-objdump', '--macho', '--dylibs-used', f'--arch={architecture}', program)
    return set(re.findall(r'^\s+(\S+) \(compatibility', text, re.MULTILINE))


def oldest_system(program, architecture):
    """The system version from which on the program starts."""
    text = output('llvm-objdump', '--macho', '--private-headers', f'--arch={architecture}', program)
    found = re.search(r'LC_BUILD_VERSION.*?minos (\S+)', text, re.DOTALL)
    return found.group(1) if found else 'none'


def dynamic_symbols(library):
    """What a library of this machine exports, under the names that macOS gives to the same."""
    names = output('llvm-nm', '-D', '-j', '--defined-only', library).split()
    plain = (name.split('@')[0] for name in names)
    # ICU's names carry its version, which the program is compiled without.
    return {'_' + re.sub(r'_\d\d$', '', re.sub(r'\d+icu_\d\d', '3icu', name)) for name in plain}


def package_library(package, name):
    """Where the distribution keeps a library."""
    command = ['pkg-config', '--variable=libdir', package]
    directory = subprocess.run(command, check=True, capture_output=True, text=True).stdout.strip()
    return pathlib.Path(directory) / name


def known_symbols(system_stub):
    """For each library that can be looked into: all that it has."""
    # A stub of the whole system library, with a text of its own for each of its parts.
    system = set(re.findall(r"[^\s,'\[\]]+", system_stub.read_text()))
    cxx = set().union(*(dynamic_symbols(LLVM / 'lib' / name) for name in CXX_LIBRARIES))
    return {
        'libSystem': system,
        'libc++': cxx,
        'libicuuc': dynamic_symbols(package_library('icu-uc', 'libicuuc.so')),
        'libicui18n': dynamic_symbols(package_library('icu-i18n', 'libicui18n.so')),
        'liburiparser': dynamic_symbols(package_library('liburiparser', 'liburiparser.so')),
    }


def compared(title, allowed, found):
    """One line for each thing that is on one side only."""
    return ([f'{title}: {name} is not in the list' for name in sorted(found - allowed)] +
            [f'{title}: {name} is in the list and not used' for name in sorted(allowed - found)])


def architecture_findings(programs, architecture, stubs, system):
    """What is wrong with one architecture of the programs, which share one list."""
    names = {install_name(stub): stub for stub in stubs}
    allowed = {(symbol, short_name(name)) for name, stub in names.items()
               for symbol in stub_symbols(stub, architecture)}
    found = set().union(*(imports(program, architecture) for program in programs))
    libraries = set().union(*(linked_libraries(program, architecture) for program in programs))
    findings = compared(f'{architecture}, libraries', set(names), libraries)
    findings += compared(f'{architecture}, functions',
                         {f'{symbol} of {library}' for symbol, library in allowed},
                         {f'{symbol} of {library}' for symbol, library in found})
    for program in programs:
        oldest = oldest_system(program, architecture)
        if oldest != system:
            findings.append(f'{architecture}: {program.name} starts from system {oldest} on, '
                            f'not {system}')
    print(f'{architecture}: {len(found)} functions of {len(names)} libraries')
    return findings


def missing_symbols(objects, architecture, stubs):
    """What object files name that neither they nor the stubs have, under its name in a stub."""
    files = sorted(str(file) for file in objects.rglob('*.o'))
    if not files:
        return []
    defined = set(output('llvm-nm', '-j', '--defined-only', '--quiet', *files).split())
    used = set(output('llvm-nm', '-j', '-u', '--quiet', *files).split())
    listed = set().union(*(stub_symbols(stub, architecture) for stub in stubs))
    # The linker's own.
    return sorted(name for name in used - defined - listed - {'___dso_handle'}
                  if name.startswith('_'))


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument('--stubs', type=pathlib.Path, required=True)
    parser.add_argument('--system', type=pathlib.Path, help='a stub of the whole system library')
    parser.add_argument('--programs', type=pathlib.Path, nargs='+',
                        help='linked programs, each of both architectures')
    parser.add_argument('--oldest-system', metavar='VERSION',
                        help='the system from which on they have to start, as the linker writes it')
    parser.add_argument('--objects', type=pathlib.Path,
                        help='only tell which symbols of these objects no stub lists')
    parser.add_argument('--architecture', choices=ARCHITECTURES)
    arguments = parser.parse_args()
    stubs = sorted(arguments.stubs.glob('*.tbd'))
    if arguments.objects:
        for name in missing_symbols(arguments.objects, arguments.architecture, stubs):
            print(f'{arguments.architecture}: no stub lists {name}')
        return 1

    findings = []
    for program in arguments.programs:
        found = output('llvm-lipo', '-archs', program).split()
        findings += compared(f'architectures of {program.name}', set(ARCHITECTURES), set(found))
    for architecture in ARCHITECTURES:
        findings += architecture_findings(arguments.programs, architecture, stubs,
                                          arguments.oldest_system)
    known = known_symbols(arguments.system)
    for stub in stubs:
        library = short_name(install_name(stub))
        if library not in known:
            continue
        listed = set().union(*(stub_symbols(stub, name) for name in ARCHITECTURES))
        findings += [f'{library} has no {name}' for name in sorted(listed - known[library])]
    for finding in findings:
        print(finding)
    return 1 if findings else 0


if __name__ == '__main__':
    sys.exit(main())
