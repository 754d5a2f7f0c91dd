#!/usr/bin/env python3
"""Runs `kta check` as its users do: alone, on directories, with rules, in a build farm.

usage: kta_check.py KTA DOCS
KTA is the program, DOCS the folder of the page and the schema that it makes.
"""

import json
import pathlib
import subprocess
import sys
import tempfile
import unittest

import jsonschema

KTA = ""
DOCS = pathlib.Path()


def kta(*arguments):
    done = subprocess.run([KTA, "check", *map(str, arguments)], stdin=subprocess.DEVNULL,
                          capture_output=True, timeout=60, check=False)
    return done.returncode, done.stdout.decode(), done.stderr.decode()


class Documents(unittest.TestCase):
    def test_the_page_is_that_of_the_program(self):
        self.assertEqual(kta("--list-codes", "--markdown"),
                         (0, (DOCS / "kta-check.md").read_text(), ""))

    def test_the_schema_is_that_of_the_program(self):
        self.assertEqual(kta("--json-schema"),
                         (0, (DOCS / "kta-check.schema.json").read_text(), ""))

    def test_codes_are_listed(self):
        status, output, _ = kta("--list-codes")
        self.assertEqual(status, 0)
        fields = [line.split("\t") for line in output.splitlines()]
        self.assertGreater(len(fields), 80)
        for code, severity, meaning in fields:
            self.assertIn(severity, ("note", "warning", "error"))
            self.assertIn(f"| `{code}` | {severity} |", (DOCS / "kta-check.md").read_text())
            self.assertTrue(meaning.endswith("."))


class Checks(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.scratch = tempfile.TemporaryDirectory(prefix="kta_check_")
        cls.fixtures = pathlib.Path(cls.scratch.name) / "fixtures"
        cls.self_test = kta("--self-test", "--fixtures", cls.fixtures)
        status, output, _ = kta("--json-schema")
        assert status == 0
        cls.schema = json.loads(output)
        jsonschema.Draft202012Validator.check_schema(cls.schema)

    @classmethod
    def tearDownClass(cls):
        cls.scratch.cleanup()

    def files(self, name):
        return [self.fixtures / f"{name}.hdotemp1", self.fixtures / f"{name}.hdotemp2"]

    def report(self, *arguments):
        """Status and report, which is held against the schema."""
        status, output, _ = kta("--json", *arguments)
        report = json.loads(output)
        jsonschema.validate(report, self.schema, jsonschema.Draft202012Validator)
        return status, report

    def test_the_program_proves_itself(self):
        status, output, errors = self.self_test
        self.assertEqual((status, errors), (0, ""))
        codes = [line.split("\t")[0] for line in kta("--list-codes")[1].splitlines()]
        self.assertEqual(output.splitlines(),
                         ["good files, sampled: ok", "good files, keyframed: ok",
                          *(f"{code}: ok" for code in codes)])

    def test_good_files(self):
        self.assertEqual(kta(*self.files("good"), "--notes", "--strict"),
                         (0, "2 files checked: 0 errors, 0 warnings, 0 notes\n", ""))

    def test_every_fixture_tells_its_code_alone(self):
        status, report = self.report(self.fixtures, "--notes", "--max-issues", 3)
        self.assertEqual(status, 1)
        told = {}
        for check in report["checks"]:
            name = pathlib.Path(check["actor"]).name.removesuffix(".hdotemp1")
            told[name] = {issue["code"] for issue in check["issues"]}
        self.assertEqual(told.pop("good"), set())
        self.assertEqual(told.pop("too-many-faults"), {"flag-value"})  # among the first 3
        self.assertEqual(told, {name: {name} for name in told})
        rules = json.loads((self.fixtures / "rules.json").read_text())
        codes = [line.split("\t")[0] for line in kta("--list-codes")[1].splitlines()]
        self.assertEqual(len(told) + 1 + len(rules), len(codes))

    def test_rules_of_a_studio(self):
        rules = json.loads((self.fixtures / "rules.json").read_text())
        arguments = ["--rules", self.fixtures / "rules.json", *self.files("good")]
        status, report = self.report(*arguments)
        self.assertEqual(status, 0)
        self.assertEqual({issue["code"] for issue in report["checks"][0]["issues"]},
                         {f"rule-{name}" for name in rules})
        self.assertEqual(kta("--strict", *arguments)[0], 1)
        stern = self.fixtures / "stern.json"
        stern.write_text('{"bones": {"most": 3, "severity": "error"}}')
        status, output, _ = kta("--rules", stern, *self.files("good"))
        self.assertEqual(status, 1)
        self.assertIn(": error: number of bones is 4, expected 3 at most [rule-bones]\n", output)

    def test_bad_rules_are_told(self):
        rules = self.fixtures / "bad.json"
        for text, reason in (("{", "is no JSON, wrong at byte 2"),
                             ('{"legs": 2}', '"legs" is no rule, expected one of nodes, ')):
            rules.write_text(text)
            status, output, errors = kta("--rules", rules, *self.files("good"))
            self.assertEqual((status, output), (2, ""))
            self.assertTrue(errors.startswith(f"kta: {rules}: {reason}"), errors)
        rules.write_text(" " * (1024 * 1024 + 1))
        self.assertEqual(kta("--rules", rules, *self.files("good")),
                         (2, "", f"kta: {rules}: has more than 1 MiB, expected a file of rules\n"))
        self.assertEqual(kta("--rules", "/no/such", *self.files("good")),
                         (2, "", "kta: /no/such: cannot be read\n"))
        self.assertEqual(kta("--rules", self.fixtures, *self.files("good")),
                         (2, "", f"kta: {self.fixtures}: is a directory, expected a JSON file\n"))

    def test_lines_and_summary(self):
        actor, motion = self.files("scale-signs")
        status, output, errors = kta(actor, motion)
        self.assertEqual((status, errors), (1, ""))
        line, summary = output.splitlines()
        self.assertRegex(line, rf'^{actor}: offset \d+: node chunk: error: "Dummy": scale is '
                               r'\(-1, 1, 1\), expected parts of one sign \[scale-signs\]$')
        self.assertEqual(summary, "2 files checked: 1 error, 0 warnings, 0 notes")

    def test_notes_are_counted_and_told_on_request(self):
        files = self.files("weight-sum")
        self.assertEqual(kta(*files), (0, "2 files checked: 0 errors, 0 warnings, 1 note (--notes "
                                          "shows them)\n", ""))
        self.assertIn(": note: ", kta("--notes", *files)[1])
        self.assertEqual(kta("--strict", "--notes", *files)[0], 0)

    def test_warnings_are_failures_on_request(self):
        files = self.files("sub-mesh-twice")
        self.assertEqual(kta(*files)[0], 0)
        self.assertEqual(kta("--strict", *files)[0], 1)

    def test_codes_are_left_out(self):
        files = self.files("scale-signs")
        self.assertEqual(kta("--ignore", "weight-sum,scale-signs", *files)[0], 0)
        self.assertEqual(kta("--ignore", "weight-sum", "--ignore", "scale-signs", *files)[0], 0)
        self.assertEqual(kta("--ignore", "weight-sum", *files)[0], 1)
        status, _, errors = kta("--ignore", "scale", *files)
        self.assertEqual((status, errors), (2, 'kta: --ignore: "scale" is no code (kta check '
                                               '--list-codes shows them)\n'))

        status, _, errors = kta("--ignore", "weight-sum,,scale-signs", *files)
        self.assertEqual(status, 2)
        self.assertIn('--ignore: "weight-sum,,scale-signs" has an empty element', errors)

    def test_so_many_are_shown_and_all_are_counted(self):
        files = self.files("too-many-faults")
        status, report = self.report("--max-issues", 5, *files)
        self.assertEqual((status, report["errors"]), (1, 10000))
        self.assertEqual(len(report["checks"][0]["issues"]), 5)
        self.assertEqual(report["checks"][0]["omitted"], 9995)
        output = kta("--max-issues", 5, *files)[1].splitlines()
        self.assertEqual(len(output), 7)
        self.assertEqual(output[5], f"{files[0]}: and 9995 more (--max-issues 0 shows all)")
        self.assertEqual(len(kta(*files)[1].splitlines()), 102)
        self.assertEqual(len(kta("--max-issues", 0, *files)[1].splitlines()), 10001)

    def test_single_files(self):
        for file in self.files("good"):
            status, report = self.report(file)
            self.assertEqual(status, 0)
            kind = "actor" if str(file).endswith("1") else "motion"
            self.assertEqual(report["checks"][0][kind], str(file))
        actor, motion = self.files("good")
        status, output, _ = kta(motion, actor)
        self.assertEqual(status, 1)
        self.assertEqual(output.count("[file-other-kind]"), 2)

    def test_what_cannot_be_read(self):
        status, report = self.report(self.files("good")[0], "/no/such")
        self.assertEqual(status, 2)
        self.assertEqual(report["checks"][0]["unreadable"][0]["file"], "/no/such")
        _, output, errors = kta("/no/such")
        self.assertTrue(errors.startswith("kta: /no/such: cannot be opened"))
        self.assertEqual(output, "0 files checked: 0 errors, 0 warnings, 0 notes\n")

    def test_bad_usage(self):
        with tempfile.TemporaryDirectory() as empty:
            for arguments in ((), ("a", "b", "c"), ("--max-issues", "x", "a"),
                              ("--max-issues", "-1", "a"), (empty,),
                              (self.fixtures, self.files("good")[0])):
                status, output, errors = kta(*arguments)
                self.assertEqual((status, output), (2, ""), arguments)
                self.assertEqual(errors.count("\n"), 1, errors)
        self.assertEqual(kta("--max-issues", "-1", "a")[2],
                         'kta: --max-issues: "-1" is no number, expected a whole one of 0 or more '
                         "(see kta --help)\n")

    def test_directories_hold_pairs_and_single_files(self):
        with tempfile.TemporaryDirectory() as folder:
            below = pathlib.Path(folder) / "a" / "b"
            below.mkdir(parents=True)
            actor, motion = (file.read_bytes() for file in self.files("good"))
            (below / "x.hdotemp1").write_bytes(actor)
            (below / "x.hdotemp2").write_bytes(motion)
            (below / "only.hdotemp2").write_bytes(motion)
            (below / "x.hdo.log").write_bytes(b"no such file")
            (pathlib.Path(folder) / "wrong.hdotemp2").write_bytes(actor)
            status, report = self.report(folder)
            self.assertEqual([(check["actor"], check["motion"]) for check in report["checks"]],
                             [(None, str(below / "only.hdotemp2")),
                              (str(below / "x.hdotemp1"), str(below / "x.hdotemp2")),
                              (None, str(pathlib.Path(folder) / "wrong.hdotemp2"))])
            self.assertEqual(status, 1)
            self.assertEqual([issue["code"] for issue in report["checks"][2]["issues"]],
                             ["file-other-kind"])


if __name__ == "__main__":
    KTA = str(pathlib.Path(sys.argv[1]).resolve())
    DOCS = pathlib.Path(sys.argv[2]).resolve()
    unittest.main(argv=sys.argv[:1])
