"""Holds our property lists against Python's plistlib, both ways: it writes lists of every kind of
value in both of its encodings, our program reads them and writes its binary form, and plistlib must
read back the same values.

    property_list_conformance.py REWRITER
"""

import datetime
import math
import plistlib
import random
import subprocess
import sys
import unittest

REWRITER = None


def rewritten(data):
    result = subprocess.run([REWRITER], input=data, capture_output=True, timeout=60)
    return result.returncode, result.stdout, result.stderr.decode()


EPOCH = datetime.datetime(2001, 1, 1)
SCALARS = {
    "text": ["", "plain", "with \"quotes\" & <tags>", "ä", "漢字", "😀 beyond the plane", "x" * 70000,
             "$null", "\u2028 \u00a0"],
    "integer": [0, 1, 127, 128, 255, 256, 65535, 65536, 2**31, 2**32 - 1, 2**32, 2**63 - 1, 2**63,
                2**64 - 1, -1, -128, -129, -(2**31), -(2**63)],
    "real": [0.0, 0.1, 1e-300, 1e300, -2.5, math.inf, -math.inf],
    "boolean": [True, False],
    "data": [b"", b"\0", bytes(range(256)), b"z" * 70000],
    "date": [EPOCH, datetime.datetime(1970, 1, 1), datetime.datetime(2038, 1, 19, 3, 14, 8),
             datetime.datetime(1904, 2, 29, 23, 59, 59)],
}


def random_value(rng, depth=0):
    kind = rng.choice(list(SCALARS) + (["list", "dict"] * 3 if depth < 6 else []))
    if kind == "list":
        return [random_value(rng, depth + 1) for _ in range(rng.randrange(6))]
    if kind == "dict":
        return {rng.choice("abcäß😀") * rng.randrange(4): random_value(rng, depth + 1)
                for _ in range(rng.randrange(6))}
    return rng.choice(SCALARS[kind])


class PropertyListConformance(unittest.TestCase):
    def check(self, value, encodings=(plistlib.FMT_BINARY, plistlib.FMT_XML)):
        for encoding in encodings:
            code, out, message = rewritten(plistlib.dumps(value, fmt=encoding, sort_keys=False))
            self.assertEqual(code, 0, message)
            self.assertTrue(out.startswith(b"bplist00"))
            # repr tells 1 from 1.0 from True, which == does not.
            self.assertEqual(repr(plistlib.loads(out)), repr(value))

    def test_every_kind_of_value_survives(self):
        for kind, values in SCALARS.items():
            with self.subTest(kind):
                self.check({"values": values})

    def test_a_scalar_may_be_the_root(self):
        for value in ("text", 7, 0.5, -0.0, True, b"data"):
            self.check(value)

    def test_containers_survive_empty_and_nested(self):
        nested = []
        for _ in range(60):
            nested = [nested, {}]
        self.check({"nested": nested, "": [[], {}]})

    def test_references_survive_in_the_binary_form(self):
        for index in (0, 255, 256, 65535, 65536, 2**32 - 1):
            _, out, message = rewritten(
                plistlib.dumps([plistlib.UID(index)], fmt=plistlib.FMT_BINARY))
            self.assertEqual(plistlib.loads(out), [plistlib.UID(index)], message)

    def test_many_objects_widen_the_references(self):
        for count in (100, 255, 256, 257, 70000):
            self.check(list(range(count)), encodings=(plistlib.FMT_BINARY,))

    def test_shared_objects_are_written_once(self):
        entry = {"name": "the same long name " * 20, "values": list(range(20))}
        value = [dict(entry) for _ in range(200)]
        _, out, _ = rewritten(plistlib.dumps(value, fmt=plistlib.FMT_XML))
        self.assertEqual(plistlib.loads(out), value)
        self.assertLess(len(out), 1500)

    def test_random_trees_survive(self):
        rng = random.Random(20240501)
        for _ in range(150):
            self.check(random_value(rng))

    def test_what_plistlib_refuses_as_broken_is_refused(self):
        whole = plistlib.dumps({"a": [1, 2.0, "x"]}, fmt=plistlib.FMT_BINARY)
        for length in range(len(whole)):
            code, _, message = rewritten(whole[:length])
            with self.subTest(length):
                # A cut that leaves plain text is a list of the text form.
                if whole[:length].startswith(b"bplist00"):
                    self.assertEqual(code, 1)
                    self.assertTrue(message)


if __name__ == "__main__":
    REWRITER = sys.argv.pop(1)
    unittest.main(verbosity=1)
