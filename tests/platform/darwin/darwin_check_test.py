#!/usr/bin/env python3
"""What the check build of the macOS side must be like, held against what it is.

    darwin_check_test.py SOURCES BUILD ARCHITECTURE

SOURCES is the project's folder, BUILD the check's build folder of one architecture.
"""

import json
import pathlib
import plistlib
import re
import subprocess
import sys
import unittest

SOURCES = pathlib.Path(sys.argv[1])
BUILD = pathlib.Path(sys.argv[2])
ARCHITECTURE = sys.argv[3]

DARWIN = SOURCES / "platform/darwin"
BUNDLE = BUILD / "bin/VantorLockScreen.appex"
PROGRAM = BUNDLE / "Contents/MacOS/VantorLockScreen"
CONTRACT = BUILD / "tests/contract_test"
FRAMEWORKS = {
    "AppKit", "CoreFoundation", "CoreGraphics", "ExtensionFoundation", "Foundation", "ImageIO",
    "Metal", "QuartzCore", "Security", "UniformTypeIdentifiers"}


def objdump(*words):
    return subprocess.run(["llvm-objdump", "--macho", *words], check=True, capture_output=True,
                          text=True).stdout


def sources():
    return sorted(DARWIN.glob("*.mm"))


def without_comments(text):
    return re.sub(r"//[^\n]*|/\*.*?\*/", "", text, flags=re.DOTALL)


class Program(unittest.TestCase):
    def test_both_programs_are_executables_of_the_architecture(self):
        names = {"arm64": "ARM64", "x86_64": "X86_64"}
        for program in PROGRAM, CONTRACT:
            header = objdump("--private-header", str(program))
            self.assertRegex(header, rf"MH_MAGIC_64\s+{names[ARCHITECTURE]}\b.*\bEXECUTE\b")

    def test_it_loads_the_frameworks_of_the_seam_and_no_other_library(self):
        loaded = set(re.findall(r"^\t?\s*(/\S+)", objdump("--dylibs-used", str(PROGRAM)),
                                re.MULTILINE)) - {str(PROGRAM) + ":"}
        frameworks = {m[1] for m in (re.search(r"/(\w+)\.framework/", path) for path in loaded) if m}
        self.assertEqual(frameworks, FRAMEWORKS)
        self.assertEqual({p for p in loaded if ".framework" not in p},
                         {"/usr/lib/libc++.1.dylib", "/usr/lib/libobjc.A.dylib",
                          "/usr/lib/libSystem.B.dylib"})

    def test_the_entry_is_found_by_name(self):
        exported = objdump("--exports-trie", str(PROGRAM))
        self.assertRegex(exported, r"\b_VantorExtensionEntry\b")

    def test_the_carrier_is_a_class_of_the_runtime(self):
        symbols = objdump("--syms", str(PROGRAM))
        self.assertIn("_OBJC_CLASS_$_VantorXPCCarrier", symbols)


class Bundle(unittest.TestCase):
    def setUp(self):
        self.plist = plistlib.loads((BUNDLE / "Contents/Info.plist").read_bytes())

    def test_it_names_the_extension_and_its_point(self):
        self.assertEqual(self.plist["CFBundleIdentifier"], "com.nimbara.app.lockscreen")
        self.assertEqual(self.plist["CFBundleExecutable"], PROGRAM.name)
        self.assertEqual(self.plist["CFBundlePackageType"], "XPC!")
        self.assertRegex(self.plist["CFBundleVersion"], r"^\d+\.\d+\.\d+$")
        point = self.plist["EXAppExtensionAttributes"]["EXExtensionPointIdentifier"]
        self.assertRegex(point, r"^[a-z0-9.-]+$")

    def test_the_extension_point_is_said_in_one_place(self):
        point = self.plist["EXAppExtensionAttributes"]["EXExtensionPointIdentifier"]
        saying = [f for f in DARWIN.rglob("*") if f.is_file() and f'"{point}"' in f.read_text()]
        self.assertEqual([f.name for f in saying], ["CMakeLists.txt"])

    def test_it_has_a_place_for_stills(self):
        self.assertTrue((BUNDLE / "Contents/Resources/Stills").is_dir())

    def test_the_entitlements_are_the_sandbox_and_the_state_file(self):
        entitlements = plistlib.loads((DARWIN / "VantorLockScreen.entitlements").read_bytes())
        state = ("/Library/Containers/com.nimbara.app/Data/Library/Application Support/"
                 "VantorEngine/LockScreen.plist")
        self.assertEqual(entitlements, {
            "com.apple.security.app-sandbox": True,
            "com.apple.security.temporary-exception.files.home-relative-path.read-only": [state]})
        # As the library puts the path together.
        library = (SOURCES / "library/app_state.cpp").read_text()
        for part in "Library/Containers/Data/Application Support/VantorEngine/LockScreen.plist".split("/"):
            self.assertIn(f'"{part}"', library)


class Declarations(unittest.TestCase):
    """The compiler has refused what is not declared; here, the other way, and by name."""

    def setUp(self):
        self.declared = without_comments(
            "\n".join(f.read_text() for f in sorted((DARWIN / "check/include").rglob("*.h"))))
        self.used = without_comments("\n".join(f.read_text() for f in sources()) + "\n".join(
            (DARWIN / name).read_text() for name in ("foundation.h", "agent_protocols.h")))

    def test_every_name_of_the_system_that_is_used_is_declared(self):
        names = set(re.findall(
            r"\b(?:(?:NS|CA|CG|CF|MTL|UT|Sec|kSec|kCG|kCA|errSec|kCF)[A-Z]\w+|OS_LOG_\w+|os_log\w*)\b",
            re.sub(r'"[^"]*"', "", self.used)))
        missing = {n for n in names if not re.search(rf"\b{n}\b", self.declared)}
        # Of the C headers that the compiler brings.
        self.assertEqual(missing - {"NSEC_PER_SEC", "NSObject", "NSUInteger", "NSInteger"}, set())

    def test_every_selector_that_is_sent_by_name_is_declared_or_the_agents(self):
        # What the sources define themselves is declared there.
        own = re.findall(r"@selector\(([^)]+)\)", self.used)
        for selector in own:
            self.assertRegex(self.used, rf"- \(\w+\){re.escape(selector)}\b")

    def test_every_class_and_protocol_that_is_declared_is_used(self):
        declared = re.findall(r"@(?:interface|protocol) (\w+)", self.declared)
        code = self.used + self.declared
        unused = {n for n in declared if len(re.findall(rf"\b{n}\b", code)) < 2}
        self.assertEqual(unused, set())

    def test_numbers_of_the_system_are_those_that_the_sources_check(self):
        asserted = " ".join(" ".join(re.findall(r"static_assert\((.*?)\);", self.used, re.DOTALL)).split())
        for check in ("MTLPixelFormatBGRA8Unorm, 80)", "MTLPixelFormatR32Float, 55)",
                      "MTLTextureUsageShaderRead, 1)", "MTLTextureUsageRenderTarget, 4)",
                      "MTLStorageModeShared, 0)", "MTLLoadActionClear, 2)",
                      "MTLStoreActionStore, 1)", "MTLPrimitiveTypeTriangle, 3)", "== 0x2006"):
            self.assertIn(check, asserted)


class SwiftInterface(unittest.TestCase):
    """Three texts that no compiler here holds together."""

    def test_swift_and_its_stand_in_define_what_the_header_declares(self):
        header = without_comments((DARWIN / "swift_interface.h").read_text())
        declared = set(re.findall(r"\b(Vantor\w+)\(", header))
        from_cpp = {"VantorExtensionConstruct", "VantorExtensionAccept"}
        swift = without_comments((DARWIN / "LockScreenExtension.swift").read_text())
        stand_in = without_comments((DARWIN / "check/swift_stand_in.cpp").read_text())
        self.assertEqual(set(re.findall(r'@_cdecl\("(\w+)"\)', swift)), declared - from_cpp)
        self.assertEqual(set(re.findall(r"\b(Vantor\w+)\(", stand_in)), declared - from_cpp)
        runtime = (DARWIN / "darwin_app_extension.cpp").read_text()
        for name in from_cpp:
            self.assertIn(name + "(", runtime)
            self.assertIn(name + "(", swift)

    def test_parameters_are_as_many(self):
        header = without_comments((DARWIN / "swift_interface.h").read_text())
        swift = without_comments((DARWIN / "LockScreenExtension.swift").read_text())
        for name, parameters in re.findall(r'@_cdecl\("(\w+)"\)\s*func \w+\(([^)]*)\)', swift):
            declared = re.search(rf"\b{name}\(([^)]*)\)", header)[1]
            count = 0 if declared == "void" else declared.count(",") + 1
            self.assertEqual(parameters.count(":"), count, name)


class Size(unittest.TestCase):
    def test_the_macos_side_stays_thin(self):
        lines = {f: len(f.read_text().splitlines())
                 for f in DARWIN.iterdir() if f.suffix in (".mm", ".h", ".cpp", ".swift")}
        self.assertEqual({f.name for f, n in lines.items() if n >= 300}, set())
        self.assertLess(sum(lines.values()), 2500)

    def test_every_source_is_compiled(self):
        compiled = {pathlib.Path(each["file"])
                    for each in json.loads((BUILD / "compile_commands.json").read_text())}
        self.assertEqual({f for f in sources() if f not in compiled}, set())


if __name__ == "__main__":
    result = unittest.TextTestRunner(verbosity=1).run(
        unittest.defaultTestLoader.loadTestsFromModule(sys.modules["__main__"]))
    sys.exit(0 if result.wasSuccessful() and result.testsRun > 0 else 1)
