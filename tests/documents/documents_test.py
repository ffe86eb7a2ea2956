"""Completion and manual pages against what the programs say of their options, and the document of the
records against the sources. The end-to-end tests run its examples.

    documents_test.py PROGRAMS SOURCES [unittest arguments]

PROGRAMS is the folder of the built programs, SOURCES that of the project.
"""
import glob
import os
import re
import subprocess
import sys
import unittest

PROGRAMS = ""
SOURCES = ""

# A comparison that is shown and can't be asked for.
WITHOUT_EFFECT = {"-c", "--compare"}
HELP = {"veltrum": ["-2", "-h"], "veltrum-all": ["--help"], "veltrum-farm": ["--help"],
        "veltrum-view": ["--help"]}
WORD = r"(?<![\w-])--?[a-z][a-z0-9-]*(?![\w-])|(?<![\w-])-[A-Z](?![\w-])"


def options_in_help(program):
    shown = subprocess.run([os.path.join(PROGRAMS, program), *HELP[program]], check=True,
                           capture_output=True, text=True).stdout
    # Lines that begin with an option, up to the words that explain it.
    columns = re.findall(r"^ *(-.*?)(?:  |$)", shown.split("USAGE:")[0], re.MULTILINE)
    return set(re.findall(WORD, " ".join(columns))) - WITHOUT_EFFECT


def options_in_page(program):
    with open(os.path.join(SOURCES, "docs/man", program + ".1.scd"), encoding="utf-8") as file:
        options = file.read().split("# OPTIONS")[1].split("# EXIT STATUS")[0]
    heads = re.findall(r"^\*-.*", options, re.MULTILINE)
    return {word for head in heads for word in re.findall(WORD, head.replace("=*", "*"))}


def completed(*words):
    """What is offered for the last of the words."""
    script = ('. "$1"; shift; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); '
              '_veltrum 2>/dev/null; printf "%s\\n" "${COMPREPLY[@]}"')
    shown = subprocess.run(["bash", "-c", script, "bash",
                            os.path.join(SOURCES, "completions/veltrum"), *words], check=True,
                           capture_output=True, text=True, cwd=os.path.join(SOURCES, "samples"))
    return set(shown.stdout.split())


class CompletionTest(unittest.TestCase):
    def test_every_option_is_offered_and_in_the_manual(self):
        for program in HELP:
            with self.subTest(program):
                options = options_in_help(program)
                self.assertGreater(len(options), 5)
                offered = completed(program, "-2", "-") if program == "veltrum" else completed(
                    program, "-")
                self.assertEqual({word.rstrip("=") for word in offered}, options)
                self.assertEqual(options_in_page(program), options)

    def test_values(self):
        axes = {"x", "y", "z", "-x", "-y", "-z"}
        for words, offered in [
                (["veltrum", ""], {"-2"}),
                (["veltrum", "-2", "a.FBX", ""], {"list", "export"}),
                (["veltrum", "-2", "a.fbx", "export", "m"], {"mesh", "morphanim"}),
                (["veltrum", "-2", "av"], {"avatar.fbx"}),
                (["veltrum", "-2", "--directory", "t"], {"textures"}),
                (["veltrum-all", "--up", "=", ""], axes),
                (["veltrum-all", "--front", "="], axes),
                (["veltrum-farm", "--coord", "l"], {"left"}),
                (["veltrum-farm", "--retries", ""], set()),
                (["veltrum-view", "--only", "s"], set()),
                (["veltrum-view", "-t", ""], {"textures", "expected"})]:
            with self.subTest(words):
                self.assertEqual(completed(*words), offered)


class RecordsTest(unittest.TestCase):
    # Traces are told of in the large; the rest is reached by no command, or is the help screen.
    LEFT_OUT = re.compile(r"_trace\.(cpp|h)$|/(older_route|names|usage|output|scene_queries)\.cpp$")
    PRINTING = re.compile(r"\b(?:Add(?:Output|Error|Warning)|Print(?:Formatted)?)\((.*?)\);",
                          re.DOTALL)

    def test_every_text_is_in_the_document(self):
        with open(os.path.join(SOURCES, "docs/records.md"), encoding="utf-8") as file:
            document = file.read()
        pieces = 0
        for folder in ("converter", "programs/veltrum"):
            for path in glob.glob(os.path.join(SOURCES, folder, "**/*.cpp"), recursive=True):
                if self.LEFT_OUT.search(path):
                    continue
                with open(path, encoding="utf-8") as file:
                    calls = self.PRINTING.findall(file.read())
                for literal in re.findall(r'"((?:[^"\\]|\\.)*)"', " ".join(calls)):
                    # What is put into a text stands as <name> in the document.
                    for piece in re.split(r"%\w+|\\n|[\[\]]", literal):
                        piece = piece.strip(" '.:,")
                        if len(piece) > 2:
                            pieces += 1
                            with self.subTest(os.path.basename(path)):
                                self.assertTrue(piece in document, piece)
        self.assertGreater(pieces, 50)


if __name__ == "__main__":
    PROGRAMS, SOURCES = map(os.path.abspath, sys.argv[1:3])
    unittest.main(argv=sys.argv[:1] + sys.argv[3:])
